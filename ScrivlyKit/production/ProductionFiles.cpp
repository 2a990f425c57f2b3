#include "ScrivlyKit/production/ProductionFiles.h"

#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/text/Unicode.h"

#include <vector>

namespace scrivly::ProductionFiles {

namespace {

constexpr std::string_view kRowEnd = "\r\n";
constexpr std::string_view kQualifier = "\u00FE";
constexpr std::string_view kSeparator = "\x14";

std::string kindName(ProducedFile::Kind kind) {
    switch (kind) {
    case ProducedFile::Kind::pdf:
        return "pdf";
    case ProducedFile::Kind::csv:
        return "csv";
    case ProducedFile::Kind::native:
        return "native";
    case ProducedFile::Kind::certificate:
        return "certificate";
    case ProducedFile::Kind::loadFile:
        return "load file";
    case ProducedFile::Kind::manifest:
        return "manifest";
    }
    return "";
}

std::string number(const std::optional<std::int64_t>& value) {
    return value ? std::to_string(*value) : std::string();
}

std::string date(const std::optional<Date>& value, const Formatting::Zone& zone) {
    return value ? zone.iso8601(*value) : std::string();
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    std::string result;
    for (const auto& part : parts) {
        if (!result.empty()) {
            result += separator;
        }
        result += part;
    }
    return result;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

} // namespace

std::string manifest(const ProductionReport& report, const std::string& timeZone) {
    const Formatting::Zone zone(timeZone);
    std::string out;
    const auto row = [&out](const std::vector<std::string>& cells) {
        for (std::size_t index = 0; index < cells.size(); ++index) {
            if (index > 0) {
                out += ',';
            }
            out += CSVExport::escape(cells[index]);
        }
        out += kRowEnd;
    };
    const auto fileRow = [&](const ProducedFile& file, const std::string& conversation,
                             const std::string& conversationID) {
        row({file.path, kindName(file.kind), conversation, conversationID, file.beginBates,
             file.endBates, number(file.pages), number(file.messages),
             date(file.firstMessage, zone), date(file.lastMessage, zone),
             std::to_string(file.bytes), file.sha256});
    };
    row({"File", "Kind", "Conversation", "Conversation ID", "Begin Bates", "End Bates", "Pages",
         "Messages", "First Message", "Last Message", "Bytes", "SHA-256"});
    for (const auto& document : report.documents) {
        fileRow(document.pdf, document.conversation, document.conversationID);
        if (document.csv) {
            fileRow(*document.csv, document.conversation, document.conversationID);
        }
        for (const auto& native : document.natives) {
            fileRow(native, document.conversation, document.conversationID);
        }
    }
    if (report.loadFile) {
        fileRow(*report.loadFile, "", "");
    }
    fileRow(report.certificate, "", "");
    return out;
}

std::string loadFileField(std::string_view value) {
    std::string text = Unicode::repairedUTF8(value);
    replaceAll(text, "\r\n", "\u00AE");
    replaceAll(text, "\n", "\u00AE");
    replaceAll(text, "\r", "\u00AE");
    replaceAll(text, kQualifier, "\u00DE");
    replaceAll(text, kSeparator, " ");
    return std::string(kQualifier) + text + std::string(kQualifier);
}

std::string loadFile(const ProductionReport& report, const std::string& custodian,
                     const std::string& timeZone) {
    const Formatting::Zone zone(timeZone);
    std::string out = "\xEF\xBB\xBF";
    const auto row = [&out](const std::vector<std::string>& fields) {
        for (std::size_t index = 0; index < fields.size(); ++index) {
            if (index > 0) {
                out += kSeparator;
            }
            out += loadFileField(fields[index]);
        }
        out += kRowEnd;
    };
    row({"BEGBATES", "ENDBATES", "BEGATTACH", "ENDATTACH", "CUSTODIAN", "CONVERSATION",
         "PARTICIPANTS", "DATEFIRST", "DATELAST", "MESSAGES", "PAGES", "FILEPATH", "NATIVEPATH",
         "SHA256"});
    for (const auto& document : report.documents) {
        const ProducedFile& pdf = document.pdf;
        const std::string participants = joined(document.participants, "; ");
        row({pdf.beginBates, pdf.endBates, pdf.beginBates, pdf.endBates, custodian,
             document.conversation, participants, date(pdf.firstMessage, zone),
             date(pdf.lastMessage, zone), number(pdf.messages), number(pdf.pages), pdf.path, "",
             pdf.sha256});
        for (const auto& native : document.natives) {
            row({native.beginBates, native.endBates, pdf.beginBates, pdf.endBates, custodian,
                 document.conversation, participants, date(native.firstMessage, zone),
                 date(native.lastMessage, zone), "", "", "", native.path, native.sha256});
        }
    }
    return out;
}

} // namespace scrivly::ProductionFiles
