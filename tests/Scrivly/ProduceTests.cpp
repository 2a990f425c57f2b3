// Productions made by the model from the sample history: what is produced, the line that says so,
// cancelling, and the problems the sheet shows.

#include "Scrivly/model/AppModel.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

using namespace scrivly;
using namespace scrivly::testing;

namespace {

// One CSV line's fields, quotes taken off.
QStringList csvFields(const QString& line) {
    QStringList fields{QString()};
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == QLatin1Char('"')) {
            if (quoted && i + 1 < line.size() && line[i + 1] == QLatin1Char('"')) {
                fields.back() += c;
                ++i;
            } else {
                quoted = !quoted;
            }
        } else if (c == QLatin1Char(',') && !quoted) {
            fields.append(QString());
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

// The manifest's PDF rows, each as its fields.
QList<QStringList> manifestPDFs(const QString& folder) {
    QFile file(folder + QStringLiteral("/manifest.csv"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QList<QStringList> rows;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        const QStringList fields = csvFields(line.trimmed());
        if (fields.size() > 5 && fields[1] == QLatin1String("pdf")) {
            rows.append(fields);
        }
    }
    return rows;
}

// Whatever a production left beside its folder while it was being written.
QStringList hiddenLeftovers(const QString& parent) {
    return QDir(parent)
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
        .filter(QRegularExpression(QStringLiteral("^\\..*scrivly")));
}

// Reads the sample history; whether its conversations came.
bool openSample(Harness& harness) {
    AppModel& model = harness.model();
    model.start();
    model.openSample();
    return QTest::qWaitFor([&] { return model.phase() == AppModel::Phase::ready; }, kWait);
}

void setForm(AppModel& model, const QString& prefix, const QString& folder) {
    ProduceForm form = model.production().form();
    form.batesPrefix = prefix;
    form.folder = folder;
    model.production().setForm(form);
}

} // namespace

class ProduceTests : public QObject {
    Q_OBJECT

private slots:
    void producesTheChosenConversationsInTheListsOrder() {
        Harness harness;
        QVERIFY(openSample(harness));
        AppModel& model = harness.model();
        const auto& all = model.conversations();
        QVERIFY(all.size() >= 4);
        // Chosen out of order: the production follows the list.
        model.choose({all[3].id, all[1].id, all[2].id});
        const QString folder = harness.path(QStringLiteral("Production"));
        setForm(model, QStringLiteral(" SMITH- "), folder);
        ProduceForm form = model.production().form();
        form.natives = form.spreadsheets = form.loadFile = true;
        form.custodian = QStringLiteral("Dana Whitfield");
        model.production().setForm(form);

        model.produce();
        QVERIFY(model.production().producing());
        QTRY_VERIFY_WITH_TIMEOUT(!model.production().producing(), kWait);
        QCOMPARE(model.production().problem(), std::nullopt);

        const auto pdfs = manifestPDFs(folder);
        QCOMPARE(pdfs.size(), 3);
        QStringList ids;
        for (const QStringList& row : pdfs) {
            ids.append(row[3]);
        }
        QCOMPARE(ids,
                 QStringList({QString::fromStdString(all[1].id), QString::fromStdString(all[2].id),
                              QString::fromStdString(all[3].id)}));
        QCOMPARE(pdfs.front()[4], QStringLiteral("SMITH-000001"));
        QCOMPARE(model.production().finished(),
                 QStringLiteral("Produced 3 documents, SMITH-000001 to %1").arg(pdfs.back()[5]));
        QCOMPARE(model.production().producedFolder(), folder);

        // The choices reach the files.
        QVERIFY(QFileInfo::exists(folder + QStringLiteral("/SMITH-000001.csv")));
        QVERIFY(!QDir(folder + QStringLiteral("/natives")).isEmpty());
        QFile loadFile(folder + QStringLiteral("/loadfile.dat"));
        QVERIFY(loadFile.open(QIODevice::ReadOnly));
        QVERIFY(loadFile.readAll().contains("Dana Whitfield"));

        model.production().showInFolder();
        QCOMPARE(harness.platform.revealedFiles, QStringList({folder}));
    }

    void endTextCountsTheDocuments() {
        Harness harness;
        QVERIFY(openSample(harness));
        AppModel& model = harness.model();
        model.choose({model.conversations()[1].id});
        setForm(model, QStringLiteral("ACME-"), harness.path(QStringLiteral("One")));
        model.produce();
        QTRY_VERIFY_WITH_TIMEOUT(!model.production().producing(), kWait);
        const auto pdfs = manifestPDFs(harness.path(QStringLiteral("One")));
        QCOMPARE(pdfs.size(), 1);
        QCOMPARE(model.production().finished(),
                 QStringLiteral("Produced 1 document, ACME-000001 to %1").arg(pdfs.front()[5]));

        // Days after the last message: the conversation is named empty, and nothing numbered.
        model.setFrom(harness.platform.clock + 2 * 86400);
        model.setUseFrom(true);
        setForm(model, QStringLiteral("ACME-"), harness.path(QStringLiteral("None")));
        model.produce();
        QTRY_VERIFY_WITH_TIMEOUT(!model.production().producing(), kWait);
        QCOMPARE(model.production().finished(),
                 QStringLiteral("Produced no documents: the conversations have no messages in "
                                "these dates."));
        QVERIFY(manifestPDFs(harness.path(QStringLiteral("None"))).isEmpty());
    }

    void cancellingLeavesNothingAndTheSheetUsable() {
        Harness harness;
        QVERIFY(openSample(harness));
        AppModel& model = harness.model();
        const QString folder = harness.path(QStringLiteral("Production"));
        setForm(model, QStringLiteral("SMITH-"), folder);
        model.showProduce();
        QCOMPARE(model.sheet(), AppModel::Sheet::produce);

        // By Cancel, and by closing the sheet.
        for (const bool closing : {false, true}) {
            model.produce();
            QVERIFY(model.production().producing());
            if (closing) {
                model.dismissSheet();
            } else {
                model.production().cancel();
            }
            QVERIFY(model.production().cancelling());
            QTRY_VERIFY_WITH_TIMEOUT(!model.production().producing(), kWait);
            QVERIFY(!model.production().finished() && !model.production().problem());
            QVERIFY(!QFileInfo::exists(folder));
            QCOMPARE(hiddenLeftovers(harness.path({})), QStringList());
        }

        // Nothing was chosen: every conversation is produced.
        model.produce();
        QTRY_VERIFY_WITH_TIMEOUT(!model.production().producing(), kWait);
        QCOMPARE(manifestPDFs(folder).size(), static_cast<qsizetype>(model.conversations().size()));
        QVERIFY(model.production().finished()->startsWith(
            QStringLiteral("Produced %1 documents, SMITH-000001 to ")
                .arg(model.conversations().size())));
    }

    void problemsShowInWordsAndWriteNothing_data() {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("problem"); // %1: the folder
        QTest::newRow("no prefix") << "  "
                                   << "New"
                                   << "Give a number prefix, such as SMITH-: the numbers also "
                                      "name the files.";
        QTest::newRow("a slash in the prefix")
            << "A/B-"
            << "New"
            << "The number prefix can’t hold “/” or control characters: the numbers also name "
               "the files.";
        QTest::newRow("no folder") << "SMITH-"
                                   << ""
                                   << "Choose a folder for the production.";
        QTest::newRow("a folder with files")
            << "SMITH-"
            << "Full"
            << "The folder “%1” isn’t empty. Choose a new or empty folder.";
        QTest::newRow("a file") << "SMITH-"
                                << "Full/notes.txt"
                                << "“%1” is a file. Choose a new or empty folder.";
        // Found by the production itself, on its worker thread.
        QTest::newRow("no such place")
            << "SMITH-"
            << "Missing/Production"
            << "The production couldn’t be made: The production couldn’t be written: ";
    }

    void problemsShowInWordsAndWriteNothing() {
        QFETCH(QString, prefix);
        QFETCH(QString, folder);
        QFETCH(QString, problem);
        Harness harness;
        QVERIFY(openSample(harness));
        AppModel& model = harness.model();
        QDir().mkpath(harness.path(QStringLiteral("Full")));
        QFile note(harness.path(QStringLiteral("Full/notes.txt")));
        QVERIFY(note.open(QIODevice::WriteOnly));
        note.close();
        const QString path = folder.isEmpty() ? QString() : harness.path(folder);
        setForm(model, prefix, path);

        model.produce();
        QTRY_VERIFY_WITH_TIMEOUT(!model.production().producing(), kWait);
        QVERIFY(model.production().problem());
        problem.replace(QStringLiteral("%1"), path);
        QVERIFY2(model.production().problem()->startsWith(problem),
                 qPrintable(*model.production().problem()));
        QVERIFY(!model.production().finished());
        QVERIFY(!QFileInfo::exists(harness.path(QStringLiteral("New"))));
        QCOMPARE(QDir(harness.path(QStringLiteral("Full")))
                     .entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                 QStringList({QStringLiteral("notes.txt")}));
    }
};

int runProduceTests(int argc, char** argv) {
    ProduceTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "ProduceTests.moc"
