#pragma once

#include "ScrivlyKit/database/ChatDatabase.h"

#include <string>

namespace scrivly {

// Makes a private, self-contained copy of the Messages database source in the folder into
// (replaced if present, created owner-only) and opens it immutable. The copy takes the main file
// and its "-wal" and "-shm" companions, then folds the log into the copied main file, so rows
// still only in the live log are seen while the live files are only ever read. home is the folder
// a stored "~/" stands for. Throws TornCopyError when the live main file changed during the copy
// (take it again); std::filesystem::filesystem_error for a failed copy or folder,
// SQLiteError for a copy that cannot be prepared or is not a Messages database; the caller
// removes into afterwards in every case.
ChatDatabase snapshot(const std::string& source, const std::string& into, const std::string& home);

} // namespace scrivly
