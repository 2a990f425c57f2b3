#include "cli/OutputFile.h"

#include "cli/Errors.h"

#include "ScrivlyKit/platform/FileDescriptor.h"
#include "ScrivlyKit/platform/UUID.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace scrivly::cli {

namespace {

[[noreturn]] void fail(const std::string& destination, int error) {
    throw Failure("The export couldn’t be saved: " + destination + ": " + std::strerror(error));
}

void writeAll(int descriptor, std::string_view bytes, const std::string& destination) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            fail(destination, errno);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// The permissions a newly created file gets (0666 less the umask), read without changing the
// umask where the system tells it.
mode_t newFileMode() {
    mode_t mask = 022;
    if (FILE* status = std::fopen("/proc/self/status", "r")) {
        char line[256];
        while (std::fgets(line, sizeof line, status) != nullptr) {
            unsigned int value = 0;
            if (std::sscanf(line, "Umask: %o", &value) == 1) {
                mask = static_cast<mode_t>(value);
                break;
            }
        }
        std::fclose(status);
    }
    return 0666 & ~mask;
}

// Writes into an unnamed file in folder and gives it the destination's name only once it is
// whole, so that nothing is left behind whenever the process ends, even killed outright. False
// when the system or file system has no unnamed files; the caller then uses a named temporary.
bool writeUnnamed(const std::string& destination, const std::filesystem::path& folder, mode_t mode,
                  std::string_view bytes) {
    const std::filesystem::path path(destination);
#ifdef O_TMPFILE
    FileDescriptor file(::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
    if (!file) {
        if (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL) {
            return false;
        }
        fail(destination, errno);
    }
    if (::fchmod(file.get(), mode) != 0) {
        fail(destination, errno);
    }
    writeAll(file.get(), bytes, destination);
    if (::fsync(file.get()) != 0) {
        fail(destination, errno);
    }
    // A link may not replace a file, so the whole file gets a temporary name first and is then
    // renamed over the destination.
    const std::string self = "/proc/self/fd/" + std::to_string(file.get());
    for (int attempt = 0; attempt < 8; ++attempt) {
        const std::string name =
            (folder / ("." + path.filename().string() + "." + randomUUID())).string();
        if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) != 0) {
            if (errno == EEXIST) {
                continue;
            }
            if (errno == ENOENT) {
                return false; // no /proc to name the file by
            }
            fail(destination, errno);
        }
        if (::rename(name.c_str(), destination.c_str()) != 0) {
            const int error = errno;
            ::unlink(name.c_str());
            fail(destination, error);
        }
        return true;
    }
    fail(destination, EEXIST);
#else
    (void)path, (void)folder, (void)mode, (void)bytes;
    return false;
#endif
}

} // namespace

void writeOutput(const std::string& destination, std::string_view bytes) {
    if (destination == "-") {
        writeAll(STDOUT_FILENO, bytes, "standard output");
        return;
    }

    const std::filesystem::path path(destination);
    if (std::error_code error; std::filesystem::is_directory(path, error)) {
        fail(destination, EISDIR);
    }
    std::filesystem::path folder = path.parent_path();
    if (folder.empty()) {
        folder = ".";
    }
    // An existing file keeps its permissions; a new one gets the usual ones.
    struct stat existing {};
    const mode_t mode =
        ::stat(destination.c_str(), &existing) == 0 ? existing.st_mode & 07777 : newFileMode();
    if (writeUnnamed(destination, folder, mode, bytes)) {
        return;
    }

    std::string temporary = (folder / ("." + path.filename().string() + ".XXXXXX")).string();
    FileDescriptor file(::mkstemp(temporary.data()));
    if (!file) {
        fail(destination, errno);
    }
    try {
        if (::fchmod(file.get(), mode) != 0) {
            fail(destination, errno);
        }
        writeAll(file.get(), bytes, destination);
        if (::fsync(file.get()) != 0 || file.close() != 0) {
            fail(destination, errno);
        }
        if (::rename(temporary.c_str(), destination.c_str()) != 0) {
            fail(destination, errno);
        }
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

} // namespace scrivly::cli
