#include "ScrivlyKit/export/CSVExport.h"

#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/export/ReactionSummary.h"
#include "ScrivlyKit/text/Unicode.h"

#include <array>
#include <cstdio>

namespace scrivly::CSVExport {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kRowEnd = "\r\n";
constexpr std::string_view kZeroWidthSpace = "\u200B";

// A sender such as +1 (555) 010-2233 or a text such as -5 is data, not a formula.
bool isPhoneNumberLike(std::string_view cell) {
    bool hasDigit = false;
    for (const char c : cell) {
        if (c >= '0' && c <= '9') {
            hasDigit = true;
        } else if (std::string_view("+()-. ").find(c) == std::string_view::npos) {
            return false;
        }
    }
    return hasDigit;
}

bool startsFormula(std::string_view cell) {
    return !cell.empty() &&
           std::string_view("=+-@\t\r").find(cell.front()) != std::string_view::npos;
}

void appendRow(std::string& out, const std::vector<std::string>& cells) {
    for (std::size_t index = 0; index < cells.size(); ++index) {
        if (index > 0) {
            out += ',';
        }
        out += escape(cells[index]);
    }
    out += kRowEnd;
}

std::string joined(const std::vector<Attachment>& attachments) {
    std::string out;
    for (std::size_t index = 0; index < attachments.size(); ++index) {
        if (index > 0) {
            out += "; ";
        }
        out += attachments[index].name;
    }
    return out;
}

template <typename... Fields> std::string printed(const char* format, Fields... fields) {
    std::array<char, 32> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, fields...);
    return buffer.data();
}

std::string renderTable(const Transcript& transcript, const ExportOptions& options,
                        const ExportStrings& strings, const Column* extra) {
    const Formatting::Zone zone(options.timeZone);
    std::string out{kByteOrderMark};
    std::vector<std::string> headers = strings.csvHeaders;
    if (extra != nullptr) {
        headers.push_back(extra->header);
    }
    appendRow(out, headers);
    for (std::size_t index = 0; index < transcript.entries.size(); ++index) {
        const auto& entry = transcript.entries[index];
        const auto civil = zone.civil(entry.date);
        std::vector<std::string> cells{
            printed("%04d-%02d-%02d", civil.year, civil.month, civil.day),
            printed("%02d:%02d:%02d", civil.hour, civil.minute, civil.second),
            zone.iso8601(entry.date),
            entry.sender,
            entry.isFromMe ? strings.yes : strings.no,
            entry.text,
            joined(entry.attachments),
            reactionSummary(entry.reactions, strings),
        };
        if (extra != nullptr) {
            cells.push_back(index < extra->cells.size() ? extra->cells[index] : std::string());
        }
        appendRow(out, cells);
    }
    return out;
}

} // namespace

std::string escape(std::string_view cell) {
    // Message texts come from another program's database and may hold broken UTF-8; the file
    // must stay valid UTF-8 whatever they hold.
    std::string out = Unicode::repairedUTF8(cell);
    if (startsFormula(out) && !isPhoneNumberLike(out)) {
        out.insert(0, kZeroWidthSpace);
    }
    if (out.find_first_of(",\"\n\r") == std::string::npos) {
        return out;
    }
    std::string quoted = "\"";
    for (const char c : out) {
        quoted += c;
        if (c == '"') {
            quoted += '"';
        }
    }
    quoted += '"';
    return quoted;
}

std::string render(const Transcript& transcript, const ExportOptions& options,
                   const ExportStrings& strings) {
    return renderTable(transcript, options, strings, nullptr);
}

std::string render(const Transcript& transcript, const ExportOptions& options,
                   const ExportStrings& strings, const Column& column) {
    return renderTable(transcript, options, strings, &column);
}

} // namespace scrivly::CSVExport
