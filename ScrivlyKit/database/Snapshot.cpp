#include "ScrivlyKit/database/Snapshot.h"

#include "ScrivlyKit/database/DatabaseCopy.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <filesystem>

namespace scrivly {

ChatDatabase snapshot(const std::string& source, const std::string& into, const std::string& home) {
    namespace fs = std::filesystem;
    std::error_code ignored;

    fs::remove_all(into, ignored);
    FileSystem::createPrivateFolders(into);

    const std::string copy = (fs::path(into) / "chat.db").string();
    copyDatabaseFiles(source, copy);

    {
        // Only the copy is ever opened for writing: checkpointing folds the copied log into the
        // copied main file, and leaving WAL mode makes that one file the whole database. The copy
        // is thrown away if anything fails, so waiting for the disk (fsync) buys nothing.
        SQLiteConnection connection(copy, /*readOnly=*/false, /*immutable=*/false);
        connection.execute("PRAGMA synchronous=OFF;");
        connection.execute("PRAGMA wal_checkpoint(TRUNCATE); PRAGMA journal_mode=DELETE;");
    }
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        fs::remove(copy + suffix, ignored);
    }

    return ChatDatabase(copy, home, /*immutable=*/true);
}

} // namespace scrivly
