#pragma once

#include "Scrivly/model/Platform.h"

#include <QStringList>

#include <mutex>

class QSettings;

namespace scrivly {

// The platform through Qt Core alone: the system clock, zone and locale, the standard folders
// and the real access probe. Contact names come from the address books the user chose (vCard
// files, address-book databases or folders of them), remembered in the preferences. Without a
// windowing toolkit it has no save panel (saving is always cancelled) and nothing to choose
// address books with; the application overrides those. Addresses and folders are opened with
// xdg-open.
class DefaultPlatform : public Platform {
public:
    // Preferences key of the chosen address books, a list of paths kept apart from "settings".
    static constexpr const char* kContactsSourcesKey = "contactsSources";

    // store, when given, remembers the chosen address books between launches and must outlive
    // the platform; without it the choice lasts as long as the platform.
    explicit DefaultPlatform(QSettings* store = nullptr);

    Date now() const override;
    std::string timeZone() const override;
    std::string locale() const override;

    QString homePath() const override;
    QString tempPath() const override;
    QString cachePath() const override;

    // notDetermined while nothing is chosen; denied when a chosen address book can't be read any
    // more (it is gone, unreadable, or its last read failed); authorized otherwise.
    ContactsAuthorization contactsAuthorization() const override;
    // Lets the user choose address books; a cancelled choice changes nothing.
    void requestContactsAccess(std::function<void()> done) override;
    // Reads the chosen address books in order (ContactSources::load).
    NameBook loadNames() const override;
    bool asksForContactsAgain() const override { return true; }

    std::optional<QString> saveDestination(const QString& suggestedName, ExportKind kind) override;
    void openUrl(const QString& url) override;
    void revealFile(const QString& path) override;

    // The chosen address books, in the order they are read.
    QStringList contactsSources() const;
    // Where address-book databases are copied while they are read: a private folder of its own,
    // apart from the Messages snapshots.
    QString contactsScratchFolder() const;

protected:
    // Asks which address books to read; nothing when the user cancelled. Without a toolkit there
    // is nothing to ask with, so this gives nothing.
    virtual std::optional<QStringList> chooseContactsSources();

private:
    QSettings* m_store;
    // loadNames runs on a worker thread while the main thread may choose again.
    mutable std::mutex m_mutex;
    QStringList m_sources;
    mutable bool m_unreadable = false; // the last read of m_sources failed
};

} // namespace scrivly
