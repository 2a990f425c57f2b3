#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Unicode rules on UTF-8 text, through ICU. Invalid UTF-8 sequences count as U+FFFD.
namespace scrivly::Unicode {

// Removes Unicode white space and line breaks at both ends.
std::string trimmed(std::string_view text);
// The same, as the part of text it leaves: no copy.
std::string_view trimmedView(std::string_view text);

// Full Unicode lower-casing (root locale, so results do not depend on the process's locale).
std::string lowercased(std::string_view text);

// Whether the text is well-formed UTF-8.
bool isValidUTF8(std::string_view text);

// Replaces every ill-formed sequence with U+FFFD; valid text comes back unchanged.
std::string repairedUTF8(std::string_view text);

// Number of UTF-16 code units the text takes.
std::size_t utf16Length(std::string_view text);

// Whether the code point is numeric (any Unicode decimal digit, letter number or other number).
bool isNumeric(char32_t codePoint);

// Whether the code point is Unicode white space or a line break.
bool isWhiteSpace(char32_t codePoint);

// Whether the text contains at least one numeric code point.
bool containsNumeric(std::string_view text);

// Calls visit(codePoint) for each code point of the text, in order.
template <typename Visitor> void forEachCodePoint(std::string_view text, Visitor&& visit);

// Decodes the code point at offset and advances offset past it (U+FFFD for a bad sequence).
char32_t nextCodePoint(std::string_view text, std::size_t& offset);

// Appends the UTF-8 encoding of a code point.
void appendUTF8(std::string& out, char32_t codePoint);

template <typename Visitor> void forEachCodePoint(std::string_view text, Visitor&& visit) {
    std::size_t offset = 0;
    while (offset < text.size()) {
        visit(nextCodePoint(text, offset));
    }
}

} // namespace scrivly::Unicode
