#include "ScrivlyKit/contacts/PrivateCopy.h"

#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/platform/UUID.h"

#include <filesystem>

namespace scrivly {

namespace fs = std::filesystem;

std::string preparePrivateCopy(const std::string& source, const std::string& into,
                               const std::string& fileName) {
    std::error_code ignored;
    fs::remove_all(into, ignored);
    FileSystem::createPrivateFolders(into);

    const std::string copy = (fs::path(into) / fileName).string();
    FileSystem::copyFile(source, copy);
    for (const char* suffix : {"-wal", "-shm"}) {
        const std::string companion = source + suffix;
        if (fs::exists(companion, ignored)) {
            FileSystem::copyFile(companion, copy + suffix);
        }
    }
    {
        // Only the copy is ever opened for writing: checkpointing folds the copied log into the
        // copied main file, and leaving WAL mode makes that one file the whole database.
        SQLiteConnection connection(copy, /*readOnly=*/false, /*immutable=*/false);
        connection.execute("PRAGMA wal_checkpoint(TRUNCATE); PRAGMA journal_mode=DELETE;");
    }
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        fs::remove(copy + suffix, ignored);
    }
    return copy;
}

PrivateCopy::PrivateCopy(const std::string& source, const std::string& scratchFolder,
                         const std::string& fileName)
    : m_folder((fs::path(scratchFolder) / randomUUID()).string()) {
    std::error_code ignored;
    FileSystem::createPrivateFolders(scratchFolder, ignored);
    try {
        m_path = preparePrivateCopy(source, m_folder, fileName);
    } catch (...) {
        fs::remove_all(m_folder, ignored);
        throw;
    }
}

PrivateCopy::~PrivateCopy() {
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

} // namespace scrivly
