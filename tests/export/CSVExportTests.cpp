#include "ScrivlyKit/export/CSVExport.h"

#include <gtest/gtest.h>

namespace scrivly {
namespace {

const std::string kBOM = "\xEF\xBB\xBF";
const std::string kZWSP = "\u200B";
const std::string kHeader =
    "Date,Time,Timestamp (ISO 8601),Sender,From Me,Text,Attachments,Reactions\r\n";

Attachment attachment(const std::string& name) {
    Attachment result;
    result.name = name;
    return result;
}

ExportOptions optionsIn(const std::string& zone) {
    ExportOptions options;
    options.timeZone = zone;
    options.locale = "de_DE"; // the date and time cells must not follow the locale
    return options;
}

TEST(CSVExport, RendersEntriesByteForByte) {
    Transcript transcript;
    EXPECT_EQ(CSVExport::render(transcript, optionsIn("UTC"), ExportStrings{}), kBOM + kHeader);
    transcript.title = "Ana";

    TranscriptEntry winter; // 2024-03-05 19:07:09 UTC, standard time in New York
    winter.id = 1;
    winter.date = Date::fromUnixSeconds(1709665629);
    winter.sender = "+1 (555) 010-2233";
    winter.text = "She said \"hi\", then left";
    winter.attachments = {attachment("IMG_0001.HEIC"), attachment("notes.pdf")};
    winter.reactions = {{"Me", ReactionKind::fixed(ReactionKind::Case::loved), true},
                        {"Ana", ReactionKind::emojiReaction("\U0001F389"), false}};

    TranscriptEntry summer; // 2024-07-04 13:05:03.9 UTC, daylight saving time in New York
    summer.id = 2;
    summer.date = Date::fromUnixSeconds(1720098303) + 0.9;
    summer.sender = "Me";
    summer.isFromMe = true;
    summer.text = "line one\nline two";

    transcript.entries = {winter, summer};

    const std::string expected =
        kBOM + kHeader +
        "2024-03-05,14:07:09,2024-03-05T14:07:09-05:00,+1 (555) 010-2233,No,"
        "\"She said \"\"hi\"\", then left\",IMG_0001.HEIC; notes.pdf,"
        "Me: Loved \u00B7 Ana: \U0001F389\r\n"
        "2024-07-04,09:05:03,2024-07-04T09:05:03-04:00,Me,Yes,\"line one\nline two\",,\r\n";
    EXPECT_EQ(CSVExport::render(transcript, optionsIn("America/New_York"), ExportStrings{}),
              expected);
}

TEST(CSVExport, EscapesCells) {
    const struct {
        std::string cell;
        std::string expected;
    } cases[] = {
        {"", ""},
        {"plain text", "plain text"},
        {"=SUM(A1)", kZWSP + "=SUM(A1)"},
        {"-x", kZWSP + "-x"},
        {"-5", "-5"},
        {"+15550102233", "+15550102233"},
        {"+1 (555) 010-2233", "+1 (555) 010-2233"},
        {"+", kZWSP + "+"},
        {"@x", kZWSP + "@x"},
        {"\tx", kZWSP + "\tx"},
        {"\rx", "\"" + kZWSP + "\rx\""},
        {"a=b", "a=b"},
        {"a,b", "\"a,b\""},
        {"say \"hi\"", "\"say \"\"hi\"\"\""},
        {"two\nlines", "\"two\nlines\""},
        {"=a,b", "\"" + kZWSP + "=a,b\""},
        {"ok \xFF\xC3", "ok \uFFFD\uFFFD"}, // broken UTF-8 from the database is repaired
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.cell);
        EXPECT_EQ(CSVExport::escape(row.cell), row.expected);
    }
}

} // namespace
} // namespace scrivly
