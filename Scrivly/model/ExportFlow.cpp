#include "Scrivly/model/ExportFlow.h"

#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/model/Tasks.h"
#include "ScrivlyKit/text/Unicode.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QTimeZone>

#include <cmath>

#include <utility>
#include <vector>

namespace scrivly {

namespace {

QString trimmed(const QString& text) {
    return QString::fromStdString(Unicode::trimmed(text.toStdString()));
}

QByteArray bytesOf(const std::vector<std::uint8_t>& data) {
    return {reinterpret_cast<const char*>(data.data()), static_cast<qsizetype>(data.size())};
}

} // namespace

ExportFlow::ExportFlow(Platform& platform, Tasks& tasks, QObject* parent)
    : QObject(parent), m_platform(platform), m_tasks(tasks) {
    retranslate();
}

ExportFlow::~ExportFlow() {
    if (m_renderTask) {
        m_renderTask->stop.request_stop();
    }
}

void ExportFlow::setForm(const ExportForm& form) {
    if (form == m_form) {
        return;
    }
    m_form = form;
    emit formChanged();
}

void ExportFlow::retranslate() {
    // The functions only fill in arguments: they run on the rendering thread, where nothing may
    // be looked up.
    ExportStrings strings;
    strings.me = std::move(m_strings.me);
    const QLocale locale;
    const QString pageOf = tr("Page %1 of %2");
    strings.pageOf = [pageOf, locale](std::int64_t page, std::int64_t count) {
        return pageOf.arg(locale.toString(qlonglong{page}), locale.toString(qlonglong{count}))
            .toStdString();
    };
    strings.participants = tr("Participants").toStdString();
    strings.dateRange = tr("Dates").toStdString();
    strings.allDates = tr("All messages").toStdString();
    strings.messages = tr("Messages").toStdString();
    strings.attachments = tr("Attachments").toStdString();
    strings.exported = tr("Exported").toStdString();
    strings.timeZone = tr("Times shown in").toStdString();
    strings.source = tr("Source").toStdString();
    strings.sourceText = sourceText().toStdString();
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
    const QString missing = PlatformTexts::attachmentMissing();
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
    m_strings = std::move(strings);
}

QString ExportFlow::sourceText() const {
    using Kind = SourceDescription::Kind;
    if (m_source.kind == Kind::userHistory) {
        if (const auto own = PlatformTexts::ownHistorySource()) {
            return *own;
        }
    }
    QString read;
    switch (m_source.kind) {
    case Kind::userHistory:
    case Kind::databaseFile: {
        // Named as the command line names it: the file, then its folder.
        const QString path = QFile::decodeName(m_source.path.c_str());
        const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
        read = slash < 0 ? tr("The Messages database %1").arg(path)
                         : tr("The Messages database %1 in %2")
                               .arg(path.mid(slash + 1),
                                    slash == 0 ? QStringLiteral("/") : path.left(slash));
        break;
    }
    case Kind::sample:
        read = tr("The demonstration history");
        break;
    case Kind::backup:
        read = tr("The iPhone backup of “%1”").arg(QString::fromStdString(m_source.deviceName));
        if (!m_source.productVersion.empty()) {
            read += QLatin1Char(' ') +
                    tr("(iOS %1)").arg(QString::fromStdString(m_source.productVersion));
        }
        if (m_source.backupDate) {
            // In UTC, as the backup's own record has it, so the line reads the same everywhere.
            const auto milliseconds =
                static_cast<qint64>(std::llround(m_source.backupDate->unixSeconds() * 1000.0));
            const QDateTime made = QDateTime::fromMSecsSinceEpoch(milliseconds, QTimeZone::utc());
            const QLocale locale;
            read += tr(", made %1 UTC")
                        .arg(locale.toString(made.date(), QLocale::LongFormat) + QLatin1Char(' ') +
                             locale.toString(made.time(), QLocale::ShortFormat));
        }
        break;
    }
    return tr("%1, read by Scrivly. Scrivly lays the messages out; it doesn’t change their "
              "wording.")
        .arg(read);
}

void ExportFlow::setSource(const SourceDescription& source) {
    if (source == m_source) {
        return;
    }
    m_source = source;
    m_strings.sourceText = sourceText().toStdString();
    // A rendering of the other history's cover must not be reused.
    discardRendering();
}

void ExportFlow::setMe(const std::string& me) {
    m_strings.me = me;
}

ExportOptions ExportFlow::options(const Subject& subject) const {
    ExportOptions options;
    options.paper = subject.settings.paper;
    options.documentTitle = trimmed(m_form.title).toStdString();
    options.header = trimmed(m_form.header).toStdString();
    options.batesPrefix = trimmed(m_form.batesPrefix).toStdString();
    options.batesStart = m_form.batesStart;
    options.coverPage = subject.settings.coverPage;
    options.includeImages = subject.settings.includeImages;
    options.timeZone = m_platform.timeZone();
    options.locale = m_platform.locale();
    return options;
}

RenderKey ExportFlow::renderKey(const Subject& subject) const {
    RenderKey key;
    key.conversation = subject.conversation;
    key.messages =
        subject.transcript ? static_cast<std::int64_t>(subject.transcript->entries.size()) : 0;
    key.from = subject.bounds.from;
    key.to = subject.bounds.to;
    key.me = m_strings.me;
    key.names = subject.names;
    key.options = options(subject);
    return key;
}

QString ExportFlow::defaultFileName(const Subject& subject, ExportKind kind) const {
    QString base = trimmed(m_form.title);
    if (base.isEmpty()) {
        base = QString::fromStdString(subject.title);
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

void ExportFlow::preview(const Subject& subject) {
    renderPDF(
        subject,
        [this](const ExportJob::Result& result) {
            setPreviewData(bytesOf(result.data));
            emit previewReady();
        },
        [this](const QString& description) { emit problem(description); });
}

void ExportFlow::renderPDF(const Subject& subject,
                           std::function<void(const ExportJob::Result&)> done,
                           std::function<void(const QString&)> failed) {
    if (!subject.transcript || m_renderTask) {
        return;
    }
    RenderKey key = renderKey(subject);
    if (m_lastRender && m_lastRender->key == key &&
        m_platform.now() - m_lastRender->madeAt < kReuseSeconds) {
        done(m_lastRender->result);
        return;
    }
    const std::uint64_t token = ++m_renderToken;
    m_renderTask = RenderTask{std::stop_source{}, token};
    setExporting(true);
    setRenderProgress(0.0);

    // Progress comes back through the tasks' inbox, which outlives the work (the flow may not); a
    // stale token keeps a cancelled rendering's progress out.
    ExportJob::Progress progress = [this, tasks = &m_tasks, token](double fraction) {
        tasks->deliverLater([this, token, fraction] {
            if (m_renderTask && m_renderTask->token == token) {
                setRenderProgress(fraction);
            }
        });
    };
    // Nothing when cancelled: a stopped rendering is no failure.
    auto work = [transcript = *subject.transcript, options = key.options, strings = m_strings,
                 progress = std::move(progress),
                 stop = m_renderTask->stop.get_token()]() -> std::optional<ExportJob::Result> {
        try {
            return ExportJob::run(ExportJob::Format::pdf, transcript, options, strings, progress,
                                  stop);
        } catch (const ExportJob::Cancelled&) {
            return std::nullopt;
        }
    };
    auto deliver = [this, token, key = std::move(key), done = std::move(done),
                    failed = std::move(failed)](Outcome<std::optional<ExportJob::Result>> outcome) {
        if (!m_renderTask || m_renderTask->token != token) {
            return; // cancelled
        }
        m_renderTask.reset();
        setExporting(false);
        setRenderProgress(std::nullopt);
        if (!outcome.value) {
            failed(outcome.error);
            return;
        }
        if (!*outcome.value) {
            return;
        }
        m_lastRender = LastRender{key, m_platform.now(), std::move(**outcome.value)};
        done(m_lastRender->result);
    };
    // Ahead of any queued read: the user is waiting for this one.
    m_tasks.run(std::move(work), std::move(deliver), true);
}

void ExportFlow::cancelRender() {
    if (!m_renderTask) {
        return;
    }
    m_renderTask->stop.request_stop();
    m_renderTask.reset();
    setExporting(false);
    setRenderProgress(std::nullopt);
}

void ExportFlow::discardRendering() {
    cancelRender();
    m_lastRender.reset();
}

void ExportFlow::exportPDF(const Subject& subject) {
    if (!subject.transcript || m_renderTask) {
        return;
    }
    const auto destination =
        m_platform.saveDestination(defaultFileName(subject, ExportKind::pdf), ExportKind::pdf);
    if (!destination) {
        return;
    }
    renderPDF(
        subject,
        [this, path = *destination](const ExportJob::Result& result) { save(path, result.data); },
        [this](const QString& description) {
            emit problem(tr("The export couldn’t be saved: %1").arg(description));
        });
}

void ExportFlow::exportCSV(const Subject& subject) {
    if (!subject.transcript) {
        return;
    }
    const auto destination =
        m_platform.saveDestination(defaultFileName(subject, ExportKind::csv), ExportKind::csv);
    if (!destination) {
        return;
    }
    const auto csv =
        ExportJob::run(ExportJob::Format::csv, *subject.transcript, options(subject), m_strings);
    save(*destination, csv.data);
}

void ExportFlow::save(const QString& path, const std::vector<std::uint8_t>& data) {
    try {
        ExportJob::save(QFile::encodeName(path).toStdString(), data);
    } catch (const ExportJob::SaveFailed& error) {
        // The reason follows the core's English lead-in, which the alert says in the user's
        // language instead.
        std::string reason = error.what();
        const std::string leadIn = "The export couldn’t be saved: ";
        if (reason.starts_with(leadIn)) {
            reason.erase(0, leadIn.size());
        }
        emit problem(tr("The export couldn’t be saved: %1").arg(QString::fromStdString(reason)));
        return;
    }
    setLastExport(path);
}

void ExportFlow::showInFinder() {
    if (m_lastExport) {
        m_platform.revealFile(*m_lastExport);
    }
}

void ExportFlow::clearLastExport() {
    setLastExport(std::nullopt);
}

void ExportFlow::setExporting(bool exporting) {
    if (exporting == m_exporting) {
        return;
    }
    m_exporting = exporting;
    emit exportingChanged();
}

void ExportFlow::setRenderProgress(std::optional<double> progress) {
    if (progress == m_renderProgress) {
        return;
    }
    m_renderProgress = progress;
    emit renderProgressChanged();
}

void ExportFlow::setLastExport(const std::optional<QString>& path) {
    if (path == m_lastExport) {
        return;
    }
    m_lastExport = path;
    emit lastExportChanged();
}

void ExportFlow::setPreviewData(const std::optional<QByteArray>& data) {
    if (data == m_previewData) {
        return;
    }
    m_previewData = data;
    emit previewDataChanged();
}

} // namespace scrivly
