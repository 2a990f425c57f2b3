#include "ScrivlyKit/database/SQLiteConnection.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

namespace scrivly {
namespace {

using Value = SQLiteConnection::Value;
using Row = SQLiteConnection::Row;
using testing::errorText;

TEST(SQLiteConnection, MissingFileFailsToOpen) {
    testing::TempDir dir;
    for (const auto& [readOnly, immutable] :
         {std::pair{true, true}, {true, false}, {false, false}}) {
        SCOPED_TRACE(std::to_string(readOnly) + std::to_string(immutable));
        const auto text =
            errorText([&] { SQLiteConnection(dir.file("missing/chat.db"), readOnly, immutable); });
        EXPECT_EQ(text, "The database couldn’t be opened: unable to open database file");
    }
}

TEST(SQLiteConnection, ImmutableOpenOfPathsThatNeedEncoding) {
    testing::TempDir dir;
    for (const std::string name : {"with space.db", "hash#1.db", "what?x=1.db", "fifty%20.db",
                                   "ünïcödé.db", "semi;colon&amp.db"}) {
        SCOPED_TRACE(name);
        const auto path = dir.file(name);
        SQLiteConnection(path, false, false)
            .execute("CREATE TABLE t (v); INSERT INTO t VALUES (7)");
        SQLiteConnection reader(path, true, true);
        std::int64_t value = 0;
        reader.query("SELECT v FROM t", {}, [&](const Row& row) { value = row.integer(0); });
        EXPECT_EQ(value, 7);
        EXPECT_EQ(errorText([&] { reader.execute("INSERT INTO t VALUES (8)"); }),
                  "The database couldn’t be read: attempt to write a readonly database");
    }
}

TEST(SQLiteConnection, BindsAndReadsEveryKindOfValue) {
    SQLiteConnection db(":memory:", false, false);
    db.execute("CREATE TABLE t (v)");
    const std::string invalidUTF8 = "caf\xC3 \xFF\xFE";
    for (const auto& value : {Value::integer(-5), Value::text("héllo 👋"), Value::text(invalidUTF8),
                              Value::blob({}), Value::blob({0, 1, 255}), Value::null()}) {
        db.run("INSERT INTO t VALUES (?)", {value});
    }
    std::vector<std::string> seen;
    db.query("SELECT typeof(v), v, v FROM t ORDER BY rowid", {}, [&](const Row& row) {
        std::string text = *row.text(0) + ":";
        if (const auto blob = row.blob(2)) {
            text += "blob" + std::to_string(blob->size());
        } else if (row.isNull(1)) {
            EXPECT_FALSE(row.text(1));
            text += "null";
        } else {
            text += *row.text(1);
        }
        seen.push_back(text);
    });
    EXPECT_EQ(seen, (std::vector<std::string>{"integer:-5", "text:héllo 👋", "text:" + invalidUTF8,
                                              "blob:blob0", "blob:blob3", "null:null"}));
}

TEST(SQLiteConnection, FailuresCarrySQLiteMessages) {
    SQLiteConnection db(":memory:", false, false);
    const std::string prefix = "The database couldn’t be read: ";
    EXPECT_EQ(errorText([&] { db.execute("SELEC 1"); }), prefix + "near \"SELEC\": syntax error");
    EXPECT_EQ(errorText([&] { db.run("SELECT * FROM nowhere"); }),
              prefix + "no such table: nowhere");
    db.execute("CREATE TABLE t (v UNIQUE); INSERT INTO t VALUES (1)");
    EXPECT_EQ(errorText([&] { db.run("INSERT INTO t VALUES (?)", {Value::integer(1)}); }),
              prefix + "UNIQUE constraint failed: t.v");
    EXPECT_NO_THROW(db.run("SELECT v FROM t")); // rows are discarded
}

TEST(SQLiteConnection, ThrowingHandlerLeavesNoStatementOpen) {
    SQLiteConnection db(":memory:", false, false);
    db.execute("CREATE TABLE t (v); INSERT INTO t VALUES (1), (2)");
    struct Stop {};
    EXPECT_THROW(db.query("SELECT v FROM t", {}, [](const Row&) { throw Stop{}; }), Stop);
    // An unfinalized reader would lock the table against being dropped.
    EXPECT_NO_THROW(db.execute("DROP TABLE t"));
}

} // namespace
} // namespace scrivly
