#include "ScrivlyKit/production/ProductionRules.h"

#include "ScrivlyKit/text/Unicode.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace scrivly::ProductionRules {

namespace {

constexpr std::size_t kLongestName = 200;
constexpr std::size_t kLongestExtension = 16;

char asciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isControl(unsigned char c) {
    return c < 0x20 || c == 0x7F;
}

// The longest start of text that is at most limit bytes and ends between UTF-8 characters.
std::string_view cutUTF8(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    std::size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return text.substr(0, end);
}

} // namespace

std::optional<std::uint64_t> parseByteSize(std::string_view text) {
    std::size_t end = 0;
    while (end < text.size() && ((text[end] >= '0' && text[end] <= '9') || text[end] == '.')) {
        ++end;
    }
    const std::string number(text.substr(0, end));
    std::string unit;
    for (const char c : text.substr(end)) {
        unit += asciiUpper(c);
    }
    if (number.empty() || number.front() == '.' || number.back() == '.' ||
        number.find('.') != number.rfind('.')) {
        return std::nullopt;
    }
    double scale = 0;
    if (unit.empty() || unit == "B") {
        scale = 1;
    } else if (unit == "K" || unit == "KB") {
        scale = 1e3;
    } else if (unit == "M" || unit == "MB") {
        scale = 1e6;
    } else if (unit == "G" || unit == "GB") {
        scale = 1e9;
    } else if (unit == "T" || unit == "TB") {
        scale = 1e12;
    } else {
        return std::nullopt;
    }
    double value = 0;
    if (std::from_chars(number.data(), number.data() + number.size(), value).ec != std::errc()) {
        return std::nullopt;
    }
    const double bytes = std::floor(value * scale);
    // Beyond a petabyte is a typing mistake, not a size limit.
    if (!(bytes >= 1) || bytes > 1e15) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(bytes);
}

std::optional<std::string> prefixProblem(std::string_view prefix) {
    if (Unicode::trimmed(std::string(prefix)).empty()) {
        return "A production needs a Bates prefix (--bates-prefix): its labels name the files.";
    }
    for (const char c : prefix) {
        if (c == '/') {
            return "The Bates prefix can’t hold “/”: its labels name the files.";
        }
        if (isControl(static_cast<unsigned char>(c))) {
            return "The Bates prefix can’t hold control characters: its labels name the files.";
        }
    }
    return std::nullopt;
}

std::string safeName(std::string_view name) {
    std::string safe = Unicode::repairedUTF8(name);
    for (char& c : safe) {
        if (c == '/' || isControl(static_cast<unsigned char>(c))) {
            c = '_';
        }
    }
    safe = Unicode::trimmed(safe);
    if (safe.empty() || safe == "." || safe == "..") {
        return "attachment";
    }
    if (safe.size() <= kLongestName) {
        return safe;
    }
    // Cut the stem, keep a short extension: the name must still open with the right program.
    const auto dot = safe.rfind('.');
    const std::string extension =
        dot != std::string::npos && dot > 0 && safe.size() - dot <= kLongestExtension
            ? safe.substr(dot)
            : std::string();
    const std::string_view stem(safe.data(), safe.size() - extension.size());
    return std::string(cutUTF8(stem, kLongestName - extension.size())) + extension;
}

std::string nativeFileName(std::string_view label, int counter, std::string_view name) {
    char number[16];
    std::snprintf(number, sizeof number, "%02d", counter);
    return std::string(label) + "-" + number + " " + safeName(name);
}

std::string batesRange(const std::string& begin, const std::string& end) {
    return begin == end ? begin : begin + " \u2013 " + end;
}

} // namespace scrivly::ProductionRules
