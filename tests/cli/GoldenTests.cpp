// Whole outputs of the command line on the demonstration history, compared with files kept under
// tests/data/golden: the transcripts as text, the JSON outputs, the CSV exports and the text of
// the PDF exports.
// On a difference the test writes NAME.actual beside the kept file and shows the difference.
// Regenerating is deliberate: run with SCRIVLY_UPDATE_GOLDEN=1 and read the change.

#include "tests/cli/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include "ScrivlyKit/sample/SampleDatabase.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <regex>

namespace scrivly::testing {
namespace {

namespace fs = std::filesystem;

const fs::path kGolden = SCRIVLY_GOLDEN;

std::string commandOutput(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string out;
    char buffer[4096];
    while (pipe && std::fgets(buffer, sizeof buffer, pipe.get()) != nullptr) {
        out += buffer;
    }
    return out;
}

void expectGolden(const std::string& name, std::string actual) {
    const fs::path golden = kGolden / name;
    const fs::path written = kGolden / (name + ".actual");
    if (std::getenv("SCRIVLY_UPDATE_GOLDEN") != nullptr) {
        writeFile(golden, actual);
        return;
    }
    if (readFile(golden) == actual) {
        fs::remove(written);
        return;
    }
    writeFile(written, actual);
    ADD_FAILURE() << name << " differs from the kept output; the new one is in " << written << ":\n"
                  << commandOutput("diff -u '" + golden.string() + "' '" + written.string() +
                                   "' | head -60");
}

class GoldenTest : public ::testing::Test {
protected:
    // The sample's messages lie around the day it is written; a fixed day keeps them still.
    static void SetUpTestSuite() {
        // The sample places its messages at local times of the system's zone.
        ::setenv("TZ", "America/New_York", 1);
        s_folder = std::make_unique<TempDir>();
        const auto info =
            SampleDatabase::create((s_folder->path() / "history").string(),
                                   Date::fromUnixSeconds(1'795'608'000)); // 2026-11-25
        std::string cards;
        int card = 0;
        for (const auto& [address, name] : SampleDatabase::people()) {
            cards += "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:card-" + std::to_string(++card) +
                     "\r\nFN:" + name + "\r\n" +
                     (address.find('@') != std::string::npos ? "EMAIL:" : "TEL:") + address +
                     "\r\nEND:VCARD\r\n";
        }
        s_arguments = {"--database",  info.database,
                       "--home",      info.home,
                       "--contacts",  writeFile(s_folder->path() / "people.vcf", cards),
                       "--time-zone", "America/New_York",
                       "--locale",    "en_US"};
        const auto listed = runProgram(with({"conversations", "--json"}));
        ASSERT_EQ(listed.status, 0) << listed.err;
        for (const auto& conversation : nlohmann::json::parse(listed.out)) {
            s_ids.push_back(conversation["id"]);
        }
        ASSERT_FALSE(s_ids.empty());
    }
    static void TearDownTestSuite() { s_folder.reset(); }

    static std::vector<std::string> with(std::vector<std::string> command) {
        std::vector<std::string> arguments = s_arguments;
        arguments.insert(arguments.end(), command.begin(), command.end());
        return arguments;
    }

    // The output with the history's folder written as "FOLDER".
    static std::string run(const std::vector<std::string>& command) {
        const auto outcome = runProgram(with(command));
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return withoutFolder(outcome.out);
    }

    static std::string withoutFolder(std::string text) {
        const std::string folder = s_folder->path().string();
        for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder, at)) {
            text.replace(at, folder.size(), "FOLDER");
        }
        return text;
    }

    static inline std::unique_ptr<TempDir> s_folder;
    static inline std::vector<std::string> s_arguments;
    static inline std::vector<std::string> s_ids;
};

TEST_F(GoldenTest, ConversationListsAndTranscripts) {
    std::string text = run({"conversations"});
    for (const auto& id : s_ids) {
        text += "\n" + run({"transcript", id}) + "\n" +
                run({"transcript", id, "--from", "2026-11-16", "--to", "2026-11-20"});
    }
    expectGolden("sample-transcripts.txt", text);
}

TEST_F(GoldenTest, CsvExports) {
    std::string text;
    for (const auto& id : s_ids) {
        text += run({"export", id, "--csv", "-"});
    }
    expectGolden("sample.csv", text);
}

TEST_F(GoldenTest, JsonOutputs) {
    std::string text = run({"chats", "--json"}) +
                       run({"messages", "--chats", "1,2,3,4,5,6,7", "--json"}) +
                       run({"conversations", "--json"});
    for (const auto& id : s_ids) {
        text += run({"transcript", id, "--from", "2026-11-16", "--json"});
    }
    expectGolden("sample.json", text);
}

TEST_F(GoldenTest, PdfExportsText) {
    std::string text;
    for (const auto& id : s_ids) {
        const fs::path pdf = s_folder->path() / "export.pdf";
        run({"export", id, "--pdf", pdf.string(), "--bates-prefix", "SMITH-", "--header",
             "Case 24-CV-0193"});
        // The cover tells when the export was made, which no kept file can know, and names the
        // history's temporary folder, whose length moves the line breaks around it.
        std::string pdfText = commandOutput("pdftotext -layout '" + pdf.string() + "' -");
        pdfText = std::regex_replace(pdfText, std::regex("(Exported\\s+)[^\\n]*"),
                                     "$1(the time of the export)");
        text += std::regex_replace(pdfText,
                                   std::regex("(Source\\s+)The Messages database[\\s\\S]*?wording\\."),
                                   "$1The Messages database chat.db in FOLDER/history, …");
    }
    expectGolden("sample-pdf.txt", text);
}

} // namespace
} // namespace scrivly::testing
