#pragma once

#include <stdexcept>
#include <string>

namespace scrivly {

// The live database's main file changed while it was being copied (the messaging service
// checkpointed its log meanwhile), so the copy may mix two states. Taking the copy again is the
// cure; what() is the text the user sees once the attempts run out.
class TornCopyError : public std::runtime_error {
public:
    TornCopyError();
};

// Copies the database file source to copy, then its "-wal" and "-shm" companions (when present)
// beside it. The log may grow while it is copied: SQLite's frame checksums make a partly copied
// tail fall away, so the copy still ends at a commit. A checkpoint may write into the main file
// meanwhile, as the log copy still holds those pages; but if the log starts over between the
// start of the main file's copy and the end of the log's (or, without a log, if the main file
// changes), TornCopyError is thrown. A companion that
// exists but cannot be read (or is not a regular file) is an error, never skipped, since skipping
// the log would silently lose the newest messages. Throws std::filesystem::filesystem_error for a
// failed copy; partial copies are left to the caller.
void copyDatabaseFiles(const std::string& source, const std::string& copy);

} // namespace scrivly
