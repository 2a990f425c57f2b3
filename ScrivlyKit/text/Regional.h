#pragma once

#include <string>

// The system's time zone and locale, and whether a zone or locale a user typed is one ICU knows.
namespace scrivly::Regional {

// The IANA name of the system's current zone (from TZ or /etc/localtime); "UTC" when it can't
// be told.
std::string systemTimeZone();
// The ICU identifier of the system's current locale.
std::string systemLocale();

bool isKnownTimeZone(const std::string& zone);
// A locale with a language ICU knows ("en_US", "de"); "xx" or "" is not one.
bool isKnownLocale(const std::string& name);

} // namespace scrivly::Regional
