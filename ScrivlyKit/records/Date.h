#pragma once

#include <chrono>
#include <compare>
#include <cstddef>

namespace scrivly {

// A point in time, stored as seconds since 2001-01-01 00:00:00 UTC (the reference instant of the
// Messages database). Fractions of a second are kept.
struct Date {
    double seconds = 0;

    // Seconds between the Unix epoch and 2001-01-01 00:00:00 UTC.
    static constexpr double kReferenceUnixSeconds = 978307200.0;

    static Date fromUnixSeconds(double unix) { return Date{unix - kReferenceUnixSeconds}; }
    double unixSeconds() const { return seconds + kReferenceUnixSeconds; }

    static Date fromSystemClock(std::chrono::system_clock::time_point time);
    std::chrono::system_clock::time_point toSystemClock() const;
    static Date now();

    Date operator+(double delta) const { return Date{seconds + delta}; }
    Date operator-(double delta) const { return Date{seconds - delta}; }
    double operator-(Date other) const { return seconds - other.seconds; }

    auto operator<=>(const Date&) const = default;
};

} // namespace scrivly

template <> struct std::hash<scrivly::Date> {
    std::size_t operator()(const scrivly::Date& date) const noexcept;
};
