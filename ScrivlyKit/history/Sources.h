#pragma once

#include "ScrivlyKit/backup/BackupInfo.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/records/Date.h"

#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

// Where a history is read from, as a user names it.
namespace scrivly::Sources {

// The user's home folder: $HOME, else the password database's entry.
std::string userHome();
// The folder above Library when the database lies at Library/Messages/chat.db, as it does in a
// home folder or a copied one.
std::optional<std::string> homeOfDatabase(const std::string& database);
// The Attachments folder beside a database file, when there is one: where a chat.db copied
// without its Library/Messages folders usually has it.
std::optional<std::string> attachmentsBeside(const std::string& database);
// The Attachments folder that a folder the user chose stands for: its Library/Messages/Attachments
// when it has one (a home folder, or a copy of one), else the folder itself.
std::string attachmentsIn(const std::string& chosen);
// Where reads make their private copies: scrivly-snapshots in the per-user temporary folder.
std::string snapshotFolder();

// A Mac's Messages database: path (else the default under the user's home), with attachments
// under home (else the home the database lies in, else the user's). Read through private copies
// unless direct. Copies left by runs that were killed are removed first.
MessagesReader database(const std::optional<std::string>& path,
                        const std::optional<std::string>& home, bool direct);

// The demonstration history written into folder (replaced), with its people's names.
struct Sample {
    std::string database; // its chat.db
    std::string home;     // the folder its attachments' "~/" stands for
    MessagesReader reader;
    NameBook names;
};
Sample sample(const std::string& folder, Date now);

// The demonstration history written as an iPhone backup into folder/<its device id> (replacing
// one there), encrypted when a password is given, with the phone's key-derivation counts unless
// fastKeys. Answers the device folder. Throws as SampleDatabase::create and
// BackupWriter::write.
std::string sampleBackup(const std::string& folder, Date now,
                         const std::optional<std::string>& password, bool fastKeys);
// The device folder name sampleBackup writes.
std::string sampleBackupName();

// The backups in folders (device folders, or folders of them), readable ones only, in name
// order.
std::vector<BackupInfo> backups(const std::vector<std::string>& folders);
// Where this system's backup programs put backups; none on Linux.
std::vector<std::string> usualBackupFolders();

// A folder given as a backup holds more than one; backups lists them.
class SeveralBackups : public std::runtime_error {
public:
    explicit SeveralBackups(std::vector<BackupInfo> backups);
    std::vector<BackupInfo> backups;
};

// The backup a folder names: the device folder itself, or the only one inside it. Throws
// SeveralBackups, or BackupError (notBackup when there is none, or the reason it can't be read).
BackupInfo findBackup(const std::string& folder);

// An iPhone backup's Messages history, its keys derived once (stop cancels the derivation),
// read through private copies in the snapshot folder, with the names of the phone's own address
// book. Throws BackupError (needsPassword, wrongPassword, unfinished, damaged, cancelled…).
struct Backup {
    MessagesReader reader;
    NameBook names;
    BackupInfo info;
};
Backup backup(const BackupInfo& backup, const std::optional<std::string>& password,
              std::stop_token stop = {});

} // namespace scrivly::Sources
