#pragma once

#include "ScrivlyKit/records/Reaction.h"
#include "ScrivlyKit/records/SourceDescription.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace scrivly {

// Every human-readable text an export contains. The application builds one per export in the
// user's language; the default constructor gives the English texts with "Me" as the user's name.
struct ExportStrings {
    std::function<std::string(std::int64_t page, std::int64_t count)> pageOf;
    std::string me;
    std::string participants;
    std::string dateRange;
    std::string allDates;
    std::string messages;
    std::string attachments;
    std::string exported;
    std::string timeZone;
    std::string source;
    std::string sourceText;
    std::function<std::string(const std::string& span)> includedDates;
    std::string reactions;
    std::function<std::string(const ReactionKind& kind)> reactionName;
    std::function<std::string(const std::string& name)> attachmentMissing;
    std::function<std::string(const std::string& name, const std::string& size)> attachmentLine;
    std::vector<std::string> csvHeaders;
    std::string yes;
    std::string no;

    ExportStrings();

    // The English source line of the cover: what was read (the user's own history on a Mac, a
    // database file by name and folder, the demonstration history, an iPhone backup by device,
    // iOS version and date), then that Scrivly doesn't change the wording.
    static std::string englishSourceText(const SourceDescription& source,
                                         const std::string& locale);
};

} // namespace scrivly
