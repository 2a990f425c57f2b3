#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/text/TypedStream.h"
#include "tests/database/TestDatabase.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace scrivly {
namespace {

using testing::TestDatabase;
using Value = SQLiteConnection::Value;
using Lines = std::vector<std::string>;

// One line per chat: count, newest date, members (row id:address), group flag, display name.
Lines summary(const std::vector<Chat>& chats) {
    Lines lines;
    for (const auto& chat : chats) {
        std::string members;
        for (const auto& handle : chat.handles) {
            members += " " + std::to_string(handle.rowID) + ":" + handle.address;
        }
        lines.push_back(std::to_string(chat.messageCount) + " " +
                        (chat.lastDate ? std::to_string(chat.lastDate->seconds) : "-") + " [" +
                        members + " ] " + (chat.isGroup ? "group " : "") +
                        chat.displayName.value_or("-"));
    }
    return lines;
}

// One line per message: id@chat, sender, text, service and reaction fields, attachments.
Lines summary(const std::vector<Message>& messages) {
    Lines lines;
    for (const auto& m : messages) {
        std::string line = std::to_string(m.id) + "@" + std::to_string(m.chatID) + " " +
                           (m.isFromMe ? "me" : m.sender.value_or("?")) + " '" + m.text + "' " +
                           m.service + " " + std::to_string(m.reactionType) + " " +
                           m.reactionTarget.value_or("-") + " " + m.reactionEmoji.value_or("-");
        for (const auto& a : m.attachments) {
            line += " | " + a.name + " " + a.path.value_or("-") + " " + a.mimeType.value_or("-") +
                    " " + std::to_string(a.totalBytes);
        }
        lines.push_back(line);
    }
    return lines;
}

class ChatDatabaseTest : public ::testing::Test {
protected:
    testing::TempDir dir;
    std::string path = dir.file("chat.db");
};

TEST_F(ChatDatabaseTest, ChatList) {
    {
        TestDatabase db(path);
        const auto anna = db.handle("+15550001");
        const auto ben = db.handle("ben@example.com");
        const auto solo = db.chat("+15550001");
        db.member(solo, anna);
        db.member(solo, 99); // no such handle
        db.message(solo, 100, Value::text("seconds"), anna);
        db.message(solo, 200'000'000'000, Value::text("nanoseconds"));
        db.message(solo, 300'000'000'000, Value::text(""), anna,
                   {{"associated_message_type", Value::integer(2000)}});
        db.message(solo, 400'000'000'000, Value::null(), 0, {{"item_type", Value::integer(1)}});
        const auto club = db.chat("chat42", 43, Value::text(" Book club"));
        db.member(club, ben);
        db.member(club, anna);
        db.chat("+15550002", 45, Value::text(" \t "));
        db.chat("chat43", 43, Value::text("\n"));
        db.chat("");
        const auto pair = db.chat("chat44", 45);
        db.member(pair, anna);
        db.member(pair, ben);
    }
    EXPECT_EQ(summary(ChatDatabase(path, "", true).chats()),
              (Lines{"2 200.000000 [ 1:+15550001 ] -",
                     "0 - [ 1:+15550001 2:ben@example.com ] "
                     "group  Book club",
                     "0 - [ 0:+15550002 ] -", "0 - [ ] group \n", "0 - [ ] -",
                     "0 - [ 1:+15550001 2:ben@example.com ] group -"}));
}

TEST_F(ChatDatabaseTest, MessagesOfChats) {
    {
        TestDatabase db(path);
        const auto anna = db.handle("anna@example.com");
        const auto first = db.chat("anna@example.com");
        const auto second = db.chat("+15550001");
        db.message(first, 900, Value::text("  later \n"), anna, {{"service", Value::text("SMS")}});
        const auto shared = db.message(first, 500, Value::text("to both"));
        db.join(second, shared);
        db.message(first, 600, Value::null(), anna,
                   {{"associated_message_guid", Value::text("p:0/guid-2")},
                    {"associated_message_type", Value::integer(2006)},
                    {"associated_message_emoji", Value::text("🎉")}});
        db.message(first, 700, Value::text("unsent"), 0, {{"date_retracted", Value::integer(1)}});
        db.message(second, 800, Value::text("unknown sender"), 77);
        db.message(first, 100, Value::text("not shown"), 0, {{"item_type", Value::integer(2)}});
        db.message(db.chat("+15550009"), 50, Value::text("other chat"));
        db.connection().execute(R"(
            INSERT INTO attachment (filename, mime_type, transfer_name, total_bytes) VALUES
                ('~/Library/Messages/Attachments/IMG_1.heic', 'image/heic', NULL, 2048),
                ('/tmp/n.pdf', NULL, 'Notes.pdf', NULL);
            INSERT INTO message_attachment_join VALUES (2, 2), (2, 1);)");
    }
    ChatDatabase database(path, "/home/x", false);
    EXPECT_TRUE(database.messages({}).empty());
    const std::string files = " | IMG_1.heic /home/x/Library/Messages/Attachments/IMG_1.heic "
                              "image/heic 2048 | Notes.pdf /tmp/n.pdf - 0";
    auto lines = summary(database.messages({1, 2}));
    // The shared message's two rows tie on date and row id, so their order is open.
    ASSERT_EQ(lines.size(), 5U);
    std::sort(lines.begin(), lines.begin() + 2);
    EXPECT_EQ(lines,
              (Lines{"2@1 me 'to both'  0 - -" + files, "2@2 me 'to both'  0 - -" + files,
                     "3@1 anna@example.com ''  2006 guid-2 🎉", "5@2 ? 'unknown sender'  0 - -",
                     "1@1 anna@example.com 'later' SMS 0 - -"}));
}

TEST_F(ChatDatabaseTest, MessageTextCleaning) {
    const std::string invalidUTF8 = "ok \xFF\xC3";
    const auto archived = [](std::string_view text) {
        return Value::blob(TypedStream::archive(text));
    };
    const struct {
        const char* name;
        Value text;
        Value body;
        std::string expected;
    } cases[] = {
        {"plain", Value::text(" hello\n"), Value::null(), "hello"},
        {"text wins over body", Value::text("column"), archived("body"), "column"},
        {"NULL text uses body", Value::null(), archived("from body"), "from body"},
        {"empty text uses body", Value::text(""), archived(" \xEF\xBF\xBC caption "), "caption"},
        {"placeholders only", Value::text("\xEF\xBF\xBC \xEF\xBF\xBC"), Value::null(), ""},
        {"undecodable body", Value::null(), Value::blob({1, 2, 3}), ""},
        {"body stored as text", Value::null(), Value::text("streamtyped NSString"), ""},
        // Ill-formed bytes would make the PDF drop the whole text; they show as U+FFFD instead.
        {"invalid UTF-8 marked", Value::text(invalidUTF8), Value::null(),
         "ok \xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    {
        TestDatabase db(path);
        const auto chat = db.chat("x");
        for (const auto& c : cases) {
            db.message(chat, 1, c.text, 0, {{"attributedBody", c.body}});
        }
    }
    const auto messages = ChatDatabase(path, "", true).messages({1});
    ASSERT_EQ(messages.size(), std::size(cases));
    for (std::size_t i = 0; i < messages.size(); ++i) {
        SCOPED_TRACE(cases[i].name);
        EXPECT_EQ(messages[i].text, cases[i].expected);
    }
}

TEST_F(ChatDatabaseTest, OlderSchemaReadsWithFallbacks) {
    {
        TestDatabase db(path, /*older=*/true);
        const auto anna = db.handle("+15550001", "SMS");
        const auto ben = db.handle("+15550002", "SMS");
        const auto chat = db.chat("chat1", 45);
        db.message(chat, 10, Value::text("one"), anna);
        db.message(chat, 20, Value::text("two"), ben);
        db.message(chat, 30, Value::text("three"), anna);
        db.message(chat, 40, Value::text("mine"));
    }
    ChatDatabase database(path, "", true);
    EXPECT_FALSE(database.hasChatHandleJoin());
    auto chats = database.chats();
    ASSERT_EQ(chats.size(), 1U);
    std::sort(chats[0].handles.begin(), chats[0].handles.end(),
              [](const Handle& a, const Handle& b) { return a.rowID < b.rowID; });
    EXPECT_EQ(summary(chats), Lines{"4 40.000000 [ 1:+15550001 2:+15550002 ] group -"});
    EXPECT_EQ(summary(database.messages({1})),
              (Lines{"1@1 +15550001 'one'  0 - -", "2@1 +15550002 'two'  0 - -",
                     "3@1 +15550001 'three'  0 - -", "4@1 me 'mine'  0 - -"}));
}

TEST_F(ChatDatabaseTest, RejectsOtherDatabases) {
    // Tables created, then the first required table that is missing.
    const std::pair<const char*, const char*> cases[] = {
        {"notes", "message"},
        {"message chat", "handle"},
        {"message handle", "chat"},
        {"message handle chat", "chat_message_join"},
    };
    for (const auto& [tables, missing] : cases) {
        SCOPED_TRACE(missing);
        const auto file = dir.file(std::string(missing) + ".db");
        SQLiteConnection db(file, false, false);
        std::istringstream names(tables);
        for (std::string name; names >> name;) {
            db.execute("CREATE TABLE " + name + " (v)");
        }
        try {
            ChatDatabase(file, "", true);
            ADD_FAILURE() << "opened";
        } catch (const SQLiteError& error) {
            EXPECT_EQ(error.kind(), SQLiteError::Kind::query);
            EXPECT_EQ(error.what(), "The database couldn’t be read: This isn’t a Messages "
                                    "database (no " +
                                        std::string(missing) + " table).");
        }
    }
}

} // namespace
} // namespace scrivly
