#pragma once

#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Message.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

// What a read of the Messages database needs. Every read works on a private copy made in its
// own UUID-named, owner-only subfolder of folder, which is removed whatever happens; without a
// folder the source is opened directly (for a database nothing else writes).
struct MessagesReader {
    std::string source;                // the database file
    std::string home;                  // the folder a stored "~/" stands for
    std::optional<std::string> folder; // the scratch folder for snapshots

    std::vector<Chat> chats() const;
    std::vector<Message> messages(const std::vector<std::int64_t>& chatIDs) const;
    // Only opens (snapshot and schema check) without querying.
    void check() const;
};

// The default database location under a home folder: home + "/Library/Messages/chat.db".
std::string defaultDatabasePath(const std::string& home);

} // namespace scrivly
