#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The small rules of a production: sizes as people write them, and file names that come only
// from Bates labels and never from what a message holds.
namespace scrivly::ProductionRules {

// A size in bytes with an optional decimal unit, as in 35MB, 500KB, 1.5GB or 20000 ("B" and
// the case are optional; K, M, G are 1000, 1000², 1000³). Nothing when it isn't one, or is 0.
std::optional<std::uint64_t> parseByteSize(std::string_view text);

// Why a Bates prefix can't name files (empty, or holding "/", NUL or a control character), or
// nothing when it can.
std::optional<std::string> prefixProblem(std::string_view prefix);

// An attachment's own name as one harmless component of a file name: valid UTF-8, no "/", NUL
// or control characters, not "." or "..", at most 200 bytes with its extension kept; "attachment"
// when nothing is left.
std::string safeName(std::string_view name);

// A native's file name: the label of the page that lists it, "-", a counter of at least two
// digits, a space and the attachment's own name made safe ("SMITH-000017-01 IMG_4021.HEIC").
std::string nativeFileName(std::string_view label, int counter, std::string_view name);

// A Bates range for people: "SMITH-000001 – SMITH-000012", one label when both ends are equal.
std::string batesRange(const std::string& begin, const std::string& end);

} // namespace scrivly::ProductionRules
