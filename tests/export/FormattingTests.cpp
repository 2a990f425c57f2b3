#include "ScrivlyKit/export/Formatting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace scrivly::Formatting {
namespace {

using ::testing::HasSubstr;
using Style = DateFormatter::Style;

// 2024-03-06 03:30:00 UTC: still March 5 in New York, already March 6 in Berlin.
const Date kNearMidnight = Date::fromUnixSeconds(1709695800);

TEST(DateFormatter, AppliesZoneAndLocale) {
    const struct {
        Style style;
        const char* zone;
        const char* locale;
        std::vector<std::string> contains;
    } cases[] = {
        {Style::day, "America/New_York", "en_US", {"Tuesday", "March 5", "2024"}},
        {Style::day, "Europe/Berlin", "en_US", {"Wednesday", "March 6", "2024"}},
        {Style::day, "Europe/Berlin", "de_DE", {"Mittwoch", "6. März 2024"}},
        {Style::time, "America/New_York", "en_US", {"10:30", "PM"}},
        {Style::time, "Europe/Berlin", "de_DE", {"04:30"}},
        {Style::shortDate, "America/New_York", "en_US", {"Mar 5, 2024"}},
        {Style::shortDate, "Europe/Berlin", "de_DE", {"06.03.2024"}},
        {Style::longDateTime, "America/New_York", "en_US", {"March 5, 2024", "10:30"}},
        {Style::longDateTime, "Europe/Berlin", "de_DE", {"6. März 2024", "04:30"}},
    };
    for (const auto& row : cases) {
        const DateFormatter formatter(row.style, row.zone, row.locale);
        const auto text = formatter.format(kNearMidnight);
        SCOPED_TRACE(std::string(row.zone) + " " + row.locale + ": " + text);
        for (const auto& part : row.contains) {
            EXPECT_THAT(text, HasSubstr(part));
        }
    }
}

// One formatter reused over many dates must give what a fresh one gives, also across daylight
// saving changes (Lord Howe moves by half an hour), before 1970 and around midnight.
TEST(DateFormatter, ReusedFormatterMatchesAFreshOne) {
    for (const char* zone : {"Australia/Lord_Howe", "America/New_York", "Asia/Kolkata"}) {
        for (const Style style : {Style::day, Style::time}) {
            const DateFormatter reused(style, zone, "en_US");
            for (double start : {1712412000.0, 1728144000.0, -86400.0 * 365 * 40}) {
                for (int step = 0; step < 200; ++step) {
                    const Date date = Date::fromUnixSeconds(start + step * 877.5);
                    ASSERT_EQ(reused.format(date), DateFormatter(style, zone, "en_US").format(date))
                        << zone << " " << date.unixSeconds();
                }
            }
        }
    }
}

TEST(Formatting, Integers) {
    EXPECT_EQ(integer(0, "en_US"), "0");
    EXPECT_EQ(integer(1234567, "en_US"), "1,234,567");
    EXPECT_EQ(integer(1234567, "de_DE"), "1.234.567");
    EXPECT_EQ(integer(-42, "en_US"), "-42");
}

TEST(Formatting, TimeZoneNames) {
    EXPECT_EQ(timeZoneName("America/New_York", "en_US"), "Eastern Time");
    EXPECT_EQ(timeZoneName("Europe/Berlin", "en_US"), "Central European Time");
    EXPECT_EQ(timeZoneName("Europe/Berlin", "de_DE"), "Mitteleuropäische Zeit");
    EXPECT_EQ(timeZoneName("UTC", "en_US"), "Coordinated Universal Time");
    EXPECT_EQ(timeZoneName("Nowhere/Bogus", "en_US"), "Nowhere/Bogus");
}

TEST(Formatting, ByteCounts) {
    const struct {
        std::int64_t bytes;
        const char* english;
        const char* german;
    } cases[] = {
        {0, "0 bytes", "0 bytes"},
        {1, "1 byte", "1 byte"},
        {999, "999 bytes", "999 bytes"},
        {1000, "1 KB", "1 KB"},
        {48213, "48 KB", "48 KB"},
        {999499, "999 KB", "999 KB"},
        {999500, "1 MB", "1 MB"}, // rounding up carries into the next unit
        {1234567, "1.2 MB", "1,2 MB"},
        {1500000000, "1.5 GB", "1,5 GB"},
        {123456789012, "123.46 GB", "123,46 GB"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.bytes);
        EXPECT_EQ(byteCount(row.bytes, "en_US"), row.english);
        EXPECT_EQ(byteCount(row.bytes, "de_DE"), row.german);
    }
}

TEST(Formatting, CivilFieldsAndISO8601) {
    const struct {
        Date date;
        const char* zone;
        const char* iso;
        int offsetSeconds;
    } cases[] = {
        {Date::fromUnixSeconds(1709665629), "America/New_York", "2024-03-05T14:07:09-05:00",
         -5 * 3600},
        {Date::fromUnixSeconds(1720098303), "America/New_York", "2024-07-04T09:05:03-04:00",
         -4 * 3600},
        {kNearMidnight, "Europe/Berlin", "2024-03-06T04:30:00+01:00", 3600},
        {kNearMidnight, "Asia/Kolkata", "2024-03-06T09:00:00+05:30", 19800},
        {kNearMidnight, "UTC", "2024-03-06T03:30:00Z", 0},
        {kNearMidnight, "Nowhere/Bogus", "2024-03-06T03:30:00Z", 0},
        // Fractions are dropped, also before the 2001 reference date.
        {Date{-0.5}, "UTC", "2000-12-31T23:59:59Z", 0},
        {Date{59.999}, "UTC", "2001-01-01T00:00:59Z", 0},
        {Date::fromUnixSeconds(951782400), "UTC", "2000-02-29T00:00:00Z", 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.iso);
        EXPECT_EQ(iso8601(row.date, row.zone), row.iso);
        EXPECT_EQ(civil(row.date, row.zone).offsetSeconds, row.offsetSeconds);
        EXPECT_EQ(Zone(row.zone).iso8601(row.date), row.iso);
    }
}

TEST(Formatting, CorruptDatesStayInRange) {
    for (const double seconds : {std::nan(""), 1e300, -1e300}) {
        SCOPED_TRACE(seconds);
        const auto iso = iso8601(Date{seconds}, "Europe/Berlin");
        ASSERT_GE(iso.size(), 20u);
        EXPECT_EQ(iso[4], '-') << iso; // a four-digit year
        EXPECT_EQ(iso[10], 'T') << iso;
        EXPECT_EQ(iso8601UTCMillis(Date{seconds}).size(), 24u);
    }
}

TEST(Formatting, ISO8601UTCMillis) {
    const struct {
        Date date;
        const char* expected;
    } cases[] = {
        {Date{0}, "2001-01-01T00:00:00.000Z"},
        {Date{0.1234}, "2001-01-01T00:00:00.123Z"},
        {Date{0.0996}, "2001-01-01T00:00:00.100Z"},
        {Date{9.9996}, "2001-01-01T00:00:10.000Z"},
        {Date{-0.25}, "2000-12-31T23:59:59.750Z"},
        {Date::fromUnixSeconds(1709665629.5), "2024-03-05T19:07:09.500Z"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(iso8601UTCMillis(row.date), row.expected);
    }
}

} // namespace
} // namespace scrivly::Formatting
