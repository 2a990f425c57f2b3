#include "ScrivlyKit/backup/IPhoneBackup.h"

#include "ScrivlyKit/backup/Crypto.h"
#include "ScrivlyKit/backup/FileRecord.h"
#include "ScrivlyKit/backup/Keybag.h"
#include "ScrivlyKit/backup/ManifestMbdb.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <unordered_map>

namespace scrivly {
namespace {

namespace fs = std::filesystem;
using Value = SQLiteConnection::Value;

// Manifest.mbdb of a phone with many apps runs to tens of megabytes.
constexpr std::size_t kMaxMbdbSize = 1u << 30;
constexpr std::size_t kWrappedKeySize = 40;
constexpr std::size_t kClassPrefixSize = 4;
constexpr std::size_t kFileIDSize = 40;
constexpr std::string_view kSQLiteHeader{"SQLite format 3\0", 16};

constexpr std::string_view kHomeDomain = "HomeDomain";
constexpr std::string_view kMediaDomain = "MediaDomain";
constexpr std::string_view kMessagesPath = "Library/SMS/sms.db";
constexpr std::string_view kAddressBookPath = "Library/AddressBook/AddressBook.sqlitedb";

// The phone's home as attachment names write it.
constexpr std::array<std::string_view, 3> kHomePrefixes = {"~/", "/var/mobile/",
                                                           "/private/var/mobile/"};

// One manifest entry: the domain and path of a stored file and what its record says.
struct Entry {
    std::string relativePath;
    std::optional<std::int64_t> flags; // Manifest.db's flags column: 1 file, 2 folder, 4 link
    std::optional<FileRecord> record;  // nothing when the record is missing or damaged
};

std::uint32_t littleEndian32(std::span<const std::uint8_t> bytes) {
    return std::uint32_t{bytes[0]} | (std::uint32_t{bytes[1]} << 8) |
           (std::uint32_t{bytes[2]} << 16) | (std::uint32_t{bytes[3]} << 24);
}

bool isFileID(std::string_view name) {
    return name.size() == kFileIDSize && std::all_of(name.begin(), name.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

std::string lowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
        return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    });
    return text;
}

// 40 wrapped bytes behind a 4-byte little-endian class, as ManifestKey and EncryptionKey are.
std::optional<std::pair<std::uint32_t, std::span<const std::uint8_t>>>
splitWrappedKey(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != kClassPrefixSize + kWrappedKeySize) {
        return std::nullopt;
    }
    return std::pair(littleEndian32(bytes.first(kClassPrefixSize)),
                     bytes.subspan(kClassPrefixSize));
}

// The decrypted Manifest.db may end in padding after its last page; SQLite's header says where
// the database ends. Checks the header and cuts the copy there.
void checkDatabaseCopy(const std::string& copy, const std::string& stored, bool encrypted) {
    std::array<char, 100> header{};
    std::uintmax_t size = 0;
    {
        std::ifstream in(copy, std::ios::binary);
        in.read(header.data(), header.size());
        if (in.gcount() != static_cast<std::streamsize>(header.size()) ||
            std::string_view(header.data(), kSQLiteHeader.size()) != kSQLiteHeader) {
            throw BackupError(BackupError::Kind::damaged, stored,
                              encrypted ? "Manifest.db does not decrypt to a database"
                                        : "Manifest.db is not a database");
        }
        size = fs::file_size(copy);
    }
    const auto byte = [&header](std::size_t at) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(header[at]));
    };
    std::uint32_t pageSize = (byte(16) << 8) | byte(17);
    if (pageSize == 1) {
        pageSize = 65536;
    }
    const std::uint32_t pages = (byte(28) << 24) | (byte(29) << 16) | (byte(30) << 8) | byte(31);
    const std::uintmax_t length = std::uintmax_t{pageSize} * pages;
    const bool validPageSize = pageSize >= 512 && (pageSize & (pageSize - 1)) == 0;
    if (validPageSize && length > 0 && length < size) {
        fs::resize_file(copy, length);
    }
}

bool isInside(const fs::path& path, const fs::path& folder) {
    std::error_code ignored;
    const auto base = fs::weakly_canonical(folder, ignored);
    const auto target = fs::weakly_canonical(path, ignored);
    auto b = base.begin();
    auto t = target.begin();
    for (; b != base.end(); ++b, ++t) {
        if (t == target.end() || *b != *t) {
            return false;
        }
    }
    return true;
}

} // namespace

struct IPhoneBackup::Impl {
    BackupInfo info;
    bool legacy = false;
    ClassKeys keys; // empty when the backup is not encrypted
    // The scratch subfolder and the manifest copy in it; the connection closes before the
    // lease removes the folder.
    std::unique_ptr<SnapshotLease> lease;
    std::unique_ptr<SQLiteConnection> manifest;
    std::unordered_map<std::string, ManifestMbdb::Record> legacyRecords; // by file ID
    // "<domain>-<path>" of the few entries whose ID is not the SHA-1 of that text.
    std::unordered_map<std::string, std::string> renamedIDs;
    mutable std::mutex lock; // manifest is one connection, used by one thread at a time

    const std::string& folder() const { return info.path; }

    std::string storedFile(const std::string& id) const {
        return legacy ? (fs::path(folder()) / id).string()
                      : (fs::path(folder()) / id.substr(0, 2) / id).string();
    }

    std::string idOf(std::string_view domain, std::string_view relativePath) const {
        std::string name(domain);
        name += '-';
        name += relativePath;
        const auto renamed = renamedIDs.find(name);
        return renamed != renamedIDs.end() ? renamed->second : Crypto::sha1Hex(name);
    }

    [[noreturn]] void damaged(const std::string& what) const {
        throw BackupError(BackupError::Kind::damaged, folder(), what);
    }

    void openModern(const std::optional<std::vector<std::uint8_t>>& manifestKey,
                    const std::stop_token& stop);
    void openLegacy();
    std::optional<Entry> entry(const std::string& id) const;
    std::optional<CopiedFile> copy(const std::string& id, const std::string& destination,
                                   Hashing hashing) const;
    std::vector<CopiedFile> copyDatabase(std::string_view relativePath,
                                         const std::string& intoFolder, const char* name,
                                         Hashing hashing, bool required) const;
    // copyDatabase's work; files holds what was written so far when it throws.
    void copyDatabaseFiles(std::string_view relativePath, const fs::path& into, const char* name,
                           Hashing hashing, bool required, std::vector<CopiedFile>& files) const;
};

void IPhoneBackup::Impl::openModern(const std::optional<std::vector<std::uint8_t>>& manifestKey,
                                    const std::stop_token& stop) {
    const auto stored = (fs::path(folder()) / kManifestDatabase).string();
    std::optional<Crypto::SecretKey> key;
    if (manifestKey) {
        const auto split = splitWrappedKey(*manifestKey);
        if (manifestKey->empty()) {
            damaged("Manifest.plist has no ManifestKey");
        }
        if (!split) {
            damaged("its ManifestKey has the wrong length");
        }
        const auto classKey = keys.find(split->first);
        if (classKey == keys.end()) {
            damaged("the password opens no key of the manifest's protection class");
        }
        key = Crypto::unwrapKey(classKey->second, split->second);
        if (!key) {
            damaged("its ManifestKey does not open");
        }
    }
    const auto copy = (fs::path(lease->path()) / kManifestDatabase).string();
    if (!StoredFile::copy(stored, copy, key ? &*key : nullptr, std::nullopt, Hashing::none)) {
        damaged("Manifest.db is missing");
    }
    if (stop.stop_requested()) {
        throw BackupError(BackupError::Kind::cancelled, folder());
    }
    checkDatabaseCopy(copy, stored, key.has_value());

    try {
        manifest = std::make_unique<SQLiteConnection>(copy, /*readOnly=*/true,
                                                      /*immutable=*/true);
        const auto columns = manifest->columns("Files");
        for (const char* column : {"fileID", "domain", "relativePath", "file"}) {
            if (!columns.contains(column)) {
                damaged("Manifest.db has no table of files");
            }
        }
        manifest->query("SELECT fileID, domain, relativePath FROM Files", {},
                        [this](const SQLiteConnection::Row& row) {
                            const auto id = lowercase(row.text(0).value_or(""));
                            const auto name =
                                row.text(1).value_or("") + "-" + row.text(2).value_or("");
                            if (isFileID(id) && id != Crypto::sha1Hex(name)) {
                                renamedIDs.emplace(name, id);
                            }
                        });
    } catch (const SQLiteError& error) {
        damaged("Manifest.db can't be read (" + error.message() + ")");
    }
}

void IPhoneBackup::Impl::openLegacy() {
    const auto path = (fs::path(folder()) / kManifestMbdb).string();
    const auto bytes = StoredFile::read(path, kMaxMbdbSize);
    if (!bytes) {
        damaged("Manifest.db is missing");
    }
    for (auto& record : ManifestMbdb::parse(*bytes, path)) {
        auto id = record.fileID();
        legacyRecords.emplace(std::move(id), std::move(record));
    }
}

std::optional<Entry> IPhoneBackup::Impl::entry(const std::string& id) const {
    if (legacy) {
        const auto found = legacyRecords.find(id);
        if (found == legacyRecords.end()) {
            return std::nullopt;
        }
        const auto& source = found->second;
        FileRecord record{source.path, source.size, source.mode, source.protectionClass,
                          source.encryptionKey};
        return Entry{source.path, std::nullopt, std::move(record)};
    }
    std::optional<Entry> found;
    const std::lock_guard guard(lock);
    try {
        manifest->query("SELECT relativePath, flags, file FROM Files WHERE fileID = ?",
                        {Value::text(id)}, [&found](const SQLiteConnection::Row& row) {
                            Entry entry;
                            entry.relativePath = row.text(0).value_or("");
                            if (!row.isNull(1)) {
                                entry.flags = row.integer(1);
                            }
                            if (const auto blob = row.blob(2)) {
                                entry.record = FileRecord::decode(*blob);
                            }
                            found = std::move(entry);
                        });
    } catch (const SQLiteError& error) {
        damaged("Manifest.db can't be read (" + error.message() + ")");
    }
    return found;
}

std::optional<CopiedFile> IPhoneBackup::Impl::copy(const std::string& id,
                                                   const std::string& destination,
                                                   Hashing hashing) const {
    if (isInside(destination, folder())) {
        throw std::invalid_argument("copies are never written into the backup: " + destination);
    }
    const auto stored = storedFile(id);
    const auto found = entry(id);
    const bool encrypted = info.encrypted;
    if (!found) {
        // Without a record there is no key and no length: only a plain file can be used.
        if (encrypted) {
            return std::nullopt;
        }
        return StoredFile::copy(stored, destination, nullptr, std::nullopt, hashing);
    }
    const auto& name = found->relativePath;
    if (!found->record) {
        if (encrypted) {
            damaged("the manifest's record of " + name + " is damaged");
        }
        if (found->flags && *found->flags != 1) {
            damaged(name + " is recorded as something other than a file");
        }
        return StoredFile::copy(stored, destination, nullptr, std::nullopt, hashing);
    }
    const auto& record = *found->record;
    const auto kind = record.kind();
    if ((kind && *kind != FileRecord::Kind::file) ||
        (!kind && found->flags && *found->flags != 1)) {
        damaged(name + " is recorded as something other than a file");
    }
    if (record.encryptionKey.empty()) {
        return StoredFile::copy(stored, destination, nullptr, record.size, hashing);
    }
    const auto split = splitWrappedKey(record.encryptionKey);
    if (!split) {
        damaged("the key of " + name + " has the wrong length");
    }
    const auto classKey = keys.find(split->first);
    if (classKey == keys.end()) {
        damaged("the password opens no key of the protection class of " + name);
    }
    const auto key = Crypto::unwrapKey(classKey->second, split->second);
    if (!key) {
        damaged("the key of " + name + " does not open");
    }
    return StoredFile::copy(stored, destination, &*key, record.size, hashing);
}

std::vector<CopiedFile> IPhoneBackup::Impl::copyDatabase(std::string_view relativePath,
                                                         const std::string& intoFolder,
                                                         const char* name, Hashing hashing,
                                                         bool required) const {
    const fs::path into(intoFolder);
    const std::string log = std::string(name) + "-wal";
    // A log left from an earlier copy would be folded into this one.
    for (const auto& stale : {log, std::string(name) + "-shm"}) {
        std::error_code ignored;
        fs::remove(into / stale, ignored);
    }

    std::vector<CopiedFile> files;
    try {
        copyDatabaseFiles(relativePath, into, name, hashing, required, files);
    } catch (...) {
        // Half a database is no copy: the main file without its log lacks the newest rows.
        for (const auto& file : files) {
            std::error_code ignored;
            fs::remove(file.path, ignored);
        }
        throw;
    }
    return files;
}

void IPhoneBackup::Impl::copyDatabaseFiles(std::string_view relativePath, const fs::path& into,
                                           const char* name, Hashing hashing, bool required,
                                           std::vector<CopiedFile>& files) const {
    const std::string log = std::string(name) + "-wal";
    const auto mainID = idOf(kHomeDomain, relativePath);
    auto main = copy(mainID, (into / name).string(), hashing);
    if (!main) {
        if (entry(mainID)) {
            damaged(std::string(relativePath) + " is listed in the manifest but not stored");
        }
        if (required) {
            throw BackupError(BackupError::Kind::noMessages, folder());
        }
        return;
    }
    files.push_back(std::move(*main));

    const auto logPath = std::string(relativePath) + "-wal";
    const auto logID = idOf(kHomeDomain, logPath);
    auto copiedLog = copy(logID, (into / log).string(), hashing);
    if (copiedLog) {
        files.push_back(std::move(*copiedLog));
    } else if (entry(logID)) {
        // Without its log the database would silently lack its newest rows.
        damaged(logPath + " is listed in the manifest but not stored");
    }
}

IPhoneBackup::IPhoneBackup(const std::string& deviceFolder, const std::string& scratchFolder,
                           std::optional<std::string_view> password, std::stop_token stop)
    : m_impl(std::make_unique<Impl>()) {
    // Checked first, so that an unusable folder costs no key derivation.
    FileSystem::requireOwnerOnlyFolder(scratchFolder);
    auto& impl = *m_impl;
    impl.info = readBackupInfo(deviceFolder);
    if (!impl.info.complete) {
        throw BackupError(BackupError::Kind::unfinished, deviceFolder);
    }
    const auto keys = readBackupKeys(deviceFolder);
    const auto manifestPath = (fs::path(deviceFolder) / kManifestPlist).string();
    std::optional<std::vector<std::uint8_t>> manifestKey;
    if (keys.encrypted) {
        if (!password) {
            throw BackupError(BackupError::Kind::needsPassword, deviceFolder);
        }
        impl.keys = Keybag::parse(keys.keybag, manifestPath).unlock(*password, stop, deviceFolder);
        manifestKey = keys.manifestKey;
    }

    std::error_code ignored;
    const bool modern = fs::exists(fs::path(deviceFolder) / kManifestDatabase, ignored);
    impl.legacy = !modern && fs::exists(fs::path(deviceFolder) / kManifestMbdb, ignored);
    if (impl.legacy) {
        impl.openLegacy();
        return;
    }
    impl.lease = std::make_unique<SnapshotLease>(scratchFolder);
    FileSystem::createPrivateFolders(impl.lease->path());
    impl.openModern(manifestKey, stop);
}

IPhoneBackup::~IPhoneBackup() = default;
IPhoneBackup::IPhoneBackup(IPhoneBackup&&) noexcept = default;
IPhoneBackup& IPhoneBackup::operator=(IPhoneBackup&&) noexcept = default;

const BackupInfo& IPhoneBackup::info() const {
    return m_impl->info;
}

bool IPhoneBackup::hasMessages() const {
    const auto found = m_impl->entry(m_impl->idOf(kHomeDomain, kMessagesPath));
    if (!found) {
        return false;
    }
    const auto kind = found->record ? found->record->kind() : std::nullopt;
    return kind ? *kind == FileRecord::Kind::file : found->flags.value_or(1) == 1;
}

std::vector<CopiedFile> IPhoneBackup::copyMessagesDatabase(const std::string& intoFolder,
                                                           Hashing hashing) const {
    return m_impl->copyDatabase(kMessagesPath, intoFolder, kMessagesDatabase, hashing, true);
}

std::vector<CopiedFile> IPhoneBackup::copyAddressBook(const std::string& intoFolder,
                                                      Hashing hashing) const {
    return m_impl->copyDatabase(kAddressBookPath, intoFolder, kAddressBook, hashing, false);
}

std::string IPhoneBackup::storedPath(std::string_view domain, std::string_view relativePath) const {
    return m_impl->storedFile(m_impl->idOf(domain, relativePath));
}

std::optional<std::string>
IPhoneBackup::attachmentLocation(const std::optional<std::string>& storedName) const {
    if (!storedName) {
        return std::nullopt;
    }
    for (const auto prefix : kHomePrefixes) {
        if (storedName->starts_with(prefix) && storedName->size() > prefix.size()) {
            return storedPath(kMediaDomain, std::string_view(*storedName).substr(prefix.size()));
        }
    }
    return std::nullopt;
}

std::optional<CopiedFile> IPhoneBackup::extractFile(const std::string& storedPath,
                                                    const std::string& destination,
                                                    Hashing hashing) const {
    const auto id = fs::path(storedPath).filename().string();
    if (!isFileID(id) || m_impl->storedFile(id) != storedPath) {
        throw std::invalid_argument("not a stored file of this backup: " + storedPath);
    }
    return m_impl->copy(id, destination, hashing);
}

} // namespace scrivly
