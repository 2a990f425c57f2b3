// Opening iPhone backups in the model: the password question, the list of several, cancelling,
// remembering the folder but never the password, and reading the backup as any other history.

#include "Scrivly/model/AppModel.h"
#include "Scrivly/model/BackupOpener.h"
#include "ScrivlyKit/history/Sources.h"
#include "TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

using namespace scrivly;
using namespace scrivly::testing;
using Step = BackupOpener::Step;

namespace {

const std::string kPassword = "correct horse 42";

// The sample written as a backup into folder, encrypted with kPassword unless plain; answers the
// device folder.
QString writeBackup(const QString& folder, bool plain = false) {
    return QString::fromStdString(
        Sources::sampleBackup(folder.toStdString(), Date::fromUnixSeconds(1763900000),
                              plain ? std::nullopt : std::optional<std::string>(kPassword), true));
}

bool folderHolds(const QString& folder, const QByteArray& needle) {
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly) && file.readAll().contains(needle)) {
            return true;
        }
    }
    return false;
}

} // namespace

class BackupTests : public QObject {
    Q_OBJECT

private slots:
    void encryptedBackupAsksUntilThePasswordIsRightThenReadsLikeAnyHistory() {
        Harness harness;
        const QString device = writeBackup(harness.path(QStringLiteral("Backups")));
        AppModel& model = harness.model();
        model.start();
        BackupOpener opener(model);
        QSignalSpy steps(&opener, &BackupOpener::stepChanged);

        // The folder above the device folder names it as well.
        opener.openFolder(harness.path(QStringLiteral("Backups")));
        QTRY_COMPARE_WITH_TIMEOUT(opener.step(), Step::password, kWait);
        QCOMPARE(QString::fromStdString(opener.backup()->path), device);
        QVERIFY(opener.error().isEmpty());

        opener.submitPassword(QStringLiteral("wrong"));
        QCOMPARE(opener.step(), Step::opening);
        QTRY_COMPARE_WITH_TIMEOUT(opener.step(), Step::password, kWait);
        QVERIFY(opener.error().contains(QStringLiteral("password")));
        QVERIFY(model.databaseSource() != AppModel::DatabaseSource::backup);

        opener.submitPassword(QString::fromStdString(kPassword));
        SCRIVLY_WAIT_FOR_PHASE(model, AppModel::Phase::ready);
        QCOMPARE(opener.step(), Step::idle);
        QVERIFY(opener.error().isEmpty());
        QCOMPARE(model.databaseSource(), AppModel::DatabaseSource::backup);
        QVERIFY(steps.count() >= 5);

        // Names come from the phone's own address book; photos read from decrypted copies.
        QVERIFY(harness.open("Garden Club"));
        bool photo = false;
        QString copied;
        for (const auto& entry : model.transcript()->entries) {
            for (const auto& attachment : entry.attachments) {
                if (attachment.path) {
                    QVERIFY2(QFileInfo::exists(QString::fromStdString(*attachment.path)),
                             attachment.path->c_str());
                    QVERIFY(!attachment.path->starts_with(device.toStdString()));
                    copied = QString::fromStdString(*attachment.path);
                    photo = true;
                }
            }
        }
        QVERIFY(photo);
        const std::string& source = model.exportStrings().sourceText;
        QVERIFY2(source.find("iPhone backup") != std::string::npos, source.c_str());
        QVERIFY2(source.find("iOS") != std::string::npos, source.c_str());

        // The folder is remembered, the password nowhere.
        harness.store->sync();
        QCOMPARE(model.rememberedBackup(), device);
        QVERIFY(!folderHolds(harness.path(QString()), QByteArray::fromStdString(kPassword)));

        // Another history: the decrypted copies go, and the cover no longer names the backup.
        model.openSample();
        QVERIFY(!QFileInfo::exists(copied));
        QVERIFY(model.exportStrings().sourceText.find("iPhone") == std::string::npos);
    }

    void rememberedBackupAsksForItsPasswordAgain() {
        Harness harness;
        const QString device = writeBackup(harness.path(QStringLiteral("B")));
        harness.store->setValue(QLatin1String(AppModel::kBackupPathKey), device);
        AppModel& model = harness.model();
        model.start();
        BackupOpener opener(model);
        opener.offerRemembered();
        QTRY_COMPARE_WITH_TIMEOUT(opener.step(), Step::password, kWait);

        // Cancelling the question leaves the model as it was; a database file forgets the
        // backup.
        opener.cancel();
        QCOMPARE(opener.step(), Step::idle);
        QVERIFY(model.databaseSource() != AppModel::DatabaseSource::backup);
        writeHistory(harness.path(QStringLiteral("chat.db")),
                     {{"+15550001111", {{"Hi", Date::fromUnixSeconds(1710000000)}}}});
        model.openDatabaseFile(harness.path(QStringLiteral("chat.db")));
        QVERIFY(model.rememberedBackup().isEmpty());
    }

    void cancelledOpeningNeverSwitchesTheHistory() {
        Harness harness;
        writeBackup(harness.path(QStringLiteral("B")));
        AppModel& model = harness.model();
        model.start();
        BackupOpener opener(model);
        QSignalSpy sources(&model, &AppModel::databaseSourceChanged);
        opener.openFolder(harness.path(QStringLiteral("B")));
        QTRY_COMPARE_WITH_TIMEOUT(opener.step(), Step::password, kWait);

        opener.submitPassword(QString::fromStdString(kPassword));
        opener.cancel();
        QCOMPARE(opener.step(), Step::password); // asks again, no error
        QVERIFY(opener.error().isEmpty());
        QTest::qWait(500); // time for the dropped derivation to finish
        QCOMPARE(sources.count(), 0);
        QCOMPARE(opener.step(), Step::password);
    }

    void severalBackupsAreListedAndAPlainOneOpensWithoutAPassword() {
        Harness harness;
        const QString parent = harness.path(QStringLiteral("Several"));
        const QString encrypted = writeBackup(harness.path(QStringLiteral("E")));
        QVERIFY(QDir().mkpath(parent));
        QVERIFY(QDir().rename(encrypted, parent + QStringLiteral("/aaa-encrypted")));
        const QString plain = writeBackup(parent, true);
        AppModel& model = harness.model();
        model.start();
        BackupOpener opener(model);

        opener.openFolder(parent);
        QTRY_COMPARE_WITH_TIMEOUT(opener.step(), Step::choosing, kWait);
        QCOMPARE(opener.backups().size(), std::size_t{2});
        std::size_t plainRow = 0;
        for (std::size_t row = 0; row < opener.backups().size(); ++row) {
            QVERIFY(!opener.backups()[row].deviceName.empty());
            if (!opener.backups()[row].encrypted) {
                plainRow = row;
            }
        }
        QCOMPARE(QString::fromStdString(opener.backups()[plainRow].path), plain);
        opener.choose(plainRow);
        SCRIVLY_WAIT_FOR_PHASE(model, AppModel::Phase::ready);
        QCOMPARE(model.databaseSource(), AppModel::DatabaseSource::backup);
        QVERIFY(!model.conversations().empty());
    }

    void folderWithoutBackupSaysSo() {
        Harness harness;
        QVERIFY(QDir().mkpath(harness.path(QStringLiteral("Empty"))));
        AppModel& model = harness.model();
        BackupOpener opener(model);
        QSignalSpy errors(&opener, &BackupOpener::errorChanged);
        opener.openFolder(harness.path(QStringLiteral("Empty")));
        QTRY_COMPARE_WITH_TIMEOUT(errors.count(), 1, kWait);
        QCOMPARE(opener.step(), Step::idle);
        QVERIFY(opener.error().contains(QStringLiteral("no iPhone backup")));
    }
};

int runBackupTests(int argc, char** argv) {
    BackupTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "BackupTests.moc"
