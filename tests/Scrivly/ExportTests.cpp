#include "Scrivly/model/AppModel.h"
#include "TestSupport.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace scrivly;
using namespace scrivly::testing;
using Sheet = AppModel::Sheet;

namespace {

const std::string kAnn = "+1 (555) 000-1111";

QByteArray fileContents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Three conversations, the newest Ann's; the model is started.
void prepare(Harness& harness) {
    const Date noon = Date::fromUnixSeconds(1710000000);
    writeHistory(harness.standardDatabase(),
                 {{"+15550001111",
                   {{"Did the adjuster call back?", noon},
                    {"Not yet", noon + 60, true},
                    {"Keep the receipts 👍", noon + 120}}},
                  {"+15550002222", {{"Chapter 4", noon - 60}}, "Book Club"},
                  {"+15550003333", {{"Soon", noon - 120}}, "Plans: 2/3"}});
    harness.model().start();
}

} // namespace

class ExportTests : public QObject {
    Q_OBJECT

private slots:
    void finishedPDFIsReusedForLessThan900Seconds() {
        Harness harness;
        prepare(harness);
        QVERIFY(harness.open(kAnn));
        AppModel& model = harness.model();
        const Date start = harness.platform.clock;
        struct Step {
            const char* name;
            double at; // seconds after the first rendering
            const char* header;
            bool renders;
        };
        const Step steps[] = {
            {"first", 0, "", true},
            {"same key at 899 s", 899, "", false},
            {"same key at 900 s", 900, "", true},
            {"another header", 900, "Claim 4471", true},
            {"that key soon after", 1000, "Claim 4471", false},
        };
        for (const Step& step : steps) {
            model.dismissSheet();
            harness.platform.clock = start + step.at;
            model.setForm(ExportForm{{}, QString::fromUtf8(step.header), {}, 1});
            std::vector<double> progress;
            QObject context;
            connect(&model, &AppModel::renderProgressChanged, &context, [&] {
                if (model.renderProgress()) {
                    progress.push_back(*model.renderProgress());
                }
            });

            model.showPreview();
            QVERIFY2(model.exporting() == step.renders, step.name);
            QTRY_VERIFY_WITH_TIMEOUT(!model.exporting(), kWait);
            QVERIFY2(model.sheet() == Sheet::preview, step.name);
            QVERIFY2(model.previewData() && model.previewData()->startsWith("%PDF"), step.name);
            QVERIFY2(progress.empty() != step.renders, step.name);
            QVERIFY2(std::is_sorted(progress.begin(), progress.end()), step.name);
            QVERIFY2(progress.empty() || (progress.front() == 0 && progress.back() <= 1),
                     step.name);
        }
    }

    void cancelledRenderingKeepsNothing() {
        Harness harness;
        prepare(harness);
        QVERIFY(harness.open(kAnn));
        AppModel& model = harness.model();
        model.showExport();
        model.showPreview();
        QVERIFY(model.exporting());
        model.cancelRender();
        QVERIFY(!model.exporting() && !model.renderProgress());
        QTest::qWait(500); // the stopped task comes back meanwhile, or not at all
        QVERIFY(!model.previewData());
        QCOMPARE(model.sheet(), std::optional(Sheet::exportPanel));

        model.showPreview(); // still usable, and renders anew: nothing was kept
        QVERIFY(model.exporting());
        QTRY_VERIFY_WITH_TIMEOUT(model.previewData().has_value(), kWait);
        QCOMPARE(model.sheet(), std::optional(Sheet::preview));

        // Closing the panel stops a rendering as well, and the finished one stays for reuse.
        const ExportForm kept = model.form();
        model.setForm(ExportForm{{}, QStringLiteral("A new header"), {}, 1});
        model.showPreview();
        model.dismissSheet();
        QVERIFY(!model.exporting() && !model.sheet());
        QTest::qWait(500);
        model.setForm(kept);
        model.showPreview();
        QVERIFY(!model.exporting());
        QCOMPARE(model.sheet(), std::optional(Sheet::preview));
    }

    // What the save panel proposes; it answers with a cancel.
    void proposedFileName_data() {
        QTest::addColumn<QString>("formTitle");
        QTest::addColumn<QString>("conversation");
        QTest::addColumn<bool>("pdf");
        QTest::addColumn<QString>("expected");
        QTest::newRow("form title") << "A/B:C"
                                    << "Book Club" << true << "A-B-C – Messages.pdf";
        QTest::newRow("blank form title") << " "
                                          << "Book Club" << false << "Book Club – Messages.csv";
        QTest::newRow("conversation tidied") << ""
                                             << "Plans: 2/3" << true << "Plans- 2-3 – Messages.pdf";
    }

    void proposedFileName() {
        QFETCH(QString, formTitle);
        QFETCH(QString, conversation);
        QFETCH(bool, pdf);
        QFETCH(QString, expected);
        Harness harness;
        prepare(harness);
        AppModel& model = harness.model();
        QVERIFY(harness.open(conversation.toStdString()));
        model.setForm(ExportForm{formTitle, {}, {}, 1});
        pdf ? model.exportPDF() : model.exportCSV();
        QCOMPARE(harness.platform.suggestedNames, QStringList{expected});
        QCOMPARE(harness.platform.savedKinds,
                 std::vector<ExportKind>{pdf ? ExportKind::pdf : ExportKind::csv});
        QVERIFY(!model.exporting() && !model.lastExport());
    }

    void failedSaveKeepsThePDFAndExportsGoWhereChosen() {
        Harness harness;
        prepare(harness);
        QVERIFY(harness.open(kAnn));
        AppModel& model = harness.model();
        const QString prefix = QStringLiteral("The export couldn’t be saved: ");
        harness.platform.destination = harness.path("gone/Ann.pdf");
        model.exportPDF();
        QTRY_VERIFY_WITH_TIMEOUT(!model.exporting(), kWait);
        QVERIFY(model.problem() && model.problem()->startsWith(prefix) &&
                model.problem()->size() > prefix.size());
        QVERIFY(!model.lastExport());
        QVERIFY(!QFileInfo::exists(harness.path("gone")));

        const QString path = harness.path("Ann.pdf");
        harness.platform.destination = path;
        QSignalSpy exporting(&model, &AppModel::exportingChanged);
        model.exportPDF();
        QVERIFY(exporting.isEmpty()); // written from the kept rendering
        QVERIFY(fileContents(path).startsWith("%PDF"));
        QCOMPARE(model.lastExport(), std::optional(path));
        model.showInFinder();
        QCOMPARE(harness.platform.revealedFiles, QStringList{path});

        const QString csvPath = harness.path("out.csv");
        harness.platform.destination = csvPath;
        model.exportCSV();
        const QByteArray csv = fileContents(csvPath);
        QVERIFY(csv.startsWith("\xEF\xBB\xBF") && csv.contains("Keep the receipts 👍"));
        QCOMPARE(model.lastExport(), std::optional(csvPath));
    }

    // Away from a Mac nothing is "this Mac": the cover names what was read, in the words of the
    // command line's documents.
    void exportTextsNameWhatWasReadAwayFromAMac() {
#ifdef Q_OS_MACOS
        QSKIP("A Mac keeps the design's words");
#endif
        Harness harness;
        const QString copy = harness.path("copy/chat.db");
        writeHistory(copy, {{"+15550001111", {{"Hi", Date::fromUnixSeconds(1710000000)}}}});
        AppModel& model = harness.model();
        const std::string unchanged =
            ", read by Scrivly. Scrivly lays the messages out; it doesn’t change their wording.";
        const auto expect = [&](SourceDescription::Kind kind, const QString& path,
                                const std::string& read) {
            const std::string text = model.exportStrings().sourceText;
            QCOMPARE(text, read + unchanged);
            SourceDescription source;
            source.kind = kind;
            source.path = path.toStdString();
            QCOMPARE(text, ExportStrings::englishSourceText(source, "en_US"));
        };
        using Kind = SourceDescription::Kind;
        expect(Kind::userHistory, harness.standardDatabase(),
               "The Messages database chat.db in " + harness.platform.home.toStdString() +
                   "/Library/Messages");
        model.openDatabaseFile(copy);
        expect(Kind::databaseFile, copy,
               "The Messages database chat.db in " + harness.path("copy").toStdString());
        model.openSample();
        expect(Kind::sample, {}, "The demonstration history");
        QCOMPARE(model.exportStrings().attachmentMissing("IMG_1.HEIC"),
                 std::string("Attachment not found on this computer: IMG_1.HEIC"));
    }

    void exportTextsFillInTheirArguments() {
        Harness harness;
        const ExportStrings strings = harness.model().exportStrings();
        QCOMPARE(strings.pageOf(3, 12), std::string("Page 3 of 12"));
        // A name that looks like a placeholder stays as it is.
        QCOMPARE(strings.attachmentLine("50%2 off.pdf", "48 KB"),
                 std::string("Attachment: 50%2 off.pdf (48 KB)"));
        QCOMPARE(strings.reactionName(ReactionKind::emojiReaction("🎉")), std::string("🎉"));
    }
};

int runExportTests(int argc, char** argv) {
    ExportTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "ExportTests.moc"
