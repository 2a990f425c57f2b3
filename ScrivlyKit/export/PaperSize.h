#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace scrivly {

// The page format of a PDF. The raw values are what the settings store.
enum class PaperSize { letter, a4 };

struct PageSize {
    double width = 0;  // points
    double height = 0; // points
};

namespace Paper {

// Every case, in declaration order.
inline constexpr std::array<PaperSize, 2> kAll{PaperSize::letter, PaperSize::a4};

// Letter width, letter height, A4 width, A4 height, in points. A4 is deliberately the rounded
// 595.28 × 841.89.
inline constexpr std::array<double, 4> kSizes{612.0, 792.0, 595.28, 841.89};

PageSize size(PaperSize paper);
std::string rawValue(PaperSize paper);                       // "letter" or "a4"
std::optional<PaperSize> fromRawValue(std::string_view raw); // nothing for an unknown value
std::string displayName(PaperSize paper);                    // "US Letter" or "A4"

} // namespace Paper

} // namespace scrivly
