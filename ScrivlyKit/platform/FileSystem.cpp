#include "ScrivlyKit/platform/FileSystem.h"

#include "ScrivlyKit/platform/FileDescriptor.h"
#include "ScrivlyKit/platform/UUID.h"

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

using Descriptor = FileDescriptor;

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
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return file ? 0 : errno;
}

namespace {

// The permissions a newly created file gets (0666 less the umask), read without changing the
// umask where the system tells it (Linux); elsewhere the usual umask is assumed.
mode_t newFileMode() {
    mode_t mask = 022;
    if (const File status{std::fopen("/proc/self/status", "r")}) {
        char line[256];
        while (std::fgets(line, sizeof line, status.get()) != nullptr) {
            unsigned int value = 0;
            if (std::sscanf(line, "Umask: %o", &value) == 1) {
                mask = static_cast<mode_t>(value);
                break;
            }
        }
    }
    return 0666 & ~mask;
}

void writeAll(int descriptor, std::string_view bytes, const std::string& path) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            throwError("write", path, errno);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// Writes into an unnamed file in folder and gives it the destination's name only once it is
// whole, so that nothing is left behind whenever the process ends, even killed outright. False
// when the system or file system has no unnamed files; the caller then uses a named temporary.
bool writeUnnamed(const std::string& path, const fs::path& folder, mode_t mode,
                  std::string_view bytes) {
#ifdef O_TMPFILE
    Descriptor file(::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
    if (!file) {
        if (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL) {
            return false;
        }
        throwError("write", path, errno);
    }
    if (::fchmod(file.get(), mode) != 0) {
        throwError("write", path, errno);
    }
    writeAll(file.get(), bytes, path);
    if (::fsync(file.get()) != 0) {
        throwError("write", path, errno);
    }
    // A link may not replace a file, so the whole file gets a temporary name first and is then
    // renamed over the destination.
    const std::string self = "/proc/self/fd/" + std::to_string(file.get());
    for (int attempt = 0; attempt < 8; ++attempt) {
        const std::string name =
            (folder / ("." + fs::path(path).filename().string() + "." + randomUUID())).string();
        if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) != 0) {
            if (errno == EEXIST) {
                continue;
            }
            if (errno == ENOENT) {
                return false; // no /proc to name the file by
            }
            throwError("write", path, errno);
        }
        if (::rename(name.c_str(), path.c_str()) != 0) {
            const int error = errno;
            ::unlink(name.c_str());
            throwError("write", path, error);
        }
        return true;
    }
    throwError("write", path, EEXIST);
#else
    (void)path, (void)folder, (void)mode, (void)bytes;
    return false;
#endif
}

} // namespace

void writeFileAtomically(const std::string& path, std::string_view bytes) {
    const fs::path destination(path);
    if (std::error_code error; fs::is_directory(destination, error)) {
        throwError("write", path, EISDIR);
    }
    fs::path folder = destination.parent_path();
    if (folder.empty()) {
        folder = ".";
    }
    // An existing file keeps its permissions; a new one gets the usual ones.
    struct stat existing {};
    const mode_t mode =
        ::stat(path.c_str(), &existing) == 0 ? existing.st_mode & 07777 : newFileMode();
    if (writeUnnamed(path, folder, mode, bytes)) {
        return;
    }
    std::string temporary = (folder / ("." + destination.filename().string() + ".XXXXXX")).string();
    Descriptor file(::mkstemp(temporary.data()));
    if (!file) {
        throwError("write", path, errno);
    }
    try {
        if (::fchmod(file.get(), mode) != 0) {
            throwError("write", path, errno);
        }
        writeAll(file.get(), bytes, path);
        if (::fsync(file.get()) != 0 || file.close() != 0) {
            throwError("write", path, errno);
        }
        if (::rename(temporary.c_str(), path.c_str()) != 0) {
            throwError("write", path, errno);
        }
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

void writeAll(int descriptor, std::string_view bytes) {
    writeAll(descriptor, bytes, "output");
}

FileDescriptor openRegularFile(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file) {
        throwError("open", path, errno);
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        throwError("open", path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throwError("open", path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    // A regular file never waits; reads go on as usual.
    ::fcntl(file.get(), F_SETFL, ::fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
    return file;
}

std::string readRegularFile(const std::string& path) {
    const FileDescriptor file = openRegularFile(path);
    std::string bytes;
    char buffer[1 << 16];
    for (;;) {
        const ssize_t got = ::read(file.get(), buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            throwError("read", path, errno);
        }
        if (got == 0) {
            return bytes;
        }
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
}

} // namespace scrivly::FileSystem
