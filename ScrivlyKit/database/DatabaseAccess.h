#pragma once

#include <string>

namespace scrivly {

// Whether the Messages database may be read.
enum class DatabaseAccess {
    granted,   // the file can be opened for reading
    denied,    // the file exists but cannot be opened (no full disk access)
    noHistory, // the file or one of its folders does not exist
};

// Probes with a plain read-only open; never reads a byte.
DatabaseAccess access(const std::string& path);

// The text used in machine-readable output: "granted", "denied" or "noHistory".
std::string toString(DatabaseAccess access);

} // namespace scrivly
