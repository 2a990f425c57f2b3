#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Files written and read with their SHA-256 taken on the way, so that a hash always names the
// bytes that were actually written or read.
namespace scrivly::HashedFiles {

struct Hashed {
    std::uint64_t bytes = 0;
    std::string sha256; // lower-case hexadecimal
};

// The hash of bytes in memory.
Hashed hash(std::string_view bytes);

// The hash of a regular file's content (see FileSystem::openRegularFile). Throws
// std::filesystem::filesystem_error.
Hashed hashFile(const std::string& path);

// Writes bytes to a new file at path (never replacing one). Throws
// std::filesystem::filesystem_error (a full disk among the reasons); a partly written file may
// be left for the caller's folder to go with.
Hashed write(const std::string& path, std::string_view bytes);

// Copies the regular file from to a new file at to, byte for byte. Only a regular file is opened
// (a pipe in its place is refused, never waited on). When from can't be read the answer is
// nothing, with why in reason, and to is not left behind; a failure to write throws
// std::filesystem::filesystem_error, as write does.
std::optional<Hashed> copy(const std::string& from, const std::string& to, std::string& reason);

} // namespace scrivly::HashedFiles
