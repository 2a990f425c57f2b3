#pragma once

#include <string>
#include <system_error>

// The operating system's file calls that the portable library lacks: a fast private copy, folders
// only their owner may enter, and the open probe.
namespace scrivly::FileSystem {

// Copies the bytes of the file from to the file to, replacing it; the copy is readable and
// writable by its owner only. Clones the file where the file system can, else copies in the
// kernel, else reads and writes. Throws std::filesystem::filesystem_error; a partly written to
// may be left behind for the caller to remove.
void copyFile(const std::string& from, const std::string& to);

// Creates path and any missing folders above it, each new one with permissions 0700 whatever the
// umask. An existing folder is accepted unchanged. Throws std::filesystem::filesystem_error.
void createPrivateFolders(const std::string& path);
// The same, reporting a failure through error instead.
void createPrivateFolders(const std::string& path, std::error_code& error) noexcept;

// Opens path read-only with the plain open call and closes it at once, reading nothing.
// Answers 0 when the open succeeded, else its errno.
int openError(const std::string& path) noexcept;

} // namespace scrivly::FileSystem
