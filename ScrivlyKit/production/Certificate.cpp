#include "ScrivlyKit/production/Certificate.h"

#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/production/ProductionRules.h"

#include <algorithm>
#include <cstdio>

namespace scrivly::Certificate {

namespace {

using Kind = PDFExport::TextParagraph::Kind;

std::string dayText(const DayBounds::Day& day) {
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", day.year, day.month, day.day);
    return text;
}

std::string daysText(const DayRange& days) {
    if (!days.first && !days.last) {
        return "All messages";
    }
    return (days.first ? dayText(*days.first) : std::string("\u2026")) + " \u2013 " +
           (days.last ? dayText(*days.last) : std::string("\u2026")) + " (whole days)";
}

std::string sourceText(const SourceDescription& source) {
    using SourceKind = SourceDescription::Kind;
    switch (source.kind) {
    case SourceKind::sample:
        return "The demonstration history, written by Scrivly";
    case SourceKind::backup:
        return "The iPhone backup of \u201C" + source.deviceName + "\u201D" +
               (source.productVersion.empty() ? "" : " (iOS " + source.productVersion + ")") +
               " at " + source.path;
    case SourceKind::userHistory:
    case SourceKind::databaseFile:
        break;
    }
    return "The Messages database " + source.path;
}

std::string kindText(ProducedFile::Kind kind) {
    switch (kind) {
    case ProducedFile::Kind::pdf:
        return "PDF";
    case ProducedFile::Kind::csv:
        return "CSV";
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

} // namespace

std::vector<PDFExport::TextParagraph>
paragraphs(const ProductionReport& report, const Production& production, const Settings& settings) {
    std::vector<PDFExport::TextParagraph> out;
    const auto add = [&out](Kind kind, std::string text, std::string detail = {}) {
        out.push_back(PDFExport::TextParagraph{kind, std::move(text), std::move(detail)});
    };
    const auto integer = [&settings](std::int64_t value) {
        return Formatting::integer(value, settings.locale);
    };
    const Formatting::DateFormatter inUTC(Formatting::DateFormatter::Style::longDateTime, "UTC",
                                          settings.locale);
    const Formatting::DateFormatter inZone(Formatting::DateFormatter::Style::longDateTime,
                                           settings.timeZone, settings.locale);

    add(Kind::title, "Production certificate");
    add(Kind::text, "Made by Scrivly " + settings.version + " on " + inUTC.format(report.made) +
                        " UTC (" + inZone.format(report.made) + ", " +
                        Formatting::timeZoneName(settings.timeZone, settings.locale) + ").");

    add(Kind::heading, "Source");
    add(Kind::text, sourceText(report.source) + ".");
    if (report.source.kind == SourceDescription::Kind::backup && report.source.backupDate) {
        add(Kind::text, "Backup made " + inUTC.format(*report.source.backupDate) + " UTC.");
    }
    for (const auto& file : report.sourceFiles) {
        add(Kind::text,
            file.name + ": " + integer(static_cast<std::int64_t>(file.bytes)) + " bytes",
            "SHA-256 " + file.sha256 + (file.path.empty() ? "" : "\n" + file.path));
    }

    add(Kind::heading, "Options");
    add(Kind::text, "Days: " + daysText(production.days));
    add(Kind::text, "Time zone: " + settings.timeZone + " (" +
                        Formatting::timeZoneName(settings.timeZone, settings.locale) + ")");
    add(Kind::text,
        std::string("Documents: one per conversation") +
            (production.perDay ? " and calendar day" : "") +
            (production.maxBytes
                 ? ", split into parts of at most " +
                       Formatting::byteCount(static_cast<std::int64_t>(*production.maxBytes),
                                             settings.locale)
                 : std::string()));
    std::string extras;
    for (const auto& [on, name] :
         {std::pair{production.coverPage, "cover pages"},
          std::pair{production.includeImages, "photos drawn"},
          std::pair{production.csv, "CSV files"}, std::pair{production.natives, "natives"},
          std::pair{production.loadFile, "load file"}}) {
        if (on) {
            extras += (extras.empty() ? "" : ", ") + std::string(name);
        }
    }
    add(Kind::text, "With: " + (extras.empty() ? std::string("nothing else") : extras));
    add(Kind::text, "Bates prefix: " + production.batesPrefix + ", first number " +
                        std::to_string(production.batesStart));
    add(Kind::text, "Conversations: " + std::string(production.all ? "all, " : "") +
                        integer(static_cast<std::int64_t>(report.conversations.size())));
    for (const auto& [title, id] : report.conversations) {
        const bool empty =
            std::find(report.emptyConversations.begin(), report.emptyConversations.end(), id) !=
            report.emptyConversations.end();
        add(Kind::detail,
            title + " (" + id + ")" + (empty ? ": empty, no messages in these days" : ""));
    }

    add(Kind::heading, "Counts");
    add(Kind::text,
        "Documents: " + integer(static_cast<std::int64_t>(report.documents.size())) +
            " · Pages: " + integer(report.pages()) + " · Messages: " + integer(report.messages()) +
            " · Natives: " + integer(static_cast<std::int64_t>(report.nativeCount())) +
            " · Missing attachments: " + integer(static_cast<std::int64_t>(report.missing.size())));
    if (!report.documents.empty()) {
        add(Kind::text,
            "Bates range: " + ProductionRules::batesRange(report.documents.front().pdf.beginBates,
                                                          report.documents.back().pdf.endBates));
    }

    if (!report.missing.empty()) {
        add(Kind::heading, "Missing attachments");
        const Formatting::Zone zone(settings.timeZone);
        for (const auto& missing : report.missing) {
            add(Kind::detail, missing.conversation + ", message of " + zone.iso8601(missing.date) +
                                  ": " + missing.name + " (" + missing.reason + ")");
        }
    }

    add(Kind::heading, "Files");
    const auto fileLine = [&](const ProducedFile& file) {
        std::string line = file.path + " · " + kindText(file.kind);
        if (!file.beginBates.empty()) {
            line += " · " + ProductionRules::batesRange(file.beginBates, file.endBates);
        }
        if (file.pages) {
            line += " · " + integer(*file.pages) + (*file.pages == 1 ? " page" : " pages");
        }
        line += " · " + integer(static_cast<std::int64_t>(file.bytes)) + " bytes";
        add(Kind::text, line, "SHA-256 " + file.sha256);
    };
    for (const auto& document : report.documents) {
        fileLine(document.pdf);
        if (document.csv) {
            fileLine(*document.csv);
        }
        for (const auto& native : document.natives) {
            fileLine(native);
        }
    }
    if (report.loadFile) {
        fileLine(*report.loadFile);
    }
    add(Kind::detail, "manifest.csv lists every file of the production, this certificate "
                      "included, with its size and SHA-256.");

    // Room for the statement and signature of whoever certifies the production, in their own
    // words.
    add(Kind::heading, "Certification");
    add(Kind::signature, "Statement");
    add(Kind::signature, "Signature");
    add(Kind::signature, "Name and title");
    add(Kind::signature, "Date");
    return out;
}

} // namespace scrivly::Certificate
