#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/export/ReactionSummary.h"

#include <gtest/gtest.h>

#include <limits>

namespace scrivly {
namespace {

TEST(PaperSize, SizesAndRawValues) {
    EXPECT_EQ(Paper::size(PaperSize::a4).width, 595.28);
    EXPECT_EQ(Paper::size(PaperSize::a4).height, 841.89);
    for (const auto paper : Paper::kAll) {
        SCOPED_TRACE(Paper::rawValue(paper));
        EXPECT_EQ(Paper::fromRawValue(Paper::rawValue(paper)), paper);
    }
    EXPECT_EQ(Paper::fromRawValue("A4"), std::nullopt);
}

TEST(ExportOptions, Defaults) {
    const ExportOptions options;
    EXPECT_FALSE(options.timeZone.empty());
    EXPECT_EQ(options.locale, systemLocale());
    EXPECT_EQ(options.batesLabel(1), std::nullopt);
}

TEST(ExportOptions, BatesLabels) {
    const struct {
        const char* name;
        std::string prefix;
        std::int64_t start;
        std::int64_t digits;
        std::int64_t page;
        std::optional<std::string> expected;
    } cases[] = {
        {"blank prefix", "  ", 1, 6, 1, std::nullopt},
        {"tab prefix", "\t \t", 1, 6, 1, std::nullopt},
        {"first page", "ABC", 1, 6, 1, "ABC000001"},
        {"twelfth page", "SMITH-", 1, 6, 12, "SMITH-000012"},
        {"longer than digits", "ABC", 995, 2, 10, "ABC1004"},
        {"exactly digits", "ABC", 999990, 6, 10, "ABC999999"},
        {"negative start counts as zero", "ABC", -5, 6, 1, "ABC000000"},
        {"zero digits", "X", 7, 0, 1, "X7"},
        {"outer blanks trimmed, inner kept", " \tDOE  v ACME \t", 1, 6, 2, "DOE  v ACME000002"},
        {"largest number", "N", std::numeric_limits<std::int64_t>::max(), 1, 1,
         "N9223372036854775807"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        ExportOptions options;
        options.batesPrefix = row.prefix;
        options.batesStart = row.start;
        options.batesDigits = row.digits;
        EXPECT_EQ(options.batesLabel(row.page), row.expected);
    }
}

TEST(ExportOptionsDeathTest, BatesNumberOverflowStops) {
    ExportOptions options;
    options.batesPrefix = "N";
    options.batesStart = std::numeric_limits<std::int64_t>::max();
    EXPECT_DEATH(options.batesLabel(2), "");
}

TEST(ExportStrings, EnglishDefaults) {
    const ExportStrings strings;
    EXPECT_EQ(strings.pageOf(3, 12), "Page 3 of 12");
    EXPECT_EQ(strings.pageOf(8888, 12345), "Page 8888 of 12345");
    EXPECT_EQ(strings.me, "Me");
    EXPECT_EQ(strings.timeZone, "Times shown in");
    EXPECT_EQ(strings.sourceText, "The Messages history on this Mac, read by Scrivly. Scrivly "
                                  "lays the messages out; it doesn\u2019t change their wording.");
    EXPECT_EQ(strings.includedDates("Mar 1 – Mar 9"), "Included: Mar 1 – Mar 9");
    EXPECT_EQ(strings.attachmentMissing("IMG_1.HEIC"), "Attachment not on this Mac: IMG_1.HEIC");
    EXPECT_EQ(strings.attachmentLine("notes.pdf", "48 KB"), "Attachment: notes.pdf (48 KB)");
    EXPECT_EQ(strings.csvHeaders,
              (std::vector<std::string>{"Date", "Time", "Timestamp (ISO 8601)", "Sender", "From Me",
                                        "Text", "Attachments", "Reactions"}));
    EXPECT_EQ(strings.reactionName(ReactionKind::fixed(ReactionKind::Case::emphasized)),
              "Emphasized");
    // A custom emoji is its own name, in every language.
    EXPECT_EQ(strings.reactionName(ReactionKind::emojiReaction("\U0001F9D1\u200D\U0001F373")),
              "\U0001F9D1\u200D\U0001F373");
    EXPECT_EQ(strings.yes, "Yes");
    EXPECT_EQ(strings.no, "No");
}

TEST(ReactionSummary, JoinsWhoAndNameWithMiddleDots) {
    const ExportStrings strings;
    EXPECT_EQ(reactionSummary({}, strings), "");
    EXPECT_EQ(
        reactionSummary({{"Ana", ReactionKind::fixed(ReactionKind::Case::liked), false}}, strings),
        "Ana: Liked");
    EXPECT_EQ(reactionSummary({{"Ana", ReactionKind::fixed(ReactionKind::Case::liked), false},
                               {"Me", ReactionKind::emojiReaction("\U0001F44D"), true},
                               {"Bo", ReactionKind::fixed(ReactionKind::Case::questioned), false}},
                              strings),
              "Ana: Liked \u00B7 Me: \U0001F44D \u00B7 Bo: Questioned");
}

} // namespace
} // namespace scrivly
