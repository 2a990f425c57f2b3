#include "ScrivlyKit/production/HashedFiles.h"

#include "ScrivlyKit/backup/Crypto.h"
#include "ScrivlyKit/platform/FileDescriptor.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace scrivly::HashedFiles {

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 20;

[[noreturn]] void fail(const char* what, const std::string& path, int error) {
    throw std::filesystem::filesystem_error(what, path,
                                            std::error_code(error, std::generic_category()));
}

FileDescriptor createNew(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file) {
        fail("cannot write file", path, errno);
    }
    return file;
}

// Flushing to disk is left to the end of the production (one syncfs for all its files).
void finish(FileDescriptor& file, const std::string& path) {
    if (file.close() != 0) {
        fail("cannot write file", path, errno);
    }
}

// Reads a chunk, going on after interruptions; 0 at the end. Throws on a failed read.
std::size_t readChunk(int descriptor, std::vector<std::uint8_t>& buffer, const std::string& path) {
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            fail("cannot read file", path, errno);
        }
    }
}

} // namespace

Hashed hash(std::string_view bytes) {
    Crypto::Digest digest(Crypto::Hash::sha256);
    digest.update(bytes);
    return Hashed{bytes.size(), digest.hex()};
}

Hashed hashFile(const std::string& path) {
    const FileDescriptor file = FileSystem::openRegularFile(path);
    Crypto::Digest digest(Crypto::Hash::sha256);
    std::vector<std::uint8_t> buffer(kChunk);
    Hashed result;
    while (const std::size_t count = readChunk(file.get(), buffer, path)) {
        digest.update(std::span(buffer.data(), count));
        result.bytes += count;
    }
    result.sha256 = digest.hex();
    return result;
}

Hashed write(const std::string& path, std::string_view bytes) {
    FileDescriptor file = createNew(path);
    FileSystem::writeAll(file.get(), bytes);
    finish(file, path);
    return hash(bytes);
}

std::optional<Hashed> copy(const std::string& from, const std::string& to, std::string& reason) {
    FileDescriptor source;
    try {
        source = FileSystem::openRegularFile(from);
    } catch (const std::filesystem::filesystem_error& error) {
        // openRegularFile refuses a pipe or a device in the file's place with EINVAL.
        reason = error.code().value() == EINVAL ? "not a regular file"
                                                : std::strerror(error.code().value());
        return std::nullopt;
    }
    FileDescriptor target = createNew(to);
    Crypto::Digest digest(Crypto::Hash::sha256);
    std::vector<std::uint8_t> buffer(kChunk);
    Hashed result;
    try {
        for (;;) {
            std::size_t count = 0;
            try {
                count = readChunk(source.get(), buffer, from);
            } catch (const std::filesystem::filesystem_error& error) {
                reason = std::strerror(error.code().value());
                target.reset();
                ::unlink(to.c_str());
                return std::nullopt;
            }
            if (count == 0) {
                break;
            }
            FileSystem::writeAll(target.get(),
                                 {reinterpret_cast<const char*>(buffer.data()), count});
            digest.update(std::span(buffer.data(), count));
            result.bytes += count;
        }
        finish(target, to);
    } catch (...) {
        target.reset();
        ::unlink(to.c_str());
        throw;
    }
    result.sha256 = digest.hex();
    return result;
}

} // namespace scrivly::HashedFiles
