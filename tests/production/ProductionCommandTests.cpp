// Productions made end to end by the built scrivly-cli, read back the way their readers read
// them: Bates labels from the pages' text, hashes with sha256sum, the manifest and the load file
// by their delimiters, natives against the attachments, messages against the transcripts.

#include "tests/cli/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/sample/SampleDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sys/stat.h>

namespace scrivly::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string kMakeHistory = SCRIVLY_MAKE_HISTORY;

std::string commandOutput(const std::string& command, int* status = nullptr) {
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string out;
    char buffer[4096];
    std::size_t count = 0;
    while (pipe != nullptr && (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        out.append(buffer, count);
    }
    const int result = pipe != nullptr ? ::pclose(pipe) : -1;
    if (status != nullptr) {
        *status = result;
    }
    return out;
}

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

std::string sha256sum(const fs::path& path) {
    return commandOutput("sha256sum " + quoted(path)).substr(0, 64);
}

// The text of each page.
std::vector<std::string> pdfPages(const fs::path& pdf) {
    std::string text = commandOutput("pdftotext -q " + quoted(pdf) + " -");
    std::vector<std::string> pages;
    for (auto at = text.find('\f'); at != std::string::npos; at = text.find('\f')) {
        pages.push_back(text.substr(0, at));
        text.erase(0, at + 1);
    }
    return pages;
}

// Only the ASCII letters and digits of a text: what any PDF's text gives back unchanged, whatever
// the line breaks (emoji are drawn as pictures, and have no text to extract).
std::string lettersAndDigits(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
            result += c;
        }
    }
    return result;
}

// Rows of a CSV file (RFC 4180: quoted cells may hold commas, quotes and line breaks).
std::vector<std::vector<std::string>> readCSV(std::string text) {
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.erase(0, 3);
    }
    std::vector<std::vector<std::string>> rows(1, std::vector<std::string>(1));
    bool inQuotes = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (inQuotes) {
            if (c == '"' && at + 1 < text.size() && text[at + 1] == '"') {
                rows.back().back() += '"';
                ++at;
            } else if (c == '"') {
                inQuotes = false;
            } else {
                rows.back().back() += c;
            }
        } else if (c == '"') {
            inQuotes = true;
        } else if (c == ',') {
            rows.back().emplace_back();
        } else if (c == '\r' && at + 1 < text.size() && text[at + 1] == '\n') {
            rows.emplace_back(1);
            ++at;
        } else {
            rows.back().back() += c;
        }
    }
    rows.pop_back(); // after the last row's line end
    return rows;
}

// Rows of named cells.
std::vector<std::map<std::string, std::string>> records(const std::string& csv) {
    const auto rows = readCSV(csv);
    std::vector<std::map<std::string, std::string>> result;
    for (std::size_t row = 1; row < rows.size(); ++row) {
        EXPECT_EQ(rows[row].size(), rows[0].size());
        std::map<std::string, std::string> record;
        for (std::size_t cell = 0; cell < rows[row].size() && cell < rows[0].size(); ++cell) {
            record[rows[0][cell]] = rows[row][cell];
        }
        result.push_back(std::move(record));
    }
    return result;
}

// Rows of a Concordance load file: þ-qualified fields separated by U+0014.
std::vector<std::vector<std::string>> readLoadFile(std::string text) {
    const std::string qualifier = "\u00FE";
    EXPECT_THAT(text, StartsWith("\xEF\xBB\xBF"));
    text.erase(0, 3);
    std::vector<std::vector<std::string>> rows;
    std::size_t start = 0;
    for (auto end = text.find("\r\n"); end != std::string::npos; end = text.find("\r\n", start)) {
        std::vector<std::string> fields;
        std::string line = text.substr(start, end - start) + "\x14";
        for (auto at = line.find('\x14'); at != std::string::npos; at = line.find('\x14')) {
            const std::string field = line.substr(0, at);
            EXPECT_TRUE(field.starts_with(qualifier) && field.ends_with(qualifier)) << field;
            fields.push_back(field.substr(2, field.size() - 4));
            line.erase(0, at + 1);
        }
        rows.push_back(std::move(fields));
        start = end + 2;
    }
    EXPECT_EQ(start, text.size());
    return rows;
}

// The label at the foot of each page: the last label-shaped word on it (a cover's range and a
// native's name come before it and carry a counter or a dash after them).
std::vector<std::string> pageLabels(const fs::path& pdf, const std::string& prefix) {
    const std::regex label(prefix + "[0-9]{6,}(?![0-9-])");
    std::vector<std::string> labels;
    for (const auto& page : pdfPages(pdf)) {
        std::string last;
        for (std::sregex_iterator it(page.begin(), page.end(), label), end; it != end; ++it) {
            last = it->str();
        }
        labels.push_back(last);
    }
    return labels;
}

std::string labelOf(const std::string& prefix, int number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%06d", number);
    return prefix + digits;
}

// Every file under folder, by its path inside it.
std::set<std::string> filesUnder(const fs::path& folder) {
    std::set<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.insert(fs::relative(entry.path(), folder).string());
        }
    }
    return files;
}

class ProductionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        // The sample places its messages at local times of the system's zone.
        ::setenv("TZ", "America/New_York", 1);
        s_folder = std::make_unique<TempDir>();
        const auto info = SampleDatabase::create((s_folder->path() / "sample").string(),
                                                 Date::fromUnixSeconds(1'795'608'000));
        std::string cards;
        int card = 0;
        for (const auto& [address, name] : SampleDatabase::people()) {
            cards += "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:card-" + std::to_string(++card) +
                     "\r\nFN:" + name + "\r\n" +
                     (address.find('@') != std::string::npos ? "EMAIL:" : "TEL:") + address +
                     "\r\nEND:VCARD\r\n";
        }
        s_contacts = writeFile(s_folder->path() / "people.vcf", cards);
    }
    static void TearDownTestSuite() { s_folder.reset(); }

    void SetUp() override { fs::create_directories(out().parent_path()); }

    static fs::path sample() { return s_folder->path() / "sample"; }

    // The bench generator's history: 2,000 messages with four photos, written once.
    static std::optional<fs::path> benchHistory() {
        if (kMakeHistory.empty()) {
            return std::nullopt;
        }
        const fs::path folder = s_folder->path() / "bench";
        if (!fs::exists(folder / "chat.db")) {
            const int status = std::system((kMakeHistory +
                                            " --messages 2000 --photos 4 --photo-size 1200"
                                            " --folder " +
                                            quoted(folder) + " >/dev/null")
                                               .c_str());
            EXPECT_EQ(status, 0);
        }
        return folder;
    }

    // Global options reading history, with private temporary folders so that leftovers show.
    std::vector<std::string> reading(const fs::path& history) const {
        return {"--database",  (history / "chat.db").string(),
                "--home",      (history / "home").string(),
                "--contacts",  s_contacts,
                "--time-zone", "America/New_York",
                "--locale",    "en_US"};
    }

    RunOptions privateTemporary() const {
        RunOptions options;
        fs::create_directories(m_temp.path() / "tmp");
        options.environment["TMPDIR"] = (m_temp.path() / "tmp").string();
        options.environment["XDG_RUNTIME_DIR"] = std::nullopt;
        return options;
    }

    Outcome produce(const fs::path& history, const std::vector<std::string>& command,
                    RunOptions options = {}) const {
        auto arguments = reading(history);
        arguments.emplace_back("produce");
        arguments.insert(arguments.end(), command.begin(), command.end());
        for (const auto& [name, value] : privateTemporary().environment) {
            options.environment.emplace(name, value);
        }
        return runProgram(arguments, options);
    }

    fs::path out() const { return m_temp.path() / "out" / "production"; }

    // What a failed run left beside the production and among the private copies.
    std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        if (fs::exists(out().parent_path())) {
            names = folderEntries(out().parent_path());
        }
        const auto snapshots = m_temp.path() / "tmp" / "scrivly-snapshots";
        if (fs::exists(snapshots)) {
            for (const auto& name : folderEntries(snapshots)) {
                names.push_back("scrivly-snapshots/" + name);
            }
        }
        return names;
    }

    // A copy of the sample that a test may change.
    fs::path ownSample() const {
        const fs::path copy = m_temp.path() / "history";
        fs::copy(sample(), copy, fs::copy_options::recursive);
        return copy;
    }

    // Checks what every production must hold and answers the manifest's rows: each file listed
    // once with its size and hash, nothing else in the folder, labels running on without a gap
    // from first through the certificate, each PDF named after its first label.
    std::vector<std::map<std::string, std::string>> checkProduction(const std::string& prefix,
                                                                    int first) const {
        const auto manifest = records(readFile(out() / "manifest.csv"));
        std::set<std::string> listed{"manifest.csv"};
        int next = first;
        for (const auto& row : manifest) {
            const std::string& name = row.at("File");
            SCOPED_TRACE(name);
            EXPECT_TRUE(listed.insert(name).second);
            EXPECT_EQ(row.at("Bytes"), std::to_string(fs::file_size(out() / name)));
            EXPECT_EQ(row.at("SHA-256"), sha256sum(out() / name));
            if (row.at("Kind") != "pdf" && row.at("Kind") != "certificate") {
                continue;
            }
            const auto labels = pageLabels(out() / name, prefix);
            EXPECT_EQ(std::to_string(labels.size()), row.at("Pages"));
            for (const auto& label : labels) {
                EXPECT_EQ(label, labelOf(prefix, next++));
            }
            EXPECT_EQ(row.at("Begin Bates"), labels.front());
            EXPECT_EQ(row.at("End Bates"), labels.back());
            if (row.at("Kind") == "pdf") {
                EXPECT_EQ(name, labels.front() + ".pdf");
            }
        }
        EXPECT_EQ(filesUnder(out()), listed);
        return manifest;
    }

    // Every message of the conversation, in order, in the text of its documents in Bates order.
    void expectMessagesInOrder(const fs::path& history, const std::string& conversation,
                               const std::vector<std::map<std::string, std::string>>& manifest,
                               bool covers = true) {
        SCOPED_TRACE(conversation);
        auto arguments = reading(history);
        arguments.insert(arguments.end(), {"transcript", conversation, "--json"});
        const auto transcript = runProgram(arguments);
        ASSERT_EQ(transcript.status, 0) << transcript.err;
        std::string text;
        for (const auto& row : manifest) {
            if (row.at("Kind") == "pdf" && (row.at("Conversation ID") == conversation ||
                                            row.at("Conversation") == conversation)) {
                // A message that runs onto the next page has that page's chrome amid its text.
                const std::regex chrome(
                    "Page [0-9]+ of [0-9]+|" +
                    row.at("Begin Bates")
                        .substr(0, row.at("Begin Bates").find_first_of("0123456789")) +
                    "[0-9]{6,}");
                const auto pages = pdfPages(out() / row.at("File"));
                // A part's cover may stand between the halves of a message, too.
                for (std::size_t page = covers ? 1 : 0; page < pages.size(); ++page) {
                    text += lettersAndDigits(std::regex_replace(pages[page], chrome, ""));
                }
            }
        }
        std::size_t at = 0;
        int found = 0;
        const auto parsed = nlohmann::json::parse(transcript.out);
        for (const auto& entry : parsed["entries"]) {
            const std::string message = lettersAndDigits(entry["text"].get<std::string>());
            if (message.empty()) {
                continue;
            }
            const auto position = text.find(message, at);
            ASSERT_NE(position, std::string::npos) << "missing or out of order: " << message;
            at = position + message.size();
            ++found;
        }
        EXPECT_GT(found, 0);
    }

    static inline std::unique_ptr<TempDir> s_folder;
    static inline std::string s_contacts;
    TempDir m_temp;
};

TEST_F(ProductionTest, SampleHoldsTogether) {
    const auto outcome =
        produce(sample(), {out().string(), "--all", "--bates-prefix", "SMITH-", "--csv",
                           "--natives", "--load-file", "--custodian", "Jordan Avery"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("Produced 5 documents ("));
    EXPECT_THAT(outcome.out, HasSubstr(" in " + out().string() + "\n"));
    const auto manifest = checkProduction("SMITH-", 1);

    // The source is named by the hash of the very file.
    const std::string source = sha256sum(sample() / "chat.db");
    EXPECT_THAT(pdfPages(out() / "certificate.pdf").front(), HasSubstr(source));

    std::map<std::string, std::string> pdfOfCSV;
    std::set<std::string> conversations;
    int documents = 0;
    int natives = 0;
    for (const auto& row : manifest) {
        const std::string& name = row.at("File");
        SCOPED_TRACE(name);
        if (row.at("Kind") == "pdf") {
            ++documents;
            conversations.insert(row.at("Conversation ID"));
            const auto cover = pdfPages(out() / name).front();
            EXPECT_THAT(cover, HasSubstr("Source SHA-256\n\n" + source.substr(0, 16) + "\u2026"));
            EXPECT_THAT(cover, HasSubstr("Bates range\n\n" + row.at("Begin Bates") + " \u2013 " +
                                         row.at("End Bates")));
        } else if (row.at("Kind") == "csv") {
            // Each message's label lies in its document's range, in page order.
            std::string previous = row.at("Begin Bates");
            for (const auto& message : records(readFile(out() / name))) {
                const std::string& label = message.at("Bates");
                EXPECT_GE(label, previous);
                EXPECT_LE(label, row.at("End Bates"));
                previous = label;
            }
        } else if (row.at("Kind") == "native") {
            ++natives;
            // Byte for byte the attachment, and named on the page its label names.
            const std::string fileName = fs::path(name).filename().string();
            const std::string ownName = fileName.substr(fileName.find(' ') + 1);
            const std::string page = fileName.substr(0, fileName.find(' ') - 3);
            std::optional<fs::path> original;
            for (const auto& entry : fs::recursive_directory_iterator(sample() / "home")) {
                if (entry.path().filename() == ownName) {
                    original = entry.path();
                }
            }
            ASSERT_TRUE(original);
            EXPECT_EQ(readFile(out() / name), readFile(*original));
            bool shown = false;
            for (const auto& pdf : manifest) {
                if (pdf.at("Kind") == "pdf" && pdf.at("Begin Bates") <= page &&
                    page <= pdf.at("End Bates")) {
                    const auto pages = pdfPages(out() / pdf.at("File"));
                    const auto labels = pageLabels(out() / pdf.at("File"), "SMITH-");
                    const auto index =
                        std::find(labels.begin(), labels.end(), page) - labels.begin();
                    shown = static_cast<std::size_t>(index) < pages.size() &&
                            pages[index].find("Attachment: " + fileName) != std::string::npos;
                }
            }
            EXPECT_TRUE(shown);
        }
    }
    EXPECT_EQ(documents, 5);
    EXPECT_EQ(natives, 2); // the photo and the picture; the PDF attachment is not on disk
    EXPECT_THAT(pdfPages(out() / "certificate.pdf").front(), HasSubstr("Missing attachments"));

    const auto load = readLoadFile(readFile(out() / "loadfile.dat"));
    ASSERT_EQ(load.size(), 1U + documents + natives);
    EXPECT_EQ(load[0].size(), 14U);
    std::size_t row = 1;
    for (const auto& file : manifest) {
        if (file.at("Kind") == "pdf" || file.at("Kind") == "native") {
            ASSERT_EQ(load[row].size(), 14U);
            EXPECT_EQ(load[row][0], file.at("Begin Bates"));
            EXPECT_EQ(load[row][4], "Jordan Avery");
            EXPECT_EQ(load[row][13], file.at("SHA-256"));
            EXPECT_EQ(load[row][file.at("Kind") == "pdf" ? 11 : 12], file.at("File"));
            ++row;
        }
    }

    for (const auto& conversation : conversations) {
        expectMessagesInOrder(sample(), conversation, manifest);
    }
}

TEST_F(ProductionTest, PerDayDocumentsHoldOneDayEachInTheOrderGiven) {
    const std::vector<std::string> named{"Garden Club", "Maya Okafor"};
    const auto outcome =
        produce(sample(), {out().string(), named[0], named[1], "--per-day", "--bates-prefix", "D",
                           "--bates-start", "999995", "--no-cover", "--natives"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    // The labels gain a digit on the way; numbering runs on all the same.
    const auto manifest = checkProduction("D", 999995);

    std::vector<std::pair<std::string, std::string>> days; // conversation, day
    for (const auto& row : manifest) {
        if (row.at("Kind") == "pdf") {
            EXPECT_EQ(row.at("First Message").substr(0, 10), row.at("Last Message").substr(0, 10));
            days.emplace_back(row.at("Conversation"), row.at("First Message").substr(0, 10));
        }
    }
    // One document per conversation and day with messages, conversations in the order named.
    std::vector<std::pair<std::string, std::string>> expected;
    for (const auto& conversation : named) {
        auto arguments = reading(sample());
        arguments.insert(arguments.end(), {"export", conversation, "--csv", "-"});
        const auto csv = runProgram(arguments);
        ASSERT_EQ(csv.status, 0) << csv.err;
        const std::string title = conversation == named[0] ? "Garden Club" : "Maya Okafor";
        for (const auto& message : records(csv.out)) {
            if (expected.empty() || expected.back() != std::pair{title, message.at("Date")}) {
                expected.emplace_back(title, message.at("Date"));
            }
        }
    }
    EXPECT_EQ(days, expected);
    expectMessagesInOrder(sample(), "Maya Okafor", manifest, /*covers=*/false);
}

TEST_F(ProductionTest, EncryptedBackupIsHashedAsStoredAndItsNativesDecrypted) {
    const fs::path backups = m_temp.path() / "backups";
    const std::string password = writeFile(m_temp.path() / "password", "secret\n");
    ASSERT_EQ(runProgram({"sample", backups.string(), "--as-backup", "--password-file", password,
                          "--fast-keys"})
                  .status,
              0);
    const auto outcome =
        runProgram({"--backup", backups.string(), "--password-file", password, "produce",
                    out().string(), "Garden Club", "--bates-prefix", "B-", "--natives"},
                   privateTemporary());
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto manifest = checkProduction("B-", 1);

    // Every file of the backup that was read is named with the hash of its bytes as stored.
    std::string certificate;
    for (const auto& page : pdfPages(out() / "certificate.pdf")) {
        certificate += page;
    }
    std::set<std::string> storedHashes;
    for (const auto& entry : fs::recursive_directory_iterator(backups)) {
        if (entry.is_regular_file()) {
            storedHashes.insert(sha256sum(entry.path()));
        }
    }
    const std::regex stored("SHA-256 ([0-9a-f]{64})\\n" + backups.string());
    int files = 0;
    for (std::sregex_iterator it(certificate.begin(), certificate.end(), stored), end; it != end;
         ++it, ++files) {
        EXPECT_TRUE(storedHashes.contains((*it)[1].str())) << (*it)[1];
    }
    EXPECT_GT(files, 0);
    EXPECT_THAT(certificate, HasSubstr("sms.db (decrypted)"));

    // The picture comes out decrypted: the very bytes of the sample's own.
    const auto native = std::find_if(manifest.begin(), manifest.end(),
                                     [](const auto& row) { return row.at("Kind") == "native"; });
    ASSERT_NE(native, manifest.end());
    for (const auto& entry : fs::recursive_directory_iterator(sample() / "home")) {
        if (entry.path().filename() == "seedlings.png") {
            EXPECT_EQ(readFile(out() / native->at("File")), readFile(entry.path()));
        }
    }
}

TEST_F(ProductionTest, ConversationsWithoutMessagesInTheDaysAreNamedEmpty) {
    // Priya's two messages are older than the days chosen.
    const auto outcome = produce(sample(), {out().string(), "Priya Raman", "Garden Club", "--from",
                                            "2026-11-20", "--bates-prefix", "E-"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("Produced 1 document ("));
    EXPECT_THAT(outcome.out, HasSubstr("1 empty conversation)"));
    const auto manifest = checkProduction("E-", 1);
    EXPECT_EQ(manifest.front().at("Conversation"), "Garden Club");
    EXPECT_TRUE(std::regex_search(pdfPages(out() / "certificate.pdf").front(),
                                  std::regex("Priya Raman \\([^)]+\\): empty")));
}

TEST_F(ProductionTest, LargeDocumentsAreSplitUnderTheLimit) {
    const auto history = benchHistory();
    if (!history) {
        GTEST_SKIP() << "make-history is not built";
    }
    const std::uint64_t limit = 150'000;
    const auto outcome =
        produce(*history, {out().string(), "Maya Okafor", "Priya Raman", "--bates-prefix", "BIG-",
                           "--max-size", "150KB", "--natives", "--csv"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto manifest = checkProduction("BIG-", 1);
    int parts = 0;
    for (const auto& row : manifest) {
        if (row.at("Kind") != "pdf") {
            continue;
        }
        SCOPED_TRACE(row.at("File"));
        const auto size = std::stoull(row.at("Bytes"));
        // Larger only when a single page (after its cover) is.
        EXPECT_TRUE(size <= limit || row.at("Pages") == "2") << size;
        const auto cover = pdfPages(out() / row.at("File")).front();
        if (cover.find("Part\n") != std::string::npos) {
            ++parts;
            EXPECT_TRUE(std::regex_search(cover, std::regex("Part\n\n[0-9]+ of [0-9]+")));
        }
    }
    EXPECT_GT(parts, 2);
    for (const auto& row : manifest) {
        if (row.at("Kind") == "native") {
            const std::string fileName = fs::path(row.at("File")).filename().string();
            const auto original = *history / "home";
            bool same = false;
            for (const auto& entry : fs::recursive_directory_iterator(original)) {
                if (entry.path().filename() == fileName.substr(fileName.find(' ') + 1)) {
                    same = readFile(entry.path()) == readFile(out() / row.at("File"));
                }
            }
            EXPECT_TRUE(same) << row.at("File");
        }
    }
    expectMessagesInOrder(*history, "Priya Raman", manifest);
    expectMessagesInOrder(*history, "Maya Okafor", manifest);
}

TEST_F(ProductionTest, BadRequestsWriteNothing) {
    const fs::path empty = m_temp.path() / "empty";
    fs::create_directories(empty);
    SQLiteConnection(((empty / "chat.db").string()), false, false)
        .execute(SampleDatabase::schema());
    fs::create_directories(empty / "home");

    struct Row {
        const char* name;
        std::function<void(const fs::path& out)> setUp;
        std::vector<std::string> arguments; // after OUTDIR
        int status;
        const char* error;
        fs::path history = {};
    };
    const std::vector<Row> rows{
        {"folder with files",
         [](const fs::path& out) { writeFile(out / "keep.txt", "mine"); },
         {"--all", "--bates-prefix", "S-"},
         2,
         "isn’t empty"},
        {"a file",
         [](const fs::path& out) { writeFile(out, "mine"); },
         {"--all", "--bates-prefix", "S-"},
         2,
         "isn’t a folder"},
        {"no folder above",
         [](const fs::path& out) { fs::remove_all(out.parent_path()); },
         {"--all", "--bates-prefix", "S-"},
         1,
         "couldn’t be written"},
        {"a file above",
         [](const fs::path& out) {
             fs::remove_all(out.parent_path());
             writeFile(out.parent_path(), "mine");
         },
         {"--all", "--bates-prefix", "S-"},
         1,
         "couldn’t be written"},
        {"named twice",
         {},
         {"Garden Club", "garden club", "--bates-prefix", "S-"},
         2,
         "a second time"},
        {"unknown", {}, {"Nobody", "--bates-prefix", "S-"}, 2, "No conversation"},
        {"all and names", {}, {"--all", "Garden Club", "--bates-prefix", "S-"}, 2, "not both"},
        {"nothing named", {}, {"--bates-prefix", "S-"}, 2, "--all"},
        {"no prefix", {}, {"--all"}, 2, "--bates-prefix"},
        {"blank prefix", {}, {"--all", "--bates-prefix", "  "}, 2, "needs a Bates prefix"},
        {"slash in prefix", {}, {"--all", "--bates-prefix", "A/B"}, 2, "“/”"},
        {"size below a page",
         {},
         {"--all", "--bates-prefix", "S-", "--max-size", "5KB"},
         2,
         "below one page"},
        {"size that isn't",
         {},
         {"--all", "--bates-prefix", "S-", "--max-size", "big"},
         2,
         "isn’t a size"},
        {"days reversed",
         {},
         {"--all", "--bates-prefix", "S-", "--from", "2026-11-20", "--to", "2026-11-01"},
         2,
         "comes after"},
        {"empty history", {}, {"--all", "--bates-prefix", "S-"}, 2, "no conversations", empty},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove_all(out().parent_path());
        fs::create_directories(out().parent_path());
        if (row.setUp) {
            row.setUp(out());
        }
        std::string before;
        if (fs::is_regular_file(out().parent_path())) {
            before = "file above";
        } else if (fs::exists(out().parent_path())) {
            for (const auto& name : folderEntries(out().parent_path())) {
                before += name + ";";
            }
        }
        std::vector<std::string> arguments{out().string()};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const auto outcome = produce(row.history.empty() ? sample() : row.history, arguments);
        EXPECT_EQ(outcome.status, row.status) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(row.error));
        std::string after;
        if (fs::is_regular_file(out().parent_path())) {
            after = "file above";
        } else if (fs::exists(out().parent_path())) {
            for (const auto& name : folderEntries(out().parent_path())) {
                after += name + ";";
            }
        }
        EXPECT_EQ(after, before);
        if (fs::is_directory(out())) {
            EXPECT_EQ(folderEntries(out()), std::vector<std::string>{"keep.txt"});
        }
    }
}

TEST_F(ProductionTest, FullDiskLeavesNothing) {
    fs::create_directories(out().parent_path());
    fs::create_directories(m_temp.path() / "tmp");
    // The file size limit stands in for a full disk: the copy of the database (86 KB) fits, the
    // largest document does not. The shell ignores the signal so that writes fail instead.
    std::string command = "trap '' XFSZ; ulimit -f 240; exec '" SCRIVLY_CLI_PATH "'";
    for (const auto& argument : reading(sample())) {
        command += " '" + argument + "'";
    }
    command += " produce " + quoted(out()) + " --all --bates-prefix S- --natives 2>&1";
    int status = 0;
    const std::string output = commandOutput("TMPDIR=" + quoted(m_temp.path() / "tmp") +
                                                 " XDG_RUNTIME_DIR= sh -c \"" + command + "\"",
                                             &status);
    EXPECT_EQ(WEXITSTATUS(status), 1) << output;
    EXPECT_THAT(output, HasSubstr("couldn’t be written"));
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(ProductionTest, AttachmentsThatAreGoneOrPipesAreListedAsMissing) {
    const fs::path history = ownSample();
    for (const auto& entry : fs::recursive_directory_iterator(history / "home")) {
        if (entry.path().filename() == "IMG_4021.HEIC") {
            fs::remove(entry.path());
            ASSERT_EQ(::mkfifo(entry.path().c_str(), 0600), 0);
        } else if (entry.path().filename() == "seedlings.png") {
            fs::remove(entry.path());
        }
    }
    const auto outcome = produce(
        history, {out().string(), "--all", "--bates-prefix", "S-", "--natives", "--load-file"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("0 natives, 3 missing attachments"));
    checkProduction("S-", 1);
    EXPECT_THAT(folderEntries(out() / "natives"), IsEmpty());
    std::string certificate;
    for (const auto& page : pdfPages(out() / "certificate.pdf")) {
        certificate += page;
    }
    EXPECT_THAT(certificate, HasSubstr("IMG_4021.HEIC (not a regular file)"));
    EXPECT_THAT(certificate, HasSubstr("seedlings.png (No such file or directory)"));
}

TEST_F(ProductionTest, InterruptLeavesNothing) {
    const auto history = benchHistory();
    if (!history) {
        GTEST_SKIP() << "make-history is not built";
    }
    RunOptions options;
    options.interruptWhen = [](const std::string& err) {
        return err.find("Producing: 10%") != std::string::npos;
    };
    const auto outcome = produce(
        *history,
        {out().string(), "--all", "--bates-prefix", "S-", "--natives", "--csv", "--progress"},
        options);
    EXPECT_EQ(outcome.status, 130) << outcome.err;
    EXPECT_THAT(leftovers(), IsEmpty());
}

} // namespace
} // namespace scrivly::testing
