#pragma once

#include "Scrivly/model/AppSettings.h"
#include "Scrivly/model/ExportFlow.h"
#include "Scrivly/model/ExportForm.h"
#include "Scrivly/model/Platform.h"
#include "Scrivly/model/ProduceFlow.h"
#include "Scrivly/model/Tasks.h"
#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/history/Sources.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QSettings;

namespace scrivly {

class ReadableCopies;
class SampleHistory;

// The one state object of the application: what the screens show and every operation they
// trigger. Lives on the main thread and must only be used there. Reading the database, reading
// contacts and making PDFs run on the model's own worker threads; their results come back to the
// main thread and are dropped when a newer load, selection or rendering has superseded them.
// Each observable field has a getter and a change signal. The export panel's part is an
// ExportFlow of its own, whose state and signals the model passes on.
class AppModel : public QObject {
    Q_OBJECT

public:
    // Where the start-up flow stands; failed carries failureMessage().
    enum class Phase { failed, checking, needsAccess, noHistory, loading, ready };
    Q_ENUM(Phase)
    // The modal panel over the main window.
    enum class Sheet { welcome, exportPanel, preview, produce };
    Q_ENUM(Sheet)
    enum class ContactsAccess { notAsked, granted, denied };
    Q_ENUM(ContactsAccess)
    // Which Messages history is read: the user's own, a database file they chose, the made-up
    // sample, or an iPhone backup.
    enum class DatabaseSource { standard, file, sample, backup };
    Q_ENUM(DatabaseSource)

    // Preferences key of the database file the user chose (outside the "settings" document).
    static constexpr const char* kDatabasePathKey = "databasePath";
    // Preferences key of the iPhone backup's folder opened last (never its password).
    static constexpr const char* kBackupPathKey = "backupPath";
    // Used when the running application does not name itself.
    static constexpr const char* kBundleIdentifier = "com.scrivly.Scrivly";
    static constexpr const char* kFullDiskAccessURL =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";
    static constexpr const char* kContactsURL =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Contacts";

    // Loads the settings and the remembered database choice from store. Both references must
    // outlive the model. Nothing is read until start().
    AppModel(Platform& platform, QSettings& store, QObject* parent = nullptr);
    // Stops a rendering under way and waits for the worker threads.
    ~AppModel() override;

    // Observable state.
    Phase phase() const { return m_phase; }
    const QString& failureMessage() const { return m_failureMessage; }
    const std::vector<Conversation>& conversations() const { return m_conversations; }
    const std::optional<std::string>& selection() const { return m_selection; }
    const QString& search() const { return m_search; }
    std::optional<Sheet> sheet() const { return m_sheet; }
    const std::optional<QString>& problem() const { return m_problem; }
    const AppSettings& settings() const { return m_settings; }
    ContactsAccess contacts() const { return m_contacts; }
    const NameBook& names() const { return m_names; }
    const std::vector<Message>& messages() const { return m_messages; }
    bool loadingMessages() const { return m_loadingMessages; }
    const std::optional<Transcript>& transcript() const { return m_transcript; }
    bool useFrom() const { return m_useFrom; }
    bool useTo() const { return m_useTo; }
    Date from() const { return m_from; }
    Date to() const { return m_to; }
    const ExportForm& form() const { return m_export.form(); }
    bool exporting() const { return m_export.exporting(); }
    std::optional<double> renderProgress() const { return m_export.renderProgress(); }
    const std::optional<QString>& lastExport() const { return m_export.lastExport(); }
    const std::optional<QByteArray>& previewData() const { return m_export.previewData(); }
    DatabaseSource databaseSource() const { return m_source; }
    // The conversations chosen in the list (ids, in the list's order); several for a production.
    const std::vector<std::string>& chosen() const { return m_chosen; }
    // The produce sheet's form, progress and outcome.
    ProduceFlow& production() { return m_produce; }
    const ProduceFlow& production() const { return m_produce; }

    // Derived values.
    // conversations narrowed by search, in their order.
    std::vector<Conversation> filteredConversations() const;
    std::optional<Conversation> selectedConversation() const;
    // What a production makes: the chosen conversations, or every one when none is chosen.
    std::vector<Conversation> productionConversations() const;
    // The texts of exports and of reactions, in the application's language, with the name of
    // the user's own messages. Kept until the language or that name changes.
    const ExportStrings& exportStrings() const { return m_export.strings(); }
    // Whether the user may choose where names come from again (see
    // Platform::asksForContactsAgain); never while the sample, with its own names, is in force.
    bool canChooseContacts() const;
    // The running application's reverse-domain identifier, or kBundleIdentifier.
    static QString bundleIdentifier();

    // Setters for what the screens edit.
    void setSearch(const QString& search);
    // Saved at once.
    void setSettings(const AppSettings& settings);
    // Changes a copy of the settings and stores it, which saves it: for controls bound to one
    // field.
    void changeSettings(const std::function<void(AppSettings&)>& change);
    void setUseFrom(bool useFrom);
    void setUseTo(bool useTo);
    void setFrom(Date from);
    void setTo(Date to);
    // The same as calendar days in the platform's time zone, for date pickers.
    DayBounds::Day fromDay() const;
    DayBounds::Day toDay() const;
    void setFromDay(DayBounds::Day day);
    void setToDay(DayBounds::Day day);
    void setForm(const ExportForm& form) { m_export.setForm(form); }
    void changeForm(const std::function<void(ExportForm&)>& change);

    // Selects a conversation (or none) and reads its messages.
    void select(const std::optional<std::string>& id);
    // The conversations chosen in the list; the selection stays the one whose messages show.
    void choose(std::vector<std::string> ids);

    // Reads the database file at path from now on and, once it has been read, remembers it for
    // later launches (a file that fails to open is forgotten); its home
    // folder is the one above Library when the path ends in Library/Messages/chat.db.
    void openDatabaseFile(const QString& path);
    // Where the chosen database file's attachments are, for a copy that doesn't lie in a home's
    // Library/Messages: folder holds Library/Messages/Attachments, or is the Attachments folder
    // itself. Remembered with the database (see AppSettings) and read again at once; without a
    // chosen file, does nothing. Otherwise such a copy's attachments are looked for in an
    // Attachments folder beside it.
    void chooseAttachmentsFolder(const QString& folder);
    // Reads the made-up sample history (written once into a private temporary folder).
    void openSample();
    // Reads an opened iPhone backup from now on, with its phone's names, and remembers its
    // folder for later launches (see BackupOpener, which opens it).
    void openBackup(Sources::Backup backup);
    // The backup folder remembered from an earlier launch; empty when none.
    QString rememberedBackup() const;

public slots:
    // At launch: clears leftover snapshots, then checks access and loads when granted.
    void start();
    // Checks access again while access or history is missing; otherwise does nothing.
    void applicationBecameActive();
    // Checks access and reads the chat list again.
    void reload();
    void requestContacts();
    void openFullDiskAccessSettings();
    // "Show Scrivly in Finder": the running program, so it can be added to the access list.
    void revealApplication();
    // Asks again where the platform lets the user choose (canChooseContacts), otherwise opens
    // the system's privacy pane for contacts.
    void openContactsSettings();
    void showExport();
    // Renders (or reuses) the PDF, then shows it.
    void showPreview();
    void showWelcome();
    // "Get Started": marks the welcome sheet as seen and closes it.
    void finishOnboarding();
    // Closes the sheet, cancelling a rendering under way.
    void dismissSheet();
    void dismissProblem();
    // Ask for a destination, then write the file.
    void exportPDF();
    void exportCSV();
    // Stops the rendering under way; nothing is kept from it.
    void cancelRender();
    void showInFinder();
    // Opens the produce sheet once the list has conversations.
    void showProduce();
    // Produces productionConversations() with the produce form and the export choices.
    void produce();

signals:
    void phaseChanged();
    void conversationsChanged();
    void selectionChanged();
    void searchChanged();
    void sheetChanged();
    void problemChanged();
    void settingsChanged();
    void contactsChanged();
    void namesChanged();
    void messagesChanged();
    void loadingMessagesChanged();
    void transcriptChanged();
    void useFromChanged();
    void useToChanged();
    void fromChanged();
    void toChanged();
    void formChanged();
    void exportingChanged();
    void renderProgressChanged();
    void lastExportChanged();
    void previewDataChanged();
    void databaseSourceChanged();
    void chosenChanged();

protected:
    // Follows a change of the application's language.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Whole-day bounds in force, in the platform's time zone.
    DayBounds::Range bounds() const;
    // The name of the user's own messages: myName trimmed, else "Me".
    QString myDisplayName() const;
    // Where reads make their snapshots.
    QString snapshotFolder() const;
    ExportFlow::Subject exportSubject() const;
    MessagesReader readerForSource() const;
    // What the documents say was read.
    SourceDescription describedSource() const;
    void removeLeftoverSnapshots();
    void checkAccess();
    void load();
    void switchSource(DatabaseSource source, const QString& path);
    void regroup(bool chatsReread);
    void loadMessages();
    void clearMessages();
    void rebuildTranscript();
    void refreshContacts();
    void loadNames();
    void languageChanged();

    void setPhase(Phase phase, const QString& message = {});
    void setConversations(std::vector<Conversation> conversations);
    void setSelection(const std::optional<std::string>& selection);
    void setSheet(std::optional<Sheet> sheet);
    void setProblem(const std::optional<QString>& problem);
    void setContacts(ContactsAccess contacts);
    void setNames(NameBook names);
    void setLoadingMessages(bool loading);

    Platform& m_platform;
    QSettings& m_store;
    // First, so that it goes last: it waits for the work under way, which uses only the platform
    // and what it copied, and posts to the tasks' own inbox.
    Tasks m_tasks{4};

    Phase m_phase = Phase::checking;
    QString m_failureMessage;
    std::vector<Conversation> m_conversations;
    std::optional<std::string> m_selection;
    QString m_search;
    std::optional<Sheet> m_sheet;
    std::optional<QString> m_problem;
    AppSettings m_settings;
    ContactsAccess m_contacts = ContactsAccess::notAsked;
    NameBook m_names;
    std::vector<Message> m_messages;
    bool m_loadingMessages = false;
    std::optional<Transcript> m_transcript;
    bool m_useFrom = false;
    bool m_useTo = false;
    Date m_from;
    Date m_to;
    // The form, the rendering and saving (exporting, renderProgress, lastExport, previewData).
    ExportFlow m_export;
    std::vector<std::string> m_chosen;
    // Many conversations at once; only stopped by closing its sheet, not by a new selection.
    ProduceFlow m_produce;
    std::optional<MessagesReader> m_database;
    std::vector<Chat> m_chats;
    std::uint64_t m_loadToken = 0;

    DatabaseSource m_source = DatabaseSource::standard;
    QString m_filePath;                      // the chosen file, for DatabaseSource::file
    std::shared_ptr<SampleHistory> m_sample; // made on first use, shared with loading tasks
    std::optional<Sources::Backup> m_backup; // for DatabaseSource::backup
    // The current messages' decrypted attachments (an encrypted backup's), shared with the task
    // that makes them; removed when other messages replace them.
    std::shared_ptr<const ReadableCopies> m_readable;
    bool m_started = false;
    bool m_messagesRead = false;                 // m_messages holds the selection's messages
    std::vector<std::int64_t> m_messagesChatIDs; // the chats they were read from
    std::uint64_t m_messagesRequest = 0;
    std::uint64_t m_namesToken = 0;
};

} // namespace scrivly
