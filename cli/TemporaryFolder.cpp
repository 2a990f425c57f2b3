#include "cli/TemporaryFolder.h"

#include "cli/Errors.h"
#include "cli/Interrupts.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <vector>

namespace scrivly::cli {

TemporaryFolder::TemporaryFolder(const std::string& prefix, Interrupts& interrupts)
    : m_interrupts(interrupts) {
    std::error_code error;
    auto base = std::filesystem::temp_directory_path(error);
    if (error) {
        base = "/tmp";
    }
    const std::string pattern = (base / (prefix + "XXXXXX")).string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    // mkdtemp makes the folder with permissions 0700.
    if (::mkdtemp(name.data()) == nullptr) {
        throw Failure("A temporary folder couldn’t be made in " + base.string() + ": " +
                      std::strerror(errno));
    }
    m_path = name.data();
    m_interrupts.removeOnInterrupt(m_path);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
    m_interrupts.forget(m_path);
}

} // namespace scrivly::cli
