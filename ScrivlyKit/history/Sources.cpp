#include "ScrivlyKit/history/Sources.h"

#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/backup/BackupWriter.h"
#include "ScrivlyKit/backup/IPhoneBackup.h"
#include "ScrivlyKit/contacts/ContactSources.h"
#include "ScrivlyKit/contacts/PhoneAddressBook.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/history/BackupSource.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/sample/SampleDatabase.h"

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace scrivly::Sources {

namespace fs = std::filesystem;

std::string userHome() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    const long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr) {
        return found->pw_dir;
    }
    return "/";
}

std::optional<std::string> homeOfDatabase(const std::string& database) {
    const fs::path path(database);
    const fs::path messages = path.parent_path();
    const fs::path library = messages.parent_path();
    if (path.filename() == "chat.db" && messages.filename() == "Messages" &&
        library.filename() == "Library") {
        return library.parent_path().string();
    }
    return std::nullopt;
}

std::optional<std::string> attachmentsBeside(const std::string& database) {
    const fs::path beside = fs::path(database).parent_path() / "Attachments";
    std::error_code error;
    if (fs::is_directory(beside, error)) {
        return beside.string();
    }
    return std::nullopt;
}

std::string attachmentsIn(const std::string& chosen) {
    const fs::path inside = fs::path(chosen) / "Library" / "Messages" / "Attachments";
    std::error_code error;
    return fs::is_directory(inside, error) ? inside.string() : chosen;
}

std::string snapshotFolder() {
    return (fs::path(FileSystem::userTemporaryFolder()) / "scrivly-snapshots").string();
}

MessagesReader database(const std::optional<std::string>& path,
                        const std::optional<std::string>& home, bool direct) {
    const std::string database = path ? *path : defaultDatabasePath(home.value_or(userHome()));
    const std::string attachmentsHome =
        home ? *home : homeOfDatabase(database).value_or(userHome());
    std::optional<std::string> folder;
    if (!direct) {
        folder = snapshotFolder();
        // Copies left by runs that were killed mid-read; those of runs still going stay.
        removeLeftoverSnapshots(*folder);
    }
    return MessagesReader::ofDatabase(database, attachmentsHome, folder,
                                      path ? SourceDescription::Kind::databaseFile
                                           : SourceDescription::Kind::userHistory);
}

Sample sample(const std::string& folder, Date now) {
    const auto info = SampleDatabase::create(folder, now);
    return Sample{info.database, info.home,
                  MessagesReader::ofDatabase(info.database, info.home, std::nullopt,
                                             SourceDescription::Kind::sample),
                  SampleDatabase::nameBook()};
}

std::string sampleBackup(const std::string& folder, Date now,
                         const std::optional<std::string>& password, bool fastKeys) {
    std::string written;
    const std::string scratch = snapshotFolder();
    withPrivateFolder(scratch, [&](const std::string& work) {
        const auto info = SampleDatabase::create((fs::path(work) / "history").string(), now);
        BackupWriter::Options options;
        options.password = password;
        options.fastKeys = fastKeys;
        options.date = now;
        written = BackupWriter::write(
            folder, BackupWriter::Contents{info.database, info.home, SampleDatabase::people()},
            options);
    });
    return written;
}

std::string sampleBackupName() {
    return BackupWriter::Options{}.deviceID;
}

std::vector<BackupInfo> backups(const std::vector<std::string>& folders) {
    return listBackups(folders).backups;
}

std::vector<std::string> usualBackupFolders() {
    return scrivly::usualBackupFolders();
}

SeveralBackups::SeveralBackups(std::vector<BackupInfo> found)
    : std::runtime_error(std::to_string(found.size()) +
                         " backups are in this folder; give the folder of one of them."),
      backups(std::move(found)) {}

BackupInfo findBackup(const std::string& folder) {
    auto listing = listBackups({folder});
    if (listing.backups.size() > 1) {
        throw SeveralBackups(std::move(listing.backups));
    }
    if (listing.backups.size() == 1) {
        return listing.backups.front();
    }
    if (!listing.unreadable.empty()) {
        throw listing.unreadable.front();
    }
    throw BackupError(BackupError::Kind::notBackup, folder);
}

Backup backup(const BackupInfo& info, const std::optional<std::string>& password,
              std::stop_token stop) {
    const std::string scratch = snapshotFolder();
    std::error_code ignored;
    FileSystem::createPrivateFolders(scratch, ignored);
    removeLeftoverSnapshots(scratch);
    const auto opened = std::make_shared<const IPhoneBackup>(
        info.path, scratch, password ? std::optional<std::string_view>(*password) : std::nullopt,
        std::move(stop));

    NameBook names;
    withPrivateFolder(scratch, [&](const std::string& folder) {
        const auto copied = opened->copyAddressBook(folder);
        if (!copied.empty()) {
            ContactSources::addCards(names, PhoneAddressBook::read(copied.front().path, info.id));
        }
    });
    return Backup{MessagesReader{std::make_shared<BackupSource>(opened), scratch}, std::move(names),
                  opened->info()};
}

} // namespace scrivly::Sources
