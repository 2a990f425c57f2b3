#include "ScrivlyKit/database/DatabaseCopy.h"

#include "ScrivlyKit/platform/FileDescriptor.h"

#include "ScrivlyKit/platform/FileSystem.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace scrivly {
namespace {

// What tells one version of a file from another without reading it.
struct FileVersion {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    bool operator==(const FileVersion& other) const {
        return device == other.device && inode == other.inode && size == other.size &&
               modified.tv_sec == other.modified.tv_sec &&
               modified.tv_nsec == other.modified.tv_nsec &&
               changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
    }
};

FileVersion versionOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        throw std::filesystem::filesystem_error("cannot copy file", path,
                                                std::error_code(errno, std::generic_category()));
    }
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
}

// The log's identity: its header's checkpoint sequence number and salts, which change only when
// the log starts over after a complete checkpoint. Empty when there is no log or it is empty.
std::string logIdentity(const std::string& wal) {
    // Never blocks: a pipe in the log's place is refused by the copy that follows.
    const FileDescriptor file(::open(wal.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    char header[32];
    const bool read = file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
                      ::pread(file.get(), header, sizeof header, 0) == sizeof header;
    return read ? std::string(header + 12, 4) + std::string(header + 16, 8) : std::string();
}

} // namespace

TornCopyError::TornCopyError()
    : std::runtime_error("The database couldn’t be copied: it kept changing while it was copied. "
                         "Try again in a moment.") {}

void copyDatabaseFiles(const std::string& source, const std::string& copy) {
    const FileVersion before = versionOf(source);
    const std::string logBefore = logIdentity(source + "-wal");
    FileSystem::copyFile(source, copy);
    bool hasLog = false;
    for (const char* suffix : {"-wal", "-shm"}) {
        const std::string companion = source + suffix;
        struct stat status {};
        // lstat is not enough: a dangling or looping link must not pass for "no log".
        if (::stat(companion.c_str(), &status) != 0 && errno == ENOENT) {
            continue;
        }
        FileSystem::copyFile(companion, copy + suffix);
        hasLog = true;
    }
    // With a log, the main file changes only by checkpoints, which copy in pages from committed
    // frames that the log copy (taken after the main file) still holds, so the log outweighs
    // them. That fails only if the log started over meanwhile. Without a log, any change of the
    // main file may have torn it.
    const bool torn = hasLog || !logBefore.empty() ? logIdentity(source + "-wal") != logBefore
                                                   : !(versionOf(source) == before);
    if (torn) {
        throw TornCopyError();
    }
}

} // namespace scrivly
