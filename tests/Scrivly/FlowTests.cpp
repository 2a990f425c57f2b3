#include "Scrivly/model/AppModel.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/database/SQLiteError.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

using namespace scrivly;
using namespace scrivly::testing;
using Phase = AppModel::Phase;

namespace {

void writeOnePerson(const QString& path, const std::string& address) {
    writeHistory(path, {{address, {{"Hello", Date::fromUnixSeconds(1710000000)}}}});
}

std::vector<std::string> firstAddresses(const AppModel& model) {
    std::vector<std::string> addresses;
    for (const Conversation& conversation : model.conversations()) {
        addresses.push_back(conversation.addresses.at(0));
    }
    return addresses;
}

} // namespace

class FlowTests : public QObject {
    Q_OBJECT

private slots:
    void deniedAccessAndMissingHistoryAreCheckedAgainOnActivation() {
        Harness harness;
        harness.platform.accessAnswer = DatabaseAccess::denied;
        AppModel& model = harness.model();
        QList<Phase> phases;
        connect(&model, &AppModel::phaseChanged, this, [&] { phases.append(model.phase()); });

        model.start();
        model.applicationBecameActive();
        QCOMPARE(model.phase(), Phase::needsAccess);
        harness.platform.accessAnswer.reset(); // access was turned on in the meantime
        model.applicationBecameActive();
        QCOMPARE(model.phase(), Phase::noHistory);
        writeOnePerson(harness.standardDatabase(), "+15550001111");
        model.applicationBecameActive();
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        QCOMPARE(phases, (QList<Phase>{Phase::needsAccess, Phase::noHistory, Phase::loading,
                                       Phase::ready}));
        QCOMPARE(firstAddresses(model), std::vector<std::string>{"+15550001111"});

        model.applicationBecameActive(); // not in an access phase: nothing happens
        QCOMPARE(phases.size(), 4);
    }

    void readErrorFailsWithItsDescription() {
        Harness harness;
        const QString file = harness.path(QStringLiteral("other.db"));
        SQLiteConnection(file.toStdString(), false, false).execute("CREATE TABLE notes (x);");
        AppModel& model = harness.model();
        model.openDatabaseFile(file);
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::failed);
        const auto expected =
            SQLiteError::query("This isn’t a Messages database (no message table).");
        QCOMPARE(model.failureMessage(), QString::fromUtf8(expected.what()));
    }

    void onlyTheNewestLoadReachesTheList() {
        Harness harness;
        const QString first = harness.path(QStringLiteral("first.db"));
        const QString second = harness.path(QStringLiteral("second.db"));
        writeOnePerson(first, "+15550001111");
        writeOnePerson(second, "+15550002222");
        AppModel& model = harness.model();
        QSignalSpy conversations(&model, &AppModel::conversationsChanged);

        model.openDatabaseFile(first);
        model.openDatabaseFile(second);
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        QTest::qWait(300); // room for the first read to come back late
        QCOMPARE(conversations.count(), 1);
        QCOMPARE(firstAddresses(model), std::vector<std::string>{"+15550002222"});
    }

    void chosenFileIsRememberedWithItsAttachments_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QStringList>("folders"); // made before the file is opened
        QTest::addColumn<QString>("chosen");      // the attachments folder chosen; empty: none
        QTest::addColumn<QString>("expected");    // where the photo is; empty: the user's home
        const QString photo = QStringLiteral("Library/Messages/Attachments/ab/IMG_1.jpeg");
        QTest::newRow("in a home folder")
            << "Users/ann/Library/Messages/chat.db" << QStringList() << ""
            << "Users/ann/" + photo;
        QTest::newRow("an iPhone backup's")
            << "backup/3d/3d0d7e5fb2ce288813306e4d46363" << QStringList() << ""
            << "";
        QTest::newRow("a copy with Attachments beside it")
            << "copy/chat.db" << QStringList{"copy/Attachments"} << ""
            << "copy/Attachments/ab/IMG_1.jpeg";
        QTest::newRow("a copy and the home folder chosen for it")
            << "copy/chat.db" << QStringList{"mac/Library/Messages/Attachments"} << "mac"
            << "mac/" + photo;
        QTest::newRow("the Attachments folder chosen over the one beside")
            << "copy/chat.db" << QStringList{"copy/Attachments", "photos"} << "photos"
            << "photos/ab/IMG_1.jpeg";
    }

    // Where a stored "~/Library/Messages/Attachments/" photo is looked for, now and at the next
    // launch.
    void chosenFileIsRememberedWithItsAttachments() {
        QFETCH(QString, file);
        QFETCH(QStringList, folders);
        QFETCH(QString, chosen);
        QFETCH(QString, expected);
        Harness harness;
        const QString path = harness.path(file);
        writeHistory(path, {{"+15550001111",
                             {{"Look", Date::fromUnixSeconds(1710000000), false,
                               "~/Library/Messages/Attachments/ab/IMG_1.jpeg"}}}});
        for (const QString& folder : folders) {
            QVERIFY(QDir().mkpath(harness.path(folder)));
        }
        expected = expected.isEmpty()
                       ? harness.platform.home + "/Library/Messages/Attachments/ab/IMG_1.jpeg"
                       : harness.path(expected);
        const auto photoPath = [](AppModel& model) {
            model.select(model.conversations().at(0).id);
            if (!QTest::qWaitFor([&] { return model.transcript().has_value(); }, kWait)) {
                return QStringLiteral("(no transcript)");
            }
            const auto& attachments = model.transcript()->entries.at(0).attachments;
            return QString::fromStdString(attachments.at(0).path.value_or(""));
        };

        AppModel& model = harness.model();
        model.openDatabaseFile(path);
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        if (!chosen.isEmpty()) {
            model.chooseAttachmentsFolder(harness.path(chosen));
            SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        }
        QCOMPARE(photoPath(model), expected);

        // The next launch reads the same file (the user's own history doesn't exist here).
        AppModel later(harness.platform, *harness.store);
        QCOMPARE(later.databaseSource(), AppModel::DatabaseSource::file);
        later.start();
        SCRIVLY_WAIT_FOR_PHASE(later, Phase::ready);
        QCOMPARE(firstAddresses(later), std::vector<std::string>{"+15550001111"});
        QCOMPARE(photoPath(later), expected);
    }

    void contactsRequestDecidesNames_data() {
        QTest::addColumn<ContactsAuthorization>("answer");
        QTest::addColumn<AppModel::ContactsAccess>("access");
        QTest::addColumn<QString>("title");
        QTest::newRow("limited access")
            << ContactsAuthorization::limited << AppModel::ContactsAccess::granted << "Ann Lee";
        QTest::newRow("restricted") << ContactsAuthorization::restricted
                                    << AppModel::ContactsAccess::denied << "+1 (555) 000-1111";
    }

    void contactsRequestDecidesNames() {
        QFETCH(ContactsAuthorization, answer);
        QFETCH(AppModel::ContactsAccess, access);
        QFETCH(QString, title);
        Harness harness;
        writeOnePerson(harness.standardDatabase(), "+15550001111");
        harness.platform.book.add("555-000-1111", "Ann Lee", std::string("card-1"));
        harness.platform.authorizationAfterRequest = answer;
        AppModel& model = harness.model();
        model.start();
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        model.requestContacts();
        QCOMPARE(model.contacts(), access);
        QTRY_COMPARE_WITH_TIMEOUT(QString::fromStdString(model.conversations().at(0).title), title,
                                  kWait);
    }

    void leftoverSnapshotsAreRemovedAtStart() {
        Harness harness;
        const QString id = AppModel::bundleIdentifier();
        const QString current = harness.platform.temp + "/" + id + "-snapshots";
        const QString older = harness.platform.cache + "/" + id + "/Snapshot";
        for (const QString& folder : {current, older}) {
            QDir().mkpath(folder + "/7F1B2C");
            QFile(folder + "/7F1B2C/chat.db").open(QIODevice::WriteOnly);
        }
        // The snapshot folder is private to its owner, as the reader makes it.
        QFile::setPermissions(current, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        harness.model().start();
        QVERIFY(!QFileInfo::exists(current + "/7F1B2C"));
        QVERIFY(!QFileInfo::exists(older));
    }
};

int runFlowTests(int argc, char** argv) {
    FlowTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "FlowTests.moc"
