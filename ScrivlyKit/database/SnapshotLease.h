#pragma once

#include "ScrivlyKit/platform/FileDescriptor.h"

#include <cstddef>
#include <string>

namespace scrivly {

// One read's claim on a snapshot subfolder of a scratch folder. The claim is an advisory lock
// (flock) on a file "<name>.lock" beside the subfolder "<name>", held for as long as this object
// lives; the operating system lets go of it when the process dies, however it dies. So another
// run can tell a snapshot still in use from one a crashed run left behind.
//
// The subfolder itself is not made here (the snapshot makes it); it and the lock file are removed
// when the lease ends. Not copyable.
class SnapshotLease {
public:
    // Throws std::filesystem::filesystem_error when the lock file can't be made in folder.
    explicit SnapshotLease(const std::string& folder);
    ~SnapshotLease();
    SnapshotLease(const SnapshotLease&) = delete;
    SnapshotLease& operator=(const SnapshotLease&) = delete;

    // The subfolder that belongs to this lease: folder + "/" + a fresh UUID.
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
    FileDescriptor m_lock;
};

// Removes from folder the snapshot subfolders (and their lock files) that no live lease holds:
// the leftovers of runs that crashed or were killed mid-read, and subfolders without any lock
// file. Leases held by running reads, in this process or another, are left alone. Does nothing
// when folder is missing or fails FileSystem::requireOwnerOnlyFolder. Answers how many
// subfolders it removed; never throws.
std::size_t removeLeftoverSnapshots(const std::string& folder) noexcept;

} // namespace scrivly
