#include "ScrivlyKit/contacts/ContactsError.h"

namespace scrivly {

ContactsError::ContactsError(std::string path, std::string reason)
    : m_path(std::move(path)), m_reason(std::move(reason)),
      m_description("The contacts file couldn\u2019t be read: " + m_path + " (" + m_reason + ")") {}

} // namespace scrivly
