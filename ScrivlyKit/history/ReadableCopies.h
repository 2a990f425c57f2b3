#pragma once

#include "ScrivlyKit/database/MessagesSource.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/records/Message.h"

#include <memory>
#include <string>
#include <vector>

namespace scrivly {

// Where the attachments of a source that keeps them encrypted (an encrypted iPhone backup) can be
// read: copies decrypted into one owner-only snapshot subfolder, removed with this object. For a
// source that keeps files in the clear, the paths stay as they are. Not copyable; share it
// (std::shared_ptr) with whatever still reads the copies.
class ReadableCopies {
public:
    // Makes the subfolder in scratch (made owner-only when missing). Throws
    // std::filesystem::filesystem_error, or what FileSystem::requireOwnerOnlyFolder throws.
    ReadableCopies(std::shared_ptr<const MessagesSource> source, const std::string& scratch);
    ReadableCopies(const ReadableCopies&) = delete;
    ReadableCopies& operator=(const ReadableCopies&) = delete;

    // Points every attachment's path at a file that can be read, or at nothing when the source
    // doesn't hold it. Not safe to call from two threads at once.
    void apply(std::vector<Message>& messages) const;

    const std::string& folder() const { return m_lease.path(); }

private:
    std::shared_ptr<const MessagesSource> m_source;
    SnapshotLease m_lease;
};

} // namespace scrivly
