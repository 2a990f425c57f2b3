#include "ScrivlyKit/export/Formatting.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/numfmt.h>
#include <unicode/timezone.h>
#include <unicode/ucal.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <unordered_map>

namespace scrivly::Formatting {

namespace {

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::unique_ptr<icu::TimeZone> makeZone(const std::string& id) {
    // ICU hands back its "unknown" zone (offset 0) for identifiers it does not know, never null
    // unless memory runs out.
    std::unique_ptr<icu::TimeZone> zone{
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(id))};
    if (!zone) {
        throw std::bad_alloc();
    }
    return zone;
}

bool isUnknownZone(const icu::TimeZone& zone) {
    icu::UnicodeString id;
    zone.getID(id);
    return id == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID);
}

// ICU's UDate: milliseconds since the Unix epoch.
UDate udate(Date date) {
    return date.unixSeconds() * 1000.0;
}

std::int64_t floorDiv(std::int64_t value, std::int64_t divisor) {
    const auto quotient = value / divisor;
    return (value % divisor != 0 && (value < 0) != (divisor < 0)) ? quotient - 1 : quotient;
}

// Seconds since 2001 limited to the years 0001 to 9999 (a day inside, so that no zone offset
// leaves them), so that a corrupt stored date cannot overflow the integer conversions below or
// print a five-digit year. A NaN counts as the reference date.
double clampedSeconds(Date date) {
    constexpr double kFirst = -62135510400.0 - Date::kReferenceUnixSeconds; // 0001-01-02
    constexpr double kLast = 253402214399.0 - Date::kReferenceUnixSeconds;  // 9999-12-30
    if (std::isnan(date.seconds)) {
        return 0;
    }
    return std::clamp(date.seconds, kFirst, kLast);
}

// Whole seconds since the Unix epoch, rounded down, computed from the 2001-based value so that
// the large epoch offset does not eat the fraction's precision first.
std::int64_t wholeUnixSeconds(Date date) {
    return static_cast<std::int64_t>(std::floor(clampedSeconds(date))) +
           static_cast<std::int64_t>(Date::kReferenceUnixSeconds);
}

// Proleptic Gregorian calendar fields of a count of seconds since 1970-01-01 00:00:00.
Civil civilFromSeconds(std::int64_t seconds, int offsetSeconds) {
    using namespace std::chrono;
    const auto local = seconds + offsetSeconds;
    const auto days = floorDiv(local, 86400);
    const auto secondOfDay = local - days * 86400;
    const year_month_day ymd{sys_days{std::chrono::days{days}}};
    Civil civil;
    civil.year = static_cast<int>(ymd.year());
    civil.month = static_cast<int>(static_cast<unsigned>(ymd.month()));
    civil.day = static_cast<int>(static_cast<unsigned>(ymd.day()));
    civil.hour = static_cast<int>(secondOfDay / 3600);
    civil.minute = static_cast<int>(secondOfDay % 3600 / 60);
    civil.second = static_cast<int>(secondOfDay % 60);
    civil.offsetSeconds = offsetSeconds;
    return civil;
}

std::string isoFromCivil(const Civil& civil) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%04d-%02d-%02dT%02d:%02d:%02d", civil.year,
                  civil.month, civil.day, civil.hour, civil.minute, civil.second);
    std::string out = buffer.data();
    if (civil.offsetSeconds == 0) {
        return out + "Z";
    }
    const int magnitude = std::abs(civil.offsetSeconds);
    std::snprintf(buffer.data(), buffer.size(), "%c%02d:%02d", civil.offsetSeconds < 0 ? '-' : '+',
                  magnitude / 3600, magnitude % 3600 / 60);
    out += buffer.data();
    // Historic local mean times have offsets in odd seconds; keep them rather than lie.
    if (magnitude % 60 != 0) {
        std::snprintf(buffer.data(), buffer.size(), ":%02d", magnitude % 60);
        out += buffer.data();
    }
    return out;
}

std::unique_ptr<icu::NumberFormat> makeNumberFormat(const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> format{
        icu::NumberFormat::createInstance(icu::Locale(locale.c_str()), status)};
    if (U_FAILURE(status) || !format) {
        status = U_ZERO_ERROR;
        format.reset(icu::NumberFormat::createInstance(icu::Locale::getRoot(), status));
    }
    if (U_FAILURE(status) || !format) {
        throw std::runtime_error("The number format couldn’t be made.");
    }
    return format;
}

} // namespace

// Date formatter ------------------------------------------------------------------------------

struct DateFormatter::Impl {
    std::unique_ptr<icu::DateFormat> format;
    DateFormatter::Style style = DateFormatter::Style::day;
    // A day's text depends only on the local day and a time's only on the local minute of the
    // day; working those out is far cheaper than formatting, and a long transcript formats the
    // same few texts hundreds of thousands of times.
    std::unordered_map<std::int64_t, std::string> texts;
};

namespace {

icu::DateFormat* createDateFormat(DateFormatter::Style style, const icu::Locale& locale) {
    using Style = DateFormatter::Style;
    switch (style) {
    case Style::day:
        return icu::DateFormat::createDateInstance(icu::DateFormat::kFull, locale);
    case Style::time:
        return icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, locale);
    case Style::shortDate:
        return icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, locale);
    case Style::longDateTime:
        return icu::DateFormat::createDateTimeInstance(icu::DateFormat::kLong,
                                                       icu::DateFormat::kShort, locale);
    }
    return nullptr;
}

} // namespace

DateFormatter::DateFormatter(Style style, const std::string& timeZone, const std::string& locale)
    : m_impl(std::make_unique<Impl>()) {
    m_impl->format.reset(createDateFormat(style, icu::Locale(locale.c_str())));
    if (!m_impl->format) {
        m_impl->format.reset(createDateFormat(style, icu::Locale::getRoot()));
    }
    if (!m_impl->format) {
        throw std::runtime_error("The date format couldn’t be made.");
    }
    m_impl->format->adoptTimeZone(makeZone(timeZone).release());
    m_impl->style = style;
}

DateFormatter::~DateFormatter() = default;
DateFormatter::DateFormatter(DateFormatter&&) noexcept = default;
DateFormatter& DateFormatter::operator=(DateFormatter&&) noexcept = default;

std::string DateFormatter::format(Date date) const {
    const UDate when = udate(date);
    const auto formatted = [&] {
        icu::UnicodeString out;
        m_impl->format->format(when, out);
        return utf8(out);
    };
    // Far outside any real history the millisecond arithmetic below could overflow.
    if (m_impl->style == Style::longDateTime || !std::isfinite(when) || std::abs(when) > 1e15) {
        return formatted();
    }
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t raw = 0;
    std::int32_t daylight = 0;
    m_impl->format->getTimeZone().getOffset(when, false, raw, daylight, status);
    if (U_FAILURE(status)) {
        return formatted();
    }
    // The calendar's fields come from the local time, the instant plus the zone's offset.
    const auto local = static_cast<std::int64_t>(std::floor(when)) + raw + daylight;
    const auto floorDivide = [](std::int64_t value, std::int64_t by) {
        return value / by - (value % by < 0 ? 1 : 0);
    };
    constexpr std::int64_t kMinute = 60'000;
    constexpr std::int64_t kDay = 86'400'000;
    const std::int64_t key = m_impl->style == Style::time
                                 ? floorDivide(local, kMinute) - floorDivide(local, kDay) * 1440
                                 : floorDivide(local, kDay);
    auto& texts = m_impl->texts;
    if (const auto found = texts.find(key); found != texts.end()) {
        return found->second;
    }
    if (texts.size() >= 4096) {
        texts.clear(); // at most a day per entry over years of history; keep it bounded anyway
    }
    return texts.emplace(key, formatted()).first->second;
}

// Numbers and names ---------------------------------------------------------------------------

std::string integer(std::int64_t value, const std::string& locale) {
    icu::UnicodeString out;
    makeNumberFormat(locale)->format(static_cast<int64_t>(value), out);
    return utf8(out);
}

std::string timeZoneName(const std::string& timeZone, const std::string& locale) {
    const auto zone = makeZone(timeZone);
    if (isUnknownZone(*zone)) {
        return timeZone;
    }
    // The generic name ("Eastern Time") is right for a whole transcript, which may straddle a
    // change to or from daylight saving time.
    // UTC has no generic name and comes back as a bare offset ("GMT"); its standard name
    // ("Coordinated Universal Time") says more.
    const icu::Locale displayLocale(locale.c_str());
    icu::UnicodeString name;
    icu::UnicodeString offsetName;
    zone->getDisplayName(false, icu::TimeZone::LONG_GENERIC, displayLocale, name);
    zone->getDisplayName(false, icu::TimeZone::LONG_GMT, displayLocale, offsetName);
    if (name.isEmpty() || name == offsetName) {
        icu::UnicodeString standard;
        zone->getDisplayName(false, icu::TimeZone::LONG, displayLocale, standard);
        if (!standard.isEmpty()) {
            name = standard;
        }
    }
    return name.isEmpty() ? timeZone : utf8(name);
}

std::string byteCount(std::int64_t bytes, const std::string& locale) {
    const auto format = makeNumberFormat(locale);
    if (bytes > -1000 && bytes < 1000) {
        icu::UnicodeString number;
        format->format(static_cast<int64_t>(bytes), number);
        return utf8(number) + (bytes == 1 ? " byte" : " bytes");
    }
    // Like a file manager: whole kilobytes, one decimal for megabytes, two beyond.
    static constexpr std::array<const char*, 6> kUnits{"KB", "MB", "GB", "TB", "PB", "EB"};
    static constexpr std::array<int, 6> kDecimals{0, 1, 2, 2, 2, 2};
    const double magnitude = std::abs(static_cast<double>(bytes));
    std::size_t unit = 0;
    double value = magnitude / 1000.0;
    double rounded = 0;
    while (true) {
        const double scale = std::pow(10.0, kDecimals[unit]);
        rounded = std::round(value * scale) / scale;
        if (rounded < 1000.0 || unit + 1 == kUnits.size()) {
            break;
        }
        ++unit;
        value /= 1000.0;
    }
    format->setMinimumFractionDigits(0);
    format->setMaximumFractionDigits(kDecimals[unit]);
    icu::UnicodeString number;
    format->format(bytes < 0 ? -rounded : rounded, number);
    return utf8(number) + " " + kUnits[unit];
}

// Calendar fields and ISO 8601 ----------------------------------------------------------------

struct Zone::Impl {
    std::unique_ptr<icu::TimeZone> zone;
};

Zone::Zone(const std::string& timeZone) : m_impl(std::make_unique<Impl>()) {
    m_impl->zone = makeZone(timeZone);
}

Zone::~Zone() = default;
Zone::Zone(Zone&&) noexcept = default;
Zone& Zone::operator=(Zone&&) noexcept = default;

Civil Zone::civil(Date date) const {
    const auto seconds = wholeUnixSeconds(date);
    std::int32_t rawOffset = 0;
    std::int32_t dstOffset = 0;
    UErrorCode status = U_ZERO_ERROR;
    m_impl->zone->getOffset(static_cast<UDate>(seconds) * 1000.0, false, rawOffset, dstOffset,
                            status);
    if (U_FAILURE(status)) {
        rawOffset = 0;
        dstOffset = 0;
    }
    return civilFromSeconds(seconds, (rawOffset + dstOffset) / 1000);
}

std::string Zone::iso8601(Date date) const {
    return isoFromCivil(civil(date));
}

Civil civil(Date date, const std::string& timeZone) {
    return Zone(timeZone).civil(date);
}

std::string iso8601(Date date, const std::string& timeZone) {
    return Zone(timeZone).iso8601(date);
}

std::string iso8601UTCMillis(Date date) {
    const auto millis = static_cast<std::int64_t>(std::llround(clampedSeconds(date) * 1000.0)) +
                        static_cast<std::int64_t>(Date::kReferenceUnixSeconds) * 1000;
    const auto seconds = floorDiv(millis, 1000);
    const auto fraction = static_cast<int>(millis - seconds * 1000);
    const auto fields = civilFromSeconds(seconds, 0);
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", fields.year,
                  fields.month, fields.day, fields.hour, fields.minute, fields.second, fraction);
    return buffer.data();
}

} // namespace scrivly::Formatting
