#pragma once

#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Message.h"
#include "ScrivlyKit/records/SourceDescription.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

class ChatDatabase;
class MessagesSource;

// What a read of the Messages database needs. Every read works on a private copy made in its
// own UUID-named, owner-only subfolder of folder, which is removed whatever happens; without a
// folder the source's file is opened directly (for a database nothing else writes).
struct MessagesReader {
    std::shared_ptr<const MessagesSource> source;
    std::optional<std::string> folder; // the scratch folder for snapshots

    // A reader of a Mac's database file, whose stored "~/" stands for home (see DatabaseFile
    // for attachments).
    static MessagesReader
    ofDatabase(const std::string& path, const std::string& home, std::optional<std::string> folder,
               SourceDescription::Kind kind = SourceDescription::Kind::databaseFile,
               std::optional<std::string> attachments = std::nullopt);

    std::vector<Chat> chats() const;
    std::vector<Message> messages(const std::vector<std::int64_t>& chatIDs) const;
    // Only opens (snapshot and schema check) without querying.
    void check() const;
    // Runs several queries on one database: one private copy, so they all see the same moment.
    // A copy torn by a concurrent checkpoint is retaken, so operation may run more than once.
    void read(const std::function<void(ChatDatabase&)>& operation) const;
};

// The default database location under a home folder: home + "/Library/Messages/chat.db".
std::string defaultDatabasePath(const std::string& home);

} // namespace scrivly
