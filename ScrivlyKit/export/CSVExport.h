#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"

#include <string>
#include <string_view>
#include <vector>

// A transcript as one comma-separated table for spreadsheets: UTF-8 with a byte-order mark,
// CR LF after every row, one row per entry.
namespace scrivly::CSVExport {

std::string render(const Transcript& transcript, const ExportOptions& options,
                   const ExportStrings& strings);

// A column added after the usual ones: its header, and a cell per entry in transcript order
// (empty where cells run out). A production adds the Bates label of each message's page.
struct Column {
    std::string header;
    std::vector<std::string> cells;
};
std::string render(const Transcript& transcript, const ExportOptions& options,
                   const ExportStrings& strings, const Column& column);

// One cell, guarded against formula execution and quoted when needed.
std::string escape(std::string_view cell);

} // namespace scrivly::CSVExport
