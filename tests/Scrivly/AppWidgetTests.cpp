// The desktop application's screens driven offscreen over the sample history, which is written
// once for the whole run (it takes seconds).

#include "Scrivly/model/AppModel.h"
#include "Scrivly/screens/AboutPanel.h"
#include "Scrivly/screens/AccessView.h"
#include "Scrivly/screens/AppConfig.h"
#include "Scrivly/screens/BackupList.h"
#include "Scrivly/screens/ConversationList.h"
#include "Scrivly/screens/DesktopPlatform.h"
#include "Scrivly/screens/ExportSheet.h"
#include "Scrivly/screens/HelpView.h"
#include "Scrivly/screens/MainView.h"
#include "Scrivly/screens/MainWindow.h"
#include "Scrivly/screens/PasswordSheet.h"
#include "Scrivly/screens/PreviewSheet.h"
#include "Scrivly/screens/ProduceSheet.h"
#include "Scrivly/screens/ScrivlyApp.h"
#include "Scrivly/screens/SettingsView.h"
#include "Scrivly/screens/StatusView.h"
#include "Scrivly/screens/TranscriptModel.h"
#include "Scrivly/screens/TranscriptView.h"
#include "Scrivly/screens/Updater.h"
#include "Scrivly/screens/WelcomeView.h"
#include "ScrivlyKit/history/Sources.h"
#include "TestSupport.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPdfDocument>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTextDocument>
#include <QToolButton>

#include <memory>

using namespace scrivly;
using scrivly::testing::Harness;
using scrivly::testing::writeHistory;

namespace {

constexpr int kWait = 90000;

QPushButton* buttonNamed(QWidget* parent, const QString& text) {
    for (QPushButton* button : parent->findChildren<QPushButton*>()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

// The visible labels' texts, rich text read as the plain text it shows.
QStringList shownTexts(QWidget* parent) {
    QStringList texts;
    for (QLabel* label : parent->findChildren<QLabel*>()) {
        if (!label->isVisibleTo(parent) || label->text().isEmpty()) {
            continue;
        }
        QTextDocument document;
        document.setHtml(label->text());
        texts.append(label->textFormat() == Qt::RichText || (label->textFormat() == Qt::AutoText &&
                                                             Qt::mightBeRichText(label->text()))
                         ? document.toPlainText()
                         : label->text());
    }
    return texts;
}

bool showsText(QWidget* parent, const QString& text) {
    return shownTexts(parent).contains(text);
}

QStringList buttonTexts(QWidget* parent) {
    QStringList texts;
    for (QPushButton* button : parent->findChildren<QPushButton*>()) {
        if (button->isVisibleTo(parent)) {
            texts.append(button->text());
        }
    }
    return texts;
}

} // namespace

class AppWidgetTests : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<ScrivlyApp> m_app;

    AppModel& model() { return m_app->model(); }
    MainWindow& window() { return m_app->window(); }
    MainView& mainView() { return *window().mainView(); }

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        auto store = std::make_unique<QSettings>(m_dir.filePath(QStringLiteral("settings.ini")),
                                                 QSettings::IniFormat);
        store->setValue(QLatin1String(AppConfig::kAppcastKey),
                        QUrl::fromLocalFile(m_dir.filePath(QStringLiteral("appcast.xml"))));
        ScrivlyApp::Options options;
        options.sample = true;
        options.updateChecks = false;
        m_app = std::make_unique<ScrivlyApp>(options, std::move(store));
        m_app->start();
    }

    void cleanupTestCase() { m_app.reset(); }

    void welcomeSheetWaitsForTheWindowToSettle() {
        // First launch: the model asks for the welcome sheet at once, the window shows it later.
        QCOMPARE(model().sheet(), AppModel::Sheet::welcome);
        QVERIFY(!window().settled());
        QVERIFY(!window().sheetDialog());
        QTRY_VERIFY_WITH_TIMEOUT(qobject_cast<WelcomeView*>(window().sheetDialog()), 5000);
        QVERIFY(window().sheetDialog()->isVisible());
        buttonNamed(window().sheetDialog(), QStringLiteral("Get Started"))->click();
        QVERIFY(model().settings().onboardingDone);
        QVERIFY(!model().sheet());
        QTRY_VERIFY(!window().sheetDialog());
    }

    void sampleHistoryOpensToTheMainScreen() {
        QTRY_COMPARE_WITH_TIMEOUT(model().phase(), AppModel::Phase::ready, kWait);
        QCOMPARE(window().currentScreen(), window().mainView());
        QVERIFY(!model().conversations().empty());
        QCOMPARE(static_cast<std::size_t>(mainView().list()->model()->rowCount()),
                 model().conversations().size());
        QVERIFY(showsText(mainView().transcript(), QStringLiteral("Choose a Conversation")));
    }

    void searchAndKeyboardReachTheList() {
        QLineEdit* search = mainView().searchField();
        QTest::keyClicks(search, QStringLiteral("zzqx no such person"));
        QCOMPARE(mainView().list()->model()->rowCount(), 0);
        QVERIFY(mainView().list()->isVisibleTo(&window()));
        QVERIFY(!showsText(&mainView(), QStringLiteral("No Conversations")));
        search->clear();
        QVERIFY(mainView().list()->model()->rowCount() > 0);

        // The keyboard reaches the list, then the transcript.
        model().select(std::nullopt);
        search->setFocus();
        QTest::keyClick(search, Qt::Key_Down);
        // The window's focus widget: offscreen windows are not always made active.
        QCOMPARE(window().focusWidget(), mainView().list());
        QCOMPARE(model().selection(), std::optional(model().conversations().front().id));
        QTRY_VERIFY_WITH_TIMEOUT(model().transcript() && !model().loadingMessages(), kWait);
        QTest::keyClick(mainView().list(), Qt::Key_Return);
        QListView* transcript = mainView().transcript()->list();
        QCOMPARE(window().focusWidget(), transcript);
        QVERIFY(transcript->currentIndex().isValid());
    }

    void exportCommandsNeedASelection() {
        model().select(std::nullopt);
        QVERIFY(!window().exportAction()->isEnabled());
        QVERIFY(!window().previewAction()->isEnabled());
        QVERIFY(!window().exportCSVAction()->isEnabled());
        QVERIFY(!mainView().exportButton()->isEnabled());
        QVERIFY(!buttonNamed(mainView().transcript(), QStringLiteral("Export"))->isEnabled());
        QVERIFY(window().reloadAction()->isEnabled());

        QTest::keyClick(&window(), Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(!model().sheet());

        model().select(model().conversations().front().id);
        QVERIFY(window().exportAction()->isEnabled());
        QVERIFY(mainView().exportButton()->isEnabled());
    }

    void transcriptShowsDaysPhotosAndReactions() {
        // The sample's group has a photo with reactions.
        for (const Conversation& conversation : model().conversations()) {
            if (conversation.title == "Garden Club") {
                model().select(conversation.id);
            }
        }
        QTRY_VERIFY_WITH_TIMEOUT(model().transcript() && !model().loadingMessages(), kWait);
        TranscriptView* view = mainView().transcript();
        QTRY_VERIFY(view->list()->isVisibleTo(&window()));
        TranscriptModel& rows = view->rows();
        QCOMPARE(rows.row(0).kind, TranscriptModel::RowKind::day);
        bool reactions = false;
        QString photoPath;
        for (int i = 0; i < rows.rowCount(); ++i) {
            if (rows.row(i).kind != TranscriptModel::RowKind::entry) {
                continue;
            }
            const auto& entry = rows.entry(rows.row(i).entry);
            reactions = reactions || !entry.reactions.isEmpty();
            for (const auto& attachment : entry.attachments) {
                if (attachment.kind == TranscriptModel::Shown::Kind::photo) {
                    photoPath = attachment.path;
                }
            }
        }
        QVERIFY(reactions);
        QVERIFY(!photoPath.isEmpty());
        // Photos are read in the background once asked for, then kept.
        QImage image;
        rows.photo(photoPath, &image);
        QTRY_VERIFY_WITH_TIMEOUT(!rows.photosPending(), kWait);
        QCOMPARE(rows.photo(photoPath, &image), TranscriptModel::PhotoState::loaded);
        QVERIFY(image.width() <= TranscriptModel::kPhotoPixels);
        QVERIFY(!image.isNull());
    }

    void cancellingThePDFLeavesTheExportSheetUsable() {
        QVERIFY(model().selection());
        window().exportAction()->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(qobject_cast<ExportSheet*>(window().sheetDialog()), 5000);
        auto* sheet = qobject_cast<ExportSheet*>(window().sheetDialog());
#ifndef Q_OS_MACOS
        QVERIFY(buttonNamed(sheet, QStringLiteral("Show in Folder"))); // no Finder here
#endif
        QPushButton* preview = buttonNamed(sheet, QStringLiteral("Preview"));
        // No events run between the two clicks, so the rendering cannot finish first.
        preview->click();
        QVERIFY(model().exporting());
        QVERIFY(sheet->progressRow()->isVisibleTo(sheet));
        QVERIFY(!sheet->exportPDFButton()->isEnabled());
        sheet->cancelButton()->click();
        QTest::qWait(300);
        QCOMPARE(window().sheetDialog(), sheet);
        QVERIFY(sheet->isVisible());
        QVERIFY(!sheet->progressRow()->isVisibleTo(sheet));
        QVERIFY(sheet->exportPDFButton()->isEnabled());
        QVERIFY(preview->isEnabled());

        // Still usable: the preview now renders and replaces the sheet.
        preview->click();
        QTRY_VERIFY_WITH_TIMEOUT(qobject_cast<PreviewSheet*>(window().sheetDialog()), kWait);
        auto* shown = qobject_cast<PreviewSheet*>(window().sheetDialog());
        QTRY_VERIFY_WITH_TIMEOUT(shown->document()->pageCount() > 0, 10000);
        buttonNamed(shown, QStringLiteral("Back"))->click();
        QTRY_VERIFY(qobject_cast<ExportSheet*>(window().sheetDialog()));
        buttonNamed(window().sheetDialog(), QStringLiteral("Close"))->click();
        QVERIFY(!model().sheet());
        QTRY_VERIFY(!window().sheetDialog());
    }

    void severalConversationsAreProducedFromTheSheet() {
        QListView* list = mainView().list();
        const auto click = [list](int row, Qt::KeyboardModifiers modifiers = {}) {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers,
                              list->visualRect(list->model()->index(row, 0)).center());
        };
        const auto& all = model().conversations();
        click(0);
        click(2, Qt::ControlModifier);
        QCOMPARE(model().chosen(), (std::vector<std::string>{all[0].id, all[2].id}));
        QVERIFY(mainView().severalChosen()->isVisibleTo(&mainView()));
        QVERIFY(showsText(mainView().severalChosen(), QStringLiteral("2 Conversations Selected")));
        QVERIFY(!window().exportAction()->isEnabled());
        list->setFocus();
        window().selectAllAction()->trigger();
        QCOMPARE(model().chosen().size(), all.size());

        // Offscreen windows are not always active, so the command is triggered, not its keys.
        QCOMPARE(window().produceAction()->shortcut(),
                 QKeySequence(QStringLiteral("Ctrl+Shift+P")));
        window().produceAction()->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(qobject_cast<ProduceSheet*>(window().sheetDialog()), 5000);
        auto* sheet = qobject_cast<ProduceSheet*>(window().sheetDialog());
        QTRY_VERIFY(sheet->isVisible());
        QStringList boxes;
        for (QCheckBox* box : sheet->findChildren<QCheckBox*>()) {
            boxes.append(box->text());
        }
        QCOMPARE(boxes, (QStringList{QStringLiteral("One document per day"),
                                     QStringLiteral("Split files larger than"),
                                     QStringLiteral("Include original attachments"),
                                     QStringLiteral("Include spreadsheets"),
                                     QStringLiteral("Include a load file for review platforms")}));
        for (const char* label :
             {"Number prefix", "First number", "Custodian", "Folder", "All messages"}) {
            QVERIFY2(showsText(sheet, QString::fromUtf8(label)), label);
        }
        QVERIFY(shownTexts(sheet).filter(QStringLiteral("A production is ")).size() == 1);
        QVERIFY(showsText(sheet, QStringLiteral("%1 selected: %2, %3, %4 and %5 more")
                                     .arg(all.size())
                                     .arg(QString::fromStdString(all[0].title),
                                          QString::fromStdString(all[1].title),
                                          QString::fromStdString(all[2].title))
                                     .arg(all.size() - 3)));

        // Made into a new folder, then refused over the same one, now full.
        QTest::keyClicks(sheet->prefixField(), QStringLiteral("SMITH-"));
        const QString folder = m_dir.filePath(QStringLiteral("Production"));
        sheet->folderField()->clear();
        QTest::keyClicks(sheet->folderField(), folder);
        for (int attempt = 0; attempt < 2; ++attempt) {
            sheet->produceButton()->click();
            QTRY_VERIFY_WITH_TIMEOUT(!model().production().producing(), kWait);
            QCOMPARE(sheet->doneRow()->isVisibleTo(sheet), attempt == 0);
            QCOMPARE(sheet->problemLabel()->isVisibleTo(sheet), attempt == 1);
            if (attempt == 0) {
                QVERIFY(sheet->doneLabel()->text().startsWith(
                    QStringLiteral("Produced %1 documents, SMITH-000001 to SMITH-")
                        .arg(all.size())));
            }
        }
        QVERIFY(sheet->problemLabel()->text().contains(QStringLiteral("isn’t empty")));
        QVERIFY(QFileInfo::exists(folder + QStringLiteral("/SMITH-000001.pdf")));
        QVERIFY(buttonNamed(sheet, QStringLiteral("Show in Folder")));
        buttonNamed(sheet, QStringLiteral("Close"))->click();
        QTRY_VERIFY(!window().sheetDialog());

        // One conversation again: its transcript, and Export.
        click(1);
        QCOMPARE(model().chosen(), std::vector<std::string>{all[1].id});
        QVERIFY(mainView().transcript()->isVisibleTo(&mainView()));
        QVERIFY(window().exportAction()->isEnabled());
    }

    void updateCheckReportsTheFeed() {
        const QString feed = m_dir.filePath(QStringLiteral("appcast.xml"));
        const auto writeFeed = [&feed](const QString& version) {
            QFile file(feed);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(QStringLiteral(
                           "<?xml version=\"1.0\"?><rss version=\"2.0\" xmlns:sparkle="
                           "\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>"
                           "<item><title>Old</title><enclosure url=\"https://scrivly.example/old\" "
                           "sparkle:version=\"0.0.3\"/></item>"
                           "<item><title>New</title><link>https://scrivly.example/new</link>"
                           "<sparkle:shortVersionString>%1</sparkle:shortVersionString></item>"
                           "</channel></rss>")
                           .arg(version)
                           .toUtf8());
        };
        Updater& updater = m_app->updater();
        QSignalSpy finished(&updater, &Updater::finished);

        writeFeed(AppConfig::version());
        window().checkForUpdates();
        QVERIFY(updater.checking());
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 10000);
        QVERIFY(!updater.checking());
        QCOMPARE(finished.at(0).at(0).value<Updater::Outcome>(), Updater::Outcome::upToDate);
        QMessageBox* box = window().findChild<QMessageBox*>();
        QVERIFY(box);
        QCOMPARE(box->text(), QStringLiteral("You’re up to date"));
        QCOMPARE(box->informativeText(),
                 QStringLiteral("Scrivly %1 is the newest version. Scrivly checks for updates on "
                                "its own and will let you know when there’s a new one.")
                     .arg(AppConfig::version()));
        box->close();

        writeFeed(QStringLiteral("99.1"));
        updater.checkInBackground();
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, 10000);
        QCOMPARE(finished.at(1).at(0).value<Updater::Outcome>(), Updater::Outcome::updateAvailable);
        QCOMPARE(finished.at(1).at(1).value<Updater::Release>().link,
                 QUrl(QStringLiteral("https://scrivly.example/new")));
        QTRY_VERIFY(window().findChildren<QMessageBox*>().size() <= 1);
        for (QMessageBox* open : window().findChildren<QMessageBox*>()) {
            open->close();
        }

        QFile::remove(feed);
        updater.checkInBackground(); // a quiet check says nothing when it fails
        window().checkForUpdates();
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 3, 10000);
        QCOMPARE(finished.at(2).at(0).value<Updater::Outcome>(), Updater::Outcome::failed);
        QTRY_VERIFY(window().findChild<QMessageBox*>());
        box = window().findChild<QMessageBox*>();
        QCOMPARE(box->text(), QStringLiteral("Couldn’t check for updates"));
        QCOMPARE(box->informativeText(),
                 QStringLiteral("Check your internet connection and try again. Scrivly also "
                                "checks on its own about once a day."));
        box->close();
    }

    // The phase screens of a history other than the sample's, each in a window of its own.
    void phaseScreensLeadToTheMainScreen() {
        Harness harness;
        harness.platform.accessAnswer = DatabaseAccess::denied;
        MainWindow other(harness.model(), m_app->updater());
        harness.model().start();
        auto* access = qobject_cast<AccessView*>(other.currentScreen());
        QVERIFY(access);
        const QStringList texts = shownTexts(access);
        QVERIFY(texts.contains(QStringLiteral("Let Scrivly read your Messages history")));
#ifdef Q_OS_MACOS
        for (const char* text : {"Step 1", "Step 2", "Step 3"}) {
            QVERIFY2(texts.contains(QString::fromUtf8(text)), text);
        }
        // No check button: coming back to the application checks again.
        QVERIFY(!buttonTexts(access).contains(QStringLiteral("Check Again")));
        harness.platform.accessAnswer.reset();
        harness.model().applicationBecameActive();
#else
        // No Full Disk Access here: the file's own permissions are in the way.
        QVERIFY(!texts.contains(QStringLiteral("Step 1")));
        QVERIFY(texts.filter(QStringLiteral("macOS")).isEmpty());
        QCOMPARE(buttonTexts(access), QStringList{QStringLiteral("Check Again")});
        harness.platform.accessAnswer.reset();
        buttonNamed(access, QStringLiteral("Check Again"))->click();
#endif
        QCOMPARE(harness.model().phase(), AppModel::Phase::noHistory);
        QWidget* screen = other.currentScreen();
        QVERIFY(qobject_cast<StatusView*>(screen));
#ifdef Q_OS_MACOS
        QCOMPARE(buttonTexts(screen), QStringList{QStringLiteral("Check Again")});
#else
        // Nothing here is "this Mac": Linux reads a copied history or a backup.
        QVERIFY(showsText(screen, QStringLiteral("No Messages history to read")));
        QVERIFY(showsText(screen, QStringLiteral("Scrivly reads a Messages history copied from a "
                                                 "Mac (chat.db with its Attachments folder, from "
                                                 "Library/Messages) or an iPhone backup. Open one, "
                                                 "or try the sample history.")));
        QCOMPARE(buttonTexts(screen), (QStringList{QStringLiteral("Check Again"),
                                                   QStringLiteral("Open a Messages Database…"),
                                                   QStringLiteral("Open an iPhone Backup…"),
                                                   QStringLiteral("Try the Sample History")}));
#endif
        writeHistory(harness.standardDatabase(), {{"+15550001111", {{"Hi", Date::now()}}}});
        buttonNamed(screen, QStringLiteral("Check Again"))->click();
        QTRY_VERIFY_WITH_TIMEOUT(other.currentScreen() == other.mainView(), kWait);
        // Only a chosen database file has an attachments folder to choose.
        QVERIFY(!other.chooseAttachmentsAction()->isEnabled());

        const QString file = harness.path(QStringLiteral("broken.db"));
        {
            QFile broken(file);
            QVERIFY(broken.open(QIODevice::WriteOnly));
            broken.write(QByteArray(4096, 'x'));
        }
        harness.model().openDatabaseFile(file);
        QTRY_COMPARE_WITH_TIMEOUT(harness.model().phase(), AppModel::Phase::failed, kWait);
        QVERIFY(other.chooseAttachmentsAction()->isEnabled());
        screen = other.currentScreen();
        QVERIFY(showsText(screen, QStringLiteral("Messages couldn’t be read")));
        QVERIFY(showsText(screen, harness.model().failureMessage()));
        // A file that fails is not read again at the next start, and the screen offers ways out.
        QVERIFY(!harness.store->contains(QLatin1String(AppModel::kDatabasePathKey)));
        QCOMPARE(buttonTexts(screen), (QStringList{QStringLiteral("Try Again"),
                                                   QStringLiteral("Open a Messages Database…"),
                                                   QStringLiteral("Try the Sample History")}));
        // The whole message shows, wrapped over lines, however long it is.
        const QString longMessage =
            harness.model().failureMessage() +
            QStringLiteral(" The database may be damaged, or it is a file of another kind. "
                           "Choose another copy of chat.db, or try the sample history.");
        other.resize(760, 560);
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&other));
        auto* failure = qobject_cast<StatusView*>(screen);
        failure->setText(longMessage);
        QLabel* shown = nullptr;
        for (QLabel* label : failure->findChildren<QLabel*>()) {
            if (label->text() == longMessage) {
                shown = label;
            }
        }
        QVERIFY(shown);
        QTRY_VERIFY(shown->isVisible());
        QVERIFY(shown->wordWrap());
        const QFontMetrics metrics(shown->font());
        const QRect needed = metrics.boundingRect(QRect(0, 0, shown->width(), 10000),
                                                  Qt::TextWordWrap | Qt::AlignCenter, longMessage);
        QTRY_VERIFY2(
            shown->height() >= needed.height(),
            qPrintable(QStringLiteral("%1 < %2").arg(shown->height()).arg(needed.height())));
        QVERIFY(needed.height() > metrics.lineSpacing()); // it did need more than one line
        QVERIFY(shown->width() < failure->width());
        other.hide();

        writeHistory(file, {{"+15550001111", {{"Hi", Date::now()}}}});
        buttonNamed(screen, QStringLiteral("Try Again"))->click();
        QTRY_VERIFY_WITH_TIMEOUT(other.currentScreen() == other.mainView(), kWait);
        // Read once, it is the one to read at the next start.
        QCOMPARE(harness.store->value(QLatin1String(AppModel::kDatabasePathKey)).toString(), file);
    }

    void problemAlertShowsTheProblemUntilDismissed() {
        Harness harness;
        writeHistory(harness.standardDatabase(), {{"+15550001111", {{"Hi", Date::now()}}}});
        harness.platform.destination = harness.path(QStringLiteral("no such folder/out.csv"));
        MainWindow other(harness.model(), m_app->updater());
        other.show();
        harness.model().start();
        QVERIFY(harness.open("+1 (555) 000-1111"));
        harness.model().exportCSV();
        QVERIFY(harness.model().problem());
        QTRY_VERIFY(other.alert() && other.alert()->isVisible());
        QMessageBox* alert = other.alert();
        QCOMPARE(alert->text(), QStringLiteral("Something went wrong"));
        QCOMPARE(alert->informativeText(), *harness.model().problem());
        QCOMPARE(alert->buttons().size(), 1);
        alert->buttons().at(0)->click();
        QVERIFY(!harness.model().problem());
        QTRY_VERIFY(!other.alert());
    }

    void settingsHelpAndAboutWindows() {
        window().showSettings();
        SettingsView* settings = window().settingsWindow();
        QVERIFY(settings && settings->isVisible());
        QVERIFY(buttonTexts(settings).contains(QStringLiteral("Check for Updates…")));
        // The sample brings its own names, so there is nothing to choose.
        QCOMPARE(model().contacts(), AppModel::ContactsAccess::granted);
        QPushButton* contacts = buttonNamed(settings, QStringLiteral("Open Contacts Settings"));
        QVERIFY(contacts);
#ifndef Q_OS_MACOS
        QVERIFY(!contacts->isEnabled());
#endif
        buttonNamed(settings, QStringLiteral("Show the Welcome Screen Again"))->click();
        QCOMPARE(model().sheet(), AppModel::Sheet::welcome);
        model().finishOnboarding();
        QTRY_VERIFY(!window().sheetDialog());
        settings->close();

        window().showHelp();
        HelpView* help = window().helpWindow();
        QVERIFY(help && help->isVisible());
        QCOMPARE(help->selectedTopic(), std::optional(QStringLiteral("start")));
        help->findChild<QListWidget*>()->setCurrentRow(2);
        QCOMPARE(help->selectedTopic(), std::optional(QStringLiteral("missing")));
        QVERIFY(help->findChild<QTextBrowser*>()->toPlainText().startsWith(
            QStringLiteral("Missing messages or photos")));

        help->showTopic(QStringLiteral("support"));
        QCOMPARE(help->findChild<QTextBrowser*>()->toPlainText(),
                 QStringLiteral("Support\nQuestions, ideas or a problem? Email %1; a person reads "
                                "every message.")
                     .arg(QLatin1String(AppConfig::kSupportAddress)));
        help->close();

        window().showAbout();
        auto* about = window().findChild<AboutPanel*>();
        QVERIFY(about && about->isVisible());
        QVERIFY(shownTexts(about).contains(QStringLiteral("Version %1").arg(AppConfig::version())));
        buttonNamed(about, QStringLiteral("OK"))->click();
        QTRY_VERIFY(!window().findChild<AboutPanel*>());
    }

    void germanLocaleShowsGermanTexts() {
        const QLocale english = QLocale();
        QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
        QObject owner;
        QVERIFY(ScrivlyApp::installTranslations(QLocale(), &owner));

        MainWindow german(model(), m_app->updater());
        QStringList menus;
        for (QAction* action : german.menuBar()->actions()) {
            menus.append(action->text());
        }
#ifdef Q_OS_MACOS
        const QString fileMenu = QStringLiteral("&Ablage");
#else
        const QString fileMenu = QStringLiteral("&Datei"); // "Ablage" is the Mac's own word
#endif
        QCOMPARE(menus,
                 (QStringList{fileMenu, QStringLiteral("&Bearbeiten"), QStringLiteral("&Hilfe")}));
        QCOMPARE(german.exportAction()->text(), QStringLiteral("Exportieren …"));
        QCOMPARE(german.produceAction()->text(), QStringLiteral("Produktion erstellen …"));
        QCOMPARE(german.mainView()->searchField()->placeholderText(),
                 QStringLiteral("Namen oder Nummern suchen"));
        // Exports follow the application's language: their texts and their dates.
        QCOMPARE(model().exportStrings().pageOf(2, 7), std::string("Seite 2 von 7"));
        QCOMPARE(DesktopPlatform().locale(), std::string("de_DE"));

        QLocale::setDefault(english);
    }

    // Last: it leaves the application reading the backup.
    void encryptedBackupOpensThroughThePasswordSheet() {
        const QString device = QString::fromStdString(Sources::sampleBackup(
            m_dir.filePath(QStringLiteral("Backups")).toStdString(),
            Date::fromUnixSeconds(1763900000), std::string("hunter22"), true));
        window().backupOpener()->openFolder(m_dir.filePath(QStringLiteral("Backups")));
        QTRY_VERIFY_WITH_TIMEOUT(window().backupSheets()->passwordSheet(), kWait);
        PasswordSheet* sheet = window().backupSheets()->passwordSheet();
        QTRY_VERIFY(sheet->isVisible());
        QVERIFY(!sheet->openButton()->isEnabled());
        QVERIFY(!sheet->progressLine()->isVisibleTo(sheet));

        QTest::keyClicks(sheet->passwordField(), QStringLiteral("nope"));
        sheet->openButton()->click();
        QVERIFY(sheet->passwordField()->text().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(sheet->errorLabel()->isVisibleTo(sheet), kWait);

        QTest::keyClicks(sheet->passwordField(), QStringLiteral("hunter22"));
        sheet->openButton()->click();
        QTRY_VERIFY_WITH_TIMEOUT(!window().backupSheets()->passwordSheet(), kWait);
        QTRY_COMPARE_WITH_TIMEOUT(model().databaseSource(), AppModel::DatabaseSource::backup,
                                  kWait);
        QTRY_COMPARE_WITH_TIMEOUT(model().phase(), AppModel::Phase::ready, kWait);
        QCOMPARE(window().currentScreen(), window().mainView());
        QTRY_COMPARE(static_cast<std::size_t>(mainView().list()->model()->rowCount()),
                     model().conversations().size());
        QCOMPARE(model().rememberedBackup(), device);
    }
};

int main(int argc, char** argv) {
    // Folders of its own, so nothing of the user's is read or left behind.
    QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CACHE_HOME", (home.path() + QStringLiteral("/cache")).toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toUtf8());
    QApplication application(argc, argv);
    AppWidgetTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "AppWidgetTests.moc"
