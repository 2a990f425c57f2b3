#pragma once

#include "ScrivlyKit/pdf/PDFExport.h"
#include "ScrivlyKit/production/Production.h"

#include <string>
#include <vector>

// The certificate of a production: what was produced and from what, as paragraphs for
// PDFExport::renderParagraphs. It states facts only; the wording of any declaration is left to
// whoever signs it, with room for it at the end.
namespace scrivly::Certificate {

struct Settings {
    std::string version;  // Scrivly's
    std::string timeZone; // the production's zone, besides UTC
    std::string locale;
};

// report holds everything written before the certificate (documents, natives, the load file).
std::vector<PDFExport::TextParagraph>
paragraphs(const ProductionReport& report, const Production& production, const Settings& settings);

} // namespace scrivly::Certificate
