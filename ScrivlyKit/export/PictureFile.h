#pragma once

#include "ScrivlyKit/platform/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

// The one way picture code opens an attachment's file. An attachment may name anything: a pipe
// would wait for a writer forever, a device may never end or do something on open. Only a
// regular file is a picture, and nothing here ever waits on a file.
namespace scrivly::PictureFile {

// path opened read-only when it is a regular file (links followed); nothing for a folder, pipe,
// device, socket, missing or unreadable file. The type is checked before opening, and again on
// the open file, since the path may be swapped for a pipe in between (which the open does not
// wait for).
std::optional<FileDescriptor> open(const std::string& path);

// Reads the first bytes of the file into buffer; how many it got (fewer for a shorter file, 0 on
// a read error).
std::size_t readStart(const FileDescriptor& file, std::span<std::uint8_t> buffer);

} // namespace scrivly::PictureFile
