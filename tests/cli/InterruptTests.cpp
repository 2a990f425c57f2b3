// The command line against attachments that are no pictures, and against interrupts: each test
// runs the built scrivly-cli on its own copy of the demonstration history.

#include "tests/cli/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include "ScrivlyKit/database/SQLiteConnection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <sys/stat.h>

namespace scrivly::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Maya's conversation holds the photo IMG_4021.HEIC, the Garden Club's the picture seedlings.png.
constexpr const char* kMaya = "c:p:5550102233";
constexpr const char* kGardenClub = "Garden Club";

std::string pdfText(const fs::path& pdf) {
    const std::string command = "pdftotext -q '" + pdf.string() + "' - 2>/dev/null";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string text;
    char buffer[4096];
    std::size_t count = 0;
    while (pipe && (count = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0) {
        text.append(buffer, count);
    }
    return text;
}

std::string bigEndian(std::uint32_t value) {
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
            static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string pngChunk(const std::string& type, const std::string& data) {
    const std::string body = type + data;
    const auto crc = ::crc32(::crc32(0, nullptr, 0), reinterpret_cast<const Bytef*>(body.data()),
                             static_cast<uInt>(body.size()));
    return bigEndian(static_cast<std::uint32_t>(data.size())) + body +
           bigEndian(static_cast<std::uint32_t>(crc));
}

const std::string kPNGSignature("\x89PNG\r\n\x1a\n", 8);

// A side × side picture of 16-bit RGBA zeros: about 2 MB on disk, but over a gigabyte to inflate
// and seconds to decode, during which its worker can't be stopped. A row compressed with a full
// flush ends byte-aligned and needs nothing before it, so one compressed row serves for all.
std::string slowPNG(std::uint32_t side) {
    std::string row(1 + std::size_t{side} * 8, '\0'); // filter "none", then the pixels
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, static_cast<uLong>(row.size())) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(row.data());
    stream.avail_in = static_cast<uInt>(row.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FULL_FLUSH);
    packed.resize(packed.size() - stream.avail_out);
    deflateEnd(&stream);

    std::string data("\x78\x01", 2);
    for (std::uint32_t line = 0; line < side; ++line) {
        data += packed;
    }
    data += std::string("\x03\x00", 2); // an empty last block
    // The Adler-32 of n zero bytes: its sum stays 1 and its running total is n.
    const auto total = std::uint64_t{side} * row.size();
    data += bigEndian(static_cast<std::uint32_t>((total % 65521) << 16 | 1));
    const std::string header = bigEndian(side) + bigEndian(side) + std::string("\x10\x06\0\0\0", 5);
    return kPNGSignature + pngChunk("IHDR", header) + pngChunk("IDAT", data) + pngChunk("IEND", "");
}

class InterruptTest : public ::testing::Test {
protected:
    // Writing the demonstration history takes a few seconds; each test copies it.
    static void SetUpTestSuite() {
        s_sample = std::make_unique<TempDir>();
        ASSERT_EQ(runProgram({"sample", (s_sample->path() / "history").string()}).status, 0);
    }
    static void TearDownTestSuite() { s_sample.reset(); }

    void SetUp() override {
        fs::copy(s_sample->path() / "history", history(), fs::copy_options::recursive);
        fs::create_directories(m_temp.path() / "tmp");
        fs::create_directories(m_temp.path() / "out");
    }

    fs::path history() const { return m_temp.path() / "history"; }
    fs::path output() const { return m_temp.path() / "out" / "export.pdf"; }

    // The attachment's file, replaced by what make puts at its path.
    void replaceAttachment(const std::string& name,
                           const std::function<void(const fs::path&)>& make) {
        for (const auto& entry : fs::recursive_directory_iterator(history() / "home")) {
            if (entry.path().filename() == name) {
                fs::remove(entry.path());
                make(entry.path());
                return;
            }
        }
        FAIL() << "no attachment " << name;
    }

    // Exports to output() with private temporary folders, so that leftovers show.
    Outcome exportPDF(const std::string& conversation, RunOptions options = {},
                      const std::vector<std::string>& more = {}) const {
        options.environment["TMPDIR"] = (m_temp.path() / "tmp").string();
        options.environment["XDG_RUNTIME_DIR"] = std::nullopt;
        std::vector<std::string> arguments{"--database", (history() / "chat.db").string(),
                                           "--home",     (history() / "home").string(),
                                           "export",     conversation,
                                           "--pdf",      output().string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runProgram(arguments, options);
    }

    // What runs left beside the output and among the private copies.
    std::vector<std::string> leftovers() const {
        auto names = folderEntries(m_temp.path() / "out");
        const auto snapshots = m_temp.path() / "tmp" / "scrivly-snapshots";
        if (fs::exists(snapshots)) {
            for (const auto& name : folderEntries(snapshots)) {
                names.push_back("scrivly-snapshots/" + name);
            }
        }
        return names;
    }

    TempDir m_temp;
    static std::unique_ptr<TempDir> s_sample;
};

std::unique_ptr<TempDir> InterruptTest::s_sample;

TEST_F(InterruptTest, AttachmentsThatAreNoPicturesAreListedAsFilesPromptlyAndQuietly) {
    const struct {
        const char* name;
        const char* conversation;
        const char* file;
        std::function<void(const fs::path&)> make;
    } cases[] = {
        {"a pipe nobody writes to", kMaya, "IMG_4021.HEIC",
         [](const fs::path& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
        {"a PNG with broken chunks", kGardenClub, "seedlings.png",
         [](const fs::path& path) {
             writeFile(path, kPNGSignature + std::string("\0\0\0\x05\x01\x02\x03\x04", 8) +
                                 std::string(64, '\xff'));
         }},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        replaceAttachment(test.file, test.make);
        const auto started = std::chrono::steady_clock::now();
        const auto outcome = exportPDF(test.conversation);
        EXPECT_LT(std::chrono::steady_clock::now() - started, 5s);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "") << "only the tool speaks";
        EXPECT_THAT(pdfText(output()), HasSubstr(test.file));
    }
}

TEST_F(InterruptTest, TerminateEndsWithinTwoSecondsAndLeavesNothing) {
    // Enough messages that reading and laying them out take seconds, and a photo whose decoding
    // takes seconds more.
    SQLiteConnection((history() / "chat.db").string(), false, false)
        .execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000) "
                 "INSERT INTO message (guid, text, handle_id, date, is_from_me, service) "
                 "SELECT 'BULK-' || i, 'Message number ' || i, 0, "
                 "700000000000000000 + i * 60000000000, 1, 'iMessage' FROM n;"
                 "INSERT INTO chat_message_join SELECT 1, ROWID, date FROM message "
                 "WHERE guid LIKE 'BULK-%';");
    replaceAttachment("IMG_4021.HEIC",
                      [](const fs::path& path) { writeFile(path, slowPNG(14000)); });

    const struct {
        const char* name;
        std::optional<std::chrono::milliseconds> after;
        std::function<bool(const std::string&)> when;
    } cases[] = {
        {"while the history is read", 150ms, {}},
        // The photo's worker starts as the layout does, at 0%.
        {"while a worker decodes the photo", std::nullopt,
         [](const std::string& err) { return err.find("Making the PDF: 2%") != err.npos; }},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        RunOptions options;
        options.interruptSignal = SIGTERM;
        options.interruptAfter = test.after;
        options.interruptWhen = test.when;
        const auto outcome = exportPDF(kMaya, options, {"--progress"});
        EXPECT_EQ(outcome.status, 128 + SIGTERM) << outcome.err;
        ASSERT_TRUE(outcome.afterInterrupt.has_value());
        EXPECT_LT(*outcome.afterInterrupt, 2s);
        EXPECT_THAT(leftovers(), IsEmpty());
    }
}

} // namespace
} // namespace scrivly::testing
