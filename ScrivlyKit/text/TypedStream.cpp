#include "ScrivlyKit/text/TypedStream.h"

#include "ScrivlyKit/text/Unicode.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace scrivly::TypedStream {

namespace {

constexpr std::size_t kMinimumSize = 17;
constexpr std::size_t kSignatureSpan = 24;
constexpr std::size_t kMarkerSpan = 24;

constexpr std::string_view kSignature = "streamtyped";
constexpr std::string_view kMutableStringClass = "NSMutableString";
constexpr std::string_view kStringClass = "NSString";

// 0x2B is the typedstream type code of a byte string; archives usually precede it with 0x84 0x01.
constexpr std::string_view kLongMarker = "\x84\x01\x2B";
constexpr std::string_view kShortMarker = "\x01\x2B";

constexpr std::uint8_t kLength16 = 0x81;
constexpr std::uint8_t kLength32 = 0x82;

std::string_view asChars(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Offset just past the first occurrence of needle, or nothing.
std::optional<std::size_t> endOfFirst(std::string_view haystack, std::string_view needle) {
    const auto found = haystack.find(needle);
    if (found == std::string_view::npos) {
        return std::nullopt;
    }
    return found + needle.size();
}

// Where the length field starts, searched for within the marker span from classEnd.
std::optional<std::size_t> lengthFieldStart(std::string_view bytes, std::size_t classEnd) {
    const auto span = bytes.substr(classEnd, kMarkerSpan);
    if (const auto found = span.find(kLongMarker); found != std::string_view::npos) {
        return classEnd + found + kLongMarker.size();
    }
    if (const auto found = span.find(kShortMarker); found != std::string_view::npos) {
        return classEnd + found + kShortMarker.size();
    }
    return std::nullopt;
}

struct Length {
    std::int64_t value = 0;
    std::size_t textStart = 0;
};

// Reads the length field at offset. The readings are signed on purpose: the writer never emits a
// value with the top bit set, so such a field can only come from a damaged archive.
std::optional<Length> readLength(std::span<const std::uint8_t> bytes, std::size_t offset) {
    if (offset >= bytes.size()) {
        return std::nullopt;
    }
    const auto tag = bytes[offset];
    if (tag == kLength16) {
        if (offset + 3 > bytes.size()) {
            return std::nullopt;
        }
        const auto raw = static_cast<std::uint16_t>(bytes[offset + 1] | (bytes[offset + 2] << 8));
        return Length{static_cast<std::int16_t>(raw), offset + 3};
    }
    if (tag == kLength32) {
        if (offset + 5 > bytes.size()) {
            return std::nullopt;
        }
        std::uint32_t raw = 0;
        for (std::size_t index = 0; index < 4; ++index) {
            raw |= static_cast<std::uint32_t>(bytes[offset + 1 + index]) << (8 * index);
        }
        return Length{static_cast<std::int32_t>(raw), offset + 5};
    }
    return Length{static_cast<std::int8_t>(tag), offset + 1};
}

void appendBytes(std::vector<std::uint8_t>& out, std::initializer_list<std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

void appendText(std::vector<std::uint8_t>& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

void appendLength(std::vector<std::uint8_t>& out, std::uint64_t value) {
    if (value <= 127) {
        out.push_back(static_cast<std::uint8_t>(value));
    } else if (value <= 32767) {
        out.push_back(kLength16);
        out.push_back(static_cast<std::uint8_t>(value & 0xFF));
        out.push_back(static_cast<std::uint8_t>(value >> 8));
    } else if (value <= 0xFFFFFFFFULL) {
        out.push_back(kLength32);
        for (int shift = 0; shift < 32; shift += 8) {
            out.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFF));
        }
    } else {
        throw std::length_error("Text too long for an attributed body archive.");
    }
}

void appendClass(std::vector<std::uint8_t>& out, std::string_view name) {
    if (name.size() > 255) {
        throw std::length_error("Class name too long for an attributed body archive.");
    }
    out.push_back(static_cast<std::uint8_t>(name.size()));
    appendText(out, name);
    out.push_back(0x00);
}

} // namespace

std::optional<std::string> plainText(std::span<const std::uint8_t> data) {
    if (data.size() < kMinimumSize) {
        return std::nullopt;
    }
    const auto bytes = asChars(data);
    if (bytes.substr(0, kSignatureSpan).find(kSignature) == std::string_view::npos) {
        return std::nullopt;
    }

    const auto mutableEnd = endOfFirst(bytes, kMutableStringClass);
    const auto plainEnd = endOfFirst(bytes, kStringClass);
    if (!mutableEnd && !plainEnd) {
        return std::nullopt;
    }
    const auto classEnd =
        std::min(mutableEnd.value_or(bytes.size()), plainEnd.value_or(bytes.size()));

    const auto fieldStart = lengthFieldStart(bytes, classEnd);
    if (!fieldStart) {
        return std::nullopt;
    }
    const auto length = readLength(data, *fieldStart);
    if (!length || length->value < 0) {
        return std::nullopt;
    }
    const auto count = static_cast<std::size_t>(length->value);
    if (length->textStart + count > data.size()) {
        return std::nullopt;
    }
    const auto text = bytes.substr(length->textStart, count);
    if (!Unicode::isValidUTF8(text)) {
        return std::nullopt;
    }
    return std::string(text);
}

std::vector<std::uint8_t> archive(std::string_view text) {
    std::vector<std::uint8_t> out;
    out.reserve(text.size() + 160);

    appendBytes(out, {0x04, 0x0B});
    appendText(out, kSignature);
    appendBytes(out, {0x81, 0xE8, 0x03, 0x84, 0x01, 0x40, 0x84, 0x84, 0x84});

    appendClass(out, "NSMutableAttributedString");
    appendBytes(out, {0x84, 0x84});
    appendClass(out, "NSAttributedString");
    appendBytes(out, {0x84, 0x84});
    appendClass(out, "NSObject");
    appendBytes(out, {0x85, 0x92, 0x84, 0x84, 0x84});
    appendClass(out, kMutableStringClass);
    appendBytes(out, {0x84, 0x84});
    appendClass(out, kStringClass);
    appendBytes(out, {0x95, 0x84, 0x01, 0x2B});

    appendLength(out, text.size());
    appendText(out, text);

    appendBytes(out, {0x86, 0x84, 0x02, 0x69, 0x49, 0x01});
    appendLength(out, Unicode::utf16Length(text));

    appendBytes(out, {0x92, 0x84, 0x84, 0x84});
    appendClass(out, "NSDictionary");
    appendBytes(out, {0x95, 0x84, 0x01, 0x69, 0x00, 0x86, 0x86});
    return out;
}

} // namespace scrivly::TypedStream
