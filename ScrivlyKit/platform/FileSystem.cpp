#include "ScrivlyKit/platform/FileSystem.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__linux__)
#include <linux/fs.h>
#include <sys/ioctl.h>
#elif defined(__APPLE__)
#include <copyfile.h>
#endif

namespace scrivly::FileSystem {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void throwError(const char* what, const std::string& path, int error) {
    throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

[[noreturn]] void throwError(const char* what, const std::string& from, const std::string& to,
                             int error) {
    throw fs::filesystem_error(what, from, to, std::error_code(error, std::generic_category()));
}

// Owns one open file descriptor.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }

    // Closes now, so that a failing close (the last chance to report a write error) is seen.
    int close() {
        const int result = ::close(m_descriptor);
        m_descriptor = -1;
        return result;
    }

private:
    int m_descriptor;
};

// Reads and writes in user space; works between any two descriptors. Answers 0 or an errno.
int copyByReading(int in, int out) {
    static constexpr std::size_t kChunk = 1 << 16;
    char buffer[kChunk];
    for (;;) {
        const ssize_t got = ::read(in, buffer, kChunk);
        if (got == 0) {
            return 0;
        }
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        for (ssize_t written = 0; written < got;) {
            const ssize_t put =
                ::write(out, buffer + written, static_cast<std::size_t>(got - written));
            if (put < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return errno;
            }
            written += put;
        }
    }
}

#if defined(__linux__)
// Shares the source's blocks where the file system supports it (Btrfs, XFS), else copies inside
// the kernel, else falls back to reading. Answers 0 or an errno.
int copyFast(int in, int out) {
    if (::ioctl(out, FICLONE, in) == 0) {
        return 0;
    }
    bool copiedAny = false;
    for (;;) {
        const ssize_t copied = ::copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0);
        if (copied == 0) {
            return 0;
        }
        if (copied > 0) {
            copiedAny = true;
            continue;
        }
        if (errno == EINTR) {
            continue;
        }
        // Not offered for this pair of files: the offsets have not moved yet, so read instead.
        const bool unsupported = errno == EXDEV || errno == ENOSYS || errno == EINVAL ||
                                 errno == EOPNOTSUPP || errno == EPERM;
        if (unsupported && !copiedAny) {
            return copyByReading(in, out);
        }
        return errno;
    }
}
#endif

int makeFolder(const std::string& path) {
    if (::mkdir(path.c_str(), 0700) == 0) {
        // mkdir applies the umask; the snapshot folders must be exactly owner-only.
        return ::chmod(path.c_str(), 0700) == 0 ? 0 : errno;
    }
    const int error = errno;
    if (error == EEXIST) {
        struct stat status {};
        if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
            return 0;
        }
        return ENOTDIR;
    }
    return error;
}

} // namespace

void copyFile(const std::string& from, const std::string& to) {
    static constexpr const char* kWhat = "cannot copy file";
#if defined(__APPLE__)
    // copyfile clones on APFS and copies elsewhere; it refuses to replace with COPYFILE_CLONE.
    if (::unlink(to.c_str()) != 0 && errno != ENOENT) {
        throwError(kWhat, from, to, errno);
    }
    if (::copyfile(from.c_str(), to.c_str(), nullptr, COPYFILE_CLONE) != 0) {
        throwError(kWhat, from, to, errno);
    }
    ::chmod(to.c_str(), 0600);
#else
    // O_NONBLOCK keeps the open itself from waiting on a pipe; regular files ignore it.
    Descriptor in(::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!in) {
        throwError(kWhat, from, to, errno);
    }
    struct stat status {};
    if (::fstat(in.get(), &status) != 0) {
        throwError(kWhat, from, to, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throwError("cannot copy file (not a regular file)", from, to,
                   S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    Descriptor out(::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!out) {
        throwError(kWhat, from, to, errno);
    }
#if defined(__linux__)
    const int error = copyFast(in.get(), out.get());
#else
    const int error = copyByReading(in.get(), out.get());
#endif
    if (error != 0) {
        throwError(kWhat, from, to, error);
    }
    if (out.close() != 0) {
        throwError(kWhat, from, to, errno);
    }
#endif
}

void createPrivateFolders(const std::string& path, std::error_code& error) noexcept {
    error.clear();
    if (path.empty()) {
        error = std::make_error_code(std::errc::no_such_file_or_directory);
        return;
    }
    try {
        fs::path current;
        for (const auto& part : fs::path(path)) {
            current /= part;
            if (part.empty() || part == current.root_path()) {
                continue;
            }
            if (const int failure = makeFolder(current.string()); failure != 0) {
                error = std::error_code(failure, std::generic_category());
                return;
            }
        }
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
    }
}

void createPrivateFolders(const std::string& path) {
    std::error_code error;
    createPrivateFolders(path, error);
    if (error) {
        throwError("cannot create directory", path, error.value());
    }
}

void requireOwnerOnlyFolder(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        throwError("cannot use folder", path, errno);
    }
    const char* reason = nullptr;
    if (S_ISLNK(status.st_mode)) {
        reason = "is a symbolic link";
    } else if (!S_ISDIR(status.st_mode)) {
        reason = "is not a folder";
    } else if (status.st_uid != ::geteuid()) {
        reason = "belongs to another user";
    } else if ((status.st_mode & 07777) != 0700) {
        reason = "can be opened by other users (its permissions are not 0700)";
    }
    if (reason != nullptr) {
        throw UnsafeFolderError("The folder for private copies isn’t safe to use: " + path + " " +
                                reason + ".");
    }
}

std::string userTemporaryFolder() {
    for (const char* name : {"XDG_RUNTIME_DIR", "TMPDIR"}) {
        if (const char* value = std::getenv(name); value != nullptr && *value != '\0') {
            return value;
        }
    }
    std::error_code error;
    const auto temporary = fs::temp_directory_path(error);
    return error ? std::string("/tmp") : temporary.string();
}

int openError(const std::string& path) noexcept {
    // O_NONBLOCK: a pipe put where the database should be must not hang the probe.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return errno;
    }
    ::close(descriptor);
    return 0;
}

} // namespace scrivly::FileSystem
