#pragma once

#include "ScrivlyKit/records/Date.h"

#include <cstdint>
#include <memory>
#include <string>

// Dates, times, numbers and zone names for exports, formatted through ICU with an explicit IANA
// time zone and ICU locale (never the process's own settings).
namespace scrivly::Formatting {

// Reusable date formatter for one style, zone and locale. Making one is costly; formatting is
// cheap. Not thread-safe.
class DateFormatter {
public:
    enum class Style {
        day,          // complete date, no time ("Tuesday, March 5, 2024")
        time,         // short time, no date ("2:07 PM")
        shortDate,    // abbreviated date, no time ("Mar 5, 2024")
        longDateTime, // long date with short time ("March 5, 2024 at 2:07 PM")
    };

    DateFormatter(Style style, const std::string& timeZone, const std::string& locale);
    ~DateFormatter();
    DateFormatter(DateFormatter&&) noexcept;
    DateFormatter& operator=(DateFormatter&&) noexcept;
    DateFormatter(const DateFormatter&) = delete;
    DateFormatter& operator=(const DateFormatter&) = delete;

    std::string format(Date date) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// An integer with the locale's grouping ("1,234").
std::string integer(std::int64_t value, const std::string& locale);

// The zone's localised generic name ("Eastern Time", "Mitteleuropäische Zeit"; for UTC its long
// name, "Coordinated Universal Time") for the locale, or its identifier when ICU does not know it.
std::string timeZoneName(const std::string& timeZone, const std::string& locale);

// A byte count in the style of a file manager, decimal units ("48 KB", "1.2 MB", "512 bytes").
std::string byteCount(std::int64_t bytes, const std::string& locale);

// Calendar fields of a date in a zone (Gregorian).
struct Civil {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    int offsetSeconds = 0; // zone offset from UTC at that instant, daylight saving included
};
Civil civil(Date date, const std::string& timeZone);

// A time zone looked up once, for turning many dates into calendar fields (as civil() and
// iso8601() do, which look the zone up on every call). An unknown identifier acts as UTC.
// Fractions of a second are dropped (rounded down), so 09:05:03.9 is 09:05:03.
class Zone {
public:
    explicit Zone(const std::string& timeZone);
    ~Zone();
    Zone(Zone&&) noexcept;
    Zone& operator=(Zone&&) noexcept;
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

    Civil civil(Date date) const;
    std::string iso8601(Date date) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// ISO 8601 internet date-time without fractional seconds, with the offset or Z for UTC
// ("2024-03-05T14:07:09-05:00").
std::string iso8601(Date date, const std::string& timeZone);

// ISO 8601 in UTC with exactly three fractional digits, rounded to the millisecond
// ("2024-03-05T19:07:09.123Z").
std::string iso8601UTCMillis(Date date);

} // namespace scrivly::Formatting
