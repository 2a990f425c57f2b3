#include "Scrivly/model/AppSettings.h"
#include "TestSupport.h"

#include <QSettings>
#include <QTest>

#include <optional>

using namespace scrivly;

Q_DECLARE_METATYPE(scrivly::AppSettings)
Q_DECLARE_METATYPE(std::optional<QByteArray>)

class SettingsTests : public QObject {
    Q_OBJECT

private slots:
    void loadIsLenient_data() {
        QTest::addColumn<std::optional<QByteArray>>("stored");
        QTest::addColumn<AppSettings>("expected");
        AppSettings ann;
        ann.myName = QStringLiteral("Ann");
        AppSettings kept = ann;
        kept.onboardingDone = true;
        kept.coverPage = false;
        using Stored = std::optional<QByteArray>;

        QTest::newRow("first launch") << Stored() << AppSettings{};
        QTest::newRow("unknown paper keeps the rest")
            << Stored(R"({"onboardingDone":true,"myName":"Ann","paper":"a3","coverPage":false})")
            << kept;
        QTest::newRow("paper of another type keeps the rest")
            << Stored(R"({"onboardingDone":true,"myName":"Ann","paper":4,"coverPage":false})")
            << kept;
        QTest::newRow("null is absent") << Stored(R"({"myName":null})") << AppSettings{};
        QTest::newRow("unknown key ignored") << Stored(R"({"myName":"Ann","x":1})") << ann;
        QTest::newRow("not JSON") << Stored("{myName: Ann") << AppSettings{};
        QTest::newRow("not an object") << Stored(R"(["Ann"])") << AppSettings{};
        QTest::newRow("wrong type spoils all")
            << Stored(R"({"myName":"Ann","coverPage":"yes"})") << AppSettings{};
    }

    void loadIsLenient() {
        QFETCH(std::optional<QByteArray>, stored);
        QFETCH(AppSettings, expected);
        testing::Harness harness;
        harness.store->clear();
        if (stored) {
            harness.store->setValue(QStringLiteral("settings"), *stored);
        }
        QCOMPARE(AppSettings::load(*harness.store), expected);
    }

    void everyChangeIsSavedAtOnce() {
        testing::Harness harness;
        AppSettings::save(*harness.store, AppSettings{}); // first launch
        AppModel& model = harness.model();
        AppSettings settings = model.settings();
        settings.myName = QStringLiteral("Zoë “Z” O’Neil");
        settings.paper = PaperSize::a4;
        settings.includeImages = false;
        model.setSettings(settings);
        model.finishOnboarding();
        settings.onboardingDone = true;

        QSettings reread(harness.path(QStringLiteral("settings.ini")), QSettings::IniFormat);
        QCOMPARE(AppSettings::load(reread), settings);
        QVERIFY(reread.value(QStringLiteral("settings")).toByteArray().contains(R"("paper":"a4")"));
    }
};

int runSettingsTests(int argc, char** argv) {
    SettingsTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "SettingsTests.moc"
