#include "ScrivlyKit/production/SourceSnapshot.h"

#include "ScrivlyKit/backup/IPhoneBackup.h"
#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/MessagesSource.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/history/BackupSource.h"
#include "ScrivlyKit/history/History.h"
#include "ScrivlyKit/history/Sources.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/production/HashedFiles.h"

#include <filesystem>

namespace scrivly {

namespace fs = std::filesystem;

namespace {

std::vector<SourceFile> copyDatabaseFile(const DatabaseFile& source, const std::string& folder,
                                         std::string& copy) {
    std::vector<SourceFile> files;
    copy = copyDatabaseInspecting(
        source.location(), folder, "chat.db", [&](const std::vector<std::string>& copies) {
            for (std::size_t index = 0; index < copies.size(); ++index) {
                const auto hashed = HashedFiles::hashFile(copies[index]);
                const std::string path = source.location() + (index == 0 ? "" : "-wal");
                files.push_back(SourceFile{fs::path(path).filename().string(), path, hashed.bytes,
                                           hashed.sha256});
            }
        });
    return files;
}

std::vector<SourceFile> copyBackup(const IPhoneBackup& backup, const std::string& folder,
                                   std::string& copy) {
    const auto copied = backup.copyMessagesDatabase(folder, Hashing::sha256);
    std::vector<SourceFile> files;
    const bool encrypted = backup.info().encrypted;
    for (std::size_t index = 0; index < copied.size(); ++index) {
        const std::string name =
            std::string(IPhoneBackup::kMessagesDatabase) + (index == 0 ? "" : "-wal");
        const std::string stored = backup.storedPath("HomeDomain", "Library/SMS/" + name);
        std::error_code error;
        const auto storedBytes = fs::file_size(stored, error);
        files.push_back(SourceFile{name + (encrypted ? " (encrypted, as stored)" : ""), stored,
                                   error ? copied[index].size : storedBytes,
                                   copied[index].storedSHA256.value_or("")});
        if (encrypted) {
            files.push_back(SourceFile{name + " (decrypted)", "", copied[index].size,
                                       copied[index].copiedSHA256.value_or("")});
        }
    }
    foldLog(copied.front().path);
    copy = copied.front().path;
    return files;
}

} // namespace

void withHashedSnapshot(
    const History& history,
    const std::function<void(ChatDatabase& database, const std::vector<SourceFile>& files,
                             const std::string& folder)>& operation) {
    history.requireReadable();
    const auto& source = history.reader().source;
    const std::string scratch = history.reader().folder.value_or(Sources::snapshotFolder());
    withPrivateFolder(scratch, [&](const std::string& folder) {
        // The copy goes one level down, so that the operation's scratch files stay apart from it.
        const std::string databaseFolder = (fs::path(folder) / "database").string();
        std::string copy;
        std::vector<SourceFile> files;
        if (const auto* file = dynamic_cast<const DatabaseFile*>(source.get())) {
            files = copyDatabaseFile(*file, databaseFolder, copy);
        } else if (const auto* backup = dynamic_cast<const BackupSource*>(source.get())) {
            FileSystem::createPrivateFolders(databaseFolder);
            files = copyBackup(backup->backup(), databaseFolder, copy);
        } else {
            copy = source->copyInto(databaseFolder);
            const auto hashed = HashedFiles::hashFile(copy);
            files.push_back(SourceFile{fs::path(source->location()).filename().string(),
                                       source->location(), hashed.bytes, hashed.sha256});
        }
        ChatDatabase database(
            copy,
            [source](const std::optional<std::string>& stored) {
                return source->attachmentPath(stored);
            },
            /*immutable=*/true);
        operation(database, files, folder);
    });
}

} // namespace scrivly
