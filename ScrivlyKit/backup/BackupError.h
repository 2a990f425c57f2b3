#pragma once

#include <exception>
#include <string>

namespace scrivly {

// An iPhone backup that can't be read as asked. what() is the text the user reads; kind() tells
// the cases apart, so that a caller can answer each its own way (ask for a password again, or
// map a missing password to a usage error).
class BackupError : public std::exception {
public:
    enum class Kind {
        notBackup,     // the folder holds no backup
        needsPassword, // encrypted, and no password was given
        wrongPassword, // the password doesn't open the keybag
        unfinished,    // the backup was cut off or is still being written
        noMessages,    // complete, but without a Messages history
        damaged,       // a part is missing, cut short or not what it should be
        unreadable,    // the system refused a read or a write
        cancelled      // stopped on request
    };

    // detail names what is wrong (for damaged and unreadable); path names the file or folder.
    BackupError(Kind kind, std::string path, std::string detail = {});

    Kind kind() const noexcept { return m_kind; }
    const std::string& path() const noexcept { return m_path; }
    const std::string& detail() const noexcept { return m_detail; }
    const char* what() const noexcept override { return m_description.c_str(); }

private:
    Kind m_kind;
    std::string m_path;
    std::string m_detail;
    std::string m_description;
};

} // namespace scrivly
