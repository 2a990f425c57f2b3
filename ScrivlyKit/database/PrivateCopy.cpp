#include "ScrivlyKit/database/PrivateCopy.h"

#include "ScrivlyKit/database/DatabaseCopy.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace scrivly {

namespace fs = std::filesystem;

namespace {

// How often a copy torn by a concurrent checkpoint is taken again before giving up. Checkpoints
// are brief and rare next to a copy, so a second attempt nearly always succeeds.
constexpr int kCopyAttempts = 5;

} // namespace

std::string copyDatabase(const std::string& source, const std::string& into,
                         const std::string& fileName) {
    return copyDatabaseInspecting(source, into, fileName, {});
}

std::string
copyDatabaseInspecting(const std::string& source, const std::string& into,
                       const std::string& fileName,
                       const std::function<void(const std::vector<std::string>& copies)>& inspect) {
    std::error_code ignored;
    fs::remove_all(into, ignored);
    FileSystem::createPrivateFolders(into);

    const std::string copy = (fs::path(into) / fileName).string();
    copyDatabaseFiles(source, copy);
    if (inspect) {
        std::vector<std::string> copies{copy};
        if (fs::exists(copy + "-wal", ignored)) {
            copies.push_back(copy + "-wal");
        }
        inspect(copies);
    }
    foldLog(copy);
    return copy;
}

void foldLog(const std::string& path) {
    {
        // Only the copy is ever opened for writing: checkpointing folds the copied log into the
        // copied main file, and leaving WAL mode makes that one file the whole database. The copy
        // is thrown away if anything fails, so waiting for the disk (fsync) buys nothing.
        SQLiteConnection connection(path, /*readOnly=*/false, /*immutable=*/false);
        connection.execute("PRAGMA synchronous=OFF;");
        connection.execute("PRAGMA wal_checkpoint(TRUNCATE); PRAGMA journal_mode=DELETE;");
    }
    std::error_code ignored;
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        fs::remove(path + suffix, ignored);
    }
}

void withPrivateFolder(const std::string& scratch,
                       const std::function<void(const std::string& folder)>& operation) {
    // The scratch folder usually exists already; if it cannot be made, the check below says why.
    std::error_code ignored;
    FileSystem::createPrivateFolders(scratch, ignored);
    FileSystem::requireOwnerOnlyFolder(scratch);

    const SnapshotLease lease(scratch);
    for (int attempt = 1;; ++attempt) {
        try {
            fs::remove_all(lease.path(), ignored);
            FileSystem::createPrivateFolders(lease.path());
            operation(lease.path());
            return;
        } catch (const TornCopyError&) {
            if (attempt == kCopyAttempts) {
                throw;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10 * attempt));
        }
    }
}

} // namespace scrivly
