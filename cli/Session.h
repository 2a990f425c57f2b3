#pragma once

#include "cli/CommandLine.h"

#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/names/NameBook.h"

#include <memory>
#include <string>
#include <vector>

namespace scrivly::cli {

class Interrupts;
class TemporaryFolder;

// What every command reads from: the database, the names, the user's name, the zone and the
// locale, resolved from the global options. With --sample it owns a private temporary folder
// holding a fresh demonstration history, removed when the session ends (or by an interrupt).
class Session {
public:
    // Throws UsageError for an unknown time zone or locale; creating the sample may throw.
    Session(const GlobalOptions& options, Interrupts& interrupts);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const std::string& databasePath() const { return m_reader.source; }
    const MessagesReader& reader() const { return m_reader; }
    const NameBook& names() const { return m_names; }
    const std::string& me() const { return m_me; }
    const std::string& timeZone() const { return m_timeZone; }
    const std::string& locale() const { return m_locale; }

    // Throws SQLiteError::open naming the reason when the database file can't be opened, so that
    // a missing file reads the same with or without the private copy.
    void requireReadable() const;

    // The grouped, sorted conversations.
    std::vector<Conversation> conversations() const;

private:
    // Names from vCard files and address-book folders; names already known keep their address.
    // Throws ContactsError naming a source that can't be read.
    void addContactNames(const std::vector<std::string>& paths);

    Interrupts& m_interrupts;
    std::unique_ptr<TemporaryFolder> m_sample; // only with --sample
    MessagesReader m_reader;
    NameBook m_names;
    std::string m_me;
    std::string m_timeZone;
    std::string m_locale;
};

// The conversation a command line names: the one whose id is exactly the text, else the only one
// whose title equals it ignoring case. Throws UsageError when none or several match, listing the
// candidates.
const Conversation& findConversation(const std::vector<Conversation>& conversations,
                                     const std::string& text);

// The folder under which reads make their private copies: $XDG_RUNTIME_DIR, else $TMPDIR, else
// the system temporary folder, joined with "scrivly-snapshots".
std::string snapshotFolder();

// The user's home folder: $HOME, else the password database's entry.
std::string userHome();

} // namespace scrivly::cli
