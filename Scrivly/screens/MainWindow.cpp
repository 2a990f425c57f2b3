#include "Scrivly/screens/MainWindow.h"

#include "Scrivly/model/PlatformTexts.h"
#include "Scrivly/screens/AboutPanel.h"
#include "Scrivly/screens/AccessView.h"
#include "Scrivly/screens/AppConfig.h"
#include "Scrivly/screens/BackupList.h"
#include "Scrivly/screens/ExportSheet.h"
#include "Scrivly/screens/HelpView.h"
#include "Scrivly/screens/MainView.h"
#include "Scrivly/screens/PreviewSheet.h"
#include "Scrivly/screens/ProduceSheet.h"
#include "Scrivly/screens/SettingsView.h"
#include "Scrivly/screens/StatusView.h"
#include "Scrivly/screens/Symbols.h"
#include "Scrivly/screens/TranscriptView.h"
#include "Scrivly/screens/WelcomeView.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>

namespace scrivly {

namespace {

// Marks the failure screen's buttons that only a chosen database file offers.
constexpr const char* kChosenFileOnly = "chosenFileOnly";

} // namespace

MainWindow::MainWindow(AppModel& model, Updater& updater, QWidget* parent)
    : QMainWindow(parent), m_model(model), m_updater(updater), m_stack(new QStackedWidget(this)),
      m_access(new AccessView(model, this)),
      m_noHistory(
          new StatusView(QStringLiteral("bubble.left.and.exclamationmark.bubble.right"), this)),
      m_progress(new StatusView(QString(), this)),
      m_failure(new StatusView(QStringLiteral("exclamationmark.triangle"), this)),
      m_main(new MainView(model, this)), m_backupOpener(new BackupOpener(model, this)),
      m_backupSheets(new BackupSheets(*m_backupOpener, this)) {
    setObjectName(QStringLiteral("main"));
    setWindowTitle(QLatin1String(AppConfig::kDisplayName));
    setWindowIcon(Symbols::appIcon());
    resize(1000, 660);
    setMinimumSize(720, 460);

    m_noHistory->setTitle(PlatformTexts::noHistoryTitle());
    m_noHistory->setText(PlatformTexts::noHistoryText());
    connect(m_noHistory->addButton(tr("Check Again")), &QPushButton::clicked, &model,
            &AppModel::reload);
#ifndef Q_OS_MACOS
    // Linux keeps no Messages history of its own: offer a copied database or the sample.
    connect(m_noHistory->addButton(tr("Open a Messages Database…")), &QPushButton::clicked, this,
            &MainWindow::openDatabase);
    connect(m_noHistory->addButton(tr("Open an iPhone Backup…")), &QPushButton::clicked, this,
            &MainWindow::openBackup);
    connect(m_noHistory->addButton(tr("Try the Sample History")), &QPushButton::clicked, &model,
            &AppModel::openSample);
#endif
    m_progress->setTitle(QString());
    m_progress->setText(tr("Reading your Messages history…"));
    m_failure->setTitle(tr("Messages couldn’t be read"));
    connect(m_failure->addButton(tr("Try Again")), &QPushButton::clicked, &model,
            &AppModel::reload);
    // A chosen file that can't be read must not leave "Try Again" as the only way on.
    QPushButton* another = m_failure->addButton(tr("Open a Messages Database…"));
    connect(another, &QPushButton::clicked, this, &MainWindow::openDatabase);
    QPushButton* sample = m_failure->addButton(tr("Try the Sample History"));
    connect(sample, &QPushButton::clicked, &model, &AppModel::openSample);
    for (QPushButton* button : {another, sample}) {
        button->setProperty(kChosenFileOnly, true);
    }

    for (QWidget* screen : {static_cast<QWidget*>(m_access), static_cast<QWidget*>(m_noHistory),
                            static_cast<QWidget*>(m_progress), static_cast<QWidget*>(m_failure),
                            static_cast<QWidget*>(m_main)}) {
        m_stack->addWidget(screen);
    }
    setCentralWidget(m_stack);
    buildMenus();

    connect(&model, &AppModel::phaseChanged, this, &MainWindow::updatePhase);
    connect(&model, &AppModel::selectionChanged, this, &MainWindow::updateCommands);
    connect(&model, &AppModel::chosenChanged, this, &MainWindow::updateCommands);
    connect(&model, &AppModel::conversationsChanged, this, &MainWindow::updateCommands);
    connect(&model, &AppModel::sheetChanged, this, &MainWindow::presentSheet);
    connect(&model, &AppModel::problemChanged, this, &MainWindow::presentProblem);
    connect(&updater, &Updater::finished, this, &MainWindow::showUpdateOutcome);
    updatePhase();
}

MainWindow::~MainWindow() {
    closeSheetDialog();
}

void MainWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(PlatformTexts::fileMenu());
#ifndef Q_OS_MACOS
    QAction* open = file->addAction(tr("Open Messages Database…"), this, &MainWindow::openDatabase);
    open->setShortcut(QKeySequence::Open);
#endif
    file->addAction(tr("Open iPhone Backup…"), this, &MainWindow::openBackup);
    // A copied database keeps its photos wherever the copy put them.
    m_chooseAttachments = file->addAction(tr("Choose Attachments Folder…"), this,
                                          &MainWindow::chooseAttachmentsFolder);
    const auto chosenFileOnly = [this] {
        m_chooseAttachments->setEnabled(m_model.databaseSource() == AppModel::DatabaseSource::file);
    };
    connect(&m_model, &AppModel::databaseSourceChanged, this, chosenFileOnly);
    chosenFileOnly();
    file->addSeparator();
    m_export = file->addAction(Symbols::icon(QStringLiteral("square.and.arrow.up")), tr("Export…"),
                               &m_model, &AppModel::showExport);
    m_export->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    m_preview = file->addAction(tr("Preview PDF"), this, &MainWindow::preview);
    m_exportCSV = file->addAction(tr("Export as CSV…"), &m_model, &AppModel::exportCSV);
    m_produce = file->addAction(tr("Produce…"), &m_model, &AppModel::showProduce);
    m_produce->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P));
    file->addSeparator();
    m_reload = file->addAction(Symbols::icon(QStringLiteral("arrow.clockwise")),
                               tr("Reload Messages"), &m_model, &AppModel::reload);
    m_reload->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    file->addSeparator();
    QAction* quit = file->addAction(tr("Quit"), qApp, &QApplication::quit);
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    QAction* find = edit->addAction(tr("Find"), this, [this] {
        if (m_stack->currentWidget() == m_main) {
            m_main->searchField()->setFocus(Qt::ShortcutFocusReason);
            m_main->searchField()->selectAll();
        }
    });
    find->setShortcut(QKeySequence::Find);
    // A text field keeps the shortcut for its own text; elsewhere it chooses every conversation
    // the list shows.
    m_selectAll = edit->addAction(tr("Select All"), this, [this] {
        if (auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget())) {
            field->selectAll();
        } else if (m_stack->currentWidget() == m_main) {
            m_main->list()->selectAll();
        }
    });
    m_selectAll->setShortcut(QKeySequence::SelectAll);
    edit->addSeparator();
    QAction* settings = edit->addAction(tr("Settings…"), this, &MainWindow::showSettings);
    settings->setShortcut(QKeySequence::Preferences);
    settings->setMenuRole(QAction::PreferencesRole);

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    QAction* helpItem = help->addAction(tr("Scrivly Help"), this, &MainWindow::showHelp);
    helpItem->setShortcut(QKeySequence::HelpContents);
    help->addSeparator();
    // On macOS the roles move these two into the application menu, About first.
    QAction* about = help->addAction(tr("About Scrivly"), this, &MainWindow::showAbout);
    about->setMenuRole(QAction::AboutRole);
    QAction* updates =
        help->addAction(tr("Check for Updates…"), this, &MainWindow::checkForUpdates);
    updates->setMenuRole(QAction::ApplicationSpecificRole);
    updateCommands();
}

QWidget* MainWindow::currentScreen() const {
    return m_stack->currentWidget();
}

void MainWindow::updatePhase() {
    switch (m_model.phase()) {
    case AppModel::Phase::needsAccess:
        m_stack->setCurrentWidget(m_access);
        break;
    case AppModel::Phase::noHistory:
        m_stack->setCurrentWidget(m_noHistory);
        break;
    case AppModel::Phase::checking:
    case AppModel::Phase::loading:
        m_stack->setCurrentWidget(m_progress);
        break;
    case AppModel::Phase::failed:
        m_failure->setText(m_model.failureMessage());
        for (QPushButton* button : m_failure->findChildren<QPushButton*>()) {
            if (button->property(kChosenFileOnly).toBool()) {
                button->setVisible(m_model.databaseSource() == AppModel::DatabaseSource::file);
            }
        }
        m_stack->setCurrentWidget(m_failure);
        break;
    case AppModel::Phase::ready:
        if (m_stack->currentWidget() != m_main) {
            m_stack->setCurrentWidget(m_main);
            m_main->searchField()->setFocus(Qt::OtherFocusReason);
        }
        break;
    }
    updateCommands();
}

void MainWindow::updateCommands() {
    const bool ready = m_model.phase() == AppModel::Phase::ready;
    // With several chosen, the one on show is not what the user is pointing at.
    const bool selected = ready && m_model.selection().has_value() && m_model.chosen().size() <= 1;
    for (QAction* action : {m_export, m_preview, m_exportCSV}) {
        action->setEnabled(selected);
    }
    m_produce->setEnabled(ready && !m_model.conversations().empty());
    m_selectAll->setEnabled(ready);
}

void MainWindow::preview() {
    // The export sheet shows the rendering's progress; the preview replaces it when done.
    if (!m_model.sheet()) {
        m_model.showExport();
    }
    m_model.showPreview();
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!m_settled && !m_settling) {
        m_settling = true;
        QTimer::singleShot(kSettleMilliseconds, this, [this] {
            m_settled = true;
            presentSheet();
            presentProblem();
        });
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // The other windows belong to this one; without it they would linger with no menus.
    for (QWidget* window : {static_cast<QWidget*>(m_help), static_cast<QWidget*>(m_settings)}) {
        if (window) {
            window->close();
        }
    }
    QMainWindow::closeEvent(event);
}

void MainWindow::presentSheet() {
    if (!m_settled) {
        return;
    }
    const std::optional<AppModel::Sheet> wanted = m_model.sheet();
    if (wanted == m_shownSheet && (m_sheetDialog || !wanted)) {
        return;
    }
    closeSheetDialog();
    m_shownSheet = wanted;
    if (!wanted) {
        return;
    }
    QDialog* dialog = nullptr;
    switch (*wanted) {
    case AppModel::Sheet::welcome:
        dialog = new WelcomeView(
            m_model, [this] { showHelp(); }, this);
        break;
    case AppModel::Sheet::exportPanel:
        dialog = new ExportSheet(m_model, this);
        break;
    case AppModel::Sheet::produce:
        dialog = new ProduceSheet(m_model, this);
        break;
    case AppModel::Sheet::preview: {
        dialog = new PreviewSheet(m_model, this);
        const QSize area = size();
        dialog->resize(std::min(area.width() - 80, 820), area.height() - 40);
        break;
    }
    }
    dialog->setWindowModality(Qt::WindowModal);
    // Escape or the window's close button closes the sheet as "Close" does.
    connect(dialog, &QDialog::rejected, &m_model, &AppModel::dismissSheet);
    m_sheetDialog = dialog;
    dialog->open();
}

void MainWindow::closeSheetDialog() {
    if (QDialog* dialog = m_sheetDialog) {
        m_sheetDialog = nullptr;
        disconnect(dialog, &QDialog::rejected, &m_model, &AppModel::dismissSheet);
        dialog->hide();
        dialog->deleteLater();
    }
}

void MainWindow::presentProblem() {
    if (!m_settled) {
        return;
    }
    const std::optional<QString>& problem = m_model.problem();
    if (!problem) {
        if (m_alert) {
            m_alert->hide();
            m_alert->deleteLater();
        }
        return;
    }
    if (m_alert) {
        m_alert->setInformativeText(*problem);
        return;
    }
    QWidget* over = m_sheetDialog ? static_cast<QWidget*>(m_sheetDialog) : this;
    auto* alert = new QMessageBox(QMessageBox::Warning, tr("Something went wrong"),
                                  tr("Something went wrong"), QMessageBox::NoButton, over);
    alert->setInformativeText(*problem);
    alert->addButton(tr("OK"), QMessageBox::AcceptRole);
    alert->setWindowModality(Qt::WindowModal);
    connect(alert, &QMessageBox::finished, &m_model, &AppModel::dismissProblem);
    connect(alert, &QMessageBox::finished, alert, &QObject::deleteLater);
    m_alert = alert;
    alert->open();
}

void MainWindow::showHelp() {
    if (!m_help) {
        m_help = new HelpView(this);
    }
    m_help->show();
    m_help->raise();
    m_help->activateWindow();
}

void MainWindow::showSettings() {
    if (!m_settings) {
        m_settings = new SettingsView(
            m_model, [this] { checkForUpdates(); }, [this] { openDatabase(); }, this);
    }
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
}

void MainWindow::showAbout() {
    auto* about = new AboutPanel(this);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->open();
}

void MainWindow::checkForUpdates() {
    m_updater.checkForUpdates();
}

void MainWindow::openDatabase() {
    const QString path = QFileDialog::getOpenFileName(
        QApplication::activeWindow() ? QApplication::activeWindow() : this,
        tr("Open a Messages Database"), QDir::homePath(),
        tr("Messages databases (chat.db sms.db *.db)") + QStringLiteral(";;") +
            tr("All files (*)"));
    if (!path.isEmpty()) {
        m_model.openDatabaseFile(path);
    }
}

void MainWindow::chooseAttachmentsFolder() {
    const QString folder = QFileDialog::getExistingDirectory(
        QApplication::activeWindow() ? QApplication::activeWindow() : this,
        tr("Choose the folder that holds Library/Messages/Attachments, or the Attachments folder"),
        QDir::homePath());
    if (!folder.isEmpty()) {
        m_model.chooseAttachmentsFolder(folder);
    }
}

void MainWindow::openBackup() {
    const QString folder = QFileDialog::getExistingDirectory(
        QApplication::activeWindow() ? QApplication::activeWindow() : this,
        tr("Open an iPhone Backup"), QDir::homePath());
    if (!folder.isEmpty()) {
        m_backupOpener->openFolder(folder);
    }
}

void MainWindow::showUpdateOutcome(Updater::Outcome outcome, const Updater::Release& release) {
    const QString name = QLatin1String(AppConfig::kDisplayName);
    if (m_updateAlert) {
        m_updateAlert->close();
    }
    auto* box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIconPixmap(Symbols::appIcon().pixmap(64, 64));
    switch (outcome) {
    case Updater::Outcome::upToDate:
        box->setText(tr("You’re up to date"));
        box->setInformativeText(name + QLatin1Char(' ') + AppConfig::version() +
                                tr(" is the newest version. ") + name +
                                tr(" checks for updates on its own and will let you know when "
                                   "there’s a new one."));
        box->addButton(tr("OK"), QMessageBox::AcceptRole);
        break;
    case Updater::Outcome::failed:
        box->setText(tr("Couldn’t check for updates"));
        box->setInformativeText(tr("Check your internet connection and try again. ") + name +
                                tr(" also checks on its own about once a day."));
        box->addButton(tr("OK"), QMessageBox::AcceptRole);
        break;
    case Updater::Outcome::updateAvailable: {
        box->setText(tr("A new version of %1 is available").arg(name));
        box->setInformativeText(
            tr("%1 %2 is out; you have %3.").arg(name, release.shortVersion, AppConfig::version()));
        QPushButton* download = box->addButton(tr("Download"), QMessageBox::AcceptRole);
        box->addButton(tr("Later"), QMessageBox::RejectRole);
        const QUrl link =
            release.link.isValid() ? release.link : QUrl(QLatin1String(AppConfig::kWebsite));
        connect(download, &QPushButton::clicked, this, [link] { QDesktopServices::openUrl(link); });
        break;
    }
    }
    box->setWindowTitle(tr("Check for Updates"));
    m_updateAlert = box;
    box->open();
}

} // namespace scrivly
