#include "cli/Session.h"

#include "cli/Errors.h"
#include "cli/Interrupts.h"
#include "cli/Password.h"
#include "cli/TemporaryFolder.h"

#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/history/Sources.h"
#include "ScrivlyKit/text/Regional.h"

#include <filesystem>

namespace scrivly::cli {

namespace fs = std::filesystem;

namespace {

// A leading "~/" (which the shell leaves alone in --option=~/path) stands for the home folder.
std::string expandTilde(const std::string& path) {
    if (path == "~" || path.starts_with("~/")) {
        return Sources::userHome() + path.substr(1);
    }
    return path;
}

std::string absolute(const std::string& path) {
    std::error_code error;
    auto result = fs::absolute(expandTilde(path), error);
    return error ? path : result.lexically_normal().string();
}

std::optional<std::string> absolute(const std::optional<std::string>& path) {
    return path ? std::optional(absolute(*path)) : std::nullopt;
}

// Single quotes when the text has anything a shell would act on.
std::string shellWord(const std::string& text) {
    if (!text.empty() && text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTU"
                                                "VWXYZ0123456789-_./:=@+,") == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

// The global options as typed, for a hint that repeats them.
std::string globalOptions(const GlobalOptions& options) {
    std::string text;
    const auto add = [&text](const std::string& option, const std::optional<std::string>& value) {
        if (value) {
            text += " " + option + " " + shellWord(*value);
        }
    };
    if (options.sample) {
        text += " --sample";
    }
    add("--backup", options.backup);
    add("--password-file", options.passwordFile);
    add("--database", options.database);
    add("--home", options.home);
    for (const auto& contacts : options.contacts) {
        add("--contacts", contacts);
    }
    if (options.me != "Me") {
        add("--me", options.me);
    }
    add("--time-zone", options.timeZone);
    add("--locale", options.locale);
    if (options.direct) {
        text += " --direct";
    }
    return text;
}

std::string listed(const Conversation& conversation) {
    std::string line = "\n  " + conversation.id + "  " + conversation.title;
    if (conversation.detail) {
        line += " (" + *conversation.detail + ")";
    }
    return line;
}

// The backup the folder names; several make a usage error that lists them.
BackupInfo findBackup(const std::string& folder, const History::Settings& settings) {
    try {
        return Sources::findBackup(folder);
    } catch (const Sources::SeveralBackups& several) {
        const Formatting::DateFormatter format(Formatting::DateFormatter::Style::longDateTime,
                                               settings.timeZone, settings.locale);
        std::string reason = several.what();
        for (const auto& backup : several.backups) {
            reason += "\n  " + backup.id + "  " + backup.deviceName + "  " +
                      (backup.lastBackupDate ? format.format(*backup.lastBackupDate) : "");
        }
        throw UsageError(reason);
    }
}

} // namespace

std::string checkedTimeZone(const std::optional<std::string>& zone) {
    if (!zone) {
        const auto system = Regional::systemTimeZone();
        return Regional::isKnownTimeZone(system) ? system : "UTC";
    }
    if (!Regional::isKnownTimeZone(*zone)) {
        throw UsageError("Unknown time zone “" + *zone +
                         "”; give an IANA name such as Europe/Paris.");
    }
    return *zone;
}

std::string checkedLocale(const std::optional<std::string>& locale) {
    if (!locale) {
        return Regional::systemLocale();
    }
    if (!Regional::isKnownLocale(*locale)) {
        throw UsageError("Unknown locale “" + *locale + "”; give one such as en_US or de_DE.");
    }
    return *locale;
}

Session::Session(const GlobalOptions& options, Interrupts& interrupts) {
    History::Settings settings{options.me, checkedTimeZone(options.timeZone),
                               checkedLocale(options.locale)};
    if (options.backup) {
        const auto found = findBackup(absolute(*options.backup), settings);
        std::optional<std::string> password;
        if (found.encrypted) {
            password = backupPassword(options, found.deviceName);
            if (!password) {
                throw UsageError(
                    "This backup is encrypted: give its password with --password-file FILE.");
            }
        }
        // Deriving the keys takes seconds; Ctrl-C stops it.
        const Interrupts::Cancellable cancellable(interrupts);
        auto backup = Sources::backup(found, password, cancellable.token());
        m_history.emplace(std::move(backup.reader), std::move(backup.names), std::move(settings));
    } else if (options.sample) {
        m_sample = std::make_unique<TemporaryFolder>("scrivly-sample-", interrupts);
        // The history goes one level down: writing it replaces its folder, which would lose the
        // private permissions of the temporary folder itself.
        auto sample = Sources::sample((m_sample->path() / "history").string(), Date::now());
        m_history.emplace(std::move(sample.reader), std::move(sample.names), std::move(settings));
    } else {
        m_history.emplace(
            Sources::database(absolute(options.database), absolute(options.home), options.direct),
            NameBook(), std::move(settings));
    }
    std::vector<std::string> contacts;
    for (const auto& path : options.contacts) {
        contacts.push_back(absolute(path));
    }
    m_history->addContacts(contacts);
}

Session::~Session() = default;

Transcript transcriptOf(const Session& session, const Invocation& invocation) {
    try {
        return session.history().transcript(invocation.conversation,
                                            DayRange{invocation.from, invocation.to});
    } catch (const ConversationNotFound& error) {
        std::string reason = error.what();
        if (!error.sameTitle.empty()) {
            for (const auto& conversation : error.sameTitle) {
                reason += listed(conversation);
            }
            throw UsageError(reason);
        }
        if (!error.suggestions.empty()) {
            reason += " Did you mean:";
            for (const auto& conversation : error.suggestions) {
                reason += listed(conversation);
            }
            reason += "\n";
        } else {
            reason += " ";
        }
        throw UsageError(reason + "List them with: scrivly-cli" + globalOptions(invocation.global) +
                         " conversations");
    }
}

} // namespace scrivly::cli
