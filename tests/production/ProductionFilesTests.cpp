// The listings of a production read back as other programs read them: the manifest as CSV, the
// load file by its delimiters, the CSV's Bates column.

#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/production/ProductionFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace scrivly::testing {
namespace {

const std::string kQualifier = "\u00FE";
const std::string kSeparator = "\x14";

std::vector<std::string> split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (auto at = text.find(separator); at != std::string::npos;
         at = text.find(separator, start)) {
        parts.push_back(text.substr(start, at - start));
        start = at + separator.size();
    }
    parts.push_back(text.substr(start));
    return parts;
}

// Rows of qualified fields, as a load-file reader takes them.
std::vector<std::vector<std::string>> readLoadFile(std::string text) {
    EXPECT_EQ(text.substr(0, 3), "\xEF\xBB\xBF");
    text.erase(0, 3);
    std::vector<std::vector<std::string>> rows;
    auto lines = split(text, "\r\n");
    EXPECT_EQ(lines.back(), "");
    lines.pop_back();
    for (const auto& line : lines) {
        std::vector<std::string> fields;
        for (const auto& field : split(line, kSeparator)) {
            EXPECT_TRUE(field.starts_with(kQualifier) && field.ends_with(kQualifier)) << field;
            fields.push_back(field.substr(kQualifier.size(), field.size() - 2 * kQualifier.size()));
        }
        rows.push_back(std::move(fields));
    }
    return rows;
}

ProducedFile file(ProducedFile::Kind kind, std::string path, std::string begin, std::string end) {
    ProducedFile result;
    result.kind = kind;
    result.path = std::move(path);
    result.beginBates = std::move(begin);
    result.endBates = std::move(end);
    result.bytes = 1234;
    result.sha256 = std::string(64, 'a');
    return result;
}

// Two documents, the first with a native, titled with everything a delimiter could trip on.
ProductionReport report() {
    ProductionReport report;
    ProducedDocument first;
    first.conversation = "Book club, \"the\" one\nþ\x14";
    first.conversationID = "g:1";
    first.participants = {"Ann", "Bo"};
    first.pdf = file(ProducedFile::Kind::pdf, "S-000001.pdf", "S-000001", "S-000004");
    first.pdf.pages = 4;
    first.pdf.messages = 10;
    first.pdf.firstMessage = Date::fromUnixSeconds(1'709'647'200); // 2024-03-05 14:00 UTC
    first.pdf.lastMessage = Date::fromUnixSeconds(1'709'650'800);
    first.csv = file(ProducedFile::Kind::csv, "S-000001.csv", "S-000001", "S-000004");
    first.natives.push_back(file(ProducedFile::Kind::native, "natives/S-000003-01 a.png",
                                 "S-000003-01", "S-000003-01"));
    ProducedDocument second;
    second.conversation = "=cmd";
    second.conversationID = "c:p:1";
    second.pdf = file(ProducedFile::Kind::pdf, "S-000005.pdf", "S-000005", "S-000005");
    report.documents = {first, second};
    report.loadFile = file(ProducedFile::Kind::loadFile, "loadfile.dat", "", "");
    report.certificate =
        file(ProducedFile::Kind::certificate, "certificate.pdf", "S-000006", "S-000007");
    return report;
}

TEST(ProductionFiles, LoadFileReadsBackByItsDelimiters) {
    const auto rows =
        readLoadFile(ProductionFiles::loadFile(report(), "Jordan", "America/New_York"));
    ASSERT_EQ(rows.size(), 4U); // header, document, its native, document
    const std::vector<std::string> header{"BEGBATES",   "ENDBATES",     "BEGATTACH",    "ENDATTACH",
                                          "CUSTODIAN",  "CONVERSATION", "PARTICIPANTS", "DATEFIRST",
                                          "DATELAST",   "MESSAGES",     "PAGES",        "FILEPATH",
                                          "NATIVEPATH", "SHA256"};
    EXPECT_EQ(rows[0], header);
    for (const auto& row : rows) {
        EXPECT_EQ(row.size(), header.size());
    }
    EXPECT_EQ(rows[1][0], "S-000001");
    EXPECT_EQ(rows[1][4], "Jordan");
    // Qualifiers, separators and line breaks inside a value can't end it.
    EXPECT_EQ(rows[1][5], "Book club, \"the\" one\u00AE\u00DE ");
    EXPECT_EQ(rows[1][6], "Ann; Bo");
    EXPECT_EQ(rows[1][7], "2024-03-05T09:00:00-05:00");
    EXPECT_EQ(rows[1][11], "S-000001.pdf");
    // A native's family is its document.
    EXPECT_EQ((std::vector<std::string>{rows[2][0], rows[2][1], rows[2][2], rows[2][3]}),
              (std::vector<std::string>{"S-000003-01", "S-000003-01", "S-000001", "S-000004"}));
    EXPECT_EQ(rows[2][12], "natives/S-000003-01 a.png");
    EXPECT_EQ(rows[3][5], "=cmd");
}

TEST(ProductionFiles, ManifestListsEveryFileOnce) {
    const std::string manifest = ProductionFiles::manifest(report(), "UTC");
    auto lines = split(manifest, "\r\n");
    ASSERT_EQ(lines.back(), "");
    lines.pop_back();
    EXPECT_EQ(lines[0], "File,Kind,Conversation,Conversation ID,Begin Bates,End Bates,Pages,"
                        "Messages,First Message,Last Message,Bytes,SHA-256");
    // pdf, csv, native, pdf, load file, certificate.
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_TRUE(lines[1].starts_with("S-000001.pdf,pdf,\"Book club, \"\"the\"\" one\n"));
    EXPECT_TRUE(lines[1].ends_with(",S-000001,S-000004,4,10,2024-03-05T14:00:00Z,"
                                   "2024-03-05T15:00:00Z,1234," +
                                   std::string(64, 'a')));
    EXPECT_TRUE(lines[3].starts_with("natives/S-000003-01 a.png,native,"));
    // A title that a spreadsheet would run stays text.
    EXPECT_TRUE(lines[4].starts_with("S-000005.pdf,pdf,\u200B=cmd,c:p:1,"));
    EXPECT_TRUE(lines[5].starts_with("loadfile.dat,load file,,,,,"));
    EXPECT_TRUE(lines[6].starts_with("certificate.pdf,certificate,,,S-000006,S-000007,"));
}

TEST(ProductionFiles, CSVGetsTheBatesColumnLast) {
    Transcript transcript;
    for (const char* text : {"one", "two", "three"}) {
        TranscriptEntry entry;
        entry.date = Date::fromUnixSeconds(1'709'647'200);
        entry.sender = "Ann";
        entry.text = text;
        transcript.entries.push_back(entry);
    }
    ExportOptions options;
    options.timeZone = "UTC";
    const std::string plain = CSVExport::render(transcript, options, ExportStrings());
    const std::string withBates = CSVExport::render(transcript, options, ExportStrings(),
                                                    CSVExport::Column{"Bates", {"S-1", "S-2"}});
    auto plainRows = split(plain, "\r\n");
    auto rows = split(withBates, "\r\n");
    ASSERT_EQ(rows.size(), plainRows.size());
    EXPECT_EQ(rows[0], plainRows[0] + ",Bates");
    EXPECT_EQ(rows[1], plainRows[1] + ",S-1");
    EXPECT_EQ(rows[2], plainRows[2] + ",S-2");
    EXPECT_EQ(rows[3], plainRows[3] + ","); // cells ran out
}

} // namespace
} // namespace scrivly::testing
