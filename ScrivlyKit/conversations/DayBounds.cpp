#include "ScrivlyKit/conversations/DayBounds.h"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>
#include <unicode/ucal.h>
#include <unicode/unistr.h>

#include <memory>
#include <stdexcept>

namespace scrivly::DayBounds {

namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

// A Gregorian calendar in the zone; an unknown zone name behaves as UTC (ICU's "Etc/Unknown").
std::unique_ptr<icu::GregorianCalendar> calendarIn(const std::string& timeZone) {
    UErrorCode status = U_ZERO_ERROR;
    auto calendar = std::make_unique<icu::GregorianCalendar>(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZone)), status);
    // Purely Gregorian, so that days before 1582 mean what parseDay accepted.
    calendar->setGregorianChange(U_DATE_MIN, status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("The calendar couldn’t be set up: ") +
                                 u_errorName(status));
    }
    // Midnight can be skipped (clocks jump past it) or repeated (clocks fall back over it); the
    // day starts at its first instant either way.
    calendar->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    return calendar;
}

// The first instant of the calendar day given by the fields; the day of month may overflow into
// the next month (the calendar is lenient).
Date firstInstant(icu::GregorianCalendar& calendar, int year, int month, int day) {
    calendar.clear();
    calendar.set(year, month - 1, day, 0, 0, 0);
    UErrorCode status = U_ZERO_ERROR;
    const UDate milliseconds = calendar.getTime(status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("The day couldn’t be computed: ") +
                                 u_errorName(status));
    }
    return Date::fromUnixSeconds(milliseconds / kMillisecondsPerSecond);
}

bool parseNumber(const std::string& text, std::size_t offset, std::size_t count, int& value) {
    value = 0;
    for (std::size_t index = offset; index < offset + count; ++index) {
        const char c = text[index];
        if (c < '0' || c > '9') {
            return false;
        }
        value = value * 10 + (c - '0');
    }
    return true;
}

} // namespace

std::optional<Day> parseDay(const std::string& text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    Day day;
    if (!parseNumber(text, 0, 4, day.year) || !parseNumber(text, 5, 2, day.month) ||
        !parseNumber(text, 8, 2, day.day)) {
        return std::nullopt;
    }
    if (day.year < 1 || day.month < 1 || day.month > 12 || day.day < 1 ||
        day.day > daysInMonth(day.year, day.month)) {
        return std::nullopt;
    }
    return day;
}

Day dayOf(Date date, const std::string& timeZone) {
    auto calendar = calendarIn(timeZone);
    UErrorCode status = U_ZERO_ERROR;
    calendar->setTime(date.unixSeconds() * kMillisecondsPerSecond, status);
    Day day;
    day.year = calendar->get(UCAL_EXTENDED_YEAR, status);
    day.month = calendar->get(UCAL_MONTH, status) + 1;
    day.day = calendar->get(UCAL_DATE, status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("The day couldn’t be computed: ") +
                                 u_errorName(status));
    }
    return day;
}

Date startOfDay(Day day, const std::string& timeZone) {
    auto calendar = calendarIn(timeZone);
    return firstInstant(*calendar, day.year, day.month, day.day);
}

Date endOfDay(Day day, const std::string& timeZone) {
    // One second before the next day starts. This equals the start plus one calendar day minus
    // one second, except where the day itself starts late because its midnight was skipped:
    // there adding a day would keep the late wall time and spill into the next day.
    auto calendar = calendarIn(timeZone);
    return firstInstant(*calendar, day.year, day.month, day.day + 1) - 1.0;
}

Range range(const std::optional<Day>& first, const std::optional<Day>& last,
            const std::string& timeZone) {
    Range result;
    if (first) {
        result.from = startOfDay(*first, timeZone);
    }
    if (last) {
        result.to = endOfDay(*last, timeZone);
    }
    return result;
}


} // namespace scrivly::DayBounds
