#pragma once

#include "ScrivlyKit/production/Production.h"

#include <string>
#include <string_view>

// The listings a production writes beside its documents, as bytes.
namespace scrivly::ProductionFiles {

// manifest.csv: UTF-8, CR LF after every row, a header row, then one row per produced file
// (documents with their CSV and natives, the load file, the certificate). Dates are ISO 8601
// with the offset in timeZone.
std::string manifest(const ProductionReport& report, const std::string& timeZone);

// loadfile.dat in the Concordance convention: UTF-8 with a byte-order mark, fields between
// text qualifiers "þ" and separated by U+0014, CR LF after every row, a header row, then one row
// per document and one per native (a native's BEGATTACH and ENDATTACH are its document's range).
std::string loadFile(const ProductionReport& report, const std::string& custodian,
                     const std::string& timeZone);

// One load-file field, qualified. The convention has no escapes: a qualifier or separator inside
// the value would end it, so they become look-alikes ("Þ", a space), and line breaks become the
// convention's "®".
std::string loadFileField(std::string_view value);

} // namespace scrivly::ProductionFiles
