#pragma once

#include "ScrivlyKit/records/Date.h"

#include <optional>
#include <string>

namespace scrivly {

// What a history was read from, for the documents that say so.
struct SourceDescription {
    enum class Kind {
        userHistory,  // the signed-in user's own Messages history, where Messages keeps it
        databaseFile, // a Messages database file given by the user (a copy, as a rule)
        sample,       // the demonstration history
        backup,       // an iPhone backup
    };
    Kind kind = Kind::databaseFile;
    std::string path;           // the database file, or the backup's device folder
    std::string deviceName;     // a backup's
    std::string productVersion; // a backup's iOS version
    std::optional<Date> backupDate;
    bool operator==(const SourceDescription&) const = default;
};

} // namespace scrivly
