#pragma once

#include <filesystem>
#include <string>

namespace scrivly::testing {

// A fresh folder under the system temporary folder, removed with everything in it on
// destruction.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::string file(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

} // namespace scrivly::testing
