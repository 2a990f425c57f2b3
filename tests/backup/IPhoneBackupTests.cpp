// Backups written by BackupWriter from the sample history, read back plain and encrypted, in
// both layouts; then broken on purpose, part by part.
#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/backup/BackupInfo.h"
#include "ScrivlyKit/backup/BackupWriter.h"
#include "ScrivlyKit/backup/Crypto.h"
#include "ScrivlyKit/backup/IPhoneBackup.h"
#include "ScrivlyKit/backup/Keybag.h"
#include "ScrivlyKit/backup/PropertyList.h"
#include "ScrivlyKit/contacts/ContactSources.h"
#include "ScrivlyKit/contacts/PhoneAddressBook.h"
#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/sample/SampleDatabase.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>

#include <sys/stat.h>

namespace scrivly {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using Kind = BackupError::Kind;
using testing::readFile;

constexpr const char* kPassword = "correct horse 🐎";
constexpr std::size_t kNewestInLog = 3;

std::string sha256(std::string_view bytes) {
    Crypto::Digest digest(Crypto::Hash::sha256);
    digest.update(bytes);
    return digest.hex();
}

// Every file under folder with the SHA-256 of its bytes, by relative path.
std::map<std::string, std::string> fingerprint(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const auto name = fs::relative(entry.path(), folder).string();
        files[name] = entry.is_regular_file() ? sha256(readFile(entry.path())) : "folder";
    }
    return files;
}

void writeBytes(const fs::path& path, std::span<const std::uint8_t> bytes) {
    testing::writeFile(path,
                       std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

PropertyList readPlist(const fs::path& path) {
    const auto text = readFile(path);
    auto list = PropertyList::parse(
        std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    EXPECT_TRUE(list) << path;
    return list ? std::move(*list) : PropertyList::dictionary();
}

// Rewrites Manifest.plist's keybag through change.
void changeKeybag(const fs::path& device, const std::function<Bytes(Keybag)>& change) {
    auto manifest = readPlist(device / kManifestPlist);
    const auto bytes = manifest.root().member("BackupKeyBag").data();
    ASSERT_TRUE(bytes);
    manifest.set("BackupKeyBag", PropertyList::data(change(Keybag::parse(*bytes))));
    writeBytes(device / kManifestPlist, manifest.binary());
}

void setManifestMember(const fs::path& device, const std::string& key, PropertyList value) {
    auto manifest = readPlist(device / kManifestPlist);
    manifest.set(key, std::move(value));
    writeBytes(device / kManifestPlist, manifest.binary());
}

fs::path storedFile(const fs::path& device, std::string_view domainAndPath) {
    const auto id = Crypto::sha1Hex(domainAndPath);
    return device / id.substr(0, 2) / id;
}

// Messages without the attachment paths, which differ by source.
std::vector<Message> withoutPaths(std::vector<Message> messages) {
    for (auto& message : messages) {
        for (auto& attachment : message.attachments) {
            attachment.path.reset();
        }
    }
    return messages;
}

class IPhoneBackupTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_sampleFolder = std::make_unique<testing::TempDir>();
        s_sample = SampleDatabase::create(s_sampleFolder->file("history"), Date::now());
    }
    static void TearDownTestSuite() { s_sampleFolder.reset(); }

    void SetUp() override {
        FileSystem::createPrivateFolders(scratch());
        FileSystem::createPrivateFolders(copies());
    }

    std::string scratch() const { return dir.file("scratch"); }
    std::string copies() const { return dir.file("copies"); }

    fs::path write(bool encrypted, bool legacy = false, std::size_t newestInLog = kNewestInLog) {
        BackupWriter::Options options;
        if (encrypted) {
            options.password = kPassword;
        }
        options.fastKeys = true;
        options.legacyLayout = legacy;
        options.newestInLog = newestInLog;
        options.date = Date{800'000'000};
        return BackupWriter::write(dir.file("backups"),
                                   {s_sample.database, s_sample.home, SampleDatabase::people()},
                                   options);
    }

    IPhoneBackup open(const fs::path& device, bool withPassword = true) const {
        return IPhoneBackup(device.string(), scratch(),
                            withPassword ? std::optional<std::string_view>(kPassword)
                                         : std::nullopt);
    }

    // The kind of error that opening the backup and copying its Messages database gives.
    std::optional<BackupError> readError(const fs::path& device, bool withPassword = true) const {
        try {
            const auto backup = open(device, withPassword);
            (void)backup.copyMessagesDatabase(copies());
        } catch (const BackupError& error) {
            return error;
        }
        return std::nullopt;
    }

    testing::TempDir dir;
    static inline std::unique_ptr<testing::TempDir> s_sampleFolder;
    static inline SampleDatabase::Info s_sample;
};

TEST_F(IPhoneBackupTest, GivesBackTheHistoryItsAttachmentsAndAddressBook) {
    ChatDatabase source(s_sample.database, s_sample.home, /*immutable=*/false);
    const auto sourceChats = source.chats();
    std::vector<std::int64_t> chatIDs;
    for (const auto& chat : sourceChats) {
        chatIDs.push_back(chat.id);
    }
    const auto sourceMessages = source.messages(chatIDs);

    const struct {
        const char* name;
        bool encrypted;
        bool legacy;
    } cases[] = {{"plain", false, false},
                 {"encrypted", true, false},
                 {"plain, Manifest.mbdb", false, true},
                 {"encrypted, Manifest.mbdb", true, true}};
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        const auto device = write(entry.encrypted, entry.legacy);
        const auto before = fingerprint(device);
        {
            const auto backup = open(device);
            const auto& info = backup.info();
            EXPECT_EQ(info.encrypted, entry.encrypted);
            EXPECT_TRUE(info.complete);
            EXPECT_TRUE(info.hasMessages);
            EXPECT_EQ(info.deviceName, "Scrivly Sample iPhone");
            EXPECT_EQ(info.productVersion, entry.legacy ? "9.3.5" : "17.5");
            EXPECT_EQ(info.lastBackupDate, Date{800'000'000});
            EXPECT_TRUE(backup.hasMessages());
            EXPECT_EQ(backup.storedPath("HomeDomain", "Library/SMS/sms.db"),
                      (entry.legacy ? device : device / "3d") /
                          "3d0d7e5fb2ce288813306e4d4636395e047a3d28");

            // The copies, with the hashes of both sides taken while copying.
            const auto copied = backup.copyMessagesDatabase(copies(), Hashing::sha256);
            ASSERT_EQ(copied.size(), 2U);
            EXPECT_EQ(fs::path(copied[0].path).filename(), "sms.db");
            EXPECT_EQ(fs::path(copied[1].path).filename(), "sms.db-wal");
            const std::string stored[] = {
                backup.storedPath("HomeDomain", "Library/SMS/sms.db"),
                backup.storedPath("HomeDomain", "Library/SMS/sms.db-wal")};
            for (std::size_t i = 0; i < copied.size(); ++i) {
                EXPECT_EQ(copied[i].storedSHA256, sha256(readFile(stored[i])));
                EXPECT_EQ(copied[i].copiedSHA256, sha256(readFile(copied[i].path)));
                EXPECT_EQ(copied[i].size, fs::file_size(copied[i].path));
            }

            // The main file alone lacks the newest messages, which live in the log only.
            const auto mainOnly = copies() + "/main-only.db";
            fs::copy_file(copied[0].path, mainOnly);
            foldLog(mainOnly);
            ChatDatabase withoutLog(mainOnly, "/nowhere", true);
            EXPECT_EQ(withoutLog.messages(chatIDs).size() + kNewestInLog, sourceMessages.size());

            foldLog(copied[0].path);
            ChatDatabase copy(
                copied[0].path,
                [&backup](const std::optional<std::string>& name) {
                    return backup.attachmentLocation(name);
                },
                true);
            EXPECT_EQ(copy.chats(), sourceChats);
            const auto messages = copy.messages(chatIDs);
            EXPECT_EQ(withoutPaths(messages), withoutPaths(sourceMessages));

            // Attachments: byte for byte where the sample has the file, missing where not.
            int found = 0;
            int missing = 0;
            for (std::size_t m = 0; m < messages.size(); ++m) {
                for (std::size_t a = 0; a < messages[m].attachments.size(); ++a) {
                    const auto& location = messages[m].attachments[a].path;
                    const auto& original = sourceMessages[m].attachments[a].path;
                    ASSERT_TRUE(location && original);
                    const auto destination =
                        copies() + "/attachment-" + std::to_string(found + missing);
                    const auto extracted =
                        backup.extractFile(*location, destination, Hashing::sha256);
                    if (fs::exists(*original)) {
                        ASSERT_TRUE(extracted);
                        EXPECT_EQ(readFile(destination), readFile(*original));
                        EXPECT_EQ(extracted->copiedSHA256, sha256(readFile(*original)));
                        ++found;
                    } else {
                        EXPECT_FALSE(extracted);
                        EXPECT_FALSE(fs::exists(destination));
                        ++missing;
                    }
                }
            }
            EXPECT_EQ(found, 2);
            EXPECT_EQ(missing, 1);

            const auto book = backup.copyAddressBook(copies());
            ASSERT_EQ(book.size(), 1U);
            NameBook names;
            ContactSources::addCards(names, PhoneAddressBook::read(book[0].path, info.id));
            EXPECT_EQ(names.name("+15550102233"), "Maya Okafor");
            EXPECT_EQ(names.name("theo.lindqvist@example.com"), "Theo Lindqvist");
            EXPECT_EQ(names.contact("5550104455"), "phone:" + info.id + ":3");
            if (!entry.legacy) {
                EXPECT_FALSE(fs::is_empty(scratch())) << "the manifest is read where it lies";
            }
        }
        EXPECT_EQ(fingerprint(device), before) << "the backup folder changed";
        EXPECT_TRUE(fs::is_empty(scratch())) << "the decrypted manifest was left behind";
        fs::remove_all(copies());
        FileSystem::createPrivateFolders(copies());
    }
}

TEST_F(IPhoneBackupTest, AttachmentNamesOfThePhoneLiveInMediaDomain) {
    const auto device = write(false);
    const auto backup = open(device);
    const auto expected =
        storedFile(device, "MediaDomain-Library/SMS/Attachments/ab/11/GUID/IMG_1.HEIC").string();
    const struct {
        std::optional<std::string> stored;
        std::optional<std::string> location;
    } cases[] = {
        {"~/Library/SMS/Attachments/ab/11/GUID/IMG_1.HEIC", expected},
        {"/var/mobile/Library/SMS/Attachments/ab/11/GUID/IMG_1.HEIC", expected},
        {"/private/var/mobile/Library/SMS/Attachments/ab/11/GUID/IMG_1.HEIC", expected},
        {"Library/SMS/Attachments/ab/11/GUID/IMG_1.HEIC", std::nullopt},
        {"/Users/me/Pictures/IMG_1.HEIC", std::nullopt},
        {"~/", std::nullopt},
        {std::nullopt, std::nullopt},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.stored.value_or("(none)"));
        EXPECT_EQ(backup.attachmentLocation(entry.stored), entry.location);
    }
    EXPECT_FALSE(backup.extractFile(expected, copies() + "/absent"));

    // Only this backup's stored files are read, and nothing is written into it.
    EXPECT_THROW((void)backup.extractFile(s_sample.database, copies() + "/x"),
                 std::invalid_argument);
    const auto sms = backup.storedPath("HomeDomain", "Library/SMS/sms.db");
    EXPECT_THROW((void)backup.extractFile(sms, (device / "copy").string()), std::invalid_argument);
    EXPECT_THROW((void)backup.copyMessagesDatabase(device.string()), std::invalid_argument);
}

TEST_F(IPhoneBackupTest, BrokenBackupsSayWhatIsWrong) {
    using Change = std::function<void(const fs::path& device)>;
    const auto sms = [](const fs::path& device) {
        return storedFile(device, "HomeDomain-Library/SMS/sms.db");
    };
    const auto replaceSms = [sms](const std::function<void(const fs::path&)>& make) {
        return [sms, make](const fs::path& device) {
            fs::remove(sms(device));
            make(sms(device));
        };
    };
    const auto status = [](const char* state) {
        return [state](const fs::path& device) {
            auto list = PropertyList::dictionary();
            list.set("SnapshotState", PropertyList::string(state));
            writeBytes(device / kStatusPlist, list.binary());
        };
    };
    const auto garbage = [](const char* name, std::size_t size) {
        return [name, size](const fs::path& device) {
            writeBytes(device / name, Crypto::randomBytes(size));
        };
    };
    const auto keybag = [](const std::function<void(Keybag&)>& change) {
        return [change](const fs::path& device) {
            changeKeybag(device, [&](Keybag bag) {
                change(bag);
                return bag.encode();
            });
        };
    };

    const struct {
        const char* name;
        bool encrypted;
        bool legacy;
        Change change;
        Kind kind;
        const char* expected;
    } cases[] = {
        {"not a backup", false, false,
         [](const fs::path& d) {
             fs::remove(d / kInfoPlist);
             fs::remove(d / kManifestPlist);
         },
         Kind::notBackup, "not an iPhone backup"},
        {"still being written", false, false, status("uploading"), Kind::unfinished, "cut off"},
        {"no Status.plist", true, false, [](const fs::path& d) { fs::remove(d / kStatusPlist); },
         Kind::unfinished, "still being written"},
        {"Info.plist an array", false, false,
         [](const fs::path& d) { writeBytes(d / kInfoPlist, PropertyList::array().binary()); },
         Kind::damaged, "Info.plist does not hold a dictionary"},
        {"Manifest.plist garbage", true, false, garbage(kManifestPlist, 300), Kind::damaged,
         "Manifest.plist is not a property list"},
        {"Manifest.plist missing", false, false,
         [](const fs::path& d) { fs::remove(d / kManifestPlist); }, Kind::damaged,
         "Manifest.plist is missing"},
        {"IsEncrypted as text", true, false,
         [](const fs::path& d) {
             setManifestMember(d, "IsEncrypted", PropertyList::string("yes"));
         },
         Kind::damaged, "IsEncrypted has the wrong type"},
        {"SnapshotState as a number", false, false,
         [](const fs::path& d) {
             auto list = PropertyList::dictionary();
             list.set("SnapshotState", PropertyList::integer(1));
             writeBytes(d / kStatusPlist, list.binary());
         },
         Kind::damaged, "SnapshotState has the wrong type"},
        {"keybag missing", true, false,
         [](const fs::path& d) {
             auto manifest = readPlist(d / kManifestPlist);
             manifest.set("BackupKeyBag", PropertyList::string("gone"));
             writeBytes(d / kManifestPlist, manifest.binary());
         },
         Kind::damaged, "BackupKeyBag has the wrong type"},
        {"keybag cut short", true, false,
         [](const fs::path& d) {
             changeKeybag(d, [](Keybag bag) {
                 auto bytes = bag.encode();
                 bytes.resize(bytes.size() - 10);
                 return bytes;
             });
         },
         Kind::damaged, "keybag is cut short"},
        {"keybag without SALT", true, false, keybag([](Keybag& k) { k.salt.clear(); }),
         Kind::damaged, "has no SALT"},
        {"keybag without WPKY", true, false,
         keybag([](Keybag& k) { k.classes[3].wrappedKey.clear(); }), Kind::damaged,
         "has no WPKY for class 4"},
        {"absurd iterations", true, false,
         keybag([](Keybag& k) { k.passwordIterations = 4'000'000'000U; }), Kind::damaged, "absurd"},
        {"no class the password opens", true, false, keybag([](Keybag& k) {
             for (auto& entry : k.classes) {
                 entry.wrap = 1;
             }
         }),
         Kind::damaged, "no class key that a password opens"},
        {"ManifestKey too short", true, false,
         [](const fs::path& d) {
             setManifestMember(d, "ManifestKey", PropertyList::data(Crypto::randomBytes(43)));
         },
         Kind::damaged, "ManifestKey has the wrong length"},
        {"ManifestKey missing", true, false,
         [](const fs::path& d) { setManifestMember(d, "ManifestKey", PropertyList::data({})); },
         Kind::damaged, "no ManifestKey"},
        {"ManifestKey of a class without key", true, false,
         [](const fs::path& d) {
             auto key = *readPlist(d / kManifestPlist).root().member("ManifestKey").data();
             key[0] = 42;
             setManifestMember(d, "ManifestKey", PropertyList::data(key));
         },
         Kind::damaged, "no key of the manifest's protection class"},
        {"ManifestKey damaged", true, false,
         [](const fs::path& d) {
             auto key = *readPlist(d / kManifestPlist).root().member("ManifestKey").data();
             key[10] ^= 0x40;
             setManifestMember(d, "ManifestKey", PropertyList::data(key));
         },
         Kind::damaged, "ManifestKey does not open"},
        {"Manifest.db garbage", true, false, garbage(kManifestDatabase, 4096), Kind::damaged,
         "Manifest.db does not decrypt to a database"},
        {"Manifest.db garbage, plain", false, false, garbage(kManifestDatabase, 4096),
         Kind::damaged, "Manifest.db is not a database"},
        {"Manifest.db not whole blocks", true, false, garbage(kManifestDatabase, 4001),
         Kind::damaged, "not a whole number of blocks"},
        {"Manifest.db without files", false, false,
         [](const fs::path& d) {
             SQLiteConnection((d / kManifestDatabase).string(), false, false)
                 .execute("DROP TABLE Files");
         },
         Kind::damaged, "no table of files"},
        {"no manifest", false, false, [](const fs::path& d) { fs::remove(d / kManifestDatabase); },
         Kind::damaged, "Manifest.db is missing"},
        {"Manifest.mbdb cut short", true, true,
         [](const fs::path& d) {
             fs::resize_file(d / kManifestMbdb, fs::file_size(d / kManifestMbdb) - 3);
         },
         Kind::damaged, "Manifest.mbdb is cut short"},
        {"sms.db a folder", true, false,
         replaceSms([](const fs::path& p) { fs::create_directory(p); }), Kind::damaged,
         "is a folder"},
        {"sms.db a pipe", false, false,
         replaceSms([](const fs::path& p) { ASSERT_EQ(::mkfifo(p.c_str(), 0600), 0); }),
         Kind::damaged, "not a regular file"},
        {"sms.db a link loop", true, false,
         replaceSms([](const fs::path& p) { fs::create_symlink(p.filename(), p); }), Kind::damaged,
         "loop"},
        {"sms.db shorter than its record", true, false,
         [sms](const fs::path& d) { fs::resize_file(sms(d), fs::file_size(sms(d)) - 4096); },
         Kind::damaged, "shorter than its manifest says"},
        {"sms.db shorter, plain", false, false,
         [sms](const fs::path& d) { fs::resize_file(sms(d), 100); }, Kind::damaged,
         "shorter than its manifest says"},
        {"sms.db not stored", true, false, [sms](const fs::path& d) { fs::remove(sms(d)); },
         Kind::damaged, "Library/SMS/sms.db is listed in the manifest but not stored"},
        {"log not stored", true, true,
         [](const fs::path& d) {
             fs::remove(d / Crypto::sha1Hex("HomeDomain-Library/SMS/sms.db-wal"));
         },
         Kind::damaged, "sms.db-wal is listed in the manifest but not stored"},
        {"no Messages", false, false,
         [sms](const fs::path& d) {
             fs::remove(sms(d));
             SQLiteConnection((d / kManifestDatabase).string(), false, false)
                 .execute("DELETE FROM Files WHERE relativePath LIKE 'Library/SMS/sms.db%'");
         },
         Kind::noMessages, "holds no Messages history"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        const auto device = write(entry.encrypted, entry.legacy);
        entry.change(device);
        const auto error = readError(device);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->kind(), entry.kind) << error->what();
        EXPECT_NE(std::string(error->what()).find(entry.expected), std::string::npos)
            << error->what();
        EXPECT_TRUE(fs::is_empty(scratch()));
        EXPECT_TRUE(fs::is_empty(copies())) << "a failed copy left a file behind";
    }
}

TEST_F(IPhoneBackupTest, PasswordsAreAskedForCheckedAndCancellable) {
    const auto device = write(true);
    EXPECT_EQ(readError(device, /*withPassword=*/false)->kind(), Kind::needsPassword);

    const auto start = std::chrono::steady_clock::now();
    try {
        IPhoneBackup(device.string(), scratch(), "correct horse");
        ADD_FAILURE() << "a wrong password opened the backup";
    } catch (const BackupError& error) {
        EXPECT_EQ(error.kind(), Kind::wrongPassword);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));

    std::stop_source stop;
    stop.request_stop();
    try {
        IPhoneBackup(device.string(), scratch(), kPassword, stop.get_token());
        ADD_FAILURE() << "a stopped open went on";
    } catch (const BackupError& error) {
        EXPECT_EQ(error.kind(), Kind::cancelled);
    }

    // A plain backup ignores a password; an unsafe scratch folder is refused.
    EXPECT_NO_THROW(IPhoneBackup(write(false).string(), scratch(), "anything"));
    fs::permissions(scratch(), fs::perms::group_read | fs::perms::group_exec,
                    fs::perm_options::add);
    EXPECT_THROW(IPhoneBackup(device.string(), scratch(), kPassword),
                 FileSystem::UnsafeFolderError);
}

TEST_F(IPhoneBackupTest, ListsDeviceFoldersAndTheFoldersHoldingThem) {
    const auto plain = write(false);
    BackupWriter::Options options;
    options.password = kPassword;
    options.fastKeys = true;
    options.deviceID = "0000000000000000000000000000000000000001";
    const auto encrypted = fs::path(
        BackupWriter::write(dir.file("backups"), {s_sample.database, s_sample.home, {}}, options));
    fs::create_directories(dir.path() / "backups" / "not-a-backup");
    const auto broken = dir.path() / "backups" / "broken";
    testing::writeFile(broken / kInfoPlist, "not a property list");

    const auto listing = listBackups({dir.file("backups"), plain.string(), dir.file("missing")});
    ASSERT_EQ(listing.backups.size(), 3U);
    EXPECT_EQ(listing.backups[0].path, encrypted.string());
    EXPECT_TRUE(listing.backups[0].encrypted);
    EXPECT_TRUE(listing.backups[0].hasMessages);
    EXPECT_EQ(listing.backups[1].path, plain.string());
    EXPECT_EQ(listing.backups[1].id, "00008030-001A2B3C4D5E802E");
    EXPECT_EQ(listing.backups[2], listing.backups[1]);
    ASSERT_EQ(listing.unreadable.size(), 1U);
    EXPECT_EQ(listing.unreadable[0].kind(), Kind::damaged);

    // Without the address book nothing is copied.
    EXPECT_TRUE(
        IPhoneBackup(encrypted.string(), scratch(), kPassword).copyAddressBook(copies()).empty());
}

TEST(UsualBackupFolders, FollowTheSystemsConventions) {
    const auto environment = [](const char* name) -> std::optional<std::string> {
        const std::map<std::string, std::string> values = {
            {"HOME", "/Users/me"},
            {"APPDATA", "C:\\Users\\me\\AppData\\Roaming"},
            {"USERPROFILE", "C:\\Users\\me"}};
        const auto found = values.find(name);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    };
    EXPECT_EQ(usualBackupFolders(OperatingSystem::macOS, environment),
              std::vector<std::string>{"/Users/me/Library/Application Support/MobileSync/Backup"});
    EXPECT_EQ(usualBackupFolders(OperatingSystem::windows, environment),
              (std::vector<std::string>{
                  "C:\\Users\\me\\AppData\\Roaming\\Apple Computer\\MobileSync\\Backup",
                  "C:\\Users\\me\\Apple\\MobileSync\\Backup"}));
    EXPECT_TRUE(usualBackupFolders(OperatingSystem::other, environment).empty());
    EXPECT_TRUE(usualBackupFolders(OperatingSystem::macOS, [](const char*) {
                    return std::nullopt;
                }).empty());
}

} // namespace
} // namespace scrivly
