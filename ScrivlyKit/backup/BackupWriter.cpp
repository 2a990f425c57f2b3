#include "ScrivlyKit/backup/BackupWriter.h"

#include "ScrivlyKit/backup/BackupInfo.h"
#include "ScrivlyKit/backup/Crypto.h"
#include "ScrivlyKit/backup/FileRecord.h"
#include "ScrivlyKit/backup/Keybag.h"
#include "ScrivlyKit/backup/ManifestMbdb.h"
#include "ScrivlyKit/backup/PropertyList.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/platform/UUID.h"

#include <filesystem>
#include <fstream>
#include <map>

namespace scrivly::BackupWriter {
namespace {

namespace fs = std::filesystem;
using Value = SQLiteConnection::Value;
using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view kMacAttachments = "~/Library/Messages/Attachments/";
constexpr std::string_view kPhoneAttachments = "~/Library/SMS/Attachments/";

constexpr std::uint32_t kRealPasswordIterations = 10'000'000;
constexpr std::uint32_t kRealIterations = 10'000;
// Classes 1 to 11, as a phone's keybag has; the databases use class 3 (protected until the
// first unlock), attachments and the manifest class 4 (no protection).
constexpr std::uint32_t kClassCount = 11;
constexpr std::uint32_t kDatabaseClass = 3;
constexpr std::uint32_t kPlainClass = 4;

constexpr std::uint32_t kFileMode = 0100644;
constexpr std::uint32_t kFolderMode = 0040755;

// The phone's address book: the tables and columns the reader looks at, and a few more.
constexpr const char* kAddressBookSchema = R"sql(
CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, First TEXT, Last TEXT,
    Middle TEXT, FirstPhonetic TEXT, MiddlePhonetic TEXT, LastPhonetic TEXT, Organization TEXT,
    Department TEXT, Note TEXT, Kind INTEGER, Birthday TEXT, JobTitle TEXT, Nickname TEXT,
    Prefix TEXT, Suffix TEXT, CreationDate INTEGER, ModificationDate INTEGER);
CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, property INTEGER,
    identifier INTEGER, label INTEGER, value TEXT);)sql";

constexpr const char* kManifestSchema = R"sql(
CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER,
    file BLOB);
CREATE INDEX FilesDomainIdx ON Files(domain);
CREATE INDEX FilesRelativePathIdx ON Files(relativePath);
CREATE INDEX FilesFlagsIdx ON Files(flags);
CREATE TABLE Properties (key TEXT PRIMARY KEY, value BLOB);)sql";

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

Bytes littleEndianClass(std::uint32_t protectionClass) {
    return {static_cast<std::uint8_t>(protectionClass),
            static_cast<std::uint8_t>(protectionClass >> 8),
            static_cast<std::uint8_t>(protectionClass >> 16),
            static_cast<std::uint8_t>(protectionClass >> 24)};
}

// Encrypts source into destination with AES-256-CBC and PKCS#7 padding, a piece at a time.
void encryptFile(const std::string& source, const std::string& destination,
                 const Crypto::SecretKey& key) {
    std::ifstream in(source, std::ios::binary);
    std::ofstream out(destination, std::ios::binary | std::ios::trunc);
    if (!in || !out) {
        throw fs::filesystem_error("cannot encrypt file", source, destination,
                                   std::make_error_code(std::errc::io_error));
    }
    Crypto::CBCCipher cipher(key, Crypto::CBCCipher::Direction::encrypt);
    std::vector<char> buffer(1 << 16);
    Bytes encrypted;
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto got = static_cast<std::size_t>(in.gcount());
        encrypted.clear();
        cipher.update(asBytes(std::string_view(buffer.data(), got)), encrypted);
        out.write(reinterpret_cast<const char*>(encrypted.data()),
                  static_cast<std::streamsize>(encrypted.size()));
    }
    encrypted.clear();
    cipher.finish(encrypted);
    out.write(reinterpret_cast<const char*>(encrypted.data()),
              static_cast<std::streamsize>(encrypted.size()));
    out.close();
    if (!out) {
        throw fs::filesystem_error("cannot encrypt file", destination,
                                   std::make_error_code(std::errc::io_error));
    }
}

// Removes the work folder whatever happens.
class WorkFolder {
public:
    explicit WorkFolder(fs::path path) : m_path(std::move(path)) {
        FileSystem::createPrivateFolders(m_path.string());
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

// One manifest entry to be written.
struct Stored {
    std::string domain;
    FileRecord record;
    std::int64_t flags = 1;
};

class Writer {
public:
    Writer(fs::path device, const Options& options)
        : m_device(std::move(device)), m_options(options) {
        if (options.password) {
            makeKeybag(*options.password);
        }
    }

    bool encrypted() const { return m_keybag.has_value(); }

    // Stores the file at source under domain and relativePath, encrypted with a key of its own
    // when the backup is.
    void store(std::string_view domain, const std::string& relativePath, const std::string& source,
               std::uint32_t protectionClass) {
        const auto id = Crypto::sha1Hex(std::string(domain) + "-" + relativePath);
        const fs::path destination =
            m_options.legacyLayout ? m_device / id : m_device / id.substr(0, 2) / id;
        fs::create_directories(destination.parent_path());

        Stored entry{std::string(domain), {}, 1};
        entry.record.relativePath = relativePath;
        entry.record.size = fs::file_size(source);
        entry.record.mode = kFileMode;
        entry.record.protectionClass = protectionClass;
        if (encrypted()) {
            const auto key = Crypto::SecretKey::random();
            encryptFile(source, destination.string(), key);
            entry.record.encryptionKey = littleEndianClass(protectionClass);
            const auto wrapped = Crypto::wrapKey(m_classKeys.at(protectionClass), key);
            entry.record.encryptionKey.insert(entry.record.encryptionKey.end(), wrapped.begin(),
                                              wrapped.end());
        } else {
            FileSystem::copyFile(source, destination.string());
        }
        m_entries.push_back(std::move(entry));
    }

    void folder(std::string_view domain, const std::string& relativePath) {
        Stored entry{std::string(domain), {}, 2};
        entry.record.relativePath = relativePath;
        entry.record.mode = kFolderMode;
        m_entries.push_back(std::move(entry));
    }

    // Writes Manifest.db (or Manifest.mbdb) and the three property lists.
    void finish(const fs::path& work) {
        std::optional<Bytes> manifestKey;
        if (m_options.legacyLayout) {
            writeMbdb();
        } else {
            manifestKey = writeManifestDatabase(work);
        }
        writePropertyLists(manifestKey);
    }

private:
    void makeKeybag(const std::string& password) {
        Keybag keybag;
        keybag.version = 3;
        keybag.type = 1; // a backup keybag
        keybag.uuid = Crypto::randomBytes(16);
        keybag.hmck = Crypto::randomBytes(40);
        keybag.salt = Crypto::randomBytes(20);
        keybag.iterations = m_options.fastKeys ? 1 : kRealIterations;
        if (!m_options.legacyLayout) {
            keybag.passwordWrapType = 1;
            keybag.passwordIterations = m_options.fastKeys ? 1 : kRealPasswordIterations;
            keybag.passwordSalt = Crypto::randomBytes(20);
        }
        const auto kek = keybag.keyEncryptionKey(password, {});
        for (std::uint32_t protectionClass = 1; protectionClass <= kClassCount; ++protectionClass) {
            const auto key = Crypto::SecretKey::random();
            keybag.classes.push_back({Crypto::randomBytes(16), protectionClass,
                                      Keybag::kWrappedByPassword, 0, Crypto::wrapKey(kek, key)});
            m_classKeys.emplace(protectionClass, key);
        }
        m_keybag = std::move(keybag);
    }

    std::optional<Bytes> writeManifestDatabase(const fs::path& work) {
        const auto plain = (work / kManifestDatabase).string();
        {
            SQLiteConnection db(plain, /*readOnly=*/false, /*immutable=*/false);
            db.execute(kManifestSchema);
            db.execute("BEGIN");
            for (const auto& entry : m_entries) {
                const auto id = Crypto::sha1Hex(entry.domain + "-" + entry.record.relativePath);
                db.run("INSERT INTO Files VALUES (?, ?, ?, ?, ?)",
                       {Value::text(id), Value::text(entry.domain),
                        Value::text(entry.record.relativePath), Value::integer(entry.flags),
                        Value::blob(entry.record.encode())});
            }
            db.execute("COMMIT");
        }
        const auto destination = (m_device / kManifestDatabase).string();
        if (!encrypted()) {
            FileSystem::copyFile(plain, destination);
            return std::nullopt;
        }
        const auto key = Crypto::SecretKey::random();
        encryptFile(plain, destination, key);
        auto manifestKey = littleEndianClass(kPlainClass);
        const auto wrapped = Crypto::wrapKey(m_classKeys.at(kPlainClass), key);
        manifestKey.insert(manifestKey.end(), wrapped.begin(), wrapped.end());
        return manifestKey;
    }

    void writeMbdb() {
        std::vector<ManifestMbdb::Record> records;
        const auto modified = static_cast<std::uint32_t>(m_options.date.unixSeconds());
        for (const auto& entry : m_entries) {
            ManifestMbdb::Record record;
            record.domain = entry.domain;
            record.path = entry.record.relativePath;
            record.encryptionKey = entry.record.encryptionKey;
            record.mode = static_cast<std::uint16_t>(entry.record.mode);
            record.userID = 501;
            record.groupID = 501;
            record.modified = record.accessed = record.changed = modified;
            record.size = entry.record.size;
            record.protectionClass = static_cast<std::uint8_t>(entry.record.protectionClass);
            records.push_back(std::move(record));
        }
        const auto bytes = ManifestMbdb::encode(records);
        FileSystem::writeFileAtomically(
            (m_device / kManifestMbdb).string(),
            std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

    void writePropertyLists(const std::optional<Bytes>& manifestKey) {
        const bool legacy = m_options.legacyLayout;
        const std::string productType = legacy ? "iPhone8,1" : "iPhone15,2";
        const std::string productVersion = legacy ? "9.3.5" : "17.5";
        const std::string buildVersion = legacy ? "13G36" : "21F79";

        auto info = PropertyList::dictionary();
        info.set("Build Version", PropertyList::string(buildVersion));
        info.set("Device Name", PropertyList::string(m_options.deviceName));
        info.set("Display Name", PropertyList::string(m_options.deviceName));
        info.set("GUID", PropertyList::string(randomUUID()));
        info.set("Last Backup Date", PropertyList::date(m_options.date));
        info.set("Product Name", PropertyList::string("iPhone"));
        info.set("Product Type", PropertyList::string(productType));
        info.set("Product Version", PropertyList::string(productVersion));
        info.set("Target Identifier", PropertyList::string(m_options.deviceID));
        info.set("Target Type", PropertyList::string("Device"));
        info.set("Unique Identifier", PropertyList::string(m_options.deviceID));
        FileSystem::writeFileAtomically((m_device / kInfoPlist).string(), info.xml());

        auto lockdown = PropertyList::dictionary();
        lockdown.set("BuildVersion", PropertyList::string(buildVersion));
        lockdown.set("DeviceName", PropertyList::string(m_options.deviceName));
        lockdown.set("ProductType", PropertyList::string(productType));
        lockdown.set("ProductVersion", PropertyList::string(productVersion));
        lockdown.set("UniqueDeviceID", PropertyList::string(m_options.deviceID));
        auto manifest = PropertyList::dictionary();
        manifest.set("Applications", PropertyList::dictionary());
        if (m_keybag) {
            manifest.set("BackupKeyBag", PropertyList::data(m_keybag->encode()));
        }
        manifest.set("Date", PropertyList::date(m_options.date));
        manifest.set("IsEncrypted", PropertyList::boolean(encrypted()));
        manifest.set("Lockdown", std::move(lockdown));
        if (manifestKey) {
            manifest.set("ManifestKey", PropertyList::data(*manifestKey));
        }
        manifest.set("SystemDomainsVersion", PropertyList::string(legacy ? "22.0" : "24.0"));
        manifest.set("Version", PropertyList::string(legacy ? "9.1" : "10.0"));
        manifest.set("WasPasscodeSet", PropertyList::boolean(false));
        writeBinary(kManifestPlist, manifest);

        auto status = PropertyList::dictionary();
        status.set("BackupState", PropertyList::string("new"));
        status.set("Date", PropertyList::date(m_options.date));
        status.set("IsFullBackup", PropertyList::boolean(false));
        status.set("SnapshotState", PropertyList::string("finished"));
        status.set("UUID", PropertyList::string(randomUUID()));
        status.set("Version", PropertyList::string("3.3"));
        writeBinary(kStatusPlist, status);
    }

    void writeBinary(const char* name, const PropertyList& list) {
        const auto bytes = list.binary();
        FileSystem::writeFileAtomically(
            (m_device / name).string(),
            std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

    fs::path m_device;
    const Options& m_options;
    std::optional<Keybag> m_keybag;
    ClassKeys m_classKeys;
    std::vector<Stored> m_entries;
};

// The attachments whose stored names are under the Mac's attachments folder, as (phone-relative
// path in MediaDomain, file on this computer); their stored names become the phone's.
std::vector<std::pair<std::string, std::string>> movePhoneAttachments(SQLiteConnection& db,
                                                                      const std::string& home) {
    std::vector<std::pair<std::string, std::string>> files;
    if (!db.columns("attachment").contains("filename")) {
        return files;
    }
    db.query("SELECT filename FROM attachment WHERE substr(filename, 1, ?) = ?",
             {Value::integer(static_cast<std::int64_t>(kMacAttachments.size())),
              Value::text(std::string(kMacAttachments))},
             [&](const SQLiteConnection::Row& row) {
                 const auto rest = row.text(0)->substr(kMacAttachments.size());
                 files.emplace_back(
                     "Library/SMS/Attachments/" + rest,
                     (fs::path(home) / "Library" / "Messages" / "Attachments" / rest).string());
             });
    db.run("UPDATE attachment SET filename = ? || substr(filename, ?) "
           "WHERE substr(filename, 1, ?) = ?",
           {Value::text(std::string(kPhoneAttachments)),
            Value::integer(static_cast<std::int64_t>(kMacAttachments.size()) + 1),
            Value::integer(static_cast<std::int64_t>(kMacAttachments.size())),
            Value::text(std::string(kMacAttachments))});
    return files;
}

// The statements that move the newest messages out of (prefix "main.") or back in from a copy
// ("full.") of the database; attachment tables take part when the database has them.
std::string newestMessages(std::size_t count) {
    return "CREATE TEMP TABLE moved AS SELECT ROWID AS id FROM full.message "
           "ORDER BY date DESC, ROWID DESC LIMIT " +
           std::to_string(count) + ";";
}

// Leaves sms.db without its newest messages and opens it with them in its log only, as a phone
// that has not checkpointed; the log stays whole while the answered connection is open.
std::unique_ptr<SQLiteConnection> splitIntoLog(const fs::path& database, std::size_t count) {
    const auto full = database.parent_path() / "full.db";
    fs::copy_file(database, full, fs::copy_options::overwrite_existing);
    bool withAttachments = false;
    {
        SQLiteConnection db(database.string(), /*readOnly=*/false, /*immutable=*/false);
        withAttachments =
            !db.columns("message_attachment_join").empty() && !db.columns("attachment").empty();
        db.run("ATTACH DATABASE ? AS full", {Value::text(full.string())});
        db.execute(newestMessages(count));
        db.execute("BEGIN; DELETE FROM main.chat_message_join WHERE message_id IN moved;");
        if (withAttachments) {
            db.execute("DELETE FROM main.attachment WHERE ROWID IN (SELECT attachment_id FROM "
                       "main.message_attachment_join WHERE message_id IN moved) AND ROWID NOT IN "
                       "(SELECT attachment_id FROM main.message_attachment_join WHERE message_id "
                       "NOT IN moved);"
                       "DELETE FROM main.message_attachment_join WHERE message_id IN moved;");
        }
        db.execute("DELETE FROM main.message WHERE ROWID IN moved; COMMIT;");
    }
    auto db = std::make_unique<SQLiteConnection>(database.string(), false, false);
    db->execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
    db->run("ATTACH DATABASE ? AS full", {Value::text(full.string())});
    db->execute(newestMessages(count));
    db->execute("BEGIN; INSERT INTO main.message SELECT * FROM full.message WHERE ROWID IN moved;"
                "INSERT INTO main.chat_message_join SELECT * FROM full.chat_message_join "
                "WHERE message_id IN moved;");
    if (withAttachments) {
        db->execute("INSERT INTO main.attachment SELECT * FROM full.attachment WHERE ROWID IN "
                    "(SELECT attachment_id FROM full.message_attachment_join WHERE message_id IN "
                    "moved) AND ROWID NOT IN (SELECT ROWID FROM main.attachment);"
                    "INSERT INTO main.message_attachment_join SELECT * FROM "
                    "full.message_attachment_join WHERE message_id IN moved;");
    }
    db->execute("COMMIT;");
    return db;
}

// The phone's address book with one card per name, its numbers and addresses in the order given.
void writeAddressBook(const std::string& path,
                      const std::vector<std::pair<std::string, std::string>>& people) {
    SQLiteConnection db(path, /*readOnly=*/false, /*immutable=*/false);
    db.execute(kAddressBookSchema);
    db.execute("BEGIN");
    std::map<std::string, std::int64_t> cards;
    std::int64_t nextCard = 1;
    for (const auto& [address, name] : people) {
        auto card = cards.find(name);
        if (card == cards.end()) {
            const auto space = name.rfind(' ');
            const auto first = space == std::string::npos ? name : name.substr(0, space);
            const auto last = space == std::string::npos ? std::string() : name.substr(space + 1);
            db.run("INSERT INTO ABPerson (ROWID, First, Last, Kind) VALUES (?, ?, ?, 0)",
                   {Value::integer(nextCard), Value::text(first), Value::text(last)});
            card = cards.emplace(name, nextCard++).first;
        }
        const bool isEmail = address.find('@') != std::string::npos;
        db.run(
            "INSERT INTO ABMultiValue (record_id, property, identifier, value) "
            "VALUES (?, ?, 0, ?)",
            {Value::integer(card->second), Value::integer(isEmail ? 4 : 3), Value::text(address)});
    }
    db.execute("COMMIT");
}

} // namespace

std::string write(const std::string& folder, const Contents& contents, const Options& options) {
    const fs::path device = fs::path(folder) / options.deviceID;
    std::error_code ignored;
    fs::remove_all(device, ignored);
    FileSystem::createPrivateFolders(device.string());
    const WorkFolder work(fs::path(folder) / ("." + options.deviceID + "-" + randomUUID()));

    Writer writer(device, options);
    writer.folder("HomeDomain", "Library/SMS");
    writer.folder("MediaDomain", "Library/SMS/Attachments");

    const auto messages = copyDatabase(contents.database, (work.path() / "sms").string(), "sms.db");
    std::vector<std::pair<std::string, std::string>> attachments;
    {
        SQLiteConnection db(messages, /*readOnly=*/false, /*immutable=*/false);
        attachments = movePhoneAttachments(db, contents.home);
    }
    {
        std::unique_ptr<SQLiteConnection> log;
        if (options.newestInLog > 0) {
            log = splitIntoLog(messages, options.newestInLog);
        }
        writer.store("HomeDomain", "Library/SMS/sms.db", messages, kDatabaseClass);
        if (log) {
            writer.store("HomeDomain", "Library/SMS/sms.db-wal", messages + "-wal", kDatabaseClass);
        }
    }
    for (const auto& [relativePath, source] : attachments) {
        // A file that is not on the computer stays out of the backup, as on a phone whose
        // attachment was never downloaded.
        if (fs::is_regular_file(source, ignored)) {
            writer.store("MediaDomain", relativePath, source, kPlainClass);
        }
    }
    if (!contents.people.empty()) {
        const auto book = (work.path() / "AddressBook.sqlitedb").string();
        writeAddressBook(book, contents.people);
        writer.store("HomeDomain", "Library/AddressBook/AddressBook.sqlitedb", book,
                     kDatabaseClass);
    }
    writer.finish(work.path());
    return device.string();
}

} // namespace scrivly::BackupWriter
