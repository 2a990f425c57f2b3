#include "Scrivly/AppModel.h"

#include "Scrivly/SampleHistory.h"
#include "ScrivlyKit/database/SnapshotLease.h"
#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/sample/SampleDatabase.h"
#include "ScrivlyKit/text/Unicode.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QLocale>
#include <QPointer>
#include <QSaveFile>
#include <QSettings>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <exception>
#include <type_traits>
#include <utility>

namespace scrivly {

namespace {

// What a worker task hands back: its value, or the description of what it threw.
template <typename T> struct Outcome {
    std::optional<T> value;
    QString error;
    bool cancelled = false;
};

template <typename Work> auto attempt(Work&& work) -> Outcome<std::invoke_result_t<Work&>> {
    try {
        return {work(), {}};
    } catch (const PDFExport::Cancelled&) {
        return {std::nullopt, {}, true};
    } catch (const std::exception& error) {
        return {std::nullopt, QString::fromUtf8(error.what())};
    }
}

QString trimmed(const QString& text) {
    return QString::fromStdString(Unicode::trimmed(text.toStdString()));
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

// A chosen chat.db that sits in a home folder's Library/Messages keeps its attachments under that
// home; anything else (a copied file, a backup's sms.db) is taken to belong to this user.
QString homeOfDatabase(const QString& path, const QString& userHome) {
    const QString suffix = QStringLiteral("/Library/Messages/chat.db");
    const QString clean = QDir::cleanPath(path);
    if (clean.endsWith(suffix) && clean.size() > suffix.size()) {
        return clean.left(clean.size() - suffix.size());
    }
    return userHome;
}

QByteArray bytesOf(const PDFExport::Result& result) {
    return {reinterpret_cast<const char*>(result.data.data()),
            static_cast<qsizetype>(result.data.size())};
}

} // namespace

AppModel::AppModel(Platform& platform, QSettings& store, QObject* parent)
    : QObject(parent), m_platform(platform), m_store(store), m_settings(AppSettings::load(store)) {
    m_to = platform.now();
    m_from = monthBefore(m_to, platform.timeZone());
    const QString remembered = store.value(QLatin1String(kDatabasePathKey)).toString();
    if (!remembered.isEmpty()) {
        m_source = DatabaseSource::file;
        m_filePath = remembered;
    }
    m_contacts = contactsAccess(platform.contactsAuthorization());
    if (!m_settings.onboardingDone) {
        m_sheet = Sheet::welcome;
    }
}

// Everything work and deliver capture is copied or moved, never shared between the threads.
template <typename Work, typename Deliver>
void AppModel::runInBackground(Work work, Deliver deliver, bool urgent) {
    m_workers.post(
        [this, work = std::move(work), deliver = std::move(deliver)]() mutable {
            deliverLater([deliver = std::move(deliver), outcome = attempt(work)]() mutable {
                deliver(std::move(outcome));
            });
        },
        urgent);
}

void AppModel::deliverLater(std::function<void()> delivery) {
    {
        const std::lock_guard lock(m_inboxMutex);
        m_inbox.push_back(std::move(delivery));
    }
    // Only a wake-up, by name, so that no data of ours travels through the event queue. One per
    // delivery: the wake-ups still queued go with the model, so none runs after it.
    QMetaObject::invokeMethod(this, "takeDelivery", Qt::QueuedConnection);
}

void AppModel::takeDelivery() {
    std::function<void()> delivery;
    {
        const std::lock_guard lock(m_inboxMutex);
        delivery = std::move(m_inbox.front());
        m_inbox.pop_front();
    }
    delivery();
}

AppModel::~AppModel() {
    if (m_renderTask) {
        m_renderTask->stop.request_stop();
    }
    // m_workers, destroyed first, then waits for the work under way.
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

QString AppModel::databasePath() const {
    return QString::fromStdString(readerForSource().source);
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

ExportOptions AppModel::exportOptions() const {
    ExportOptions options;
    options.paper = m_settings.paper;
    options.documentTitle = trimmed(m_form.title).toStdString();
    options.header = trimmed(m_form.header).toStdString();
    options.batesPrefix = trimmed(m_form.batesPrefix).toStdString();
    options.batesStart = m_form.batesStart;
    options.coverPage = m_settings.coverPage;
    options.includeImages = m_settings.includeImages;
    options.timeZone = m_platform.timeZone();
    options.locale = m_platform.locale();
    return options;
}

ExportStrings AppModel::exportStrings() const {
    // Every text is looked up here, on the main thread; the functions only fill in arguments,
    // since they run on the rendering thread.
    ExportStrings strings;
    const QLocale locale;
    const QString pageOf = tr("Page %1 of %2");
    strings.pageOf = [pageOf, locale](std::int64_t page, std::int64_t count) {
        return pageOf.arg(locale.toString(qlonglong{page}), locale.toString(qlonglong{count}))
            .toStdString();
    };
    strings.me = myDisplayName().toStdString();
    strings.participants = tr("Participants").toStdString();
    strings.dateRange = tr("Dates").toStdString();
    strings.allDates = tr("All messages").toStdString();
    strings.messages = tr("Messages").toStdString();
    strings.attachments = tr("Attachments").toStdString();
    strings.exported = tr("Exported").toStdString();
    strings.timeZone = tr("Times shown in").toStdString();
    strings.source = tr("Source").toStdString();
    strings.sourceText = tr("The Messages history on this Mac, read by Scrivly. Scrivly lays the "
                            "messages out; it doesn’t change their wording.")
                             .toStdString();
    const QString included = tr("Included: %1");
    strings.includedDates = [included](const std::string& span) {
        return included.arg(QString::fromStdString(span)).toStdString();
    };
    strings.reactions = tr("Reactions").toStdString();
    using Case = ReactionKind::Case;
    const std::vector<std::pair<Case, std::string>> reactionNames{
        {Case::loved, tr("Loved").toStdString()},
        {Case::liked, tr("Liked").toStdString()},
        {Case::disliked, tr("Disliked").toStdString()},
        {Case::laughed, tr("Laughed").toStdString()},
        {Case::emphasized, tr("Emphasized").toStdString()},
        {Case::questioned, tr("Questioned").toStdString()},
    };
    strings.reactionName = [reactionNames](const ReactionKind& kind) {
        for (const auto& [which, name] : reactionNames) {
            if (which == kind.kind) {
                return name;
            }
        }
        return kind.emoji; // an emoji reaction names itself, in every language
    };
    const QString missing = tr("Attachment not on this Mac: %1");
    strings.attachmentMissing = [missing](const std::string& name) {
        return missing.arg(QString::fromStdString(name)).toStdString();
    };
    const QString line = tr("Attachment: %1 (%2)");
    strings.attachmentLine = [line](const std::string& name, const std::string& size) {
        return line.arg(QString::fromStdString(name), QString::fromStdString(size)).toStdString();
    };
    strings.csvHeaders = {
        tr("Date").toStdString(),
        tr("Time").toStdString(),
        tr("Timestamp (ISO 8601)").toStdString(),
        tr("Sender").toStdString(),
        tr("From Me").toStdString(),
        tr("Text").toStdString(),
        tr("Attachments").toStdString(),
        tr("Reactions").toStdString(),
    };
    strings.yes = tr("Yes").toStdString();
    strings.no = tr("No").toStdString();
    return strings;
}

RenderKey AppModel::renderKey() const {
    const DayBounds::Range range = bounds();
    RenderKey key;
    key.conversation = m_selection;
    key.messages = m_transcript ? static_cast<std::int64_t>(m_transcript->entries.size()) : 0;
    key.from = range.from;
    key.to = range.to;
    key.me = myDisplayName().toStdString();
    key.names = m_names;
    key.options = exportOptions();
    return key;
}

QString AppModel::defaultFileName(ExportKind kind) const {
    QString base = trimmed(m_form.title);
    if (base.isEmpty()) {
        if (const auto conversation = selectedConversation()) {
            base = QString::fromStdString(conversation->title);
        }
    }
    if (base.isEmpty()) {
        base = tr("Messages");
    }
    base.replace(QLatin1Char('/'), QLatin1Char('-'));
    base.replace(QLatin1Char(':'), QLatin1Char('-'));
    const QString extension =
        kind == ExportKind::pdf ? QStringLiteral("pdf") : QStringLiteral("csv");
    return base + QStringLiteral(" – ") + tr("Messages") + QLatin1Char('.') + extension;
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
    ExportForm changed = m_form;
    change(changed);
    setForm(changed);
}

void AppModel::setForm(const ExportForm& form) {
    if (form == m_form) {
        return;
    }
    m_form = form;
    emit formChanged();
}

void AppModel::select(const std::optional<std::string>& id) {
    if (id == m_selection) {
        return;
    }
    setSelection(id);
    // "Saved …" belongs to the conversation it was exported from.
    setLastExport(std::nullopt);
    loadMessages();
}

// MARK: database source

void AppModel::openDatabaseFile(const QString& path) {
    m_store.setValue(QLatin1String(kDatabasePathKey), path);
    m_store.sync();
    switchSource(DatabaseSource::file, path);
}

void AppModel::openSample() {
    if (!m_sample) {
        m_sample = std::make_shared<SampleHistory>(m_platform.tempPath());
    }
    switchSource(DatabaseSource::sample, {});
}

void AppModel::useStandardDatabase() {
    m_store.remove(QLatin1String(kDatabasePathKey));
    m_store.sync();
    switchSource(DatabaseSource::standard, {});
}

void AppModel::switchSource(DatabaseSource source, const QString& path) {
    cancelRender();
    m_source = source;
    m_filePath = path;
    emit databaseSourceChanged();
    // Nothing read from the previous history may show or be reused for the new one.
    m_database.reset();
    m_chats.clear();
    m_lastRender.reset();
    setSelection(std::nullopt);
    clearMessages();
    setLastExport(std::nullopt);
    setConversations({});
    ++m_namesToken;
    setNames({});
    refreshContacts();
    checkAccess();
}

MessagesReader AppModel::readerForSource() const {
    MessagesReader reader;
    const QString home = m_platform.homePath();
    switch (m_source) {
    case DatabaseSource::standard:
        reader.source = defaultDatabasePath(home.toStdString());
        reader.home = home.toStdString();
        reader.folder = snapshotFolder().toStdString();
        break;
    case DatabaseSource::file:
        reader.source = m_filePath.toStdString();
        reader.home = homeOfDatabase(m_filePath, home).toStdString();
        reader.folder = snapshotFolder().toStdString();
        break;
    case DatabaseSource::sample:
        // Nothing else writes the sample, so it is read in place.
        reader.source = m_sample->databasePath();
        reader.home = m_sample->homePath();
        break;
    }
    return reader;
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
    // Left by a run that stopped in the middle of a read; copies another running instance still
    // holds stay. Failures are of no consequence.
    scrivly::removeLeftoverSnapshots(snapshotFolder().toStdString());
    QDir(m_platform.cachePath() + QLatin1Char('/') + bundleIdentifier() +
         QStringLiteral("/Snapshot"))
        .removeRecursively();
}

void AppModel::checkAccess() {
    // Whatever is being read now belongs to the state before this check.
    ++m_loadToken;
    const MessagesReader reader = readerForSource();
    // The sample is written by the first load, so there is nothing to probe yet.
    const DatabaseAccess access = m_source == DatabaseSource::sample
                                      ? DatabaseAccess::granted
                                      : m_platform.access(reader.source);
    switch (access) {
    case DatabaseAccess::granted:
        m_database = reader;
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
    runInBackground(
        [reader = *m_database, sample, now = m_platform.now()] {
            if (sample) {
                sample->ensureCreated(now);
            }
            return reader.chats();
        },
        [this, token](Outcome<std::vector<Chat>> outcome) {
            if (token != m_loadToken) {
                return; // a newer load or check superseded this one
            }
            if (!outcome.value) {
                setPhase(Phase::failed, outcome.error);
                return;
            }
            m_chats = std::move(*outcome.value);
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
    runInBackground(
        [reader = *m_database, ids = conversation->chatIDs] { return reader.messages(ids); },
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
        setContacts(ContactsAccess::granted);
        setNames(SampleDatabase::nameBook());
        return;
    }
    setContacts(contactsAccess(m_platform.contactsAuthorization()));
    if (m_contacts == ContactsAccess::granted) {
        loadNames();
    }
}

void AppModel::requestContacts() {
    if (m_source == DatabaseSource::sample) {
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
    runInBackground([&platform = m_platform] { return platform.loadNames(); },
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
    return m_platform.asksForContactsAgain() && m_source != DatabaseSource::sample;
}

// MARK: sheets

void AppModel::showExport() {
    if (m_selection) {
        setSheet(Sheet::exportPanel);
    }
}

void AppModel::showPreview() {
    renderPDF(
        [this](const PDFExport::Result& result) {
            setPreviewData(bytesOf(result));
            setSheet(Sheet::preview);
        },
        [this](const QString& description) { setProblem(description); });
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
    cancelRender();
    setSheet(std::nullopt);
}

void AppModel::dismissProblem() {
    setProblem(std::nullopt);
}

// MARK: rendering and saving

void AppModel::renderPDF(std::function<void(const PDFExport::Result&)> done,
                         std::function<void(const QString&)> failed) {
    if (!m_transcript || m_renderTask) {
        return;
    }
    RenderKey key = renderKey();
    if (m_lastRender && m_lastRender->key == key &&
        m_platform.now() - m_lastRender->madeAt < kReuseSeconds) {
        done(m_lastRender->result);
        return;
    }
    const std::uint64_t token = ++m_renderToken;
    m_renderTask = RenderTask{std::stop_source{}, token};
    setExporting(true);
    setRenderProgress(0.0);

    // The model outlives the work (its pool is destroyed first), so posting to it from the
    // rendering thread is safe; a stale token keeps a cancelled rendering's progress out.
    PDFExport::Progress progress = [this, token](double fraction) {
        deliverLater([this, token, fraction] {
            if (m_renderTask && m_renderTask->token == token) {
                setRenderProgress(fraction);
            }
        });
    };
    auto work = [transcript = *m_transcript, options = key.options, strings = exportStrings(),
                 progress = std::move(progress), stop = m_renderTask->stop.get_token()] {
        return PDFExport::render(transcript, options, strings, progress, stop);
    };
    auto deliver = [this, token, key = std::move(key), done = std::move(done),
                    failed = std::move(failed)](Outcome<PDFExport::Result> outcome) {
        if (!m_renderTask || m_renderTask->token != token) {
            return; // cancelled
        }
        m_renderTask.reset();
        setExporting(false);
        setRenderProgress(std::nullopt);
        if (outcome.cancelled) {
            return;
        }
        if (!outcome.value) {
            failed(outcome.error);
            return;
        }
        m_lastRender = LastRender{key, m_platform.now(), std::move(*outcome.value)};
        done(m_lastRender->result);
    };
    // Ahead of any queued read: the user is waiting for this one.
    runInBackground(std::move(work), std::move(deliver), true);
}

void AppModel::cancelRender() {
    if (!m_renderTask) {
        return;
    }
    m_renderTask->stop.request_stop();
    m_renderTask.reset();
    setExporting(false);
    setRenderProgress(std::nullopt);
}

void AppModel::exportPDF() {
    if (!m_transcript || m_renderTask) {
        return;
    }
    const auto destination =
        m_platform.saveDestination(defaultFileName(ExportKind::pdf), ExportKind::pdf);
    if (!destination) {
        return;
    }
    renderPDF([this, path = *destination](
                  const PDFExport::Result& result) { save(path, bytesOf(result)); },
              [this](const QString& description) {
                  setProblem(tr("The export couldn’t be saved: %1").arg(description));
              });
}

void AppModel::exportCSV() {
    if (!m_transcript) {
        return;
    }
    const auto destination =
        m_platform.saveDestination(defaultFileName(ExportKind::csv), ExportKind::csv);
    if (!destination) {
        return;
    }
    const std::string csv = CSVExport::render(*m_transcript, exportOptions(), exportStrings());
    save(*destination, QByteArray::fromStdString(csv));
}

void AppModel::save(const QString& path, const QByteArray& data) {
    // Written beside the destination and moved over it, so a failure leaves no half a file.
    QSaveFile file(path);
    const bool saved =
        file.open(QIODevice::WriteOnly) && file.write(data) == data.size() && file.commit();
    if (!saved) {
        setProblem(tr("The export couldn’t be saved: %1").arg(file.errorString()));
        return;
    }
    setLastExport(path);
}

void AppModel::showInFinder() {
    if (m_lastExport) {
        m_platform.revealFile(*m_lastExport);
    }
}

// MARK: plain setters

void AppModel::setPhase(Phase phase, const QString& message) {
    if (phase == m_phase && message == m_failureMessage) {
        return;
    }
    m_phase = phase;
    m_failureMessage = message;
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

void AppModel::setExporting(bool exporting) {
    if (exporting == m_exporting) {
        return;
    }
    m_exporting = exporting;
    emit exportingChanged();
}

void AppModel::setRenderProgress(std::optional<double> progress) {
    if (progress == m_renderProgress) {
        return;
    }
    m_renderProgress = progress;
    emit renderProgressChanged();
}

void AppModel::setLastExport(const std::optional<QString>& path) {
    if (path == m_lastExport) {
        return;
    }
    m_lastExport = path;
    emit lastExportChanged();
}

void AppModel::setPreviewData(const std::optional<QByteArray>& data) {
    if (data == m_previewData) {
        return;
    }
    m_previewData = data;
    emit previewDataChanged();
}

} // namespace scrivly
