// Any text in any cell: a CSV parser must read back exactly what went in, apart from the
// invisible U+200B that guards a cell a spreadsheet could run as a formula, and U+FFFD for each
// ill-formed UTF-8 sequence (the file is always valid UTF-8).
#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/text/Unicode.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

// One RFC 4180 row: quoted cells with doubled quotes, cells separated by commas.
std::vector<std::string> parseRow(std::string_view row) {
    std::vector<std::string> cells(1);
    bool quoted = false;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const char c = row[i];
        if (quoted) {
            if (c == '"' && i + 1 < row.size() && row[i + 1] == '"') {
                cells.back() += '"';
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                cells.back() += c;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            cells.emplace_back();
        } else {
            cells.back() += c;
        }
    }
    if (quoted) {
        std::abort(); // an unterminated quote
    }
    return cells;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The input is several cells separated by 0xFF bytes (which UTF-8 never contains).
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> cells;
    std::string row;
    for (std::size_t start = 0;;) {
        const auto end = input.find('\xFF', start);
        cells.emplace_back(input.substr(start, end - start));
        if (!row.empty() || cells.size() > 1) {
            row += ',';
        }
        row += scrivly::CSVExport::escape(cells.back());
        if (end == std::string_view::npos) {
            break;
        }
        start = end + 1;
    }
    const auto parsed = parseRow(row);
    if (parsed.size() != cells.size()) {
        std::abort();
    }
    static const std::string kGuard = "\u200B";
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string expected = scrivly::Unicode::repairedUTF8(cells[i]);
        if (parsed[i] != expected && parsed[i] != kGuard + expected) {
            std::abort();
        }
    }
    return 0;
}
