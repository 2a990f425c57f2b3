#include "ScrivlyKit/text/Unicode.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>

namespace scrivly::Unicode {

char32_t nextCodePoint(std::string_view text, std::size_t& offset) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    auto index = static_cast<std::int32_t>(offset);
    UChar32 codePoint = 0;
    U8_NEXT(bytes, index, length, codePoint);
    offset = static_cast<std::size_t>(index);
    return codePoint < 0 ? char32_t{0xFFFD} : static_cast<char32_t>(codePoint);
}

void appendUTF8(std::string& out, char32_t codePoint) {
    std::uint8_t buffer[U8_MAX_LENGTH];
    std::int32_t length = 0;
    UBool error = false;
    U8_APPEND(buffer, length, U8_MAX_LENGTH, static_cast<UChar32>(codePoint), error);
    if (error) {
        out += "\xEF\xBF\xBD";
        return;
    }
    out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
}

bool isWhiteSpace(char32_t codePoint) {
    // u_isUWhiteSpace covers the White_Space property, which includes the line breaks.
    return u_isUWhiteSpace(static_cast<UChar32>(codePoint));
}

bool isNumeric(char32_t codePoint) {
    const auto type = u_charType(static_cast<UChar32>(codePoint));
    return type == U_DECIMAL_DIGIT_NUMBER || type == U_LETTER_NUMBER || type == U_OTHER_NUMBER;
}

bool containsNumeric(std::string_view text) {
    std::size_t offset = 0;
    while (offset < text.size()) {
        if (isNumeric(nextCodePoint(text, offset))) {
            return true;
        }
    }
    return false;
}

std::string_view trimmedView(std::string_view text) {
    // Nearly every text starts and ends with a visible ASCII character: nothing to trim.
    const auto visibleASCII = [](char c) { return c > 0x20 && c < 0x7F; };
    if (!text.empty() && visibleASCII(text.front()) && visibleASCII(text.back())) {
        return text;
    }
    std::size_t start = 0;
    std::size_t end = 0; // one past the last code point that is not white space
    std::size_t offset = 0;
    bool seenContent = false;
    while (offset < text.size()) {
        const auto before = offset;
        const auto codePoint = nextCodePoint(text, offset);
        if (!isWhiteSpace(codePoint)) {
            if (!seenContent) {
                start = before;
                seenContent = true;
            }
            end = offset;
        }
    }
    return seenContent ? text.substr(start, end - start) : std::string_view();
}

std::string trimmed(std::string_view text) {
    return std::string(trimmedView(text));
}

std::string lowercased(std::string_view text) {
    bool ascii = true;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii) {
        // Fast path for the common case; identical to the Unicode result for ASCII.
        std::string out(text);
        for (auto& c : out) {
            if (c >= 'A' && c <= 'Z') {
                c = static_cast<char>(c - 'A' + 'a');
            }
        }
        return out;
    }
    auto unicode = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    unicode.toLower(icu::Locale::getRoot());
    std::string out;
    unicode.toUTF8String(out);
    return out;
}

bool isValidUTF8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t index = 0;
    while (index < length) {
        // Runs of ASCII, most of a typical text, eight bytes at a time.
        while (length - index >= 8) {
            std::uint64_t word = 0;
            std::memcpy(&word, bytes + index, 8);
            if ((word & 0x8080808080808080U) != 0) {
                break;
            }
            index += 8;
        }
        if (index == length) {
            break;
        }
        if (bytes[index] < 0x80) {
            ++index;
            continue;
        }
        UChar32 codePoint = 0;
        U8_NEXT(bytes, index, length, codePoint);
        if (codePoint < 0) {
            return false;
        }
    }
    return true;
}

std::string repairedUTF8(std::string_view text) {
    if (isValidUTF8(text)) {
        return std::string(text);
    }
    std::string out;
    out.reserve(text.size() + 8);
    forEachCodePoint(text, [&](char32_t codePoint) { appendUTF8(out, codePoint); });
    return out;
}

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    forEachCodePoint(text, [&](char32_t codePoint) { units += codePoint > 0xFFFF ? 2 : 1; });
    return units;
}

} // namespace scrivly::Unicode
