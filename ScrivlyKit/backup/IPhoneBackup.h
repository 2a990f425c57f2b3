#pragma once

#include "ScrivlyKit/backup/BackupInfo.h"
#include "ScrivlyKit/backup/StoredFile.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace scrivly {

// An iPhone backup opened for reading: its device folder of hashed file names, the manifest
// that names them (Manifest.db, or Manifest.mbdb before iOS 10) and, when encrypted, the class
// keys that the password opened. The backup folder is only ever read: copies and the decrypted
// manifest go to folders the caller gives, and no database is opened where it lies.
//
// Every method may be called from any thread; reads of the manifest take turns.
class IPhoneBackup {
public:
    // The names copies are given, paired with their logs ("-wal") as SQLite expects.
    static constexpr const char* kMessagesDatabase = "sms.db";
    static constexpr const char* kAddressBook = "AddressBook.sqlitedb";

    // Opens deviceFolder. password is needed for an encrypted backup and ignored otherwise; keys
    // are derived once, here (about five seconds for a real backup), and stop cancels between
    // the derivation's stages. scratchFolder must be an owner-only folder of this user: the
    // manifest is copied (decrypted) into a fresh subfolder of it, held by a SnapshotLease and
    // removed when this object goes.
    // Throws BackupError: notBackup, unfinished (SnapshotState is not "finished"),
    // needsPassword, wrongPassword, cancelled, damaged (a keybag, ManifestKey, manifest or
    // property list that is missing, cut short or of the wrong shape), unreadable;
    // FileSystem::UnsafeFolderError for a scratch folder others could reach;
    // std::filesystem::filesystem_error when the scratch copy can't be written.
    IPhoneBackup(const std::string& deviceFolder, const std::string& scratchFolder,
                 std::optional<std::string_view> password, std::stop_token stop = {});
    ~IPhoneBackup();
    IPhoneBackup(IPhoneBackup&&) noexcept;
    IPhoneBackup& operator=(IPhoneBackup&&) noexcept;
    IPhoneBackup(const IPhoneBackup&) = delete;
    IPhoneBackup& operator=(const IPhoneBackup&) = delete;

    // Device name, iOS version, backup date and the like, as read when opening.
    const BackupInfo& info() const;

    // Whether the manifest lists a Messages database (HomeDomain Library/SMS/sms.db).
    bool hasMessages() const;

    // Writes the Messages database into intoFolder as kMessagesDatabase and, when the backup
    // has one, its log as kMessagesDatabase + "-wal" (a stale log there is removed first), both
    // decrypted; the caller then folds the log into the copy (see foldLog). Answers the files
    // written, database first. Throws BackupError: noMessages, damaged when a listed file is
    // not stored, is shorter than its record or its key doesn't open; std::invalid_argument
    // when intoFolder lies inside the backup.
    std::vector<CopiedFile> copyMessagesDatabase(const std::string& intoFolder,
                                                 Hashing hashing = Hashing::none) const;

    // The same for the phone's address book (HomeDomain Library/AddressBook), written as
    // kAddressBook (+ "-wal"). Nothing written, and an empty answer, when the backup has none.
    std::vector<CopiedFile> copyAddressBook(const std::string& intoFolder,
                                            Hashing hashing = Hashing::none) const;

    // Where the backup keeps a file of the phone: the device folder, then (from iOS 10) a
    // subfolder of the name's first two characters, then the file's ID, which is the one that
    // Manifest.db records for this domain and path, else the SHA-1 of "<domain>-<path>". The file
    // need not exist.
    std::string storedPath(std::string_view domain, std::string_view relativePath) const;

    // Where the file an attachment's stored name stands for is kept in the backup: names
    // beginning "~/" or "/var/mobile/" (the phone's home) live in MediaDomain. Nothing for no
    // name or any other form. The file need not exist; see extractFile.
    std::optional<std::string>
    attachmentLocation(const std::optional<std::string>& storedName) const;

    // Copies one stored file (a path that storedPath or attachmentLocation gave) to
    // destination, decrypted and cut to its recorded length. Nothing when the backup does not
    // hold it (a normal case: deleted on the phone, or kept in iCloud only) or, for an encrypted
    // backup, when the manifest has no key for it. Throws BackupError (damaged) for a stored
    // file that is no regular file, shorter than its record, or whose key doesn't open;
    // std::invalid_argument for a path that is not one of this backup's stored files or a
    // destination inside the backup.
    std::optional<CopiedFile> extractFile(const std::string& storedPath,
                                          const std::string& destination,
                                          Hashing hashing = Hashing::none) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace scrivly
