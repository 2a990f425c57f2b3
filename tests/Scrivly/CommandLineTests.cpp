// The built scrivly program run as a newcomer runs it: pictures of what it shows, wrong options
// and the options that only print, each in a process of its own with a time limit.

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run {
    int exitCode = -1;
    bool finished = false;
    qint64 milliseconds = 0;
    QString out;
    QString err;
};

Run runScrivly(const QStringList& arguments, const QTemporaryDir& home, bool display = true) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // A home of its own: nothing read from or remembered into the tester's own settings.
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    if (display) {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    } else {
        for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
            environment.remove(QLatin1String(name));
        }
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    QElapsedTimer timer;
    timer.start();
    process.start(QStringLiteral(SCRIVLY_PROGRAM), arguments);
    Run run;
    run.finished = process.waitForFinished(30000);
    run.milliseconds = timer.elapsed();
    if (!run.finished) {
        process.kill();
        process.waitForFinished();
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

// The lines scrivly itself wrote, without Qt's own notes about the environment.
QStringList ownLines(const QString& err) {
    QStringList lines;
    for (const QString& line : err.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (line.startsWith(QLatin1String("scrivly:"))) {
            lines.append(line);
        }
    }
    return lines;
}

} // namespace

class CommandLineTests : public QObject {
    Q_OBJECT

    QTemporaryDir m_home;

private slots:
    void screenshotOfADatabaseThatFailsDrawsTheFailureScreen() {
        const QString bad = m_home.filePath(QStringLiteral("not-messages.db"));
        {
            QFile file(bad);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(4096, 'x'));
        }
        const QString picture = m_home.filePath(QStringLiteral("failure.png"));
        // An unknown language is said once, and the picture is taken anyway (in English).
        const Run run = runScrivly({QStringLiteral("--database"), bad, QStringLiteral("--language"),
                                    QStringLiteral("xx"), QStringLiteral("--screenshot"), picture},
                                   m_home);
        QVERIFY2(run.finished, qPrintable(run.err));
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.milliseconds < 10000, qPrintable(QString::number(run.milliseconds)));
        const QImage image(picture);
        QVERIFY(!image.isNull());
        QVERIFY(image.width() >= 700);
        const QStringList lines = ownLines(run.err);
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().contains(QStringLiteral("“xx”")));
    }

    void screenshotWithUnknownNamesIsAUsageError() {
        const QString picture = m_home.filePath(QStringLiteral("never.png"));
        const struct {
            const char* name;
            QStringList arguments;
        } rows[] = {
            {"unknown sheet",
             {QStringLiteral("--sample"), QStringLiteral("--sheet"), QStringLiteral("nowhere")}},
        };
        for (const auto& row : rows) {
            const Run run = runScrivly(
                row.arguments + QStringList{QStringLiteral("--screenshot"), picture}, m_home);
            QVERIFY2(run.finished, row.name);
            QVERIFY2(run.exitCode == 2, row.name);
            QVERIFY2(ownLines(run.err).size() == 1, qPrintable(run.err));
            QVERIFY2(!QFile::exists(picture), row.name);
        }
    }

    void helpAndVersionNeedNoDisplay() {
        const Run help = runScrivly({QStringLiteral("--help")}, m_home, false);
        QVERIFY(help.finished);
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.out.contains(QLatin1String("--database")));
        const Run version = runScrivly({QStringLiteral("--version")}, m_home, false);
        QCOMPARE(version.exitCode, 0);
        QVERIFY(version.out.contains(QLatin1String("Scrivly")));
    }
};

QTEST_GUILESS_MAIN(CommandLineTests)

#include "CommandLineTests.moc"
