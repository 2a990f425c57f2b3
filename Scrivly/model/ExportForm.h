#pragma once

#include <QString>

#include <cstdint>

namespace scrivly {

// The per-export fields of the export panel. Kept for the session only, never saved.
struct ExportForm {
    QString title;
    QString header;
    QString batesPrefix;
    std::int64_t batesStart = 1;

    bool operator==(const ExportForm&) const = default;
};

} // namespace scrivly
