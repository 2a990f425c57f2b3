#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/text/Regional.h"

#include <gtest/gtest.h>

#include <unicode/timezone.h>

#include <cstdio>
#include <ctime>
#include <memory>

using namespace scrivly;
using DayBounds::Day;

namespace {

constexpr double kHour = 3600;
constexpr double kDay = 24 * kHour;

Date utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    return Date::fromUnixSeconds(static_cast<double>(::timegm(&fields)));
}

Day nextDay(Day day) {
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", day.year, day.month, day.day + 1);
    if (DayBounds::parseDay(text)) {
        return Day{day.year, day.month, day.day + 1};
    }
    return day.month == 12 ? Day{day.year + 1, 1, 1} : Day{day.year, day.month + 1, 1};
}

} // namespace

TEST(DayBounds, ParsesOnlyRealDaysInTheStrictForm) {
    const std::vector<std::pair<std::string, Day>> days = {
        {"2024-03-10", Day{2024, 3, 10}},
        {"2024-02-29", Day{2024, 2, 29}},
        {"2000-02-29", Day{2000, 2, 29}},
        {"0001-01-01", Day{1, 1, 1}},
        {"9999-12-31", Day{9999, 12, 31}},
        {"1582-10-10", Day{1582, 10, 10}}, // Gregorian throughout
    };
    for (const auto& [text, day] : days) {
        SCOPED_TRACE(text);
        EXPECT_EQ(DayBounds::parseDay(text), day);
    }
    for (const auto* text :
         {"2023-02-29", "1900-02-29", "2024-04-31", "2024-13-01", "2024-00-10", "2024-01-00",
          "0000-01-01", "2024-4-01", "2024-04-1", " 2024-04-01", "2024-04-01 ", "2024/04/01",
          "+024-04-01", "2024-0a-01", "20240401", ""}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(DayBounds::parseDay(text), std::nullopt);
    }
}

TEST(DayBounds, DaysLastTwentyThreeTwentyFourOrTwentyFiveHours) {
    struct Row {
        const char* zone;
        Day day;
        Date start;
        double length; // end minus start
    };
    const std::vector<Row> rows = {
        {"America/New_York", {2024, 3, 10}, utc(2024, 3, 10, 5), 23 * kHour - 1},
        {"America/New_York", {2024, 11, 3}, utc(2024, 11, 3, 4), 25 * kHour - 1},
        {"America/New_York", {2024, 7, 4}, utc(2024, 7, 4, 4), kDay - 1},
        {"Europe/London", {2024, 3, 31}, utc(2024, 3, 31, 0), 23 * kHour - 1},
        {"UTC", {2024, 2, 29}, utc(2024, 2, 29), kDay - 1},
        {"Asia/Kolkata", {2024, 1, 1}, utc(2023, 12, 31, 18, 30), kDay - 1},
        {"Australia/Lord_Howe", {2024, 4, 7}, utc(2024, 4, 6, 13), 24.5 * kHour - 1},
        // Midnight skipped: the day starts at 01:00 and is 23 hours long.
        {"America/Sao_Paulo", {2018, 11, 4}, utc(2018, 11, 4, 3), 23 * kHour - 1},
        // Clocks fall back at midnight to 23:00 the day before: a 25-hour day.
        {"America/Sao_Paulo", {2019, 2, 16}, utc(2019, 2, 16, 2), 25 * kHour - 1},
        {"America/Havana", {2024, 3, 10}, utc(2024, 3, 10, 5), 23 * kHour - 1},
        // Clocks fall back from 01:00 to 00:00: the day starts at the first of two midnights.
        {"America/Havana", {2024, 11, 3}, utc(2024, 11, 3, 4), 25 * kHour - 1},
        {"Not/AZone", {2024, 3, 10}, utc(2024, 3, 10), kDay - 1}, // unknown zones act as UTC
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.zone) + " " + std::to_string(row.day.month) + "/" +
                     std::to_string(row.day.day));
        const auto start = DayBounds::startOfDay(row.day, row.zone);
        const auto end = DayBounds::endOfDay(row.day, row.zone);
        EXPECT_EQ(start, row.start);
        EXPECT_EQ(end - start, row.length);
        EXPECT_EQ(DayBounds::dayOf(start, row.zone), row.day);
        EXPECT_EQ(DayBounds::dayOf(end, row.zone), row.day);
        EXPECT_NE(DayBounds::dayOf(start - 1, row.zone), row.day);
        EXPECT_NE(DayBounds::dayOf(end + 1, row.zone), row.day);
    }
}

TEST(DayBounds, ConsecutiveDaysTileWithoutGapsOrOverlaps) {
    for (const auto* zone : {"America/New_York", "America/Sao_Paulo", "Europe/London",
                             "Australia/Lord_Howe", "Asia/Tehran", "Pacific/Chatham"}) {
        for (const int year : {2018, 2024}) {
            SCOPED_TRACE(std::string(zone) + " " + std::to_string(year));
            Day day{year, 1, 1};
            int failures = 0;
            while (day.year == year && failures < 3) {
                const auto next = nextDay(day);
                const auto end = DayBounds::endOfDay(day, zone);
                if (end + 1 != DayBounds::startOfDay(next, zone) ||
                    DayBounds::dayOf(end, zone) != day) {
                    ++failures;
                    ADD_FAILURE() << day.year << "-" << day.month << "-" << day.day;
                }
                day = next;
            }
        }
    }
}

TEST(DayBounds, RangeLeavesOpenSidesOpen) {
    const auto both = DayBounds::range(Day{2024, 3, 9}, Day{2024, 3, 10}, "America/New_York");
    EXPECT_EQ(both.from, utc(2024, 3, 9, 5));
    EXPECT_EQ(both.to, utc(2024, 3, 11, 3, 59, 59));
    const auto open = DayBounds::range(std::nullopt, std::nullopt, "UTC");
    EXPECT_EQ(open.from, std::nullopt);
    EXPECT_EQ(open.to, std::nullopt);
    const auto fromOnly = DayBounds::range(Day{2024, 3, 9}, std::nullopt, "UTC");
    EXPECT_EQ(fromOnly.from, utc(2024, 3, 9));
    EXPECT_EQ(fromOnly.to, std::nullopt);
}

TEST(DayBounds, TheLastSecondOfTheDayIsInsideTheNextMidnightIsNot) {
    const std::string zone = "America/New_York";
    const auto bounds = DayBounds::range(Day{2024, 11, 3}, Day{2024, 11, 3}, zone);
    auto at = [](std::int64_t id, Date date) {
        Message message;
        message.id = id;
        message.guid = "G" + std::to_string(id);
        message.date = date;
        message.isFromMe = true;
        message.text = "at " + std::to_string(id);
        return message;
    };
    const std::vector<Message> messages = {
        at(1, utc(2024, 11, 3, 3, 59, 59)),       // 23:59:59 the day before
        at(2, utc(2024, 11, 3, 4)),               // 00:00:00
        at(3, utc(2024, 11, 4, 4, 59, 59)),       // 23:59:59 (EST)
        at(4, utc(2024, 11, 4, 4, 59, 59) + 0.5), // inside the last second: deliberately out
        at(5, utc(2024, 11, 4, 5)),               // 00:00:00 the next day
    };
    const auto transcript =
        Transcript::build("t", {}, messages, bounds.from, bounds.to, "Me", NameBook());
    ASSERT_EQ(transcript.entries.size(), 2U);
    EXPECT_EQ(transcript.entries[0].id, 2);
    EXPECT_EQ(transcript.entries[1].id, 3);
}

TEST(DayBounds, SystemTimeZoneFallsBackToUTC) {
    const std::unique_ptr<icu::TimeZone> original(icu::TimeZone::createDefault());
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Europe/Paris"));
    EXPECT_EQ(Regional::systemTimeZone(), "Europe/Paris");
    icu::TimeZone::setDefault(icu::TimeZone::getUnknown());
    EXPECT_EQ(Regional::systemTimeZone(), "UTC");
    icu::TimeZone::setDefault(*original);
    EXPECT_FALSE(Regional::systemTimeZone().empty());
}
