#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

// The operating system's file calls that the portable library lacks: a fast private copy, folders
// only their owner may enter, and the open probe.
#include "ScrivlyKit/platform/FileDescriptor.h"

namespace scrivly::FileSystem {

// A folder that must hold private copies but could be seen or swapped by someone else. what() is
// the text the user sees.
class UnsafeFolderError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Copies the bytes of the file from to the file to, replacing it; the copy is readable and
// writable by its owner only. Clones the file where the file system can, else copies in the
// kernel, else reads and writes. Only a regular file is copied: a folder, a pipe or a device is
// refused at once (a pipe would never end). to is never followed if it is a symbolic link.
// Throws std::filesystem::filesystem_error; a partly written to may be left behind for the
// caller to remove.
void copyFile(const std::string& from, const std::string& to);

// Creates path and any missing folders above it, each new one with permissions 0700 whatever the
// umask. An existing folder is accepted unchanged. Throws std::filesystem::filesystem_error.
void createPrivateFolders(const std::string& path);
// The same, reporting a failure through error instead.
void createPrivateFolders(const std::string& path, std::error_code& error) noexcept;

// Throws UnsafeFolderError unless path is a real folder (not a symbolic link) owned by the
// effective user with permissions exactly 0700, so nobody else can read or replace what it holds.
void requireOwnerOnlyFolder(const std::string& path);

// The per-user place for short-lived private files: $XDG_RUNTIME_DIR, else $TMPDIR, else the
// system temporary folder. The first is private to the user on Linux; the others may be shared,
// which is why folders made there must pass requireOwnerOnlyFolder.
std::string userTemporaryFolder();

// Opens path read-only with the plain open call and closes it at once, reading nothing.
// Answers 0 when the open succeeded, else its errno.
int openError(const std::string& path) noexcept;

// Writes bytes to path whole or not at all: they go to a temporary file beside it, which is
// flushed to disk and renamed into place, so a failure or an interrupt never leaves a partial
// file (the temporary one is removed). Where the system allows (Linux), the temporary file has no
// name until it is whole, so not even a process killed outright leaves one behind. An existing
// file keeps its permissions; a new one gets the usual ones. Throws
// std::filesystem::filesystem_error.
void writeFileAtomically(const std::string& path, std::string_view bytes);

// Writes all of bytes to an open descriptor, going on after interruptions. Throws
// std::filesystem::filesystem_error.
void writeAll(int descriptor, std::string_view bytes);

// Opens path for reading only when it is a regular file: the open never waits (a pipe or a
// device in its place is refused with EINVAL, a folder with EISDIR), and reads from the answer
// block as usual. Throws std::filesystem::filesystem_error.
FileDescriptor openRegularFile(const std::string& path);

// The whole content of a regular file, opened as openRegularFile does. Throws
// std::filesystem::filesystem_error.
std::string readRegularFile(const std::string& path);

} // namespace scrivly::FileSystem
