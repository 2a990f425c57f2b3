#pragma once

#include "ScrivlyKit/database/DatabaseAccess.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/database/MessagesSource.h"
#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/records/Date.h"

#include <QString>

#include <functional>
#include <optional>
#include <string>

namespace scrivly {

// The two kinds of file an export writes.
enum class ExportKind { pdf, csv };

// What the system says about reading the user's contacts.
enum class ContactsAuthorization { notDetermined, restricted, denied, authorized, limited };

// Everything the application model asks of the machine it runs on: the clock and calendar, a few
// folders, the database access probe, contacts, and the desktop (save panel, opening addresses,
// revealing files). The application supplies the real one; tests supply a fake.
//
// All calls come from the main thread except loadNames, which runs on a worker thread.
class Platform {
public:
    virtual ~Platform() = default;

    virtual Date now() const = 0;
    // IANA name of the current time zone; whole days and exported times are taken in it.
    virtual std::string timeZone() const = 0;
    // ICU identifier of the current locale, for exported dates and times.
    virtual std::string locale() const = 0;

    virtual QString homePath() const = 0;
    virtual QString tempPath() const = 0;
    // The per-user caches folder (where earlier versions kept their snapshots).
    virtual QString cachePath() const = 0;

    // Whether the reader's database may be read: its source's own probe.
    virtual DatabaseAccess access(const MessagesReader& reader) const {
        return reader.source->access();
    }

    virtual ContactsAuthorization contactsAuthorization() const = 0;
    // Asks the user for access; done is called once, on the main thread, when they answered.
    virtual void requestContactsAccess(std::function<void()> done) = 0;
    // Reads every contact's addresses and name. Called on a worker thread, so it must be safe to
    // call concurrently with the main thread's calls. Throws std::exception on failure.
    virtual NameBook loadNames() const = 0;
    // Whether requestContactsAccess may be called again after an answer: true where the user
    // picks the address books in the application rather than in a one-time system prompt, so
    // that "Open Settings" asks again instead of opening the system's privacy pane.
    virtual bool asksForContactsAgain() const { return false; }

    // Stands for the save panel: asks where to save a file of the kind, proposing the name;
    // nothing when the user cancelled.
    virtual std::optional<QString> saveDestination(const QString& suggestedName,
                                                   ExportKind kind) = 0;
    virtual void openUrl(const QString& url) = 0;
    // Shows the file in the file manager.
    virtual void revealFile(const QString& path) = 0;
};

} // namespace scrivly
