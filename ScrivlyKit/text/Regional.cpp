#include "ScrivlyKit/text/Regional.h"

#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/ucal.h>
#include <unicode/unistr.h>

#include <cstring>
#include <memory>

namespace scrivly::Regional {

std::string systemTimeZone() {
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    if (!zone) {
        return "UTC";
    }
    icu::UnicodeString id;
    zone->getID(id);
    std::string name;
    id.toUTF8String(name);
    if (name.empty() || name == UCAL_UNKNOWN_ZONE_ID) {
        return "UTC";
    }
    return name;
}

std::string systemLocale() {
    return icu::Locale::getDefault().getName();
}

bool isKnownTimeZone(const std::string& zone) {
    const std::unique_ptr<icu::TimeZone> timeZone(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)));
    if (!timeZone) {
        return false;
    }
    icu::UnicodeString id;
    timeZone->getID(id);
    return id != icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID);
}

bool isKnownLocale(const std::string& name) {
    const icu::Locale locale(name.c_str());
    return !locale.isBogus() && std::strlen(locale.getLanguage()) > 0 &&
           std::strlen(locale.getISO3Language()) > 0;
}

} // namespace scrivly::Regional
