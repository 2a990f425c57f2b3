#pragma once

#include <functional>
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

// The same with the open call supplied: open answers 0 when the path opened for reading, else the
// errno of the failure. Lets the denied case be shown where every file is readable (as root).
DatabaseAccess access(const std::string& path, const std::function<int(const std::string&)>& open);

// The text used in machine-readable output: "granted", "denied" or "noHistory".
std::string toString(DatabaseAccess access);

} // namespace scrivly
