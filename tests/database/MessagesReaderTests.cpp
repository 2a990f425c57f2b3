#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/DatabaseAccess.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/database/MessagesSource.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "tests/database/TestDatabase.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>

namespace scrivly {
namespace {

namespace fs = std::filesystem;
using testing::TestDatabase;
using Value = SQLiteConnection::Value;

// The bytes of a database's files, by suffix.
std::map<std::string, std::string> files(const std::string& path) {
    std::map<std::string, std::string> found;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        if (fs::exists(path + suffix)) {
            found[suffix] = testing::readFile(path + suffix);
        }
    }
    return found;
}

fs::perms permissions(const std::string& path) {
    return fs::status(path).permissions() & fs::perms::all;
}

class MessagesReaderTest : public ::testing::Test {
protected:
    testing::TempDir dir;
    std::string source = dir.file("live/chat.db");
    std::string scratch = dir.file("scratch/snapshots");
    MessagesReader reader = MessagesReader::ofDatabase(source, "/home/x", scratch);

    void SetUp() override { fs::create_directories(dir.path() / "live"); }
};

TEST_F(MessagesReaderTest, SeesRowsStillOnlyInTheLogAndLeavesTheSourceAlone) {
    // The writer stays open and never checkpoints, as the messaging service would.
    TestDatabase writer(source);
    writer.connection().execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
    const auto chat = writer.chat("+15550001");
    writer.message(chat, 10, Value::text("first"));
    writer.connection().execute("PRAGMA wal_checkpoint(TRUNCATE)");
    writer.message(chat, 20, Value::text("only in the log"));
    writer.chat("+15550002");

    const auto before = files(source);
    ASSERT_EQ(before.size(), 3U);
    ASSERT_FALSE(before.at("-wal").empty());
    const auto chats = reader.chats();
    ASSERT_EQ(chats.size(), 2U);
    EXPECT_EQ(chats[0].messageCount, 2);
    const auto messages = reader.messages({chat});
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[1].text, "only in the log");
    EXPECT_NO_THROW(reader.check());

    // Several queries on one copy; finding a conversation only asks whether a chat has messages.
    int copies = 0;
    reader.read([&](ChatDatabase& database) {
        ++copies;
        const auto present = database.chats(ChatDatabase::Counting::presence);
        ASSERT_EQ(present.size(), 2U);
        EXPECT_EQ(present[0].messageCount, 1);
        EXPECT_EQ(present[1].messageCount, 0);
        EXPECT_FALSE(present[0].lastDate);
        EXPECT_EQ(database.messages({chat}).size(), 2U);
    });
    EXPECT_EQ(copies, 1);

    EXPECT_EQ(files(source), before);
    EXPECT_TRUE(fs::is_empty(scratch));
    EXPECT_EQ(permissions(scratch), fs::perms::owner_all);
    EXPECT_EQ(permissions(dir.file("scratch")), fs::perms::owner_all);
}

TEST_F(MessagesReaderTest, ReadsWithoutLogOrSnapshotFolder) {
    {
        TestDatabase db(source);
        db.message(db.chat("+15550001"), 10, Value::text("hello"));
    }
    const auto before = files(source);
    ASSERT_EQ(before.size(), 1U);
    EXPECT_EQ(reader.messages({1}).size(), 1U);
    EXPECT_EQ((MessagesReader::ofDatabase(source, "", std::nullopt).chats().size()), 1U);
    EXPECT_EQ(files(source), before);
    EXPECT_TRUE(fs::is_empty(scratch));
}

TEST_F(MessagesReaderTest, FailedReadsLeaveNothingBehind) {
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { SQLiteConnection(source, false, false).execute("CREATE TABLE t (v)"); },
         "The database couldn’t be read: This isn’t a Messages database (no message table)."},
        {[&] { std::ofstream(source) << "not a database, just some text"; },
         "The database couldn’t be read: file is not a database"},
        {[] {}, "filesystem error: cannot copy file: No such file or directory [" + source + "]"},
    };
    for (const auto& [make, expected] : cases) {
        SCOPED_TRACE(expected);
        fs::remove(source);
        make();
        const auto before = files(source);
        for (const auto& read : {std::function<void()>([&] { reader.check(); }),
                                 std::function<void()>([&] { reader.chats(); })}) {
            const auto error = testing::errorText(read);
            EXPECT_TRUE(error.starts_with(expected)) << error;
            EXPECT_TRUE(fs::is_empty(scratch));
            EXPECT_EQ(files(source), before);
        }
    }
}

TEST_F(MessagesReaderTest, SnapshotIsPrivateAndSelfContained) {
    TestDatabase writer(source);
    writer.connection().execute("PRAGMA journal_mode=WAL");
    writer.chat("+15550001");
    const auto into = dir.file("snap");
    fs::create_directories(into + "/stale");

    ChatDatabase database(copyDatabase(source, into, "chat.db"), "/home/x", /*immutable=*/true);
    EXPECT_EQ(permissions(into), fs::perms::owner_all);
    EXPECT_EQ(testing::folderEntries(into), std::vector<std::string>{"chat.db"});
    EXPECT_EQ(permissions(into + "/chat.db"), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(DatabaseFile, AttachmentsFolderStandsForTheStoredAttachmentsFolderOnly) {
    const DatabaseFile plain("/copy/chat.db", "/home/x");
    const DatabaseFile copied("/copy/chat.db", "/home/x", SourceDescription::Kind::databaseFile,
                              "/copy/Attachments");
    const std::string photo = "~/Library/Messages/Attachments/ab/12/G/IMG.HEIC";
    EXPECT_EQ(plain.attachmentPath(photo), "/home/x/Library/Messages/Attachments/ab/12/G/IMG.HEIC");
    EXPECT_EQ(copied.attachmentPath(photo), "/copy/Attachments/ab/12/G/IMG.HEIC");
    // Anything else under "~/" still belongs to the home; absolute names stay as they are.
    EXPECT_EQ(copied.attachmentPath("~/Library/Messages/Attachments2/a.jpg"),
              "/home/x/Library/Messages/Attachments2/a.jpg");
    EXPECT_EQ(copied.attachmentPath("~/Library/Messages/StickerCache/s.png"),
              "/home/x/Library/Messages/StickerCache/s.png");
    EXPECT_EQ(copied.attachmentPath("/var/tmp/a.jpg"), "/var/tmp/a.jpg");
    EXPECT_EQ(copied.attachmentPath(std::nullopt), std::nullopt);
}

TEST(DatabaseAccess, ProbeAnswers) {
    testing::TempDir dir;
    const auto file = dir.file("chat.db");
    std::ofstream(file) << "x";
    fs::create_symlink(dir.file("loop"), dir.file("loop"));
    const std::pair<std::string, DatabaseAccess> paths[] = {
        {file, DatabaseAccess::granted},
        {dir.file("Library/Messages/chat.db"), DatabaseAccess::noHistory},
        {file + "/chat.db", DatabaseAccess::noHistory}, // a file where a folder should be
        {dir.file("loop"), DatabaseAccess::denied},     // ELOOP, which even root gets
    };
    for (const auto& [path, expected] : paths) {
        SCOPED_TRACE(path);
        EXPECT_EQ(access(path), expected);
    }
    // Root opens everything, so the usual causes of denial are fed in.
    const std::pair<int, DatabaseAccess> errors[] = {
        {0, DatabaseAccess::granted},         {ENOENT, DatabaseAccess::noHistory},
        {ENOTDIR, DatabaseAccess::noHistory}, {EACCES, DatabaseAccess::denied},
        {EPERM, DatabaseAccess::denied},
    };
    for (const auto& [error, expected] : errors) {
        SCOPED_TRACE(error);
        EXPECT_EQ(access(file, [error = error](const std::string&) { return error; }), expected);
    }
}

} // namespace
} // namespace scrivly
