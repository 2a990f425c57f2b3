#pragma once

#include <functional>
#include <string>
#include <vector>

namespace scrivly {

// The one way Scrivly reads an SQLite file that another program may be writing (the Messages
// database, an address book, a phone backup's files): a private copy, in an owner-only folder of
// its own, removed after the read.

// Copies the SQLite database source with its "-wal" and "-shm" companions into the folder into
// under fileName (see copyDatabaseFiles for torn copies), then folds the copied log into the
// copied main file. The source files are only ever read. Answers the copy's path, ready to be
// opened read-only and immutable. Throws TornCopyError (take it again),
// std::filesystem::filesystem_error for a failed copy, SQLiteError for a copy SQLite can't
// prepare; the caller removes into afterwards in every case.
std::string copyDatabase(const std::string& source, const std::string& into,
                         const std::string& fileName);

// As copyDatabase, but calls inspect with the copied main file and, when the source has one, the
// copied log before the log is folded in: the bytes exactly as they were read, to be hashed.
// What inspect throws passes through.
std::string
copyDatabaseInspecting(const std::string& source, const std::string& into,
                       const std::string& fileName,
                       const std::function<void(const std::vector<std::string>& copies)>& inspect);

// Folds the log beside the private copy at path (path + "-wal", when there) into it and leaves
// WAL mode, so that the one file is the whole database; the companions are removed. Throws
// SQLiteError.
void foldLog(const std::string& path);

// Runs operation with a fresh, empty, owner-only subfolder of scratch that a lease marks as in
// use (see SnapshotLease), and removes the subfolder afterwards whatever happens. scratch is
// made when missing and must be an owner-only folder of this user. When operation throws
// TornCopyError it runs again in a fresh subfolder, up to five times in all.
void withPrivateFolder(const std::string& scratch,
                       const std::function<void(const std::string& folder)>& operation);

} // namespace scrivly
