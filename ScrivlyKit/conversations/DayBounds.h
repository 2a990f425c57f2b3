#pragma once

#include "ScrivlyKit/records/Date.h"

#include <optional>
#include <string>

// Whole calendar days in a time zone (Gregorian calendar, through ICU), correct across
// daylight-saving changes.
namespace scrivly::DayBounds {

// A calendar day.
struct Day {
    int year = 0;
    int month = 0; // 1 to 12
    int day = 0;   // 1 to 31

    bool operator==(const Day&) const = default;
};

// Parses "YYYY-MM-DD"; nothing when the text is not a real calendar day.
std::optional<Day> parseDay(const std::string& text);

// The calendar day that contains the date in the zone.
Day dayOf(Date date, const std::string& timeZone);

// The first instant of the day in the zone.
Date startOfDay(Day day, const std::string& timeZone);

// The start of the day plus one calendar day minus one second: the last second of the day.
Date endOfDay(Day day, const std::string& timeZone);

// Inclusive bounds for a range of whole days; either end may be open.
struct Range {
    std::optional<Date> from;
    std::optional<Date> to;
};
Range range(const std::optional<Day>& first, const std::optional<Day>& last,
            const std::string& timeZone);


} // namespace scrivly::DayBounds
