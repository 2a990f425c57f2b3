#pragma once

#include "ScrivlyKit/database/SQLiteConnection.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly::testing {

// Builds a small made-up database with the Messages tables, in the current layout or an older
// one (no chat_handle_join, none of the optional message columns, no item_type).
class TestDatabase {
public:
    using Value = SQLiteConnection::Value;

    TestDatabase(const std::string& path, bool older = false) : m_db(path, false, false) {
        const std::string optional = older ? "" : R"(, item_type INTEGER DEFAULT 0,
            attributedBody BLOB, associated_message_guid TEXT,
            associated_message_type INTEGER DEFAULT 0, associated_message_emoji TEXT,
            service TEXT, date_retracted INTEGER DEFAULT 0)";
        m_db.execute(R"(
            PRAGMA synchronous = OFF;
            CREATE TABLE handle (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT, service TEXT);
            CREATE TABLE chat (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT, style INTEGER,
                chat_identifier TEXT, service_name TEXT, display_name TEXT);
            CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER);
            CREATE TABLE attachment (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, filename TEXT,
                mime_type TEXT, uti TEXT, transfer_name TEXT, total_bytes INTEGER);
            CREATE TABLE message_attachment_join (message_id INTEGER, attachment_id INTEGER);
            CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT, text TEXT,
                handle_id INTEGER DEFAULT 0, date INTEGER, is_from_me INTEGER DEFAULT 0)" +
                     optional + ");" + (older ? "" : R"(
            CREATE TABLE chat_handle_join (chat_id INTEGER, handle_id INTEGER);)"));
    }

    std::int64_t insert(const std::string& sql, const std::vector<Value>& values) {
        m_db.run(sql, values);
        std::int64_t id = 0;
        m_db.query("SELECT last_insert_rowid()", {}, [&](const auto& row) { id = row.integer(0); });
        return id;
    }

    std::int64_t handle(const std::string& address, const std::string& service = "iMessage") {
        return insert("INSERT INTO handle (id, service) VALUES (?, ?)",
                      {Value::text(address), Value::text(service)});
    }

    std::int64_t chat(const std::string& identifier, std::int64_t style = 45,
                      Value displayName = Value::null()) {
        return insert("INSERT INTO chat (guid, style, chat_identifier, service_name, display_name) "
                      "VALUES (?, ?, ?, 'iMessage', ?)",
                      {Value::text("iMessage;-;" + identifier), Value::integer(style),
                       Value::text(identifier), std::move(displayName)});
    }

    void member(std::int64_t chat, std::int64_t handle) {
        m_db.run("INSERT INTO chat_handle_join VALUES (?, ?)",
                 {Value::integer(chat), Value::integer(handle)});
    }

    // A message in one chat; columns holds further "name = value" pairs for optional columns.
    std::int64_t message(std::int64_t chat, std::int64_t date, Value text, std::int64_t handle = 0,
                         const std::vector<std::pair<std::string, Value>>& columns = {}) {
        std::string names = "guid, text, handle_id, date, is_from_me";
        std::string marks = "?, ?, ?, ?, ?";
        std::vector<Value> values{Value::text("guid-" + std::to_string(++m_messages)),
                                  std::move(text), Value::integer(handle), Value::integer(date),
                                  Value::integer(handle == 0 ? 1 : 0)};
        for (const auto& [name, value] : columns) {
            names += ", " + name;
            marks += ", ?";
            values.push_back(value);
        }
        const auto id =
            insert("INSERT INTO message (" + names + ") VALUES (" + marks + ")", values);
        join(chat, id);
        return id;
    }

    void join(std::int64_t chat, std::int64_t message) {
        m_db.run("INSERT INTO chat_message_join VALUES (?, ?)",
                 {Value::integer(chat), Value::integer(message)});
    }

    SQLiteConnection& connection() { return m_db; }

private:
    SQLiteConnection m_db;
    int m_messages = 0;
};

} // namespace scrivly::testing
