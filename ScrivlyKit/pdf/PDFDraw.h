#pragma once

#include "ScrivlyKit/pdf/PDFLayout.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace scrivly::pdf {

// The second pass: draws every page of a finished layout with its chrome into a PDF and returns
// the bytes. Reports progress from 0.5 to 1. Throws PDFExport::Cancelled when stopped and
// PDFExport::Failed when Cairo cannot make the document.
std::vector<std::uint8_t> drawDocument(Layout& layout);

// Draws the pages given (of this layout's setter) with the chrome given for each, calling
// beforePage first (where cancelling and progress go). pageEnds, when given, gets the size the
// document had reached after each page. Throws PDFExport::Failed, and what beforePage throws.
std::vector<std::uint8_t>
drawPages(Layout& layout, const std::vector<const std::vector<PageItem>*>& pages,
          const std::function<std::vector<Chrome>(std::size_t index)>& chrome,
          const std::function<void(std::size_t index)>& beforePage,
          std::vector<std::size_t>* pageEnds);

} // namespace scrivly::pdf
