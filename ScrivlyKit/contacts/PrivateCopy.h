#pragma once

#include <string>

namespace scrivly {

// Makes a self-contained copy of the SQLite database source, which another program may be
// writing, in the folder into (replaced if present, created owner-only) under fileName: the main
// file and its "-wal" and "-shm" companions are copied, the copied log is folded into the copied
// main file and the copy leaves WAL mode. The source files are only ever read. Answers the copy's
// path, ready to be opened read-only and immutable. Throws std::filesystem::filesystem_error for
// a failed copy or folder, SQLiteError for a copy that cannot be prepared; the caller removes
// into afterwards in every case.
std::string preparePrivateCopy(const std::string& source, const std::string& into,
                               const std::string& fileName);

// One read's private copy of a database, in a fresh UUID-named subfolder of a scratch folder,
// removed with everything in it when this goes. Declare it before the connection that reads the
// copy, so that the connection closes first.
class PrivateCopy {
public:
    // Creates scratchFolder when missing (a failure there shows as the copy's own failure) and
    // prepares the copy. Throws as preparePrivateCopy, after removing the subfolder.
    PrivateCopy(const std::string& source, const std::string& scratchFolder,
                const std::string& fileName);
    ~PrivateCopy();
    PrivateCopy(const PrivateCopy&) = delete;
    PrivateCopy& operator=(const PrivateCopy&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_folder;
    std::string m_path;
};

} // namespace scrivly
