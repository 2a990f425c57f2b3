#pragma once

// moc reads none of the library headers: it needs nothing from them and trips over the
// standard library headers they pull in.
#ifndef Q_MOC_RUN
#include "Scrivly/model/AppModel.h"
#endif
#include "Scrivly/screens/Updater.h"

#include <QDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>

#include <optional>

class QAction;
class QStackedWidget;

namespace scrivly {

class AccessView;
class BackupOpener;
class BackupSheets;
class HelpView;
class MainView;
class SettingsView;
class StatusView;

// The main window: the screen of the model's phase, the menus and their shortcuts, the sheet the
// model asks for (once the window has settled) and the problem alert.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // Sheets wait this long after the window first appears.
    static constexpr int kSettleMilliseconds = 350;

    MainWindow(AppModel& model, Updater& updater, QWidget* parent = nullptr);
    ~MainWindow() override;

    // What the tests and screenshots look at.
    QWidget* currentScreen() const;
    MainView* mainView() const { return m_main; }
    QDialog* sheetDialog() const { return m_sheetDialog; }
    QMessageBox* alert() const { return m_alert; }
    // The help and settings windows once opened; null before.
    HelpView* helpWindow() const { return m_help; }
    SettingsView* settingsWindow() const { return m_settings; }
    BackupOpener* backupOpener() const { return m_backupOpener; }
    BackupSheets* backupSheets() const { return m_backupSheets; }
    QAction* exportAction() const { return m_export; }
    QAction* previewAction() const { return m_preview; }
    QAction* exportCSVAction() const { return m_exportCSV; }
    QAction* reloadAction() const { return m_reload; }
    QAction* chooseAttachmentsAction() const { return m_chooseAttachments; }
    QAction* produceAction() const { return m_produce; }
    QAction* selectAllAction() const { return m_selectAll; }
    bool settled() const { return m_settled; }

public slots:
    void showHelp();
    void showSettings();
    void showAbout();
    void checkForUpdates();
    void openDatabase();
    // Asks for a backup's folder, then opens it (see BackupOpener).
    void openBackup();
    // For a chosen database file whose attachments aren't where its home would have them.
    void chooseAttachmentsFolder();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void updatePhase();
    void updateCommands();
    void presentSheet();
    void closeSheetDialog();
    void presentProblem();
    void showUpdateOutcome(Updater::Outcome outcome, const Updater::Release& release);
    void preview();

    AppModel& m_model;
    Updater& m_updater;
    QStackedWidget* m_stack;
    AccessView* m_access;
    StatusView* m_noHistory;
    StatusView* m_progress;
    StatusView* m_failure;
    MainView* m_main;
    BackupOpener* m_backupOpener;
    BackupSheets* m_backupSheets;

    QAction* m_export = nullptr;
    QAction* m_preview = nullptr;
    QAction* m_exportCSV = nullptr;
    QAction* m_reload = nullptr;
    QAction* m_chooseAttachments = nullptr;
    QAction* m_produce = nullptr;
    QAction* m_selectAll = nullptr;

    QPointer<HelpView> m_help;
    QPointer<SettingsView> m_settings;
    QPointer<QDialog> m_sheetDialog;
    std::optional<AppModel::Sheet> m_shownSheet;
    QPointer<QMessageBox> m_alert;
    QPointer<QMessageBox> m_updateAlert;
    bool m_settled = false;
    bool m_settling = false;
};

} // namespace scrivly
