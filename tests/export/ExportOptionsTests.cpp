#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"

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

// Away from a Mac, the cover names what was read and a missing file is not "on this Mac".
TEST(ExportStrings, TextsAreTrueOfWhereScrivlyRuns) {
    using Kind = SourceDescription::Kind;
    SourceDescription backup;
    backup.kind = Kind::backup;
    backup.path = "/backups/0001";
    backup.deviceName = "Maya’s iPhone";
    backup.productVersion = "17.5";
    backup.backupDate = Date::fromUnixSeconds(1'795'608'000);
    const std::string unchanged =
        " Scrivly lays the messages out; it doesn’t change their wording.";
    const struct {
        const char* name;
        SourceDescription source;
        std::string expected;
    } cases[] = {
        {"own history",
         {Kind::userHistory, "/home/ann/Library/Messages/chat.db", {}, {}, {}},
#ifdef __APPLE__
         "The Messages history on this Mac, read by Scrivly."
#else
         "The Messages database chat.db in /home/ann/Library/Messages, read by Scrivly."
#endif
        },
        {"a copied database",
         {Kind::databaseFile, "/media/usb/chat.db", {}, {}, {}},
         "The Messages database chat.db in /media/usb, read by Scrivly."},
        {"the sample",
         {Kind::sample, "/tmp/s/chat.db", {}, {}, {}},
         "The demonstration history, read by Scrivly."},
        {"a backup", backup,
         "The iPhone backup of “Maya’s iPhone” (iOS 17.5), made November 25, 2026 at 12:00\u202FPM "
         "UTC, read by Scrivly."},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(ExportStrings::englishSourceText(test.source, "en_US"),
                  test.expected + unchanged);
    }
#ifdef __APPLE__
    EXPECT_EQ(ExportStrings().attachmentMissing("a.pdf"), "Attachment not on this Mac: a.pdf");
#else
    EXPECT_EQ(ExportStrings().attachmentMissing("a.pdf"),
              "Attachment not found on this computer: a.pdf");
#endif
}

TEST(ExportOptionsDeathTest, BatesNumberOverflowStops) {
    ExportOptions options;
    options.batesPrefix = "N";
    options.batesStart = std::numeric_limits<std::int64_t>::max();
    EXPECT_DEATH(options.batesLabel(2), "");
}

} // namespace
} // namespace scrivly
