#include "Scrivly/model/AppModel.h"

#include "Scrivly/model/SampleHistory.h"
#include "ScrivlyKit/history/Leftovers.h"
#include "ScrivlyKit/history/ReadableCopies.h"
#include "ScrivlyKit/history/Sources.h"
#include "ScrivlyKit/text/Unicode.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSettings>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <utility>

namespace scrivly {

namespace {

// What a load reads: the chat rows, and with the sample the reader and names it comes with.
struct Opened {
    MessagesReader reader;
    std::vector<Chat> chats;
    std::optional<NameBook> names;
};

QString trimmed(const QString& text) {
    return QString::fromStdString(Unicode::trimmed(text.toStdString()));
}

std::string fileName(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

AppModel::ContactsAccess contactsAccess(ContactsAuthorization authorization) {
    switch (authorization) {
    case ContactsAuthorization::notDetermined:
        return AppModel::ContactsAccess::notAsked;
    case ContactsAuthorization::restricted:
    case ContactsAuthorization::denied:
        return AppModel::ContactsAccess::denied;
    case ContactsAuthorization::authorized:
    case ContactsAuthorization::limited:
        return AppModel::ContactsAccess::granted;
    }
    return AppModel::ContactsAccess::denied;
}

// One calendar month before the date in the zone; the date itself when that cannot be formed.
Date monthBefore(Date date, const std::string& timeZone) {
    const QTimeZone zone(QByteArray::fromStdString(timeZone));
    if (!zone.isValid()) {
        return date;
    }
    const auto milliseconds = static_cast<qint64>(std::llround(date.unixSeconds() * 1000.0));
    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(milliseconds, zone).addMonths(-1);
    if (!earlier.isValid()) {
        return date;
    }
    return Date::fromUnixSeconds(static_cast<double>(earlier.toMSecsSinceEpoch()) / 1000.0);
}

} // namespace

AppModel::AppModel(Platform& platform, QSettings& store, QObject* parent)
    : QObject(parent), m_platform(platform), m_store(store), m_settings(AppSettings::load(store)),
      m_export(platform, m_tasks), m_produce(platform, m_tasks) {
    m_to = platform.now();
    m_from = monthBefore(m_to, platform.timeZone());
    const QString remembered = store.value(QLatin1String(kDatabasePathKey)).toString();
    if (!remembered.isEmpty()) {
        m_source = DatabaseSource::file;
        m_filePath = remembered;
    }
    m_export.setSource(describedSource());
    m_contacts = contactsAccess(platform.contactsAuthorization());
    if (!m_settings.onboardingDone) {
        m_sheet = Sheet::welcome;
    }
    m_export.setMe(myDisplayName().toStdString());

    connect(&m_export, &ExportFlow::formChanged, this, &AppModel::formChanged);
    connect(&m_export, &ExportFlow::exportingChanged, this, &AppModel::exportingChanged);
    connect(&m_export, &ExportFlow::renderProgressChanged, this, &AppModel::renderProgressChanged);
    connect(&m_export, &ExportFlow::lastExportChanged, this, &AppModel::lastExportChanged);
    connect(&m_export, &ExportFlow::previewDataChanged, this, &AppModel::previewDataChanged);
    connect(&m_export, &ExportFlow::previewReady, this, [this] { setSheet(Sheet::preview); });
    connect(&m_export, &ExportFlow::problem, this,
            [this](const QString& description) { setProblem(description); });
    // A new translator is announced to the application object alone.
    if (QCoreApplication* application = QCoreApplication::instance()) {
        application->installEventFilter(this);
    }
}

AppModel::~AppModel() = default;

bool AppModel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::LanguageChange && watched == QCoreApplication::instance()) {
        languageChanged();
    }
    return QObject::eventFilter(watched, event);
}

void AppModel::languageChanged() {
    m_export.retranslate();
    m_export.setMe(myDisplayName().toStdString());
    // The count of further group members and "Me" in the transcript are translated texts too.
    regroup(false);
}

// MARK: derived values

std::vector<Conversation> AppModel::filteredConversations() const {
    const std::string query = m_search.toStdString();
    std::vector<Conversation> filtered;
    std::copy_if(m_conversations.begin(), m_conversations.end(), std::back_inserter(filtered),
                 [&](const Conversation& c) { return Conversations::matches(c, query); });
    return filtered;
}

std::optional<Conversation> AppModel::selectedConversation() const {
    if (!m_selection) {
        return std::nullopt;
    }
    const auto found = std::find_if(m_conversations.begin(), m_conversations.end(),
                                    [&](const Conversation& c) { return c.id == *m_selection; });
    if (found == m_conversations.end()) {
        return std::nullopt;
    }
    return *found;
}

DayBounds::Range AppModel::bounds() const {
    const std::string zone = m_platform.timeZone();
    DayBounds::Range range;
    if (m_useFrom) {
        range.from = DayBounds::startOfDay(DayBounds::dayOf(m_from, zone), zone);
    }
    if (m_useTo) {
        range.to = DayBounds::endOfDay(DayBounds::dayOf(m_to, zone), zone);
    }
    return range;
}

QString AppModel::myDisplayName() const {
    const QString name = trimmed(m_settings.myName);
    return name.isEmpty() ? tr("Me") : name;
}

std::vector<Conversation> AppModel::productionConversations() const {
    if (m_chosen.empty()) {
        return m_conversations;
    }
    std::vector<Conversation> chosen;
    std::copy_if(m_conversations.begin(), m_conversations.end(), std::back_inserter(chosen),
                 [&](const Conversation& c) {
                     return std::find(m_chosen.begin(), m_chosen.end(), c.id) != m_chosen.end();
                 });
    return chosen;
}

ExportFlow::Subject AppModel::exportSubject() const {
    const auto conversation = selectedConversation();
    return {.transcript = m_transcript,
            .conversation = m_selection,
            .title = conversation ? conversation->title : std::string(),
            .bounds = bounds(),
            .names = m_names,
            .settings = m_settings};
}

QString AppModel::snapshotFolder() const {
    return m_platform.tempPath() + QLatin1Char('/') + bundleIdentifier() +
           QStringLiteral("-snapshots");
}

QString AppModel::bundleIdentifier() {
    const QString domain = QCoreApplication::organizationDomain();
    const QString name = QCoreApplication::applicationName();
    if (domain.isEmpty() || name.isEmpty()) {
        return QLatin1String(kBundleIdentifier);
    }
    QStringList parts = domain.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    std::reverse(parts.begin(), parts.end());
    parts.append(name);
    return parts.join(QLatin1Char('.'));
}

// MARK: setters

void AppModel::setSearch(const QString& search) {
    if (search == m_search) {
        return;
    }
    m_search = search;
    emit searchChanged();
}

void AppModel::changeSettings(const std::function<void(AppSettings&)>& change) {
    AppSettings changed = m_settings;
    change(changed);
    setSettings(changed);
}

void AppModel::setSettings(const AppSettings& settings) {
    if (settings == m_settings) {
        return;
    }
    const bool nameChanged = settings.myName != m_settings.myName;
    m_settings = settings;
    AppSettings::save(m_store, m_settings);
    emit settingsChanged();
    if (nameChanged) {
        m_export.setMe(myDisplayName().toStdString());
        rebuildTranscript();
    }
}

void AppModel::setUseFrom(bool useFrom) {
    if (useFrom == m_useFrom) {
        return;
    }
    m_useFrom = useFrom;
    emit useFromChanged();
    rebuildTranscript();
}

void AppModel::setUseTo(bool useTo) {
    if (useTo == m_useTo) {
        return;
    }
    m_useTo = useTo;
    emit useToChanged();
    rebuildTranscript();
}

void AppModel::setFrom(Date from) {
    if (from == m_from) {
        return;
    }
    m_from = from;
    emit fromChanged();
    rebuildTranscript();
}

void AppModel::setTo(Date to) {
    if (to == m_to) {
        return;
    }
    m_to = to;
    emit toChanged();
    rebuildTranscript();
}

DayBounds::Day AppModel::fromDay() const {
    return DayBounds::dayOf(m_from, m_platform.timeZone());
}

DayBounds::Day AppModel::toDay() const {
    return DayBounds::dayOf(m_to, m_platform.timeZone());
}

void AppModel::setFromDay(DayBounds::Day day) {
    setFrom(DayBounds::startOfDay(day, m_platform.timeZone()));
}

void AppModel::setToDay(DayBounds::Day day) {
    setTo(DayBounds::startOfDay(day, m_platform.timeZone()));
}

void AppModel::changeForm(const std::function<void(ExportForm&)>& change) {
    ExportForm changed = m_export.form();
    change(changed);
    m_export.setForm(changed);
}

void AppModel::select(const std::optional<std::string>& id) {
    if (id == m_selection) {
        return;
    }
    setSelection(id);
    m_export.clearLastExport();
    loadMessages();
}

void AppModel::choose(std::vector<std::string> ids) {
    if (ids == m_chosen) {
        return;
    }
    m_chosen = std::move(ids);
    emit chosenChanged();
}

// MARK: database source

void AppModel::openDatabaseFile(const QString& path) {
    // Remembered once it has been read (setPhase): a file that fails must not trap the next start.
    m_store.remove(QLatin1String(kDatabasePathKey));
    m_store.remove(QLatin1String(kBackupPathKey));
    m_store.sync();
    // Absolute, as the cover names it and as its attachments folder is remembered by.
    switchSource(DatabaseSource::file, QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
}

void AppModel::chooseAttachmentsFolder(const QString& folder) {
    if (m_source != DatabaseSource::file || folder.isEmpty()) {
        return;
    }
    const QString attachments =
        QFile::decodeName(Sources::attachmentsIn(fileName(QDir::cleanPath(folder))).c_str());
    changeSettings(
        [&](AppSettings& settings) { settings.attachmentFolders.insert(m_filePath, attachments); });
    // Nothing drawn without the pictures may be reused.
    m_export.discardRendering();
    checkAccess();
}

void AppModel::openBackup(Sources::Backup backup) {
    // The folder alone: an encrypted backup asks for its password again at the next launch.
    m_store.setValue(QLatin1String(kBackupPathKey), QFile::decodeName(backup.info.path.c_str()));
    m_store.remove(QLatin1String(kDatabasePathKey));
    m_store.sync();
    m_backup = std::move(backup);
    switchSource(DatabaseSource::backup, {});
}

QString AppModel::rememberedBackup() const {
    return m_store.value(QLatin1String(kBackupPathKey)).toString();
}

void AppModel::openSample() {
    if (!m_sample) {
        m_sample = std::make_shared<SampleHistory>(m_platform.tempPath());
    }
    switchSource(DatabaseSource::sample, {});
}

void AppModel::switchSource(DatabaseSource source, const QString& path) {
    m_source = source;
    m_filePath = path;
    if (source != DatabaseSource::backup) {
        m_backup.reset();
    }
    m_export.setSource(describedSource());
    emit databaseSourceChanged();
    // Nothing read from the previous history may show or be reused for the new one.
    m_export.discardRendering();
    m_export.clearLastExport();
    m_database.reset();
    m_chats.clear();
    setSelection(std::nullopt);
    clearMessages();
    setConversations({});
    ++m_namesToken;
    setNames({});
    refreshContacts();
    checkAccess();
}

// The sample has no reader until the first load has written it.
MessagesReader AppModel::readerForSource() const {
    if (m_source == DatabaseSource::backup && m_backup) {
        return m_backup->reader;
    }
    const std::string home = fileName(m_platform.homePath());
    if (m_source == DatabaseSource::file) {
        const std::string database = fileName(m_filePath);
        const auto fileHome = Sources::homeOfDatabase(fileName(QDir::cleanPath(m_filePath)));
        // The user's choice first; a copy outside a home's Library/Messages usually has its
        // Attachments folder beside it.
        std::optional<std::string> attachments;
        if (const QString chosen = m_settings.attachmentFolders.value(m_filePath);
            !chosen.isEmpty()) {
            attachments = fileName(chosen);
        } else if (!fileHome) {
            attachments = Sources::attachmentsBeside(database);
        }
        return MessagesReader::ofDatabase(database, fileHome.value_or(home),
                                          fileName(snapshotFolder()),
                                          SourceDescription::Kind::databaseFile, attachments);
    }
    return MessagesReader::ofDatabase(defaultDatabasePath(home), home, fileName(snapshotFolder()),
                                      SourceDescription::Kind::userHistory);
}

SourceDescription AppModel::describedSource() const {
    if (m_source == DatabaseSource::sample) {
        SourceDescription sample;
        sample.kind = SourceDescription::Kind::sample;
        return sample;
    }
    return readerForSource().source->description();
}

// MARK: start-up and loading

void AppModel::start() {
    if (!m_started) {
        m_started = true;
        removeLeftoverSnapshots();
        refreshContacts();
    }
    checkAccess();
}

void AppModel::applicationBecameActive() {
    if (m_phase == Phase::needsAccess || m_phase == Phase::noHistory) {
        start();
    }
}

void AppModel::reload() {
    checkAccess();
}

void AppModel::removeLeftoverSnapshots() {
    Sources::removeLeftoverCopies(fileName(snapshotFolder()));
    // Where earlier versions kept theirs; failures are of no consequence.
    QDir(m_platform.cachePath() + QLatin1Char('/') + bundleIdentifier() +
         QStringLiteral("/Snapshot"))
        .removeRecursively();
}

void AppModel::checkAccess() {
    // Whatever is being read now belongs to the state before this check.
    ++m_loadToken;
    if (m_source == DatabaseSource::sample) {
        // Written by the first load, so there is nothing to probe yet.
        load();
        return;
    }
    MessagesReader reader = readerForSource();
    switch (m_platform.access(reader)) {
    case DatabaseAccess::granted:
        m_database = std::move(reader);
        load();
        break;
    case DatabaseAccess::denied:
        m_database.reset();
        setPhase(Phase::needsAccess);
        break;
    case DatabaseAccess::noHistory:
        m_database.reset();
        setPhase(Phase::noHistory);
        break;
    }
}

void AppModel::load() {
    const std::uint64_t token = ++m_loadToken;
    setPhase(Phase::loading);
    std::shared_ptr<SampleHistory> sample = m_source == DatabaseSource::sample ? m_sample : nullptr;
    m_tasks.run(
        [reader = m_database, sample, now = m_platform.now()] {
            if (sample) {
                auto history = sample->ensureCreated(now);
                auto chats = history.reader.chats();
                return Opened{std::move(history.reader), std::move(chats),
                              std::move(history.names)};
            }
            return Opened{*reader, reader->chats(), std::nullopt};
        },
        [this, token](Outcome<Opened> outcome) {
            if (token != m_loadToken) {
                return; // a newer load or check superseded this one
            }
            if (!outcome.value) {
                setPhase(Phase::failed, outcome.error);
                return;
            }
            m_database = std::move(outcome.value->reader);
            m_chats = std::move(outcome.value->chats);
            if (outcome.value->names && *outcome.value->names != m_names) {
                m_names = std::move(*outcome.value->names);
                emit namesChanged();
            }
            regroup(true);
            setPhase(Phase::ready);
        });
}

void AppModel::regroup(bool chatsReread) {
    const QString one = tr("1 other");
    const QString many = tr("%1 others");
    setConversations(Conversations::group(m_chats, m_names, [&](std::int64_t count) {
        return (count == 1 ? one : many.arg(count)).toStdString();
    }));
    if (!m_selection) {
        return;
    }
    const auto conversation = selectedConversation();
    if (!conversation) {
        setSelection(std::nullopt);
        clearMessages();
        return;
    }
    // A reload may have brought new messages; new names may have merged chats.
    if (chatsReread || conversation->chatIDs != m_messagesChatIDs) {
        loadMessages();
    } else {
        rebuildTranscript();
    }
}

// MARK: messages and transcript

void AppModel::clearMessages() {
    ++m_messagesRequest;
    m_messagesRead = false;
    m_readable.reset();
    if (!m_messages.empty()) {
        m_messages.clear();
        emit messagesChanged();
    }
    setLoadingMessages(false);
    rebuildTranscript();
}

void AppModel::loadMessages() {
    clearMessages();
    const auto conversation = selectedConversation();
    if (!conversation || !m_database) {
        return;
    }
    const std::uint64_t request = m_messagesRequest;
    const std::uint64_t token = m_loadToken;
    m_messagesChatIDs = conversation->chatIDs;
    setLoadingMessages(true);
    // An encrypted backup's photos are decrypted for the transcript and the exports alike.
    std::shared_ptr<const ReadableCopies> readable;
    if (m_source == DatabaseSource::backup && m_backup && m_backup->info.encrypted) {
        try {
            readable = std::make_shared<const ReadableCopies>(m_database->source,
                                                              fileName(snapshotFolder()));
        } catch (const std::exception&) {
            // Without a private folder the photos show as missing; the text still reads.
        }
    }
    m_readable = readable;
    m_tasks.run(
        [reader = *m_database, ids = conversation->chatIDs, readable = std::move(readable)] {
            auto messages = reader.messages(ids);
            if (readable) {
                readable->apply(messages);
            }
            return messages;
        },
        [this, token, request](Outcome<std::vector<Message>> outcome) {
            if (token != m_loadToken || request != m_messagesRequest) {
                return; // another selection or load came since
            }
            setLoadingMessages(false);
            if (!outcome.value) {
                setProblem(tr("This conversation couldn’t be read."));
                return;
            }
            m_messages = std::move(*outcome.value);
            m_messagesRead = true;
            emit messagesChanged();
            rebuildTranscript();
        });
}

void AppModel::rebuildTranscript() {
    std::optional<Transcript> transcript;
    if (m_messagesRead) {
        if (const auto conversation = selectedConversation()) {
            const DayBounds::Range range = bounds();
            transcript =
                Transcript::build(conversation->title, conversation->participants, m_messages,
                                  range.from, range.to, myDisplayName().toStdString(), m_names);
        }
    }
    if (transcript != m_transcript) {
        m_transcript = std::move(transcript);
        emit transcriptChanged();
    }
}

// MARK: contacts

void AppModel::refreshContacts() {
    if (m_source == DatabaseSource::sample) {
        // Its own names come with its first load.
        setContacts(ContactsAccess::granted);
        return;
    }
    if (m_source == DatabaseSource::backup && m_backup) {
        // The phone's own address book names its people.
        setContacts(ContactsAccess::granted);
        setNames(m_backup->names);
        return;
    }
    setContacts(contactsAccess(m_platform.contactsAuthorization()));
    if (m_contacts == ContactsAccess::granted) {
        loadNames();
    }
}

void AppModel::requestContacts() {
    if (m_source == DatabaseSource::sample || m_source == DatabaseSource::backup) {
        return;
    }
    QPointer<AppModel> self(this);
    m_platform.requestContactsAccess([self] {
        if (self) {
            self->refreshContacts();
        }
    });
}

void AppModel::loadNames() {
    const std::uint64_t token = ++m_namesToken;
    m_tasks.run([&platform = m_platform] { return platform.loadNames(); },
                [this, token](Outcome<NameBook> outcome) {
                    if (token != m_namesToken) {
                        return;
                    }
                    if (outcome.value) {
                        setNames(std::move(*outcome.value));
                    } else {
                        // The names there are stay; the platform may now call the source
                        // unreadable, so the user is offered to choose again.
                        setContacts(contactsAccess(m_platform.contactsAuthorization()));
                    }
                });
}

void AppModel::openFullDiskAccessSettings() {
    m_platform.openUrl(QLatin1String(kFullDiskAccessURL));
}

void AppModel::revealApplication() {
    m_platform.revealFile(QCoreApplication::applicationFilePath());
}

void AppModel::openContactsSettings() {
    if (m_platform.asksForContactsAgain()) {
        requestContacts();
        return;
    }
    m_platform.openUrl(QLatin1String(kContactsURL));
}

bool AppModel::canChooseContacts() const {
    return m_platform.asksForContactsAgain() && m_source != DatabaseSource::sample &&
           m_source != DatabaseSource::backup;
}

// MARK: sheets and exports

void AppModel::showExport() {
    if (m_selection) {
        setSheet(Sheet::exportPanel);
    }
}

void AppModel::showPreview() {
    m_export.preview(exportSubject());
}

void AppModel::showWelcome() {
    setSheet(Sheet::welcome);
}

void AppModel::finishOnboarding() {
    AppSettings settings = m_settings;
    settings.onboardingDone = true;
    setSettings(settings);
    if (m_sheet == Sheet::welcome) {
        setSheet(std::nullopt);
    }
}

void AppModel::dismissSheet() {
    m_export.cancelRender();
    m_produce.cancel();
    m_produce.clearOutcome();
    setSheet(std::nullopt);
}

void AppModel::dismissProblem() {
    setProblem(std::nullopt);
}

void AppModel::exportPDF() {
    m_export.exportPDF(exportSubject());
}

void AppModel::exportCSV() {
    m_export.exportCSV(exportSubject());
}

void AppModel::cancelRender() {
    m_export.cancelRender();
}

void AppModel::showInFinder() {
    m_export.showInFinder();
}

void AppModel::showProduce() {
    if (m_phase == Phase::ready && !m_conversations.empty()) {
        setSheet(Sheet::produce);
    }
}

void AppModel::produce() {
    std::vector<std::string> ids;
    for (const Conversation& conversation : productionConversations()) {
        ids.push_back(conversation.id);
    }
    DayRange days;
    if (m_useFrom) {
        days.first = fromDay();
    }
    if (m_useTo) {
        days.last = toDay();
    }
    m_produce.produce(
        {.reader = m_database,
         .names = m_names,
         .conversations = std::move(ids),
         .days = days,
         .history = {myDisplayName().toStdString(), m_platform.timeZone(), m_platform.locale()},
         .header = trimmed(m_export.form().header).toStdString(),
         .settings = m_settings});
}

// MARK: plain setters

void AppModel::setPhase(Phase phase, const QString& message) {
    if (phase == m_phase && message == m_failureMessage) {
        return;
    }
    m_phase = phase;
    m_failureMessage = message;
    if (m_source == DatabaseSource::file) {
        if (phase == Phase::ready) {
            m_store.setValue(QLatin1String(kDatabasePathKey), m_filePath);
            m_store.sync();
        } else if (phase == Phase::failed || phase == Phase::noHistory) {
            m_store.remove(QLatin1String(kDatabasePathKey));
            m_store.sync();
        }
    }
    emit phaseChanged();
}

void AppModel::setConversations(std::vector<Conversation> conversations) {
    if (conversations == m_conversations) {
        return;
    }
    m_conversations = std::move(conversations);
    emit conversationsChanged();
}

void AppModel::setSelection(const std::optional<std::string>& selection) {
    if (selection == m_selection) {
        return;
    }
    m_selection = selection;
    emit selectionChanged();
}

void AppModel::setSheet(std::optional<Sheet> sheet) {
    if (sheet == m_sheet) {
        return;
    }
    m_sheet = sheet;
    emit sheetChanged();
}

void AppModel::setProblem(const std::optional<QString>& problem) {
    if (problem == m_problem) {
        return;
    }
    m_problem = problem;
    emit problemChanged();
}

void AppModel::setContacts(ContactsAccess contacts) {
    if (contacts == m_contacts) {
        return;
    }
    m_contacts = contacts;
    emit contactsChanged();
}

void AppModel::setNames(NameBook names) {
    if (names == m_names) {
        return;
    }
    m_names = std::move(names);
    emit namesChanged();
    regroup(false);
}

void AppModel::setLoadingMessages(bool loading) {
    if (loading == m_loadingMessages) {
        return;
    }
    m_loadingMessages = loading;
    emit loadingMessagesChanged();
}

} // namespace scrivly
