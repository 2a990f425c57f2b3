#pragma once

#include "ScrivlyKit/pdf/PDFLayout.h"

#include <cstdint>
#include <vector>

namespace scrivly::pdf {

// The second pass: draws every page of a finished layout with its chrome into a PDF and returns
// the bytes. Reports progress from 0.5 to 1. Throws PDFExport::Cancelled when stopped and
// PDFExport::Failed when Cairo cannot make the document.
std::vector<std::uint8_t> drawDocument(Layout& layout);

} // namespace scrivly::pdf
