#include "ScrivlyKit/database/SnapshotLease.h"

#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/platform/UUID.h"

#include <cerrno>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace scrivly {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kLockSuffix = ".lock";

// Whether descriptor is still the file at path: a clean-up may have removed the lock file
// between our open and our lock, leaving us a lock on a file nobody else can find.
bool isStillAt(int descriptor, const std::string& path) {
    struct stat held {};
    struct stat named {};
    return ::fstat(descriptor, &held) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

} // namespace

SnapshotLease::SnapshotLease(const std::string& folder) {
    int lastError = 0;
    for (int attempt = 0; attempt < 8; ++attempt) {
        const std::string path = folder + "/" + randomUUID();
        const std::string lock = path + std::string(kLockSuffix);
        FileDescriptor descriptor(
            ::open(lock.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!descriptor) {
            lastError = errno;
            if (lastError == EEXIST) {
                continue;
            }
            break;
        }
        int locked = 0;
        while ((locked = ::flock(descriptor.get(), LOCK_EX)) != 0 && errno == EINTR) {
        }
        if (locked == 0 && isStillAt(descriptor.get(), lock)) {
            m_path = path;
            m_lock = std::move(descriptor);
            return;
        }
        lastError = locked == 0 ? ENOENT : errno;
    }
    throw fs::filesystem_error("cannot make a snapshot lock", folder,
                               std::error_code(lastError, std::generic_category()));
}

SnapshotLease::~SnapshotLease() {
    // The subfolder goes first, so a subfolder never lies there without its lock file.
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
    ::unlink((m_path + std::string(kLockSuffix)).c_str());
    m_lock.reset();
}

std::size_t removeLeftoverSnapshots(const std::string& folder) noexcept {
    std::size_t removed = 0;
    try {
        // Never clean a folder someone else could have pointed elsewhere.
        FileSystem::requireOwnerOnlyFolder(folder);
        std::vector<fs::path> entries;
        std::error_code error;
        for (fs::directory_iterator it(folder, error), end; !error && it != end;
             it.increment(error)) {
            entries.push_back(it->path());
        }
        for (const auto& entry : entries) {
            const std::string name = entry.filename().string();
            std::error_code ignored;
            if (name.ends_with(kLockSuffix)) {
                const FileDescriptor descriptor(
                    ::open(entry.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
                if (!descriptor) {
                    continue;
                }
                if (::flock(descriptor.get(), LOCK_EX | LOCK_NB) == 0 &&
                    isStillAt(descriptor.get(), entry.string())) {
                    const fs::path subfolder =
                        entry.parent_path() / name.substr(0, name.size() - kLockSuffix.size());
                    if (fs::remove_all(subfolder, ignored) > 0) {
                        ++removed;
                    }
                    ::unlink(entry.c_str());
                }
            } else if (fs::is_directory(fs::symlink_status(entry, ignored)) &&
                       !fs::exists(fs::symlink_status(entry.string() + std::string(kLockSuffix),
                                                      ignored))) {
                // A lease makes its lock file before its subfolder and removes it after, so a
                // subfolder without one belongs to no running read.
                if (fs::remove_all(entry, ignored) > 0) {
                    ++removed;
                }
            }
        }
    } catch (...) {
        // Clean-up is a courtesy; whatever is left is tried again at the next start.
    }
    return removed;
}

} // namespace scrivly
