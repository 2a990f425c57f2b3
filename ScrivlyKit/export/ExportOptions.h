#pragma once

#include "ScrivlyKit/export/PaperSize.h"

#include <cstdint>
#include <optional>
#include <string>

namespace scrivly {

// What the user chose for one export.
struct ExportOptions {
    PaperSize paper = PaperSize::letter;
    std::string documentTitle; // cover page title and the PDF's title
    std::string header;        // printed at the top of every page; empty means none
    std::string batesPrefix;   // empty after trimming means no Bates numbers
    std::int64_t batesStart = 1;
    std::int64_t batesDigits = 6;
    bool coverPage = true;
    bool includeImages = true;
    std::string timeZone; // IANA zone name; the system's zone by default
    std::string locale;   // ICU locale identifier; the system's locale by default

    ExportOptions(); // the defaults above, with the system's zone and locale

    // The Bates label of a 1-based page of the finished document (the cover counts as page 1):
    // the trimmed prefix, zero padding up to batesDigits, then max(batesStart, 0) + page - 1.
    // Nothing when the prefix is blank. A number beyond 64 bits stops the program (never wraps).
    std::optional<std::string> batesLabel(std::int64_t page) const;

    bool operator==(const ExportOptions&) const = default;
};


} // namespace scrivly
