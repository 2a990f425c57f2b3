#include "cli/Password.h"

#include "cli/Errors.h"

#include "ScrivlyKit/platform/FileSystem.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <termios.h>
#include <unistd.h>

namespace scrivly::cli {

namespace {

// Echo off for as long as this lives, on the terminal of standard input.
class HiddenInput {
public:
    HiddenInput() : m_saved(::tcgetattr(STDIN_FILENO, &m_settings) == 0) {
        if (m_saved) {
            termios quiet = m_settings;
            quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
        }
    }
    ~HiddenInput() {
        if (m_saved) {
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_settings);
        }
    }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;

private:
    termios m_settings{};
    bool m_saved;
};

std::string firstLine(const std::string& text) {
    const auto end = text.find_first_of("\r\n");
    return end == std::string::npos ? text : text.substr(0, end);
}

} // namespace

std::string passwordFromFile(const std::string& path) {
    try {
        return firstLine(FileSystem::readRegularFile(path));
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure("The password file couldn’t be read: " + error.code().message() + " (" +
                      path + ")");
    }
}

std::optional<std::string> backupPassword(const GlobalOptions& options,
                                          const std::string& deviceName) {
    if (options.passwordFile) {
        return passwordFromFile(*options.passwordFile);
    }
    if (const char* password = std::getenv("SCRIVLY_BACKUP_PASSWORD"); password != nullptr) {
        return firstLine(password);
    }
    if (::isatty(STDIN_FILENO) != 1) {
        return std::nullopt;
    }
    std::cerr << "Password of the backup of “" << deviceName << "”: " << std::flush;
    std::string password;
    {
        const HiddenInput hidden;
        std::getline(std::cin, password);
    }
    std::cerr << '\n';
    return password;
}

} // namespace scrivly::cli
