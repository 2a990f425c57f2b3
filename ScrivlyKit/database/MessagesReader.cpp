#include "ScrivlyKit/database/MessagesReader.h"

#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/Snapshot.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/platform/UUID.h"

#include <filesystem>

namespace scrivly {
namespace {

// Removes a snapshot folder with everything in it when the read ends, however it ends.
class FolderRemoval {
public:
    explicit FolderRemoval(std::string path) : m_path(std::move(path)) {}
    ~FolderRemoval() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    FolderRemoval(const FolderRemoval&) = delete;
    FolderRemoval& operator=(const FolderRemoval&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

// Runs operation on the database of one read: the source itself when there is no scratch folder,
// else a fresh snapshot in a subfolder of its own that is gone when this returns or throws.
template <typename Operation>
auto withDatabase(const MessagesReader& reader, Operation&& operation) {
    if (!reader.folder) {
        ChatDatabase database(reader.source, reader.home, /*immutable=*/false);
        return operation(database);
    }
    // The scratch folder usually exists already; if it cannot be made, the snapshot says why.
    std::error_code ignored;
    FileSystem::createPrivateFolders(*reader.folder, ignored);

    // Declared before the database so that the database closes before its folder goes.
    const FolderRemoval subfolder(*reader.folder + "/" + randomUUID());
    ChatDatabase database = snapshot(reader.source, subfolder.path(), reader.home);
    return operation(database);
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

std::string defaultDatabasePath(const std::string& home) {
    return home + "/Library/Messages/chat.db";
}

} // namespace scrivly
