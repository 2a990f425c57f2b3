#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/DatabaseCopy.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SQLiteError.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "tests/database/TestDatabase.h"
#include "tests/reliability/Child.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include <poll.h>
#include <unistd.h>

namespace scrivly {
namespace {

namespace fs = std::filesystem;
using testing::TestDatabase;
using Value = SQLiteConnection::Value;

// Every commit of the writer adds this many messages, so a snapshot holding a count that is not
// a multiple of it would show half a transaction.
constexpr std::int64_t kBatch = 3;

// How many snapshots to take; SCRIVLY_SOAK_SNAPSHOTS raises it for the long run.
int snapshotCount() {
    if (const char* value = std::getenv("SCRIVLY_SOAK_SNAPSHOTS")) {
        return std::max(1, std::atoi(value));
    }
    return 50;
}

bool stopRequested(int stop) {
    pollfd poll{stop, POLLIN, 0};
    return ::poll(&poll, 1, 0) > 0; // readable means the parent closed its end
}

// The messaging service's part: commits batches of messages as fast as it can and checkpoints
// now and then in each of SQLite's modes, until told to stop. Any SQLite error ends it with that
// error. Writes "commits checkpoints" to report.
void runWriter(const std::string& path, int stop, const std::string& report) {
    SQLiteConnection db(path, false, false);
    db.execute("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;");
    static constexpr const char* kCheckpoints[] = {"PASSIVE", "FULL", "RESTART", "TRUNCATE"};
    std::int64_t commits = 0;
    std::int64_t checkpoints = 0;
    while (!stopRequested(stop)) {
        db.execute("BEGIN IMMEDIATE");
        for (std::int64_t part = 0; part < kBatch; ++part) {
            db.run("INSERT INTO message (guid, text, handle_id, date, is_from_me) "
                   "VALUES (?, ?, 1, ?, 0)",
                   {Value::text("live-" + std::to_string(commits) + "-" + std::to_string(part)),
                    Value::text(std::string(180, 'a' + static_cast<char>(commits % 26))),
                    Value::integer(1000 + commits)});
            db.run("INSERT INTO chat_message_join SELECT 1, last_insert_rowid()", {});
        }
        db.execute("COMMIT");
        ++commits;
        if (commits % 400 == 0) {
            db.execute(std::string("PRAGMA wal_checkpoint(") + kCheckpoints[(commits / 400) % 4] +
                       ")");
            ++checkpoints;
        }
        // Far busier than any person's messages, yet leaving a moment between deliveries.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::ofstream(report) << commits << ' ' << checkpoints;
}

// What one snapshot shows, read over a second, plain connection to the copy.
struct Shown {
    std::int64_t messages = 0;
    std::int64_t joins = 0;
    std::int64_t rowSum = 0;
    std::string quickCheck;
};

Shown inspect(const std::string& copy) {
    SQLiteConnection db(copy, true, true);
    Shown shown;
    db.query("PRAGMA quick_check", {},
             [&](const auto& row) { shown.quickCheck += row.text(0).value_or("NULL"); });
    db.query("SELECT COUNT(*), COALESCE(SUM(ROWID), 0) FROM message", {}, [&](const auto& row) {
        shown.messages = row.integer(0);
        shown.rowSum = row.integer(1);
    });
    db.query("SELECT COUNT(*) FROM chat_message_join", {},
             [&](const auto& row) { shown.joins = row.integer(0); });
    return shown;
}

TEST(LiveWriter, EverySnapshotIsWholeAndNeverGoesBack) {
    testing::TempDir dir;
    const auto source = dir.file("chat.db");
    const auto scratch = dir.file("snapshots");
    {
        // Enough history that copying takes a while, as a real one does.
        TestDatabase db(source);
        db.connection().execute("PRAGMA journal_mode=WAL");
        db.handle("+15550001");
        const auto chat = db.chat("+15550001");
        db.connection().execute("BEGIN");
        for (int i = 0; i < 3 * 1000; ++i) {
            db.message(chat, i, Value::text(std::string(400, 'x')), 1);
        }
        db.connection().execute("COMMIT");
    }

    int stop[2];
    ASSERT_EQ(::pipe(stop), 0);
    const auto report = dir.file("writer-report");
    testing::Child writer([&] {
        ::close(stop[1]);
        runWriter(source, stop[0], report);
    });
    ::close(stop[0]);

    const MessagesReader reader = MessagesReader::ofDatabase(source, "/home/x", scratch);
    const int total = snapshotCount();
    int retries = 0;
    int retriedSnapshots = 0;
    Shown last;
    const auto started = std::chrono::steady_clock::now();
    for (int taken = 0; taken < total; ++taken) {
        SCOPED_TRACE(taken);
        fs::create_directories(scratch);
        fs::permissions(scratch, fs::perms::owner_all);
        const SnapshotLease lease(scratch);
        int attempts = 0;
        std::int64_t counted = 0;
        for (;;) {
            try {
                ChatDatabase database(copyDatabase(source, lease.path(), "chat.db"), "/home/x",
                                      /*immutable=*/true);
                counted = database.chats().at(0).messageCount;
                break;
            } catch (const TornCopyError&) {
                ++retries;
                ASSERT_LT(++attempts, 5) << "torn copies five times in a row";
                std::this_thread::sleep_for(std::chrono::milliseconds(10 * attempts));
            }
        }
        retriedSnapshots += attempts > 0 ? 1 : 0;
        const Shown shown = inspect(lease.path() + "/chat.db");
        ASSERT_EQ(shown.quickCheck, "ok");
        ASSERT_EQ(shown.messages, counted);
        ASSERT_EQ(shown.messages % kBatch, 0) << "half a transaction";
        ASSERT_EQ(shown.joins, shown.messages) << "a message without its chat";
        // Row ids 1..n with none missing: the snapshot is a prefix of the writes.
        ASSERT_EQ(shown.rowSum, shown.messages * (shown.messages + 1) / 2);
        ASSERT_GE(shown.messages, last.messages) << "went back in time";
        last = shown;
        if (taken % 10 == 0) {
            // The public path, with its own retries, agrees.
            EXPECT_GE(static_cast<std::int64_t>(reader.messages({1}).size()), last.messages);
        }
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    ::close(stop[1]);
    EXPECT_EQ(writer.wait(), "") << "the writer failed";
    std::int64_t commits = 0;
    std::int64_t checkpoints = 0;
    std::ifstream(report) >> commits >> checkpoints;
    EXPECT_GT(commits, 0);
    EXPECT_TRUE(fs::is_empty(scratch));
    std::cout << "[ soak ] snapshots " << total << ", retried " << retriedSnapshots << " ("
              << retries << " retries), last count " << last.messages << ", writer commits "
              << commits << ", checkpoints " << checkpoints << ", " << seconds << " s\n";
}

} // namespace
} // namespace scrivly
