#include "cli/OutputFile.h"

#include "cli/Errors.h"

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
    std::string pattern = (folder / ("." + path.filename().string() + ".XXXXXX")).string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int descriptor = ::mkstemp(name.data());
    if (descriptor < 0) {
        fail(destination, errno);
    }
    const std::string temporary = name.data();
    bool isOpen = true;
    try {
        // An existing file keeps its permissions; a new one gets the usual ones.
        struct stat existing {};
        const mode_t mode =
            ::stat(destination.c_str(), &existing) == 0 ? existing.st_mode & 07777 : newFileMode();
        if (::fchmod(descriptor, mode) != 0) {
            fail(destination, errno);
        }
        writeAll(descriptor, bytes, destination);
        if (::fsync(descriptor) != 0) {
            fail(destination, errno);
        }
        isOpen = false;
        if (::close(descriptor) != 0) {
            fail(destination, errno);
        }
        if (::rename(temporary.c_str(), destination.c_str()) != 0) {
            fail(destination, errno);
        }
    } catch (...) {
        if (isOpen) {
            ::close(descriptor);
        }
        ::unlink(temporary.c_str());
        throw;
    }
}

} // namespace scrivly::cli
