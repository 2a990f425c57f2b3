#include "ScrivlyKit/database/SQLiteError.h"

namespace scrivly {

SQLiteError::SQLiteError(Kind kind, std::string message)
    : m_kind(kind), m_message(std::move(message)) {
    m_description = (kind == Kind::open ? "The database couldn’t be opened: "
                                        : "The database couldn’t be read: ") +
                    m_message;
}

} // namespace scrivly
