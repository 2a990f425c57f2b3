#pragma once

#include <exception>
#include <string>

namespace scrivly {

// A contacts file or address-book database that could not be read. what() is the text the user
// sees: "The contacts file couldn’t be read: PATH (REASON)".
class ContactsError : public std::exception {
public:
    ContactsError(std::string path, std::string reason);

    const std::string& path() const noexcept { return m_path; }
    const std::string& reason() const noexcept { return m_reason; }
    const char* what() const noexcept override { return m_description.c_str(); }

private:
    std::string m_path;
    std::string m_reason;
    std::string m_description;
};

} // namespace scrivly
