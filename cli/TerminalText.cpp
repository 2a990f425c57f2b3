#include "cli/TerminalText.h"

#include "ScrivlyKit/text/Unicode.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace scrivly::cli::TerminalText {

namespace {

std::size_t width(char32_t codePoint) {
    const auto c = static_cast<UChar32>(codePoint);
    if (codePoint == 0x200D || (codePoint >= 0xFE00 && codePoint <= 0xFE0F)) {
        return 0; // joiners and variation selectors combine with their neighbours
    }
    switch (u_charType(c)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_FORMAT_CHAR:
    case U_CONTROL_CHAR:
        return 0;
    default:
        break;
    }
    if (u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE) == U_HST_VOWEL_JAMO ||
        u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE) == U_HST_TRAILING_JAMO) {
        return 0;
    }
    const auto eastAsian = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    if (eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH ||
        u_hasBinaryProperty(c, UCHAR_EMOJI_PRESENTATION)) {
        return 2;
    }
    return 1;
}

bool isControl(char32_t codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
}

} // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t columns = 0;
    Unicode::forEachCodePoint(text, [&](char32_t codePoint) { columns += width(codePoint); });
    return columns;
}

std::string cleaned(std::string_view text, bool keepLineBreaks) {
    // Most texts are plain printable ASCII (with line breaks), which stays as it is; in the others
    // such runs are copied whole and only the rest is looked at character by character.
    const auto plain = [keepLineBreaks](char c) {
        return (c >= 0x20 && c < 0x7F) || (c == '\n' && keepLineBreaks);
    };
    if (std::all_of(text.begin(), text.end(), plain)) {
        return std::string(text);
    }
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string result;
    result.reserve(text.size());
    std::size_t offset = 0;
    while (offset < text.size()) {
        std::size_t end = offset;
        while (end < text.size() && plain(text[end])) {
            ++end;
        }
        if (end > offset) {
            result.append(text, offset, end - offset);
            offset = end;
            continue;
        }
        const std::size_t start = offset;
        const char32_t codePoint = Unicode::nextCodePoint(text, offset);
        if (codePoint == U'\n' || codePoint == U'\r' || codePoint == 0x2028 ||
            codePoint == 0x2029 || codePoint == 0x85) {
            // CR LF is one break.
            if (codePoint == U'\r' && offset < text.size() && text[offset] == '\n') {
                ++offset;
            }
            result += keepLineBreaks ? "\n" : " ⏎ ";
        } else if (codePoint == U'\t') {
            result += ' ';
        } else if (isControl(codePoint) ||
                   (codePoint == 0xFFFD && text.substr(start, offset - start) != replacement)) {
            result += replacement; // a control character, or bytes that are not UTF-8
        } else {
            result.append(text, start, offset - start);
        }
    }
    return result;
}

std::string padded(std::string_view text, std::size_t width) {
    std::string result(text);
    const std::size_t columns = displayWidth(text);
    if (columns < width) {
        result.append(width - columns, ' ');
    }
    return result;
}

} // namespace scrivly::cli::TerminalText
