#pragma once

#include "ScrivlyKit/database/MessagesSource.h"

#include <memory>
#include <string>

namespace scrivly {

class IPhoneBackup;

// An iPhone backup's Messages history: each read decrypts sms.db and its log into the read's
// private folder and folds the log in there. Attachments stand for the files the backup keeps
// for them (<device folder>/<xx>/<fileID>), whether they are there or not; stored names of any
// other form are kept as stored. The backup is opened (and its keys derived) once, by the
// caller, and shared.
class BackupSource final : public MessagesSource {
public:
    explicit BackupSource(std::shared_ptr<const IPhoneBackup> backup);

    const std::string& location() const override { return m_location; }
    SourceDescription description() const override;
    // granted when the backup holds a Messages database, else noHistory.
    DatabaseAccess access() const override;
    std::string copyInto(const std::string& into) const override;
    std::optional<std::string>
    attachmentPath(const std::optional<std::string>& stored) const override;
    std::optional<std::string> readableCopy(const std::string& path,
                                            const std::string& folder) const override;

    const IPhoneBackup& backup() const { return *m_backup; }

private:
    std::shared_ptr<const IPhoneBackup> m_backup;
    std::string m_location;
};

} // namespace scrivly
