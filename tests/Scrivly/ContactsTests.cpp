// Names from the address books the user chose, read through the real loader, remembered in the
// preferences and reported as refused once they can't be read.

#include "Scrivly/model/AppModel.h"
#include "Scrivly/model/DefaultPlatform.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace scrivly;
using namespace scrivly::testing;
using Access = AppModel::ContactsAccess;

namespace {

// The real platform in a temporary folder, whose chooser answers with whatever the test set.
class ChoosingPlatform : public DefaultPlatform {
public:
    ChoosingPlatform(const QString& root, QSettings* store)
        : DefaultPlatform(store), m_root(root) {}

    std::optional<QStringList> answer; // nothing: the user cancelled
    int asked = 0;

    QString homePath() const override { return m_root + QStringLiteral("/home"); }
    QString tempPath() const override { return m_root + QStringLiteral("/tmp"); }
    QString cachePath() const override { return m_root + QStringLiteral("/caches"); }
    void openUrl(const QString&) override {}
    void revealFile(const QString&) override {}

protected:
    std::optional<QStringList> chooseContactsSources() override {
        ++asked;
        return answer;
    }

private:
    QString m_root;
};

void writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}

// One person with a number and an e-mail address, written differently from the history.
const QByteArray kCard = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:card-7\r\nFN:Ann Lee\r\n"
                         "TEL;TYPE=CELL:(555) 010-7777\r\nEMAIL:Ann.Lee@Example.com\r\n"
                         "END:VCARD\r\n";

} // namespace

class ContactsTests : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_history;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    std::unique_ptr<QSettings> freshStore(const QString& name) const {
        auto store = std::make_unique<QSettings>(path(name), QSettings::IniFormat);
        AppSettings settings;
        settings.onboardingDone = true;
        AppSettings::save(*store, settings);
        return store;
    }

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        QDir().mkpath(path(QStringLiteral("tmp")));
        m_history = path(QStringLiteral("history/chat.db"));
        writeHistory(
            m_history,
            {{"+1 555 010 7777", {{"By text", Date::fromUnixSeconds(1710000000)}}, {}, "SMS"},
             {"ann.lee@example.com", {{"By mail", Date::fromUnixSeconds(1710000100)}}},
             {"+15550108888", {{"Someone else", Date::fromUnixSeconds(1710000200)}}}});
    }

    void chosenCardMergesAPersonsChatsAndIsRemembered() {
        const QString vcard = path(QStringLiteral("ann.vcf"));
        writeFile(vcard, kCard);
        auto store = freshStore(QStringLiteral("chosen.ini"));
        {
            ChoosingPlatform platform(m_dir.path(), store.get());
            AppModel model(platform, *store);
            model.openDatabaseFile(m_history);
            SCRIVLY_WAIT_FOR_PHASE(model, AppModel::Phase::ready);
            QCOMPARE(model.conversations().size(), std::size_t{3});
            model.requestContacts(); // cancelled: nothing changes and nothing is remembered
            QCOMPARE(platform.asked, 1);
            QCOMPARE(model.contacts(), Access::notAsked);
            QVERIFY(!store->contains(QLatin1String(DefaultPlatform::kContactsSourcesKey)));

            platform.answer = QStringList{vcard};
            model.requestContacts();
            QCOMPARE(model.contacts(), Access::granted);
            // The list regroups as soon as the names arrive: Ann's two chats become one.
            QTRY_COMPARE_WITH_TIMEOUT(model.conversations().size(), std::size_t{2}, kWait);
            QCOMPARE(model.conversations().at(1).title, std::string("Ann Lee"));
            QCOMPARE(
                store->value(QLatin1String(DefaultPlatform::kContactsSourcesKey)).toStringList(),
                QStringList{vcard});
        }

        // The next launch reads the remembered card without asking.
        ChoosingPlatform platform(m_dir.path(), store.get());
        AppModel model(platform, *store);
        model.openDatabaseFile(m_history);
        QCOMPARE(model.contacts(), Access::granted);
        QTRY_VERIFY_WITH_TIMEOUT(
            model.phase() == AppModel::Phase::ready && model.conversations().size() == 2, kWait);
        QCOMPARE(platform.asked, 0);
    }

    void vanishedSourceIsRefusedUntilChosenAgain() {
        const QString vcard = path(QStringLiteral("gone.vcf"));
        writeFile(vcard, kCard);
        auto store = freshStore(QStringLiteral("vanished.ini"));
        store->setValue(QLatin1String(DefaultPlatform::kContactsSourcesKey), QStringList{vcard});
        QVERIFY(QFile::remove(vcard));

        ChoosingPlatform platform(m_dir.path(), store.get());
        AppModel model(platform, *store);
        model.openDatabaseFile(m_history);
        SCRIVLY_WAIT_FOR_PHASE(model, AppModel::Phase::ready);
        QCOMPARE(model.contacts(), Access::denied);
        QVERIFY(model.canChooseContacts());

        // "Open Settings" lets the user choose again; a cancelled choice changes nothing.
        model.openContactsSettings();
        QCOMPARE(platform.asked, 1);
        QCOMPARE(model.contacts(), Access::denied);

        const QString folder = path(QStringLiteral("cards"));
        QDir().mkpath(folder);
        writeFile(folder + QStringLiteral("/ann.vcf"), kCard);
        platform.answer = QStringList{folder};
        model.openContactsSettings();
        QCOMPARE(model.contacts(), Access::granted);
        QTRY_COMPARE_WITH_TIMEOUT(model.conversations().size(), std::size_t{2}, kWait);
        QCOMPARE(store->value(QLatin1String(DefaultPlatform::kContactsSourcesKey)).toStringList(),
                 QStringList{folder});
    }
};

int runContactsTests(int argc, char** argv) {
    ContactsTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "ContactsTests.moc"
