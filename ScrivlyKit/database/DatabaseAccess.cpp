#include "ScrivlyKit/database/DatabaseAccess.h"

#include "ScrivlyKit/platform/FileSystem.h"

#include <cerrno>

namespace scrivly {

DatabaseAccess access(const std::string& path) {
    return access(path, FileSystem::openError);
}

DatabaseAccess access(const std::string& path, const std::function<int(const std::string&)>& open) {
    switch (open(path)) {
    case 0:
        return DatabaseAccess::granted;
    case ENOENT:
    case ENOTDIR:
        return DatabaseAccess::noHistory;
    default:
        // In practice EPERM or EACCES: the application lacks full disk access.
        return DatabaseAccess::denied;
    }
}

std::string toString(DatabaseAccess access) {
    switch (access) {
    case DatabaseAccess::granted:
        return "granted";
    case DatabaseAccess::denied:
        return "denied";
    case DatabaseAccess::noHistory:
        return "noHistory";
    }
    return "denied";
}

} // namespace scrivly
