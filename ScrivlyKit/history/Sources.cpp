#include "ScrivlyKit/history/Sources.h"

#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/sample/SampleDatabase.h"

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace scrivly::Sources {

namespace fs = std::filesystem;

std::string userHome() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    const long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr) {
        return found->pw_dir;
    }
    return "/";
}

std::optional<std::string> homeOfDatabase(const std::string& database) {
    const fs::path path(database);
    const fs::path messages = path.parent_path();
    const fs::path library = messages.parent_path();
    if (path.filename() == "chat.db" && messages.filename() == "Messages" &&
        library.filename() == "Library") {
        return library.parent_path().string();
    }
    return std::nullopt;
}

std::string snapshotFolder() {
    return (fs::path(FileSystem::userTemporaryFolder()) / "scrivly-snapshots").string();
}

MessagesReader database(const std::optional<std::string>& path,
                        const std::optional<std::string>& home, bool direct) {
    const std::string database = path ? *path : defaultDatabasePath(home.value_or(userHome()));
    const std::string attachmentsHome =
        home ? *home : homeOfDatabase(database).value_or(userHome());
    std::optional<std::string> folder;
    if (!direct) {
        folder = snapshotFolder();
        // Copies left by runs that were killed mid-read; those of runs still going stay.
        removeLeftoverSnapshots(*folder);
    }
    return MessagesReader::ofDatabase(database, attachmentsHome, folder,
                                      path ? SourceDescription::Kind::databaseFile
                                           : SourceDescription::Kind::userHistory);
}

Sample sample(const std::string& folder, Date now) {
    const auto info = SampleDatabase::create(folder, now);
    return Sample{info.database, info.home,
                  MessagesReader::ofDatabase(info.database, info.home, std::nullopt,
                                             SourceDescription::Kind::sample),
                  SampleDatabase::nameBook()};
}

} // namespace scrivly::Sources
