#include "ScrivlyKit/backup/StoredFile.h"

#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/backup/Crypto.h"
#include "ScrivlyKit/platform/FileDescriptor.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace scrivly::StoredFile {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kChunk = 1 << 20;

// The stored file opened for reading with its length; an empty descriptor when it is missing.
struct Opened {
    FileDescriptor descriptor;
    std::uint64_t size = 0;
};

Opened openStored(const std::string& path) {
    FileDescriptor descriptor;
    try {
        descriptor = FileSystem::openRegularFile(path);
    } catch (const fs::filesystem_error& error) {
        switch (error.code().value()) {
        case ENOENT:
        case ENOTDIR:
            return {};
        case ELOOP:
            throw BackupError(BackupError::Kind::damaged, path,
                              "a stored file is a link that leads round in a loop");
        case EISDIR:
            throw BackupError(BackupError::Kind::damaged, path, "a stored file is a folder");
        case EINVAL:
            throw BackupError(BackupError::Kind::damaged, path,
                              "a stored file is not a regular file");
        default:
            throw BackupError(BackupError::Kind::unreadable, path, error.code().message());
        }
    }
    struct stat status {};
    if (::fstat(descriptor.get(), &status) != 0) {
        throw BackupError(BackupError::Kind::unreadable, path, std::strerror(errno));
    }
    return {std::move(descriptor), static_cast<std::uint64_t>(status.st_size)};
}

// Reads up to buffer's size; fewer bytes only at the end of the file.
std::size_t readSome(int descriptor, std::vector<std::uint8_t>& buffer, const std::string& path) {
    std::size_t got = 0;
    while (got < buffer.size()) {
        const ssize_t count = ::read(descriptor, buffer.data() + got, buffer.size() - got);
        if (count == 0) {
            break;
        }
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw BackupError(BackupError::Kind::unreadable, path, std::strerror(errno));
        }
        got += static_cast<std::size_t>(count);
    }
    return got;
}

// Removes a half-written copy unless told it is finished: a partial plaintext must not stay.
class PartialFile {
public:
    explicit PartialFile(std::string path) : m_path(std::move(path)) {}
    ~PartialFile() {
        if (!m_kept) {
            ::unlink(m_path.c_str());
        }
    }
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;
    void keep() { m_kept = true; }

private:
    std::string m_path;
    bool m_kept = false;
};

std::string_view asText(const std::vector<std::uint8_t>& bytes, std::size_t count) {
    return {reinterpret_cast<const char*>(bytes.data()), count};
}

} // namespace

std::optional<std::vector<std::uint8_t>> read(const std::string& path, std::size_t limit) {
    auto opened = openStored(path);
    if (!opened.descriptor) {
        return std::nullopt;
    }
    if (opened.size > limit) {
        throw BackupError(BackupError::Kind::damaged, path, "a file is far larger than it can be");
    }
    // One byte more than the length, to see a file that grew meanwhile.
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(opened.size) + 1);
    bytes.resize(readSome(opened.descriptor.get(), bytes, path));
    if (bytes.size() > limit) {
        throw BackupError(BackupError::Kind::damaged, path, "a file is far larger than it can be");
    }
    return bytes;
}

std::optional<CopiedFile> copy(const std::string& stored, const std::string& destination,
                               const Crypto::SecretKey* key, std::optional<std::uint64_t> size,
                               Hashing hashing) {
    auto opened = openStored(stored);
    if (!opened.descriptor) {
        return std::nullopt;
    }
    if (size && *size > opened.size) {
        throw BackupError(BackupError::Kind::damaged, stored,
                          "a stored file is shorter than its manifest says (" +
                              std::to_string(opened.size) + " of " + std::to_string(*size) +
                              " bytes)");
    }
    if (key && opened.size % Crypto::CBCCipher::kBlockSize != 0) {
        throw BackupError(BackupError::Kind::damaged, stored,
                          "an encrypted file is not a whole number of blocks");
    }

    FileDescriptor out(
        ::open(destination.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!out) {
        throw fs::filesystem_error("cannot write the copy", destination,
                                   std::error_code(errno, std::generic_category()));
    }
    PartialFile partial(destination);

    std::optional<Crypto::CBCCipher> cipher;
    if (key) {
        cipher.emplace(*key, Crypto::CBCCipher::Direction::decrypt);
    }
    std::optional<Crypto::Digest> storedDigest;
    std::optional<Crypto::Digest> copiedDigest;
    if (hashing == Hashing::sha256) {
        storedDigest.emplace(Crypto::Hash::sha256);
        copiedDigest.emplace(Crypto::Hash::sha256);
    }

    std::uint64_t remaining = size.value_or(opened.size);
    CopiedFile copied{destination, 0, std::nullopt, std::nullopt};
    std::vector<std::uint8_t> input(kChunk);
    std::vector<std::uint8_t> plain;
    plain.reserve(kChunk + Crypto::CBCCipher::kBlockSize);
    for (;;) {
        const std::size_t got = readSome(opened.descriptor.get(), input, stored);
        if (got == 0) {
            break;
        }
        if (storedDigest) {
            storedDigest->update(asText(input, got));
        }
        const std::vector<std::uint8_t>* output = &input;
        std::size_t count = got;
        if (cipher) {
            plain.clear();
            cipher->update(std::span(input.data(), got), plain);
            output = &plain;
            count = plain.size();
        }
        const auto kept = static_cast<std::size_t>(std::min<std::uint64_t>(count, remaining));
        if (kept > 0) {
            FileSystem::writeAll(out.get(), asText(*output, kept));
            if (copiedDigest) {
                copiedDigest->update(asText(*output, kept));
            }
            remaining -= kept;
            copied.size += kept;
        }
    }
    if (remaining > 0) {
        // The file shrank after it was measured.
        throw BackupError(BackupError::Kind::damaged, stored,
                          "a stored file is shorter than its manifest says");
    }
    if (out.close() != 0) {
        throw fs::filesystem_error("cannot write the copy", destination,
                                   std::error_code(errno, std::generic_category()));
    }
    if (storedDigest) {
        copied.storedSHA256 = storedDigest->hex();
        copied.copiedSHA256 = copiedDigest->hex();
    }
    partial.keep();
    return copied;
}

} // namespace scrivly::StoredFile
