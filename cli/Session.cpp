#include "cli/Session.h"

#include "cli/Errors.h"
#include "cli/TemporaryFolder.h"

#include "ScrivlyKit/contacts/ContactSources.h"

#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/database/SQLiteError.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/sample/SampleDatabase.h"
#include "ScrivlyKit/text/Unicode.h"

#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/ucal.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace scrivly::cli {

namespace fs = std::filesystem;

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

bool isKnownTimeZone(const std::string& zone) {
    std::unique_ptr<icu::TimeZone> timeZone(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)));
    if (!timeZone) {
        return false;
    }
    icu::UnicodeString id;
    timeZone->getID(id);
    return id != icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID);
}

bool isKnownLocale(const std::string& name) {
    const icu::Locale locale(name.c_str());
    return !locale.isBogus() && std::strlen(locale.getLanguage()) > 0 &&
           std::strlen(locale.getISO3Language()) > 0;
}

// A leading "~/" (which the shell leaves alone in --option=~/path) stands for the home folder.
std::string expandTilde(const std::string& path) {
    if (path == "~" || path.starts_with("~/")) {
        return userHome() + path.substr(1);
    }
    return path;
}

std::string absolute(const std::string& path) {
    std::error_code error;
    auto result = fs::absolute(path, error);
    return error ? path : result.lexically_normal().string();
}

// The folder above Library when the database lies at Library/Messages/chat.db, as it does in a
// home folder or a copied one.
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

} // namespace

std::string userHome() {
    if (auto home = environment("HOME"); !home.empty()) {
        return home;
    }
    long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr) {
        return found->pw_dir;
    }
    return "/";
}

std::string snapshotFolder() {
    return (fs::path(FileSystem::userTemporaryFolder()) / "scrivly-snapshots").string();
}

Session::Session(const GlobalOptions& options, Interrupts& interrupts)
    : m_interrupts(interrupts), m_me(options.me) {
    if (options.timeZone) {
        if (!isKnownTimeZone(*options.timeZone)) {
            throw UsageError("Unknown time zone “" + *options.timeZone +
                             "”; give an IANA name such as Europe/Paris.");
        }
        m_timeZone = *options.timeZone;
    } else {
        m_timeZone = DayBounds::systemTimeZone();
        if (!isKnownTimeZone(m_timeZone)) {
            m_timeZone = "UTC";
        }
    }
    if (options.locale) {
        if (!isKnownLocale(*options.locale)) {
            throw UsageError("Unknown locale “" + *options.locale +
                             "”; give one such as en_US or de_DE.");
        }
        m_locale = *options.locale;
    } else {
        m_locale = systemLocale();
    }

    if (options.sample) {
        m_sample = std::make_unique<TemporaryFolder>("scrivly-sample-", m_interrupts);
        // The history goes one level down: writing it replaces its folder, which would lose the
        // private permissions of the temporary folder itself.
        const auto info =
            SampleDatabase::create((m_sample->path() / "history").string(), Date::now());
        m_reader = MessagesReader{info.database, info.home, std::nullopt};
        m_names = SampleDatabase::nameBook();
        addContactNames(options.contacts);
        return;
    }

    const std::string home = options.home ? absolute(expandTilde(*options.home)) : userHome();
    m_reader.source =
        options.database ? absolute(expandTilde(*options.database)) : defaultDatabasePath(home);
    if (options.home) {
        m_reader.home = home;
    } else {
        m_reader.home = homeOfDatabase(m_reader.source).value_or(userHome());
    }
    if (!options.direct) {
        m_reader.folder = snapshotFolder();
        // Copies left by runs that were killed mid-read; those of runs still going stay.
        removeLeftoverSnapshots(*m_reader.folder);
    }
    addContactNames(options.contacts);
}

void Session::addContactNames(const std::vector<std::string>& paths) {
    if (paths.empty()) {
        return;
    }
    std::vector<std::string> sources;
    for (const auto& path : paths) {
        sources.push_back(absolute(expandTilde(path)));
    }
    // Address-book databases are copied privately too, in a folder of their own so that the
    // clean-up of leftover message snapshots never touches a copy in use.
    const auto scratch = fs::path(FileSystem::userTemporaryFolder()) / "scrivly-contacts";
    m_names.merge(ContactSources::load(sources, scratch.string()).names);
}

Session::~Session() = default;

void Session::requireReadable() const {
    // O_NONBLOCK: a pipe given as the database must fail, not wait for a writer.
    const int descriptor = ::open(m_reader.source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        const int error = errno;
        throw SQLiteError::open(std::string(std::strerror(error)) + " (" + m_reader.source + ")");
    }
    struct stat status {};
    const bool isFolder = ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
    ::close(descriptor);
    if (isFolder) {
        throw SQLiteError::open(std::string(std::strerror(EISDIR)) + " (" + m_reader.source + ")");
    }
}

std::vector<Conversation> Session::conversations() const {
    requireReadable();
    return Conversations::group(m_reader.chats(), m_names);
}

const Conversation& findConversation(const std::vector<Conversation>& conversations,
                                     const std::string& text) {
    for (const auto& conversation : conversations) {
        if (conversation.id == text) {
            return conversation;
        }
    }
    const std::string wanted = Unicode::lowercased(Unicode::trimmed(text));
    std::vector<const Conversation*> found;
    for (const auto& conversation : conversations) {
        if (Unicode::lowercased(conversation.title) == wanted) {
            found.push_back(&conversation);
        }
    }
    if (found.size() == 1) {
        return *found.front();
    }
    if (found.empty()) {
        throw UsageError("No conversation has the id or title “" + text +
                         "”; list them with: scrivly-cli conversations");
    }
    std::string reason = std::to_string(found.size()) + " conversations are titled “" + text +
                         "”; name one by its id:";
    for (const auto* conversation : found) {
        reason += "\n  " + conversation->id + "  " + conversation->title;
        if (conversation->detail) {
            reason += " (" + *conversation->detail + ")";
        }
    }
    throw UsageError(reason);
}

} // namespace scrivly::cli
