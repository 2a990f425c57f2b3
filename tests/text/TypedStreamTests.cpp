#include "ScrivlyKit/text/TypedStream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

using namespace scrivly;

namespace {

using Bytes = std::vector<std::uint8_t>;

std::optional<std::string> read(const Bytes& bytes) {
    return TypedStream::plainText(bytes);
}

void append(Bytes& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

// Offset of the first byte of the text in an archive written for it.
std::size_t textOffset(const Bytes& archive, std::string_view text) {
    const std::string_view chars(reinterpret_cast<const char*>(archive.data()), archive.size());
    const auto marker = chars.find("\x84\x01\x2B");
    const auto lengthBytes = text.size() <= 127 ? 1U : text.size() <= 32767 ? 3U : 5U;
    return marker + 3 + lengthBytes;
}

Bytes slice(const Bytes& bytes, std::size_t start, std::size_t size) {
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(start);
    return Bytes(first, first + static_cast<std::ptrdiff_t>(size));
}

// A hand-made archive: signature, "NSString", padding bytes, a marker, a one-byte length, text.
Bytes handMade(std::size_t padding, std::string_view marker, std::string_view text) {
    Bytes out{0x04, 0x0B};
    append(out, "streamtyped");
    out.push_back(0x08);
    append(out, "NSString");
    out.insert(out.end(), padding, 0x00);
    append(out, marker);
    out.push_back(static_cast<std::uint8_t>(text.size()));
    append(out, text);
    return out;
}

} // namespace

TEST(TypedStream, RoundTripsValidTextAndRejectsInvalidUTF8) {
    const std::vector<std::pair<std::string, bool>> cases = {
        {"Hi \xF0\x9F\x98\x80 there \xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD", true}, // skin tone
        {"Caf\xC3\xA9 \xE2\x80\x94 \xEF\xBF\xBC attached", true},             // é, em dash, U+FFFC
        {std::string("nul\0inside", 10), true},
        {"ab\xFF", false},           // stray 0xFF
        {"\x80z", false},            // lone continuation byte
        {"\xF0\x9F\x98", false},     // cut-off emoji
        {"\xC0\xAF", false},         // overlong slash
        {"\xED\xA0\x80", false},     // UTF-8 encoded surrogate
        {"\xF4\x90\x80\x80", false}, // beyond U+10FFFF
    };
    for (const auto& [text, valid] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(read(TypedStream::archive(text)), valid ? std::optional(text) : std::nullopt);
    }
}

TEST(TypedStream, WritesTheExactArchiveBytes) {
    Bytes expected{0x04, 0x0B};
    append(expected, "streamtyped");
    expected.insert(expected.end(), {0x81, 0xE8, 0x03, 0x84, 0x01, 0x40, 0x84, 0x84, 0x84, 0x19});
    append(expected, "NSMutableAttributedString");
    expected.insert(expected.end(), {0x00, 0x84, 0x84, 0x12});
    append(expected, "NSAttributedString");
    expected.insert(expected.end(), {0x00, 0x84, 0x84, 0x08});
    append(expected, "NSObject");
    expected.insert(expected.end(), {0x00, 0x85, 0x92, 0x84, 0x84, 0x84, 0x0F});
    append(expected, "NSMutableString");
    expected.insert(expected.end(), {0x00, 0x84, 0x84, 0x08});
    append(expected, "NSString");
    // "Hi " and one emoji: 7 UTF-8 bytes, 5 UTF-16 units.
    expected.insert(expected.end(), {0x00, 0x95, 0x84, 0x01, 0x2B, 0x07});
    append(expected, "Hi \xF0\x9F\x98\x80");
    expected.insert(expected.end(), {0x86, 0x84, 0x02, 0x69, 0x49, 0x01, 0x05});
    expected.insert(expected.end(), {0x92, 0x84, 0x84, 0x84, 0x0C});
    append(expected, "NSDictionary");
    expected.insert(expected.end(), {0x00, 0x95, 0x84, 0x01, 0x69, 0x00, 0x86, 0x86});

    EXPECT_EQ(TypedStream::archive("Hi \xF0\x9F\x98\x80"), expected);
}

TEST(TypedStream, EncodesLengthsInOneTwoOrFourBytesAndReadsThemBack) {
    struct Case {
        std::size_t length;
        Bytes field;
    };
    const std::vector<Case> cases = {
        {0, {0x00}},
        {127, {0x7F}},
        {128, {0x81, 0x80, 0x00}},
        {32767, {0x81, 0xFF, 0x7F}},
        {32768, {0x82, 0x00, 0x80, 0x00, 0x00}},
        {100000, {0x82, 0xA0, 0x86, 0x01, 0x00}},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.length);
        const std::string text(testCase.length, 'x');
        const auto archive = TypedStream::archive(text);
        const auto start = textOffset(archive, text) - testCase.field.size();
        EXPECT_EQ(slice(archive, start, testCase.field.size()), testCase.field);
        // The UTF-16 length uses the same encoding and follows the 0x69 0x49 0x01 bytes.
        const auto utf16Start = textOffset(archive, text) + text.size() + 6;
        EXPECT_EQ(slice(archive, utf16Start, testCase.field.size()), testCase.field);
        EXPECT_EQ(read(archive), text);
    }
}

TEST(TypedStream, FindsTheTextOnlyWhereAnArchiveHoldsIt) {
    Bytes sixteen{0x04, 0x0B};
    append(sixteen, "streamtyped");
    sixteen.insert(sixteen.end(), {0x01, 0x2B, 0x00});
    auto noSignature = TypedStream::archive("moved");
    noSignature[2] = 'S';
    auto noClass = handMade(0, "\x84\x01\x2B", "hello");
    noClass[14] = 'X'; // "NSString" becomes "XSString"
    // "NSString" appears only far behind "NSMutableString"; the marker is near the latter.
    Bytes twoClasses{0x04, 0x0B};
    append(twoClasses, "streamtyped");
    append(twoClasses, "NSMutableString\x84\x01\x2B\x03one");
    twoClasses.insert(twoClasses.end(), 30, 0x00);
    append(twoClasses, "NSString\x84\x01\x2B\x03two");

    const std::vector<std::tuple<const char*, Bytes, std::optional<std::string>>> cases = {
        {"empty", {}, std::nullopt},
        {"sixteen bytes", sixteen, std::nullopt},
        {"no signature", noSignature, std::nullopt},
        {"no string class", noClass, std::nullopt},
        {"long marker", handMade(0, "\x84\x01\x2B", "hello"), "hello"},
        {"short marker", handMade(0, "\x01\x2B", "short"), "short"},
        // The marker must end within 24 bytes of the class name's end.
        {"long marker at the limit", handMade(21, "\x84\x01\x2B", "edge"), "edge"},
        {"long marker past it", handMade(22, "\x84\x01\x2B", "edge"), std::nullopt},
        {"short marker at the limit", handMade(22, "\x01\x2B", "edge"), "edge"},
        {"short marker past it", handMade(23, "\x01\x2B", "edge"), std::nullopt},
        {"the class name that ends first", twoClasses, "one"},
    };
    for (const auto& [name, bytes, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(read(bytes), expected);
    }

    const auto valid = TypedStream::archive("moved");
    for (std::size_t padding = 0; padding <= 13; ++padding) {
        SCOPED_TRACE(padding);
        Bytes shifted(padding, 0x00);
        shifted.insert(shifted.end(), valid.begin(), valid.end());
        // The signature starts at padding + 2: offset 13 is the last that fits in 24 bytes.
        EXPECT_EQ(read(shifted).has_value(), padding + 2 <= 13);
    }
}

// Fields cut short by the end of the bytes are covered by the truncation test below.
TEST(TypedStream, RejectsBadLengthFields) {
    struct Case {
        const char* name;
        Bytes field;
        std::string tail;
    };
    const std::vector<Case> cases = {
        {"length byte 0x90 is negative", {0x90}, std::string(20, 'a')},
        {"length byte 0x83 is negative", {0x83}, std::string(20, 'a')},
        {"16-bit length with the top bit set", {0x81, 0x00, 0x80}, std::string(20, 'a')},
        {"32-bit length with the top bit set", {0x82, 0x05, 0x00, 0x00, 0x80}, "abcde"},
        {"16-bit length past the end", {0x81, 0x15, 0x00}, std::string(20, 'a')},
        {"32-bit length past the end", {0x82, 0x15, 0x00, 0x00, 0x00}, std::string(20, 'a')},
        {"32-bit field cut short", {0x82, 0x01, 0x00, 0x00}, ""},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        Bytes bytes{0x04, 0x0B};
        append(bytes, "streamtyped");
        append(bytes, "NSString\x84\x01\x2B");
        bytes.insert(bytes.end(), testCase.field.begin(), testCase.field.end());
        append(bytes, testCase.tail);
        EXPECT_EQ(read(bytes), std::nullopt);
    }
}

TEST(TypedStream, EveryTruncationBeforeTheTextEndGivesNothing) {
    for (const auto& text :
         std::vector<std::string>{"Running late, 10 min", std::string(300, 'z')}) {
        SCOPED_TRACE(text.size());
        const auto archive = TypedStream::archive(text);
        const auto textEnd = textOffset(archive, text) + text.size();
        for (std::size_t size = 0; size <= archive.size(); ++size) {
            SCOPED_TRACE(size);
            const auto prefix = slice(archive, 0, size);
            if (size < textEnd) {
                EXPECT_EQ(read(prefix), std::nullopt);
            } else {
                EXPECT_EQ(read(prefix), text);
            }
        }
    }
}

TEST(TypedStream, ChangedLengthsReadOnlyValidText) {
    const std::string text = "See you at 6";
    auto archive = TypedStream::archive(text);
    const auto lengthAt = textOffset(archive, text) - 1;

    auto oneMore = archive; // now takes in 0x86, a lone continuation byte
    ++oneMore[lengthAt];
    EXPECT_EQ(read(oneMore), std::nullopt);

    auto shorter = archive; // a shorter length still reads a valid prefix
    --shorter[lengthAt];
    EXPECT_EQ(read(shorter), text.substr(0, text.size() - 1));
}
