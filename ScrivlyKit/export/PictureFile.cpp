#include "ScrivlyKit/export/PictureFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace scrivly::PictureFile {

std::optional<FileDescriptor> open(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    // O_NONBLOCK: should a pipe take the file's place meanwhile, the open returns at once instead
    // of waiting for a writer. Reads from a regular file ignore it.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return file;
}

std::size_t readStart(const FileDescriptor& file, std::span<std::uint8_t> buffer) {
    std::size_t total = 0;
    while (total < buffer.size()) {
        const ssize_t count = ::pread(file.get(), buffer.data() + total, buffer.size() - total,
                                      static_cast<off_t>(total));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count < 0 ? 0 : total;
        }
        total += static_cast<std::size_t>(count);
    }
    return total;
}

} // namespace scrivly::PictureFile
