#include "ScrivlyKit/history/BackupSource.h"

#include "ScrivlyKit/backup/IPhoneBackup.h"
#include "ScrivlyKit/database/PrivateCopy.h"

#include <filesystem>

namespace scrivly {

BackupSource::BackupSource(std::shared_ptr<const IPhoneBackup> backup)
    : m_backup(std::move(backup)),
      m_location(m_backup->storedPath("HomeDomain", "Library/SMS/sms.db")) {}

SourceDescription BackupSource::description() const {
    const auto& info = m_backup->info();
    SourceDescription description;
    description.kind = SourceDescription::Kind::backup;
    description.path = info.path;
    description.deviceName = info.deviceName;
    description.productVersion = info.productVersion;
    description.backupDate = info.lastBackupDate;
    return description;
}

DatabaseAccess BackupSource::access() const {
    return m_backup->hasMessages() ? DatabaseAccess::granted : DatabaseAccess::noHistory;
}

std::string BackupSource::copyInto(const std::string& into) const {
    const auto files = m_backup->copyMessagesDatabase(into);
    foldLog(files.front().path);
    return files.front().path;
}

std::optional<std::string>
BackupSource::attachmentPath(const std::optional<std::string>& stored) const {
    if (auto location = m_backup->attachmentLocation(stored)) {
        return location;
    }
    return stored;
}

std::optional<std::string> BackupSource::readableCopy(const std::string& path,
                                                      const std::string& folder) const {
    if (!m_backup->info().encrypted) {
        return path;
    }
    const auto name = std::filesystem::path(path).filename().string();
    try {
        if (auto copied =
                m_backup->extractFile(path, (std::filesystem::path(folder) / name).string())) {
            return copied->path;
        }
    } catch (const std::invalid_argument&) {
        // Not one of the backup's files (a stored name of another form): read it where it is.
        return path;
    }
    return std::nullopt;
}

} // namespace scrivly
