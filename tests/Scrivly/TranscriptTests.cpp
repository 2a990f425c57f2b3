#include "Scrivly/model/AppModel.h"
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
    void datesAreWholeDaysInTheZone() {
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
        QCOMPARE(model.fromDay(), (DayBounds::Day{2024, 3, 9}));
        struct Case {
            bool useFrom;
            bool useTo;
            QStringList expected;
        };
        const Case cases[] = {
            {false, false, {"day before", "first day", "last day", "after"}},
            {true, false, {"first day", "last day", "after"}},
            {false, true, {"day before", "first day", "last day"}},
            {true, true, {"first day", "last day"}},
        };
        for (const Case& c : cases) {
            model.setUseFrom(c.useFrom);
            model.setUseTo(c.useTo);
            QCOMPARE(entryTexts(model), c.expected);
            // The upper bound is the last second of its day, inclusive.
            QCOMPARE(model.transcript()->to,
                     c.useTo ? std::optional(localDate(2024, 3, 10, 23, 59, 59)) : std::nullopt);
        }
    }

    void myNameLabelsMyMessages() {
        Harness harness;
        writeHistory(harness.standardDatabase(),
                     {{"+15550001111", {{"Still on for Saturday?", kNoon}, {"Yes", kNoon, true}}}});
        AppModel& model = harness.model();
        model.start();
        QVERIFY(harness.open("+1 (555) 000-1111"));

        // Blank last, so that it has a name to replace.
        for (const auto& [myName, shown] :
             {std::pair{"  Ann Lee \n", "Ann Lee"}, std::pair{" \t\n ", "Me"}}) {
            AppSettings settings = model.settings();
            settings.myName = QString::fromUtf8(myName);
            model.setSettings(settings); // the open transcript follows at once
            const auto& entries = model.transcript()->entries;
            QCOMPARE(entries.at(0).sender, std::string("+1 (555) 000-1111"));
            QCOMPARE(entries.at(1).sender, std::string(shown));
            QCOMPARE(model.exportStrings().me, std::string(shown));
        }
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
