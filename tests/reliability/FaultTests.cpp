#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/DatabaseAccess.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "tests/database/TestDatabase.h"
#include "tests/reliability/Child.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace scrivly {
namespace {

namespace fs = std::filesystem;
using testing::errorText;
using testing::folderEntries;
using testing::TestDatabase;
using Value = SQLiteConnection::Value;

// A decompression bomb in all but size: a valid PNG header claiming 60000 × 60000 grey pixels
// (3.6 gigapixels), then 64 KB of rows that are zero. A decoder that believed it would grind
// through the whole claimed area.
void writeBomb(const std::string& path) {
    auto crc = [](const std::string& bytes) {
        std::uint32_t value = 0xFFFFFFFFU;
        for (const unsigned char byte : bytes) {
            value ^= byte;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value >> 1) ^ (0xEDB88320U & (0U - (value & 1U)));
            }
        }
        return ~value;
    };
    auto big = [](std::uint32_t value) {
        return std::string{static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                           static_cast<char>(value >> 8), static_cast<char>(value)};
    };
    auto chunk = [&](const std::string& type, const std::string& data) {
        return big(static_cast<std::uint32_t>(data.size())) + type + data + big(crc(type + data));
    };
    const std::string header = big(60000) + big(60000) + std::string{8, 0, 0, 0, 0};
    // zlib header, then one stored block of 65535 zero bytes (a stream that never ends).
    std::string rows = {0x78, 0x01, 0x00, static_cast<char>(0xFF), static_cast<char>(0xFF),
                        0x00, 0x00};
    rows += std::string(65535, '\0');
    testing::writeFile(path, "\x89PNG\r\n\x1A\n" + chunk("IHDR", header) + chunk("IDAT", rows));
}

class Faults : public ::testing::Test {
protected:
    testing::TempDir dir;
    std::string source = dir.file("chat.db");
    std::string scratch = dir.file("snapshots");
    MessagesReader reader = MessagesReader::ofDatabase(source, "/home/x", scratch);

    // A WAL-mode history of about a megabyte whose newest rows are only in the log.
    void makeHistory() {
        TestDatabase db(source);
        db.connection().execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
        const auto chat = db.chat("+15550001");
        db.connection().execute("BEGIN");
        for (int i = 0; i < 2000; ++i) {
            db.message(chat, i, Value::text(std::string(500, 'q')));
        }
        db.connection().execute("COMMIT");
        db.connection().execute("PRAGMA wal_checkpoint(TRUNCATE)");
        db.message(chat, 5000, Value::text("in the log"));
        fs::copy_file(source + "-wal", dir.file("kept-wal")); // closing checkpoints it away
        fs::copy_file(source + "-shm", dir.file("kept-shm"));
    }
    void restoreLog() {
        fs::copy_file(dir.file("kept-wal"), source + "-wal", fs::copy_options::overwrite_existing);
    }

    // Every failed read leaves the scratch folder empty.
    void expectFailure(const std::string& expected) {
        const auto text = errorText([&] { reader.chats(); });
        EXPECT_NE(text.find(expected), std::string::npos) << text;
        if (fs::exists(scratch)) {
            EXPECT_TRUE(folderEntries(scratch).empty());
        }
    }
};

TEST_F(Faults, DiskFillingUpDuringTheCopy) {
    makeHistory();
    restoreLog();
    // A file-size limit makes the kernel refuse writes past 256 KB, as a full disk would; it
    // binds the child only.
    testing::Child child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{256 * 1024, 256 * 1024};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        reader.chats();
    });
    EXPECT_NE(child.wait().find("File too large"), std::string::npos);
    EXPECT_TRUE(folderEntries(scratch).empty());

    // And the plain full-disk error comes through as it is.
    const auto text = errorText([&] { FileSystem::copyFile(source, "/dev/full"); });
    EXPECT_NE(text.find("No space left on device"), std::string::npos) << text;
}

TEST_F(Faults, BrokenSourcesFailClearlyAndLeaveNothing) {
    makeHistory();
    ASSERT_EQ(access(source), DatabaseAccess::granted);
    {
        SCOPED_TRACE("vanished after the probe");
        fs::rename(source, dir.file("away"));
        expectFailure("No such file or directory");
        fs::rename(dir.file("away"), source);
    }
    restoreLog();
    ASSERT_EQ(reader.chats().at(0).messageCount, 2001); // the log counts
    const std::pair<const char*, std::function<void()>> unreadableLogs[] = {
        {"Is a directory", [&] { fs::create_directory(source + "-wal"); }},
        {"Too many levels of symbolic links",
         [&] { fs::create_symlink(source + "-wal", source + "-wal"); }},
        {"not a regular file", [&] { ::mkfifo((source + "-wal").c_str(), 0600); }},
    };
    for (const auto& [expected, make] : unreadableLogs) {
        SCOPED_TRACE(expected);
        fs::remove(source + "-wal");
        make();
        // A log that can't be read must fail the read: skipping it would lose messages.
        expectFailure(expected);
        fs::remove(source + "-wal");
    }
    {
        SCOPED_TRACE("truncated");
        fs::resize_file(source, fs::file_size(source) / 2);
        expectFailure("The database couldn’t be read: database disk image is malformed");
    }
    {
        SCOPED_TRACE("a pipe");
        fs::rename(source, dir.file("away"));
        ASSERT_EQ(::mkfifo(source.c_str(), 0600), 0);
        EXPECT_EQ(access(source), DatabaseAccess::granted); // answered at once, not blocked
        expectFailure("not a regular file");
        fs::remove(source);
        fs::rename(dir.file("away"), source);
    }
    {
        SCOPED_TRACE("a folder");
        fs::remove(source);
        fs::remove(source + "-shm");
        fs::create_directory(source);
        expectFailure("Is a directory");
    }
}

TEST_F(Faults, UnsafeSnapshotFoldersAreRefused) {
    makeHistory();
    fs::create_directory(dir.file("elsewhere"));
    fs::permissions(dir.file("elsewhere"), fs::perms::owner_all);
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"is a symbolic link",
         [&] { fs::create_directory_symlink(dir.file("elsewhere"), scratch); }},
        {"can be opened by other users",
         [&] {
             fs::create_directory(scratch);
             fs::permissions(scratch, fs::perms::owner_all | fs::perms::group_read |
                                          fs::perms::group_exec | fs::perms::others_exec);
         }},
        {"belongs to another user",
         [&] {
             fs::create_directory(scratch);
             fs::permissions(scratch, fs::perms::owner_all);
             ASSERT_EQ(::chown(scratch.c_str(), ::geteuid() + 1, ::getegid()), 0);
         }},
        {"is not a folder", [&] { std::ofstream(scratch) << "x"; }},
    };
    for (const auto& [expected, make] : cases) {
        SCOPED_TRACE(expected);
        make();
        EXPECT_NE(errorText([&] { reader.chats(); }).find(expected), std::string::npos);
        // Clean-up never goes through such a folder either.
        EXPECT_EQ(removeLeftoverSnapshots(scratch), 0U);
        std::error_code ignored;
        fs::remove(scratch, ignored);
        fs::remove_all(scratch, ignored);
    }
    EXPECT_TRUE(folderEntries(dir.file("elsewhere")).empty());
    EXPECT_EQ(reader.chats().size(), 1U);
}

TEST_F(Faults, OnlyTheCopiesOfEndedRunsAreCleanedUp) {
    makeHistory();
    FileSystem::createPrivateFolders(scratch);
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    // Another run, stopped in the middle of its read with its copy on disk.
    testing::Child other([&] {
        const SnapshotLease lease(scratch);
        ChatDatabase database(copyDatabase(source, lease.path(), "chat.db"), "/home/x",
                              /*immutable=*/true);
        char done = 1;
        (void)::write(ready[1], &done, 1);
        ::pause();
    });
    ::close(ready[1]);
    char done = 0;
    ASSERT_EQ(::read(ready[0], &done, 1), 1);
    ::close(ready[0]);
    ASSERT_EQ(folderEntries(scratch).size(), 2U); // its subfolder and lock file

    EXPECT_EQ(removeLeftoverSnapshots(scratch), 0U);
    EXPECT_EQ(folderEntries(scratch).size(), 2U);
    // A read of this run meanwhile is not disturbed and cleans only after itself.
    EXPECT_EQ(reader.chats().size(), 1U);
    EXPECT_EQ(folderEntries(scratch).size(), 2U);

    other.kill(); // SIGKILL: no clean-up of its own
    fs::create_directory(scratch + "/from-an-older-version");
    EXPECT_EQ(removeLeftoverSnapshots(scratch), 2U);
    EXPECT_TRUE(folderEntries(scratch).empty());
}

TEST_F(Faults, AttachmentsThatAreNotPicturesAreRefusedQuickly) {
    fs::create_directory(dir.file("folder.jpg"));
    ::mkfifo(dir.file("pipe.jpg").c_str(), 0600);
    fs::create_symlink(dir.file("loop.jpg"), dir.file("loop.jpg"));
    writeBomb(dir.file("bomb.png"));
    for (const auto& path : {dir.file("folder.jpg"), dir.file("pipe.jpg"), dir.file("loop.jpg"),
                             std::string("/dev/zero"), dir.file("bomb.png")}) {
        SCOPED_TRACE(path);
        const auto started = std::chrono::steady_clock::now();
        EXPECT_FALSE(ImageConverter::jpegData(path, 1600, 0.82));
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
    }
}

} // namespace
} // namespace scrivly
