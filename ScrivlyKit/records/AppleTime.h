#pragma once

#include "ScrivlyKit/records/Date.h"

#include <cstdint>

namespace scrivly::AppleTime {

// Stored values up to this magnitude are seconds; larger ones are nanoseconds. Older databases
// store seconds, newer ones nanoseconds, and no real seconds value comes near the threshold.
inline constexpr std::int64_t kSecondsLimit = 100000000001;

// Converts a stored Messages timestamp to a date.
Date date(std::int64_t stored);

// Whole nanoseconds since the reference instant, truncated, as newer databases store them.
std::int64_t nanoseconds(Date date);

} // namespace scrivly::AppleTime
