#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

namespace Crypto {
class SecretKey;
}

// A file copied out of a backup.
struct CopiedFile {
    std::string path; // the copy
    std::uint64_t size = 0;
    // SHA-256 (lower-case hexadecimal) of the bytes as the backup stores them and of the bytes
    // written, taken as they were copied; set when asked for.
    std::optional<std::string> storedSHA256;
    std::optional<std::string> copiedSHA256;

    bool operator==(const CopiedFile&) const = default;
};

enum class Hashing { none, sha256 };

// Reading the files of a backup folder, which may be damaged or tampered with: only regular
// files are read (a folder, a pipe or a device is refused at once, a pipe never waited on),
// lengths are checked before use, and nothing is ever written into the backup.
namespace StoredFile {

// The whole of a small file; nothing when it does not exist. Throws BackupError: damaged when
// it is no regular file, leads round a loop of links or is longer than limit; unreadable when
// the system refuses the read.
std::optional<std::vector<std::uint8_t>> read(const std::string& path, std::size_t limit);

// Copies the stored file to destination (created or replaced, owner-only, never through a
// symbolic link), decrypting it with AES-256-CBC under key when one is given, and keeping the
// first size bytes when a size is given. Memory stays bounded whatever the length. Nothing when
// stored does not exist. Throws BackupError: damaged when stored is no regular file, is shorter
// than size, or (encrypted) is not a whole number of blocks; unreadable when a read fails.
// Throws std::filesystem::filesystem_error when destination can't be written. A failed copy
// leaves no destination behind.
std::optional<CopiedFile> copy(const std::string& stored, const std::string& destination,
                               const Crypto::SecretKey* key, std::optional<std::uint64_t> size,
                               Hashing hashing);

} // namespace StoredFile
} // namespace scrivly
