#include "ScrivlyKit/export/ExportOptions.h"

#include <gtest/gtest.h>

#include <limits>

namespace scrivly {
namespace {

// Settings store the raw value, so it must read back and stay case-sensitive.
TEST(PaperSize, RawValuesRoundTrip) {
    for (const auto paper : Paper::kAll) {
        SCOPED_TRACE(Paper::rawValue(paper));
        EXPECT_EQ(Paper::fromRawValue(Paper::rawValue(paper)), paper);
    }
    EXPECT_EQ(Paper::fromRawValue("A4"), std::nullopt);
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
        {"no prefix", "", 1, 6, 1, std::nullopt},
        {"blank prefix", "\t \t", 1, 6, 1, std::nullopt},
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

} // namespace
} // namespace scrivly
