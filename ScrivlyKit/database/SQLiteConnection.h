#pragma once

#include "ScrivlyKit/database/SQLiteError.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace scrivly {

// The one wrapper through which the system talks to SQLite. Opened without SQLite's own mutex:
// use a connection from one thread at a time.
class SQLiteConnection {
public:
    // The value of one bound parameter.
    struct Value {
        struct Null {
            bool operator==(const Null&) const = default;
        };
        std::variant<std::int64_t, std::string, std::vector<std::uint8_t>, Null> value;

        static Value integer(std::int64_t v) { return {v}; }
        static Value text(std::string v) { return {std::move(v)}; }
        static Value blob(std::vector<std::uint8_t> v) { return {std::move(v)}; }
        static Value null() { return {Null{}}; }
    };

    // The current row inside a query's row handler. Columns are addressed by zero-based position
    // in the SELECT list. Valid only during the handler call.
    class Row {
    public:
        explicit Row(sqlite3_stmt* statement) : m_statement(statement) {}
        bool isNull(int column) const;
        std::int64_t integer(int column) const;
        // Nothing when the column is NULL.
        std::optional<std::string> text(int column) const;
        // Nothing unless the column holds a BLOB. The view lives until the next row.
        std::optional<std::span<const std::uint8_t>> blob(int column) const;

    private:
        sqlite3_stmt* m_statement;
    };

    using RowHandler = std::function<void(const Row&)>;

    // Opens a database file: read-only (immutable and URI-encoded when both flags are set) or
    // read-write and created when missing. Throws SQLiteError::open.
    SQLiteConnection(const std::string& path, bool readOnly, bool immutable);
    ~SQLiteConnection();
    SQLiteConnection(const SQLiteConnection&) = delete;
    SQLiteConnection& operator=(const SQLiteConnection&) = delete;
    SQLiteConnection(SQLiteConnection&&) noexcept;
    SQLiteConnection& operator=(SQLiteConnection&&) noexcept;

    // Runs semicolon-separated statements without parameters or rows. Throws SQLiteError::query.
    void execute(const std::string& sql);
    // Runs one statement with bindings, discarding any rows. Throws SQLiteError::query.
    void run(const std::string& sql, const std::vector<Value>& bindings = {});
    // Runs one statement and calls row for each result row; what the handler throws passes
    // through unchanged. Throws SQLiteError::query.
    void query(const std::string& sql, const std::vector<Value>& bindings, const RowHandler& row);
    // The column names of a table; empty when it does not exist. Never throws.
    std::set<std::string> columns(const std::string& table);

private:
    struct CloseDatabase {
        void operator()(sqlite3* db) const noexcept;
    };
    std::unique_ptr<sqlite3, CloseDatabase> m_db;
};

} // namespace scrivly
