#include "ScrivlyKit/backup/BackupError.h"

namespace scrivly {
namespace {

std::string describe(BackupError::Kind kind, const std::string& path, const std::string& detail) {
    using Kind = BackupError::Kind;
    switch (kind) {
    case Kind::notBackup:
        return "This folder is not an iPhone backup (it has no Info.plist or Manifest.plist): " +
               path;
    case Kind::needsPassword:
        return "This backup is encrypted: give its password to read it.";
    case Kind::wrongPassword:
        return "The password is wrong: it does not open this backup. Check it and try again; a "
               "lost backup password cannot be recovered, by Scrivly or anyone else.";
    case Kind::unfinished:
        return "This backup is not complete: it was cut off or is still being written. Let the "
               "backup finish (or make it again), then open it. (" +
               path + ")";
    case Kind::noMessages:
        return "This backup holds no Messages history (it has no sms.db): " + path;
    case Kind::damaged:
        return "This backup is damaged: " + detail + " (" + path + ")";
    case Kind::unreadable:
        return "The backup couldn’t be read: " + path + " (" + detail + ")";
    case Kind::cancelled:
        return "Opening the backup was stopped.";
    }
    return detail;
}

} // namespace

BackupError::BackupError(Kind kind, std::string path, std::string detail)
    : m_kind(kind), m_path(std::move(path)), m_detail(std::move(detail)),
      m_description(describe(m_kind, m_path, m_detail)) {}

} // namespace scrivly
