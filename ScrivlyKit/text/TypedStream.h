#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The plain text of an archived attributed string (the "typedstream" archive format that the
// Messages database keeps in message.attributedBody), and a writer of a minimal such archive.
namespace scrivly::TypedStream {

// The archived text, or nothing when the bytes are not a readable archive (too short, no
// signature, no string class, no start marker, a length outside the buffer, invalid UTF-8).
std::optional<std::string> plainText(std::span<const std::uint8_t> data);

// An archive from which plainText gives back exactly text (which must be valid UTF-8).
std::vector<std::uint8_t> archive(std::string_view text);

} // namespace scrivly::TypedStream
