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
    // Most texts are plain printable ASCII (with line breaks), which stays as it is.
    const bool plain = std::all_of(text.begin(), text.end(), [&](char c) {
        return (c >= 0x20 && c < 0x7F) || (c == '\n' && keepLineBreaks);
    });
    if (plain) {
        return std::string(text);
    }
    std::string result;
    result.reserve(text.size());
    bool afterCarriageReturn = false;
    Unicode::forEachCodePoint(text, [&](char32_t codePoint) {
        const bool lineBreak = codePoint == U'\n' || codePoint == U'\r' || codePoint == 0x2028 ||
                               codePoint == 0x2029 || codePoint == 0x85;
        if (lineBreak) {
            // CR LF is one break.
            if (!(codePoint == U'\n' && afterCarriageReturn)) {
                result += keepLineBreaks ? "\n" : " ⏎ ";
            }
        } else if (codePoint == U'\t') {
            result += ' ';
        } else if (isControl(codePoint)) {
            Unicode::appendUTF8(result, 0xFFFD);
        } else {
            Unicode::appendUTF8(result, codePoint);
        }
        afterCarriageReturn = codePoint == U'\r';
    });
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
