#include "ScrivlyKit/export/ExportOptions.h"

#include "ScrivlyKit/text/Regional.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace scrivly {

namespace {

std::string_view trimmedBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

// Page numbers never wrap around: a number that does not fit stops the program rather than
// print a wrong label on a court document.
std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) {
        std::abort();
    }
    return sum;
}

} // namespace

ExportOptions::ExportOptions()
    : timeZone(Regional::systemTimeZone()), locale(Regional::systemLocale()) {}

std::optional<std::string> ExportOptions::batesLabel(std::int64_t page) const {
    const auto prefix = trimmedBlanks(batesPrefix);
    if (prefix.empty()) {
        return std::nullopt;
    }
    const auto number = checkedAdd(std::max<std::int64_t>(batesStart, 0), checkedAdd(page, -1));
    auto digits = std::to_string(number);
    std::string sign;
    if (number < 0) {
        sign = "-";
        digits.erase(0, 1);
    }
    const auto length = static_cast<std::int64_t>(digits.size());
    std::string padding;
    if (batesDigits > length) {
        padding.assign(static_cast<std::size_t>(batesDigits - length), '0');
    }
    return std::string(prefix) + sign + padding + digits;
}


} // namespace scrivly
