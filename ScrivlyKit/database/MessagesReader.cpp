#include "ScrivlyKit/database/MessagesReader.h"

#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/DatabaseCopy.h"
#include "ScrivlyKit/database/Snapshot.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/platform/UUID.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace scrivly {
namespace {

// How often a copy torn by a concurrent checkpoint is taken again before giving up. Checkpoints
// are brief and rare next to a copy, so a second attempt nearly always succeeds.
constexpr int kCopyAttempts = 5;

// Runs operation on the database of one read: the source itself when there is no scratch folder,
// else a fresh snapshot in a subfolder of its own that is gone when this returns or throws.
template <typename Operation>
auto withDatabase(const MessagesReader& reader, Operation&& operation) {
    if (!reader.folder) {
        ChatDatabase database(reader.source, reader.home, /*immutable=*/false);
        return operation(database);
    }
    // The scratch folder usually exists already; if it cannot be made, the check below says why.
    std::error_code ignored;
    FileSystem::createPrivateFolders(*reader.folder, ignored);
    FileSystem::requireOwnerOnlyFolder(*reader.folder);

    // Declared before the database so that the database closes before its folder goes.
    const SnapshotLease lease(*reader.folder);
    for (int attempt = 1;; ++attempt) {
        try {
            ChatDatabase database = snapshot(reader.source, lease.path(), reader.home);
            return operation(database);
        } catch (const TornCopyError&) {
            if (attempt == kCopyAttempts) {
                throw;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10 * attempt));
        }
    }
}

} // namespace

std::vector<Chat> MessagesReader::chats() const {
    return withDatabase(*this, [](ChatDatabase& database) { return database.chats(); });
}

std::vector<Message> MessagesReader::messages(const std::vector<std::int64_t>& chatIDs) const {
    return withDatabase(*this, [&](ChatDatabase& database) { return database.messages(chatIDs); });
}

void MessagesReader::check() const {
    withDatabase(*this, [](ChatDatabase&) {});
}

void MessagesReader::read(const std::function<void(ChatDatabase&)>& operation) const {
    withDatabase(*this, operation);
}

std::string defaultDatabasePath(const std::string& home) {
    return home + "/Library/Messages/chat.db";
}

} // namespace scrivly
