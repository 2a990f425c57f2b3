#pragma once

#include <QObject>
#include <QSettings>
#include <QString>
#include <QStringList>

#include <memory>

class QApplication;
class QDialog;
class QWidget;
class QTemporaryDir;
class QTranslator;

namespace scrivly {

class AppModel;
class DesktopPlatform;
class MainWindow;
class Updater;

// The running application: its options, language, settings store, platform, model, update
// check and main window, made in that order and dropped in reverse.
class ScrivlyApp : public QObject {
    Q_OBJECT

public:
    struct Options {
        bool sample = false;  // read the made-up sample history
        QString databasePath; // read this Messages database
        QString backupPath;   // open this iPhone backup (asking for its password)
        QString language;     // a locale name such as "de"; empty for the system's
        bool updateChecks = true;
        // Save a picture of the main window (and the sheet named by screenshotSheet: "welcome",
        // "export", "preview", or "produce" with every conversation produced into a scratch
        // folder) once the conversation screenshotConversation shows, then quit. "settings" and
        // "help" picture that window alone.
        QString screenshot;
        QString screenshotSheet;
        QString screenshotConversation;
        bool screenshotNothingSelected = false; // --conversation "" : the empty transcript pane
    };

    // Reads the options from the command line; exits with a message on a wrong one.
    static Options parse(const QStringList& arguments);
    // Loads Scrivly's (and Qt's) texts for the locale; returns whether Scrivly's were found.
    static bool installTranslations(const QLocale& locale, QObject* owner);

    // store may be null for the user's own preferences.
    ScrivlyApp(Options options, std::unique_ptr<QSettings> store = nullptr);
    ~ScrivlyApp() override;

    // Shows the main window and starts reading.
    void start();

    AppModel& model() const { return *m_model; }
    MainWindow& window() const { return *m_window; }
    Updater& updater() const { return *m_updater; }

private:
    void takeScreenshot();
    // The settings or help window a screenshot is of, once open; null for the main window.
    QWidget* otherWindow() const;
    // The sheet a picture shows: the password sheet, or the model's.
    QDialog* shownSheet() const;

    Options m_options;
    std::unique_ptr<QTemporaryDir> m_scratch; // a private preferences store for screenshots
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<DesktopPlatform> m_platform;
    std::unique_ptr<AppModel> m_model;
    std::unique_ptr<Updater> m_updater;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace scrivly
