#pragma once

#include <exception>
#include <string>

namespace scrivly {

// A failure reported by SQLite. what() is the description the user sees, with SQLite's message.
class SQLiteError : public std::exception {
public:
    enum class Kind { open, query };

    static SQLiteError open(std::string message) { return {Kind::open, std::move(message)}; }
    static SQLiteError query(std::string message) { return {Kind::query, std::move(message)}; }

    Kind kind() const noexcept { return m_kind; }
    // SQLite's own message text, or "unknown error".
    const std::string& message() const noexcept { return m_message; }
    const char* what() const noexcept override { return m_description.c_str(); }

private:
    SQLiteError(Kind kind, std::string message);

    Kind m_kind;
    std::string m_message;
    std::string m_description;
};

} // namespace scrivly
