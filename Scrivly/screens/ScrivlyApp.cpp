#include "Scrivly/screens/ScrivlyApp.h"

#include "Scrivly/model/AppModel.h"
#include "Scrivly/screens/AppConfig.h"
#include "Scrivly/screens/BackupList.h"
#include "Scrivly/screens/DesktopPlatform.h"
#include "Scrivly/screens/HelpView.h"
#include "Scrivly/screens/MainView.h"
#include "Scrivly/screens/MainWindow.h"
#include "Scrivly/screens/PasswordSheet.h"
#include "Scrivly/screens/PreviewSheet.h"
#include "Scrivly/screens/SettingsView.h"
#include "Scrivly/screens/Symbols.h"
#include "Scrivly/screens/TranscriptModel.h"
#include "Scrivly/screens/TranscriptView.h"
#include "Scrivly/screens/Updater.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QDialog>
#include <QElapsedTimer>
#include <QLibraryInfo>
#include <QListView>
#include <QPainter>
#include <QPdfDocument>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QTranslator>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace scrivly {

namespace {

constexpr const char* kLastUpdateCheckKey = "lastUpdateCheck";
constexpr qint64 kUpdateIntervalSeconds = 24 * 60 * 60;
constexpr qint64 kScreenshotPatienceMs = 30000;

// Runs step every 100 ms until it returns true; gives up after a minute.
void poll(QObject* context, std::function<bool()> step, int triesLeft = 600) {
    if (step() || triesLeft == 0) {
        return;
    }
    QTimer::singleShot(100, context, [context, step = std::move(step), triesLeft] {
        poll(context, step, triesLeft - 1);
    });
}

// A wrong command line ends the program with one line on standard error and status 2.
[[noreturn]] void usageError(const QString& message) {
    std::fputs(qPrintable(QStringLiteral("scrivly: %1\n").arg(message)), stderr);
    std::exit(2);
}

} // namespace

ScrivlyApp::Options ScrivlyApp::parse(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QCoreApplication::translate(
        "scrivly::ScrivlyApp", "Export Messages conversations to clean, dated PDFs"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption sample(
        QStringLiteral("sample"),
        QCoreApplication::translate("scrivly::ScrivlyApp", "Read the made-up sample history."));
    const QCommandLineOption database(
        QStringLiteral("database"),
        QCoreApplication::translate("scrivly::ScrivlyApp", "Read the Messages database at PATH."),
        QStringLiteral("PATH"));
    const QCommandLineOption backup(
        QStringLiteral("backup"),
        QCoreApplication::translate("scrivly::ScrivlyApp", "Open the iPhone backup in FOLDER."),
        QStringLiteral("FOLDER"));
    const QCommandLineOption language(
        QStringLiteral("language"),
        QCoreApplication::translate("scrivly::ScrivlyApp",
                                    "Show Scrivly in this language (for example de)."),
        QStringLiteral("CODE"));
    const QCommandLineOption noUpdates(
        QStringLiteral("no-update-check"),
        QCoreApplication::translate("scrivly::ScrivlyApp", "Don’t look for updates on your own."));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QCoreApplication::translate("scrivly::ScrivlyApp",
                                    "Save a picture of the window to FILE and quit."),
        QStringLiteral("FILE"));
    const QCommandLineOption sheet(
        QStringLiteral("sheet"),
        QCoreApplication::translate("scrivly::ScrivlyApp",
                                    "With --screenshot: the sheet or window to show (welcome, "
                                    "export, preview, produce, settings, help, password)."),
        QStringLiteral("NAME"));
    const QCommandLineOption conversation(
        QStringLiteral("conversation"),
        QCoreApplication::translate("scrivly::ScrivlyApp",
                                    "With --screenshot: the conversation to show."),
        QStringLiteral("TITLE"));
    parser.addOptions(
        {sample, database, backup, language, noUpdates, screenshot, sheet, conversation});
    parser.process(arguments);

    Options options;
    options.sample = parser.isSet(sample);
    options.databasePath = parser.value(database);
    options.backupPath = parser.value(backup);
    options.language = parser.value(language);
    options.updateChecks = !parser.isSet(noUpdates) && !parser.isSet(screenshot);
    options.screenshot = parser.value(screenshot);
    options.screenshotSheet = parser.value(sheet);
    options.screenshotConversation = parser.value(conversation);
    // Given but empty, it asks for a picture with nothing selected.
    options.screenshotNothingSelected =
        parser.isSet(conversation) && options.screenshotConversation.isEmpty();
    const QStringList sheets = {QStringLiteral("welcome"),  QStringLiteral("export"),
                                QStringLiteral("preview"),  QStringLiteral("produce"),
                                QStringLiteral("settings"), QStringLiteral("help"),
                                QStringLiteral("password")};
    if (parser.isSet(sheet) && !sheets.contains(options.screenshotSheet)) {
        usageError(QCoreApplication::translate("scrivly::ScrivlyApp",
                                               "There is no sheet or window called “%1”.")
                       .arg(options.screenshotSheet));
    }
    return options;
}

bool ScrivlyApp::installTranslations(const QLocale& locale, QObject* owner) {
    auto* qt = new QTranslator(owner);
    if (qt->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(qt);
    }
    auto* own = new QTranslator(owner);
    if (!own->load(locale, QStringLiteral("scrivly"), QStringLiteral("_"),
                   QStringLiteral(":/i18n"))) {
        return false;
    }
    QCoreApplication::installTranslator(own);
    return true;
}

ScrivlyApp::ScrivlyApp(Options options, std::unique_ptr<QSettings> store)
    : m_options(std::move(options)), m_store(std::move(store)) {
    const QLocale asked(m_options.language);
    if (!m_options.language.isEmpty() && asked.language() != QLocale::C) {
        QLocale::setDefault(asked);
    } else if (QLocale().language() == QLocale::C) {
        // A session without a language (LANG unset) gets readable English dates, not C's.
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }
    const bool translated = installTranslations(QLocale(), this);
    // English is the source language, so only another one can be missing.
    if (!m_options.language.isEmpty() && !translated && asked.language() != QLocale::English) {
        std::fputs(qPrintable(QStringLiteral("scrivly: no translation for “%1”; showing "
                                             "English.\n")
                                  .arg(m_options.language)),
                   stderr);
    }
    Symbols::useFallbackTheme();
    QGuiApplication::setWindowIcon(Symbols::appIcon());

    if (!m_store && !m_options.screenshot.isEmpty()) {
        // Pictures show a first launch, whatever this machine's own settings say.
        m_scratch = std::make_unique<QTemporaryDir>();
        m_store = std::make_unique<QSettings>(m_scratch->filePath(QStringLiteral("settings.ini")),
                                              QSettings::IniFormat);
        AppSettings settings;
        settings.onboardingDone = m_options.screenshotSheet != QLatin1String("welcome");
        AppSettings::save(*m_store, settings);
    }
    if (!m_store) {
        m_store = std::make_unique<QSettings>();
    }
    m_platform = std::make_unique<DesktopPlatform>(m_store.get());
    m_model = std::make_unique<AppModel>(*m_platform, *m_store);
    m_updater = std::make_unique<Updater>(AppConfig::appcastURL(*m_store), AppConfig::version());
    m_window = std::make_unique<MainWindow>(*m_model, *m_updater);
    m_platform->setWindow(m_window.get());

    connect(qApp, &QGuiApplication::applicationStateChanged, m_model.get(),
            [model = m_model.get()](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive) {
                    model->applicationBecameActive();
                }
            });
    // The scheduled check: about once a day, quietly unless there is something new.
    connect(m_updater.get(), &Updater::finished, this, [this] {
        m_store->setValue(QLatin1String(kLastUpdateCheckKey), QDateTime::currentSecsSinceEpoch());
    });
}

ScrivlyApp::~ScrivlyApp() {
    // The window reads the model until it goes.
    m_window.reset();
}

void ScrivlyApp::start() {
    m_window->show();
    if (!m_model->settings().onboardingDone) {
        m_model->showWelcome();
    }
    m_model->start();
    if (m_options.sample) {
        m_model->openSample();
    } else if (!m_options.databasePath.isEmpty()) {
        m_model->openDatabaseFile(m_options.databasePath);
    }
    if (!m_options.backupPath.isEmpty()) {
        m_window->backupOpener()->openFolder(m_options.backupPath);
    } else if (!m_options.sample && m_options.databasePath.isEmpty()) {
        m_window->backupOpener()->offerRemembered();
    }
    if (m_options.updateChecks) {
        const qint64 last = m_store->value(QLatin1String(kLastUpdateCheckKey)).toLongLong();
        if (QDateTime::currentSecsSinceEpoch() - last > kUpdateIntervalSeconds) {
            QTimer::singleShot(10000, m_updater.get(), &Updater::checkInBackground);
        }
    }
    if (!m_options.screenshot.isEmpty()) {
        takeScreenshot();
    }
}

QWidget* ScrivlyApp::otherWindow() const {
    if (m_options.screenshotSheet == QLatin1String("settings")) {
        return m_window->settingsWindow();
    }
    if (m_options.screenshotSheet == QLatin1String("help")) {
        return m_window->helpWindow();
    }
    return nullptr;
}

QDialog* ScrivlyApp::shownSheet() const {
    if (m_options.screenshotSheet == QLatin1String("password")) {
        return m_window->backupSheets()->passwordSheet();
    }
    return m_window->sheetDialog();
}

void ScrivlyApp::takeScreenshot() {
    // Each step waits for what the one before started: the list, the transcript and its photos,
    // then the sheet (and the PDF in the preview).
    enum class Step { list, transcript, photos, sheet, shown, done };
    auto step = std::make_shared<Step>(Step::list);
    auto settle = std::make_shared<int>(0);
    auto started = std::make_shared<QElapsedTimer>();
    started->start();
    poll(this, [this, step, settle, started]() -> bool {
        AppModel& model = *m_model;
        TranscriptView* transcript = m_window->mainView()->transcript();
        // A picture is always taken: whatever shows by then is drawn as it is.
        if (started->elapsed() > kScreenshotPatienceMs) {
            *step = Step::done;
        }
        switch (*step) {
        case Step::list: {
            if (!m_window->settled()) {
                return false;
            }
            // A history that can't be read has nothing more to wait for: its screen is the picture.
            const bool stuck = model.phase() == AppModel::Phase::failed ||
                               ((model.phase() == AppModel::Phase::noHistory ||
                                 model.phase() == AppModel::Phase::needsAccess) &&
                                m_options.screenshotSheet.isEmpty());
            if (stuck) {
                *step = Step::done;
                return false;
            }
            if (model.phase() != AppModel::Phase::ready) {
                return false;
            }
            if (model.sheet() == AppModel::Sheet::welcome &&
                m_options.screenshotSheet != QLatin1String("welcome")) {
                model.finishOnboarding();
            }
            if (m_options.screenshotNothingSelected) {
                *step = Step::photos;
                return false;
            }
            const auto conversations = model.conversations();
            const auto chosen = std::find_if(
                conversations.begin(), conversations.end(), [this](const Conversation& c) {
                    return m_options.screenshotConversation.isEmpty() ||
                           QString::fromStdString(c.title) == m_options.screenshotConversation;
                });
            if (chosen == conversations.end()) {
                if (!m_options.screenshotConversation.isEmpty()) {
                    std::fputs(qPrintable(QStringLiteral("scrivly: no conversation is titled "
                                                         "“%1”.\n")
                                              .arg(m_options.screenshotConversation)),
                               stderr);
                    QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(2); });
                    return true;
                }
                *step = Step::photos; // an empty history: picture the empty list
                return false;
            }
            model.select(chosen->id);
            *step = Step::transcript;
            return false;
        }
        case Step::transcript:
            if (!model.transcript() || model.loadingMessages()) {
                return false;
            }
            transcript->list()->grab(); // painting asks for the photos
            *step = Step::photos;
            return false;
        case Step::photos:
            if (model.transcript() && transcript->rows().photosPending()) {
                return false;
            }
            transcript->list()->viewport()->update();
            if (m_options.screenshotSheet == QLatin1String("export")) {
                model.showExport();
            } else if (m_options.screenshotSheet == QLatin1String("preview")) {
                model.showExport();
                model.showPreview();
            } else if (m_options.screenshotSheet == QLatin1String("produce")) {
                // Every conversation, produced into a scratch folder: the picture shows the
                // outcome line, and nothing is written among the user's files.
                m_window->mainView()->list()->selectAll();
                if (!m_scratch) {
                    m_scratch = std::make_unique<QTemporaryDir>();
                }
                ProduceForm form = model.production().form();
                form.batesPrefix = QStringLiteral("SMITH-");
                form.spreadsheets = true;
                form.natives = true;
                form.loadFile = true;
                form.folder = m_scratch->filePath(QStringLiteral("Production"));
                model.production().setForm(form);
                model.showProduce();
            } else if (m_options.screenshotSheet == QLatin1String("settings")) {
                m_window->showSettings();
            } else if (m_options.screenshotSheet == QLatin1String("help")) {
                m_window->showHelp();
            }
            *step = Step::sheet;
            return false;
        case Step::sheet: {
            if (QWidget* other = otherWindow()) {
                if (!other->isVisible()) {
                    return false;
                }
                *step = Step::shown;
                return false;
            }
            const bool wantsSheet = !m_options.screenshotSheet.isEmpty();
            QDialog* sheet = shownSheet();
            if (wantsSheet && (!sheet || !sheet->isVisible())) {
                return false;
            }
            if (m_options.screenshotSheet == QLatin1String("produce")) {
                ProduceFlow& production = model.production();
                if (!production.finished() && !production.producing() && !production.problem()) {
                    model.produce();
                }
                if (production.producing()) {
                    return false;
                }
            }
            if (m_options.screenshotSheet == QLatin1String("preview")) {
                auto* preview = qobject_cast<PreviewSheet*>(sheet);
                if (!preview || preview->document()->pageCount() == 0) {
                    return false;
                }
            }
            *step = Step::shown;
            return false;
        }
        case Step::shown:
            // Pages of the preview are drawn in the background; give them a moment.
            if (++*settle < 15) {
                return false;
            }
            *step = Step::done;
            [[fallthrough]];
        case Step::done: {
            if (QWidget* other = otherWindow()) {
                other->grab().save(m_options.screenshot);
                QTimer::singleShot(0, qApp, &QApplication::quit);
                return true;
            }
            QPixmap picture = m_window->grab();
            if (QDialog* sheet = shownSheet()) {
                QPainter painter(&picture);
                painter.fillRect(picture.rect(), QColor(0, 0, 0, 60));
                const QPoint at = sheet->geometry().topLeft() - m_window->geometry().topLeft();
                const QRect frame(at, sheet->size());
                for (int i = 1; i <= 6; ++i) {
                    painter.fillRect(frame.adjusted(-i, -i + 2, i, i + 2), QColor(0, 0, 0, 10));
                }
                painter.drawPixmap(at, sheet->grab());
                painter.setPen(QColor(0, 0, 0, 70));
                painter.drawRect(frame.adjusted(-1, -1, 0, 0));
            }
            picture.save(m_options.screenshot);
            QTimer::singleShot(0, qApp, &QApplication::quit);
            return true;
        }
        }
        return true;
    });
}

} // namespace scrivly
