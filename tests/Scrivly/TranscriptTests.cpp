#include "Scrivly/AppModel.h"
#include "TestSupport.h"

#include <QFile>
#include <QTest>

using namespace scrivly;
using namespace scrivly::testing;
using Phase = AppModel::Phase;

namespace {

QStringList entryTexts(const AppModel& model) {
    QStringList texts;
    for (const TranscriptEntry& entry : model.transcript()->entries) {
        texts.append(QString::fromStdString(entry.text));
    }
    return texts;
}

const Date kNoon = Date::fromUnixSeconds(1710000000);

} // namespace

class TranscriptTests : public QObject {
    Q_OBJECT

private slots:
    // 10 March 2024 is the day New York moves its clocks forward: 23 hours long.
    void datesAreWholeDaysInTheZone_data() {
        QTest::addColumn<bool>("useFrom");
        QTest::addColumn<bool>("useTo");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("no bounds")
            << false << false << QStringList{"day before", "first day", "last day", "after"};
        QTest::newRow("from") << true << false << QStringList{"first day", "last day", "after"};
        QTest::newRow("to") << false << true << QStringList{"day before", "first day", "last day"};
        QTest::newRow("both") << true << true << QStringList{"first day", "last day"};
    }

    void datesAreWholeDaysInTheZone() {
        QFETCH(bool, useFrom);
        QFETCH(bool, useTo);
        QFETCH(QStringList, expected);
        Harness harness;
        writeHistory(harness.standardDatabase(),
                     {{"+15550001111",
                       {{"day before", localDate(2024, 3, 8, 23, 59, 59)},
                        {"first day", localDate(2024, 3, 9, 0, 0, 0)},
                        {"last day", localDate(2024, 3, 10, 23, 59, 59), true},
                        {"after", localDate(2024, 3, 11, 0, 0, 0)}}}});
        AppModel& model = harness.model();
        model.start();
        QVERIFY(harness.open("+1 (555) 000-1111"));

        // Any moment of the chosen days will do.
        model.setFrom(localDate(2024, 3, 9, 15, 20, 0));
        model.setToDay({2024, 3, 10});
        model.setUseFrom(useFrom);
        model.setUseTo(useTo);
        QCOMPARE(entryTexts(model), expected);
        QCOMPARE(model.transcript()->to, model.bounds().to);
        QCOMPARE(model.fromDay(), (DayBounds::Day{2024, 3, 9}));
        QCOMPARE(model.renderKey().from, model.bounds().from);
    }

    void myNameLabelsMyMessages_data() {
        QTest::addColumn<QString>("myName");
        QTest::addColumn<QString>("shown");
        QTest::newRow("empty") << ""
                               << "Me";
        QTest::newRow("blank") << " \t\n "
                               << "Me";
        QTest::newRow("padded") << "  Ann Lee \n"
                                << "Ann Lee";
    }

    void myNameLabelsMyMessages() {
        QFETCH(QString, myName);
        QFETCH(QString, shown);
        Harness harness;
        writeHistory(harness.standardDatabase(),
                     {{"+15550001111", {{"Still on for Saturday?", kNoon}, {"Yes", kNoon, true}}}});
        AppModel& model = harness.model();
        model.start();
        QVERIFY(harness.open("+1 (555) 000-1111"));

        AppSettings settings = model.settings();
        settings.myName = myName;
        model.setSettings(settings); // the open transcript follows at once
        const auto& entries = model.transcript()->entries;
        QCOMPARE(entries.at(0).sender, std::string("+1 (555) 000-1111"));
        QCOMPARE(QString::fromStdString(entries.at(1).sender), shown);
        QCOMPARE(QString::fromStdString(model.exportStrings().me), shown);
    }

    void selectionSurvivesAReloadOnlyWhileItsConversationExists() {
        Harness harness;
        const QString file = harness.standardDatabase();
        writeHistory(file,
                     {{"+15550001111", {{"first", kNoon}}}, {"+15550002222", {{"b", kNoon}}}});
        AppModel& model = harness.model();
        model.start();
        QVERIFY(harness.open("+1 (555) 000-1111"));
        const auto ann = model.selection();

        writeHistory(file, {{"+15550001111", {{"first", kNoon}, {"second", kNoon + 60}}}});
        model.reload();
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        QCOMPARE(model.selection(), ann);
        QTRY_VERIFY_WITH_TIMEOUT(model.transcript().has_value(), kWait);
        QCOMPARE(entryTexts(model), (QStringList{"first", "second"}));

        writeHistory(file, {{"+15550002222", {{"b", kNoon}}}});
        model.reload();
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        QVERIFY(!model.selection());
        QVERIFY(!model.transcript());
        QVERIFY(model.messages().empty());
    }

    void unreadableConversationRaisesAProblem() {
        Harness harness;
        writeHistory(harness.standardDatabase(), {{"+15550001111", {{"first", kNoon}}}});
        AppModel& model = harness.model();
        model.start();
        SCRIVLY_WAIT_FOR_PHASE(model, Phase::ready);
        QFile::remove(harness.standardDatabase());
        model.select(model.conversations().at(0).id);
        QTRY_VERIFY_WITH_TIMEOUT(!model.loadingMessages(), kWait);
        QCOMPARE(model.problem(),
                 std::optional(QStringLiteral("This conversation couldn’t be read.")));
        QCOMPARE(model.phase(), Phase::ready);
    }
};

int runTranscriptTests(int argc, char** argv) {
    TranscriptTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "TranscriptTests.moc"
