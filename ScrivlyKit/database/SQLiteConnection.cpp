#include "ScrivlyKit/database/SQLiteConnection.h"

#include <sqlite3.h>

#include <climits>

namespace scrivly {
namespace {

constexpr const char* kUnknownError = "unknown error";

// Bytes that may stand unescaped in the path of a URL (RFC 3986 pchar without "%", plus "/").
// SQLite ends the file name of a URI at "?" or "#" and decodes "%HH", so those and everything
// unusual must be escaped.
bool isAllowedInURLPath(unsigned char c) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
        return true;
    }
    switch (c) {
    case '-':
    case '.':
    case '_':
    case '~':
    case '!':
    case '$':
    case '&':
    case '\'':
    case '(':
    case ')':
    case '*':
    case '+':
    case ',':
    case '=':
    case ':':
    case '@':
    case '/':
        return true;
    default:
        return false;
    }
}

std::string percentEncodedPath(const std::string& path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(path.size());
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (isAllowedInURLPath(byte)) {
            encoded += c;
        } else {
            encoded += '%';
            encoded += kHex[byte >> 4];
            encoded += kHex[byte & 0x0F];
        }
    }
    return encoded;
}

std::string errorMessage(sqlite3* db) {
    const char* message = db ? sqlite3_errmsg(db) : nullptr;
    return message ? message : kUnknownError;
}

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// An empty buffer must still bind a non-null pointer: a null one binds NULL instead of a
// zero-length blob.
const std::uint8_t kEmptyBlob = 0;

void bind(sqlite3_stmt* statement, const std::vector<SQLiteConnection::Value>& bindings) {
    if (bindings.size() > static_cast<std::size_t>(INT_MAX)) {
        throw SQLiteError::query("too many bound values");
    }
    int index = 1;
    for (const auto& binding : bindings) {
        std::visit(
            [&](const auto& value) {
                using T = std::decay_t<decltype(value)>;
                if constexpr (std::is_same_v<T, std::int64_t>) {
                    sqlite3_bind_int64(statement, index, value);
                } else if constexpr (std::is_same_v<T, std::string>) {
                    sqlite3_bind_text(statement, index, value.c_str(), -1, SQLITE_TRANSIENT);
                } else if constexpr (std::is_same_v<T, std::vector<std::uint8_t>>) {
                    const void* bytes = value.empty() ? &kEmptyBlob : value.data();
                    sqlite3_bind_blob(statement, index, bytes, static_cast<int>(value.size()),
                                      SQLITE_TRANSIENT);
                } else {
                    sqlite3_bind_null(statement, index);
                }
            },
            binding.value);
        ++index;
    }
}

} // namespace

void SQLiteConnection::CloseDatabase::operator()(sqlite3* db) const noexcept {
    sqlite3_close(db);
}

SQLiteConnection::SQLiteConnection(const std::string& path, bool readOnly, bool immutable) {
    int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    std::string name = path;
    if (readOnly && immutable) {
        // Percent-encoding a byte string cannot fail, so the plain-path fallback is never needed.
        name = "file:" + percentEncodedPath(path) + "?mode=ro&immutable=1";
        flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    }
    flags |= SQLITE_OPEN_NOMUTEX;

    sqlite3* db = nullptr;
    if (sqlite3_open_v2(name.c_str(), &db, flags, nullptr) != SQLITE_OK) {
        auto message = errorMessage(db);
        sqlite3_close(db);
        throw SQLiteError::open(std::move(message));
    }
    m_db.reset(db);
    sqlite3_busy_timeout(db, 2000);
}

SQLiteConnection::~SQLiteConnection() = default;
SQLiteConnection::SQLiteConnection(SQLiteConnection&&) noexcept = default;
SQLiteConnection& SQLiteConnection::operator=(SQLiteConnection&&) noexcept = default;

void SQLiteConnection::execute(const std::string& sql) {
    if (!m_db) {
        throw SQLiteError::query(kUnknownError);
    }
    char* buffer = nullptr;
    if (sqlite3_exec(m_db.get(), sql.c_str(), nullptr, nullptr, &buffer) != SQLITE_OK) {
        std::string message = buffer ? buffer : kUnknownError;
        sqlite3_free(buffer);
        throw SQLiteError::query(std::move(message));
    }
}

void SQLiteConnection::run(const std::string& sql, const std::vector<Value>& bindings) {
    query(sql, bindings, [](const Row&) {});
}

void SQLiteConnection::query(const std::string& sql, const std::vector<Value>& bindings,
                             const RowHandler& row) {
    if (!m_db) {
        throw SQLiteError::query(kUnknownError);
    }
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK ||
        !prepared) {
        auto message = errorMessage(m_db.get());
        sqlite3_finalize(prepared);
        throw SQLiteError::query(std::move(message));
    }
    // Owning the statement finalizes it on every way out, the handler's throws included.
    const Statement statement(prepared);
    bind(prepared, bindings);

    int result = SQLITE_OK;
    while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
        row(Row(prepared));
    }
    if (result != SQLITE_DONE) {
        throw SQLiteError::query(errorMessage(m_db.get()));
    }
}

std::set<std::string> SQLiteConnection::columns(const std::string& table) {
    std::set<std::string> names;
    // Callers only test membership, so a failed probe simply answers with fewer names.
    try {
        query("PRAGMA table_info(" + table + ")", {}, [&](const Row& row) {
            if (auto name = row.text(1)) {
                names.insert(std::move(*name));
            }
        });
    } catch (...) {
    }
    return names;
}

bool SQLiteConnection::Row::isNull(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

std::int64_t SQLiteConnection::Row::integer(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

std::optional<std::string> SQLiteConnection::Row::text(int column) const {
    if (sqlite3_column_type(m_statement, column) == SQLITE_NULL) {
        return std::nullopt;
    }
    const auto* bytes = sqlite3_column_text(m_statement, column);
    if (!bytes) {
        return std::nullopt;
    }
    // The length, not the terminator, bounds the text: stored text may hold NUL bytes or
    // ill-formed UTF-8, which is kept as read.
    const auto length = sqlite3_column_bytes(m_statement, column);
    return std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

std::optional<std::span<const std::uint8_t>> SQLiteConnection::Row::blob(int column) const {
    if (sqlite3_column_type(m_statement, column) != SQLITE_BLOB) {
        return std::nullopt;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(m_statement, column));
    const auto length = sqlite3_column_bytes(m_statement, column);
    if (!bytes || length <= 0) {
        return std::span<const std::uint8_t>{};
    }
    return std::span<const std::uint8_t>(bytes, static_cast<std::size_t>(length));
}

} // namespace scrivly
