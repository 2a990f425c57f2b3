#include "Scrivly/model/ProduceFlow.h"

#include "Scrivly/model/Tasks.h"
#include "ScrivlyKit/production/Production.h"
#include "ScrivlyKit/production/ProductionRules.h"
#include "ScrivlyKit/text/Unicode.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <utility>

namespace scrivly {

namespace {

QString trimmed(const QString& text) {
    return QString::fromStdString(Unicode::trimmed(text.toStdString()));
}

} // namespace

ProduceFlow::ProduceFlow(Platform& platform, Tasks& tasks, QObject* parent)
    : QObject(parent), m_platform(platform), m_tasks(tasks) {}

ProduceFlow::~ProduceFlow() {
    if (m_task) {
        m_task->stop.request_stop();
    }
}

void ProduceFlow::setForm(const ProduceForm& form) {
    if (form == m_form) {
        return;
    }
    m_form = form;
    emit formChanged();
}

std::optional<QString> ProduceFlow::formProblem(const Subject& subject) const {
    if (subject.conversations.empty()) {
        return tr("This history has no conversations to produce.");
    }
    const QString prefix = trimmed(m_form.batesPrefix);
    if (prefix.isEmpty()) {
        return tr("Give a number prefix, such as SMITH-: the numbers also name the files.");
    }
    if (ProductionRules::prefixProblem(prefix.toStdString())) {
        return tr("The number prefix can’t hold “/” or control characters: the numbers also "
                  "name the files.");
    }
    const QString folder = trimmed(m_form.folder);
    if (folder.isEmpty()) {
        return tr("Choose a folder for the production.");
    }
    const QFileInfo info(folder);
    if (info.exists() && !info.isDir()) {
        return tr("“%1” is a file. Choose a new or empty folder.").arg(folder);
    }
    if (info.isDir() && !QDir(folder).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot |
                                              QDir::Hidden | QDir::System)) {
        return tr("The folder “%1” isn’t empty. Choose a new or empty folder.").arg(folder);
    }
    return std::nullopt;
}

void ProduceFlow::produce(const Subject& subject) {
    if (m_task || !subject.reader) {
        return;
    }
    m_finished.reset();
    m_producedFolder.reset();
    m_problem = formProblem(subject);
    if (m_problem) {
        emit stateChanged();
        return;
    }

    Production production;
    production.conversations = subject.conversations;
    production.days = subject.days;
    production.batesPrefix = trimmed(m_form.batesPrefix).toStdString();
    production.batesStart = m_form.batesStart;
    if (m_form.split) {
        production.maxBytes = static_cast<std::uint64_t>(m_form.splitMegabytes) * 1000 * 1000;
    }
    production.perDay = m_form.perDay;
    production.csv = m_form.spreadsheets;
    production.natives = m_form.natives;
    production.loadFile = m_form.loadFile;
    if (const QString custodian = trimmed(m_form.custodian); !custodian.isEmpty()) {
        production.custodian = custodian.toStdString();
    }
    production.header = subject.header;
    production.paper = subject.settings.paper;
    production.coverPage = subject.settings.coverPage;
    production.includeImages = subject.settings.includeImages;

    const std::uint64_t token = ++m_token;
    m_task = Task{std::stop_source{}, token, false};
    m_progress = 0.0;
    emit stateChanged();

    ProductionHooks hooks;
    hooks.stop = m_task->stop.get_token();
    // Through the tasks' inbox, which outlives the work; a stale or cancelled production's
    // progress stays out.
    hooks.progress = [this, tasks = &m_tasks, token](double fraction) {
        tasks->deliverLater([this, token, fraction] {
            if (m_task && m_task->token == token && !m_task->cancelled && m_progress != fraction) {
                m_progress = fraction;
                emit stateChanged();
            }
        });
    };
    // Nothing when stopped: a cancelled production is no failure.
    auto work = [history = History(*subject.reader, subject.names, subject.history),
                 production = std::move(production),
                 folder = QFile::encodeName(trimmed(m_form.folder)).toStdString(),
                 hooks = std::move(hooks)]() -> std::optional<ProductionReport> {
        try {
            return writeProduction(history, production, folder, hooks);
        } catch (const PDFExport::Cancelled&) {
            return std::nullopt;
        }
    };
    auto deliver = [this, token](Outcome<std::optional<ProductionReport>> outcome) {
        if (!m_task || m_task->token != token) {
            return;
        }
        m_task.reset();
        m_progress.reset();
        if (!outcome.value) {
            m_problem = tr("The production couldn’t be made: %1").arg(outcome.error);
        } else if (*outcome.value) {
            m_finished = finishedText(**outcome.value);
            m_producedFolder = QFile::decodeName((*outcome.value)->folder.c_str());
        }
        emit stateChanged();
    };
    m_tasks.run(std::move(work), std::move(deliver), true);
}

void ProduceFlow::cancel() {
    if (!m_task || m_task->cancelled) {
        return;
    }
    // Producing stays on until the work has stopped and taken its hidden folder away, so a new
    // production can't start beside the one still winding down.
    m_task->stop.request_stop();
    m_task->cancelled = true;
    m_progress.reset();
    emit stateChanged();
}

void ProduceFlow::showInFolder() {
    if (m_producedFolder) {
        m_platform.revealFile(*m_producedFolder);
    }
}

void ProduceFlow::clearOutcome() {
    if (!m_problem && !m_finished) {
        return;
    }
    m_problem.reset();
    m_finished.reset();
    emit stateChanged();
}

QString ProduceFlow::finishedText(const ProductionReport& report) {
    if (report.documents.empty()) {
        return tr("Produced no documents: the conversations have no messages in these dates.");
    }
    const QString first = QString::fromStdString(report.documents.front().pdf.beginBates);
    const QString last = QString::fromStdString(report.documents.back().pdf.endBates);
    if (report.documents.size() == 1) {
        return first == last ? tr("Produced 1 document, %1").arg(first)
                             : tr("Produced 1 document, %1 to %2").arg(first, last);
    }
    return tr("Produced %1 documents, %2 to %3")
        .arg(QLocale().toString(static_cast<qulonglong>(report.documents.size())), first, last);
}

} // namespace scrivly
