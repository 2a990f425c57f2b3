#pragma once

#include <filesystem>
#include <string>

namespace scrivly::cli {

class Interrupts;

// A new private folder (permissions 0700, a unique name) in the system temporary folder,
// removed with everything in it when this object goes, or by an interrupt that ends the process.
class TemporaryFolder {
public:
    // Throws Failure when the folder can't be made.
    TemporaryFolder(const std::string& prefix, Interrupts& interrupts);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    Interrupts& m_interrupts;
    std::filesystem::path m_path;
};

} // namespace scrivly::cli
