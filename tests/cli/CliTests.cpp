// End-to-end tests: each runs the built scrivly-cli on a made-up history and checks what a user
// or another program gets back.

#include "tests/cli/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/export/ExportStrings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <regex>
#include <sys/stat.h>
#include <sys/wait.h>

namespace scrivly::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Json = nlohmann::json;

int pdfPages(const fs::path& pdf) {
    const std::string command = "pdfinfo '" + pdf.string() + "' 2>/dev/null";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    char line[512];
    while (pipe && std::fgets(line, sizeof line, pipe.get()) != nullptr) {
        int pages = 0;
        if (std::sscanf(line, "Pages: %d", &pages) == 1) {
            return pages;
        }
    }
    return 0;
}

class CliTest : public ::testing::Test {
protected:
    // One demonstration history for the whole suite: writing it takes a few seconds.
    static void SetUpTestSuite() {
        s_sample = std::make_unique<TempDir>();
        const auto outcome = runProgram({"sample", (s_sample->path() / "history").string()});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
    }
    static void TearDownTestSuite() { s_sample.reset(); }

    void SetUp() override {
        fs::create_directories(m_temp.path() / "tmp");
        fs::create_directories(m_temp.path() / "run");
    }

    static fs::path sampleDatabase() { return s_sample->path() / "history" / "chat.db"; }

    static std::vector<std::string> sampleArgs() {
        return {"--database", sampleDatabase().string(), "--home",
                (s_sample->path() / "history" / "home").string()};
    }

    // Runs the tool with private temporary and runtime folders, so that leftovers show.
    Outcome cli(std::vector<std::string> arguments, const std::vector<std::string>& before = {},
                RunOptions options = {}) const {
        arguments.insert(arguments.begin(), before.begin(), before.end());
        options.environment.try_emplace("TMPDIR", (m_temp.path() / "tmp").string());
        options.environment.try_emplace("XDG_RUNTIME_DIR", (m_temp.path() / "run").string());
        return runProgram(arguments, options);
    }

    Json json(const std::vector<std::string>& arguments,
              const std::vector<std::string>& before = sampleArgs()) const {
        const auto outcome = cli(arguments, before);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return Json::parse(outcome.out);
    }

    // Arguments for a copy of the sample database, changed by the given statements.
    std::vector<std::string> changedSample(const std::string& statements) const {
        const auto copy = m_temp.path() / "copy.db";
        fs::copy_file(sampleDatabase(), copy);
        SQLiteConnection(copy.string(), false, false).execute(statements);
        return {"--database", copy.string(), "--home", m_temp.path().string()};
    }

    TempDir m_temp;
    static std::unique_ptr<TempDir> s_sample;
};

std::unique_ptr<TempDir> CliTest::s_sample;

TEST_F(CliTest, AccessTellsWhetherTheHistoryCanBeRead) {
    const std::string missing = (m_temp.path() / "Library" / "Messages" / "chat.db").string();
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        std::string expected;
    } cases[] = {
        {"missing file", {"--database", missing}, "noHistory"},
        {"home without history", {"--home", m_temp.path().string()}, "noHistory"},
        {"sample database", sampleArgs(), "granted"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const auto outcome = cli({"access"}, test.arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, test.expected + "\n");
    }
}

TEST_F(CliTest, RunsLeaveNothingBehind) {
    const auto outcome = cli({"--sample", "conversations"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("Garden Club"));
    const auto lines = std::count(outcome.out.begin(), outcome.out.end(), '\n');
    EXPECT_EQ(lines, 6) << outcome.out; // the column titles and five conversations
    EXPECT_THAT(folderEntries(m_temp.path() / "tmp"), ::testing::IsEmpty());

    const auto failed = cli({"--sample", "transcript", "Nobody"});
    EXPECT_EQ(failed.status, 2);
    EXPECT_THAT(folderEntries(m_temp.path() / "tmp"), ::testing::IsEmpty());

    // Reads go through a private copy, in the runtime folder or else the temporary one.
    const struct {
        const char* name;
        std::optional<std::string> runtime;
        fs::path snapshots;
    } cases[] = {
        {"runtime folder", (m_temp.path() / "run").string(),
         m_temp.path() / "run" / "scrivly-snapshots"},
        {"temporary folder", std::nullopt, m_temp.path() / "tmp" / "scrivly-snapshots"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        RunOptions options;
        options.environment["XDG_RUNTIME_DIR"] = test.runtime;
        const auto outcome = cli({"conversations"}, sampleArgs(), options);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        ASSERT_TRUE(fs::is_directory(test.snapshots));
        EXPECT_EQ(fs::status(test.snapshots).permissions() & fs::perms::all, fs::perms::owner_all);
        EXPECT_THAT(folderEntries(test.snapshots), ::testing::IsEmpty());
    }
}

TEST_F(CliTest, TranscriptFindsAConversationByIdOrUniqueTitle) {
    const auto expected = json({"transcript", "g:iMessage;+;chat408812345", "--json"});
    EXPECT_EQ(expected["title"], "Garden Club");
    for (const std::string name : {"garden CLUB", "  GARDEN club "}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(json({"transcript", name, "--json"}), expected);
    }

    const auto human = cli({"transcript", "garden club"}, sampleArgs());
    ASSERT_EQ(human.status, 0) << human.err;
    EXPECT_THAT(human.out, StartsWith("Garden Club\n"));
    EXPECT_THAT(human.out, HasSubstr("── "));
    EXPECT_THAT(human.out, HasSubstr("Reactions: "));
    EXPECT_THAT(human.out, HasSubstr(ExportStrings().attachmentMissing("planting-schedule.pdf")));

    // A second chat with the same title: the title alone no longer says which.
    const auto before = changedSample(
        "INSERT INTO chat (guid, style, chat_identifier, service_name, display_name) "
        "VALUES ('iMessage;+;chat999', 43, 'chat999', 'iMessage', 'Garden Club');"
        "INSERT INTO message (guid, text, handle_id, date, is_from_me, service) "
        "VALUES ('AMBIGUOUS-1', 'Second garden club', 0, 700000000000000000, 1, 'iMessage');"
        "INSERT INTO chat_message_join VALUES ((SELECT ROWID FROM chat WHERE guid "
        "= 'iMessage;+;chat999'), (SELECT ROWID FROM message WHERE guid = 'AMBIGUOUS-1'), 0);");
    const auto outcome = cli({"transcript", "Garden Club"}, before);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, StartsWith("2 conversations are titled “Garden Club”"));
    EXPECT_THAT(outcome.err, HasSubstr("g:iMessage;+;chat999"));
    EXPECT_THAT(outcome.err, HasSubstr("g:iMessage;+;chat408812345"));

    const auto byId = cli({"transcript", "g:iMessage;+;chat999"}, before);
    EXPECT_EQ(byId.status, 0) << byId.err;
    EXPECT_THAT(byId.out, HasSubstr("Second garden club"));
}

TEST_F(CliTest, AnUnknownConversationSuggestsLikelyOnes) {
    std::vector<std::string> named = sampleArgs();
    const auto cards = writeFile(m_temp.path() / "people.vcf",
                                 "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:theo\r\nFN:Theo Lindqvist\r\n"
                                 "EMAIL:theo.lindqvist@example.com\r\nEND:VCARD\r\n");
    named.insert(named.end(), {"--contacts", cards});
    const struct {
        const char* name;
        const char* text;
        const char* suggested;
    } cases[] = {
        {"part of a title", "garden", "g:iMessage;+;chat408812345  Garden Club"},
        {"a typo", "Gardn Clb", "g:iMessage;+;chat408812345  Garden Club"},
        {"a number written otherwise", "555.010.2233", "c:p:5550102233"},
        {"an e-mail address", "Theo.Lindqvist@EXAMPLE.com", "k:theo  Theo Lindqvist"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const auto outcome = cli({"transcript", test.text}, named);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.err, StartsWith("No conversation has the id or title"));
        EXPECT_THAT(outcome.err, HasSubstr(std::string("Did you mean:\n  ") + test.suggested));
        // The hint repeats the options that found the history.
        EXPECT_THAT(outcome.err, HasSubstr("List them with: scrivly-cli --database "));
        EXPECT_THAT(outcome.err, HasSubstr("--contacts " + cards + " conversations\n"));
    }
}

// The rows themselves are the library's; here, that they reach the file or standard output.
TEST_F(CliTest, CsvAndJsonExportsWriteToAFileOrStandardOutput) {
    const auto file = m_temp.path() / "garden.csv";
    const auto outcome = cli({"export", "Garden Club", "--csv", file.string()}, sampleArgs());
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Wrote " + file.string()));
    const std::string csv = readFile(file);
    EXPECT_THAT(csv, HasSubstr("Here's the planting schedule"));

    const auto toStandardOutput = cli({"export", "Garden Club", "--csv", "-"}, sampleArgs());
    ASSERT_EQ(toStandardOutput.status, 0) << toStandardOutput.err;
    EXPECT_EQ(toStandardOutput.out, csv);

    const auto json = m_temp.path() / "garden.json";
    ASSERT_EQ(cli({"export", "Garden Club", "--json", json.string()}, sampleArgs()).status, 0);
    EXPECT_EQ(Json::parse(readFile(json)), this->json({"transcript", "Garden Club", "--json"}));
}

TEST_F(CliTest, PdfExportWritesPagesWithTheChosenOptions) {
    const auto file = m_temp.path() / "garden.pdf";
    const auto outcome = cli({"export", "Garden Club", "--pdf", file.string(), "--title",
                              " Exhibit 4 ", "--bates-prefix", "CASE-", "--paper", "A4"},
                             sampleArgs());
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(readFile(file), StartsWith("%PDF-"));
    const int pages = pdfPages(file);
    EXPECT_GE(pages, 2);

    const auto text = m_temp.path() / "garden.txt";
    ASSERT_EQ(std::system(("pdftotext '" + file.string() + "' '" + text.string() + "'").c_str()),
              0);
    EXPECT_THAT(readFile(text), HasSubstr("CASE-000001"));
    EXPECT_THAT(readFile(text), HasSubstr("Exhibit 4"));

    const auto noCover = m_temp.path() / "no-cover.pdf";
    ASSERT_EQ(cli({"export", "Garden Club", "--pdf", noCover.string(), "--no-cover"}, sampleArgs())
                  .status,
              0);
    EXPECT_EQ(pdfPages(noCover), pages - 1);

    const auto toStandardOutput = cli({"export", "Garden Club", "--pdf", "-"}, sampleArgs());
    ASSERT_EQ(toStandardOutput.status, 0) << toStandardOutput.err;
    EXPECT_THAT(toStandardOutput.out, StartsWith("%PDF-"));
}

TEST_F(CliTest, APdfIsNotWrittenToATerminal) {
    // script(1) gives the tool a terminal for its standard output.
    const std::string command = "script -qec \"'" SCRIVLY_CLI_PATH "' --database '" +
                                sampleDatabase().string() +
                                "' export 'Garden Club' --pdf -\" /dev/null 2>&1";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string out;
    char buffer[512];
    while (std::fgets(buffer, sizeof buffer, pipe.get()) != nullptr) {
        out += buffer;
    }
    const int status = ::pclose(pipe.release());
    EXPECT_EQ(WEXITSTATUS(status), 2) << out;
    EXPECT_THAT(out, HasSubstr("standard output is a terminal"));
    EXPECT_THAT(out, ::testing::Not(HasSubstr("%PDF")));
}

TEST_F(CliTest, BrokenInputsFailWithTheirReason) {
    const std::string missing = (m_temp.path() / "missing.db").string();
    const auto other = m_temp.path() / "other.db";
    SQLiteConnection(other.string(), false, false).execute("CREATE TABLE notes (text TEXT)");
    const std::string notOpened = "The database couldn’t be opened: ";
    const std::string sample = sampleDatabase().string();
    const std::string pipe = (m_temp.path() / "pipe.vcf").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string reason; // the beginning of standard error
    } cases[] = {
        {{"--database", missing, "conversations"}, 1, notOpened},
        {{"--direct", "--database", missing, "chats"}, 1, notOpened},
        {{"--database", other.string(), "conversations"},
         1,
         "The database couldn’t be read: This isn’t a Messages database (no message table).\n"},
        {{"--database", sample, "transcript", "Nobody"}, 2, "No conversation"},
        {{"transcript", "Garden Club", "--from", "2024-02-30"}, 2, "--from"},
        {{"transcript", "x", "--from", "2024-03-02", "--to", "2024-03-01"}, 2, "The first day"},
        {{"conversations", "--frobnicate"}, 2, ""},
        {{"frobnicate"}, 2, "Unknown command"},
        {{"messages"}, 2, ""},
        {{"--time-zone", "Mars/Olympus", "conversations"}, 2, "Unknown time"},
        {{"--contacts", missing, "conversations"}, 1, "The contacts file couldn’t be read: "},
        {{"--contacts", pipe, "--database", sample, "conversations"},
         1,
         "The contacts file couldn’t be read: "},
        {{"export", "x", "--csv", "a.csv", "--pdf", "a.pdf"}, 2, "Choose one"},
        {{"export", "x", "--pdf", "a.pdf", "--paper", "legal"}, 2, ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(::testing::PrintToString(test.arguments));
        const auto outcome = cli(test.arguments);
        EXPECT_EQ(outcome.status, test.status) << outcome.err;
        EXPECT_THAT(outcome.err, StartsWith(test.reason));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
}

TEST_F(CliTest, ContactsFileNamesAndMergesChats) {
    // One card claims Maya's number and Theo's e-mail address, so their chats become one.
    const auto cards =
        writeFile(m_temp.path() / "people.vcf",
                  "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:card-7\r\nFN:Sam Rivera\r\n"
                  "TEL;TYPE=CELL:(555) 010-2233\r\nEMAIL:Theo.Lindqvist@example.com\r\n"
                  "END:VCARD\r\n");
    auto before = sampleArgs();
    before.insert(before.end(), {"--contacts", cards});
    const auto list = json({"conversations", "--json"}, before);
    EXPECT_EQ(list.size(), 4U);
    EXPECT_TRUE(std::any_of(list.begin(), list.end(), [](const Json& item) {
        return item["id"] == "k:card-7" && item["title"] == "Sam Rivera";
    })) << list.dump();
}

TEST_F(CliTest, FailedOrCancelledExportLeavesTheDestinationAlone) {
    const auto folder = m_temp.path() / "exports";
    fs::create_directories(folder);
    const auto existing = folder / "garden.pdf";
    writeFile(existing, "earlier export");

    const struct {
        const char* name;
        std::vector<std::string> arguments;
    } cases[] = {
        {"unknown conversation", {"export", "Nobody", "--pdf", existing.string()}},
        {"missing folder", {"export", "Garden Club", "--pdf", (folder / "no/such.pdf").string()}},
        {"destination is a folder", {"export", "Garden Club", "--csv", folder.string()}},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const auto outcome = cli(test.arguments, sampleArgs());
        EXPECT_NE(outcome.status, 0);
        EXPECT_EQ(readFile(existing), "earlier export");
        EXPECT_THAT(folderEntries(folder), ::testing::ElementsAre("garden.pdf"));
    }

    // An interrupt, with enough messages that the layout is still running when it arrives.
    const auto before = changedSample(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
        "INSERT INTO message (guid, text, handle_id, date, is_from_me, service) "
        "SELECT 'BULK-' || i, 'Message number ' || i || ' with a little more text to lay "
        "out on the page.', 0, 700000000000000000 + i * 60000000000, 1, 'iMessage' FROM n;"
        "INSERT INTO chat_message_join SELECT 3, ROWID, date FROM message "
        "WHERE guid LIKE 'BULK-%';");
    RunOptions options;
    options.interruptWhen = [](const std::string& err) { return err.find("1%") != err.npos; };
    const auto outcome =
        cli({"export", "Garden Club", "--pdf", existing.string(), "--progress"}, before, options);
    // Ended by the interrupt: 128 + SIGINT.
    EXPECT_EQ(outcome.status, 130) << outcome.err;
    EXPECT_EQ(readFile(existing), "earlier export");
    EXPECT_THAT(folderEntries(folder), ::testing::ElementsAre("garden.pdf"));
}

TEST_F(CliTest, SampleCommandWritesAHistoryButNeverOverOtherFiles) {
    const auto folder = m_temp.path() / "demo";
    const auto outcome = cli({"sample", folder.string()});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Database: " + (folder / "chat.db").string() + "\n" +
                                        "Home:     " + (folder / "home").string() + "\n"));
    EXPECT_EQ(cli({"sample", folder.string()}).status, 0) << "an earlier sample is replaced";

    const auto precious = m_temp.path() / "precious";
    fs::create_directories(precious);
    writeFile(precious / "notes.txt", "keep me");
    const auto refused = cli({"sample", precious.string()});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(readFile(precious / "notes.txt"), "keep me");
}

} // namespace
} // namespace scrivly::testing
