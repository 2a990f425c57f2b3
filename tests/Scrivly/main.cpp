#include <QCoreApplication>

int runSettingsTests(int argc, char** argv);
int runFlowTests(int argc, char** argv);
int runTranscriptTests(int argc, char** argv);
int runExportTests(int argc, char** argv);
int runContactsTests(int argc, char** argv);
int runBackupTests(int argc, char** argv);
int runProduceTests(int argc, char** argv);

// One executable for the model's tests, one Qt Test class per behaviour.
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    int failed = 0;
    for (auto run : {runSettingsTests, runFlowTests, runTranscriptTests, runExportTests,
                     runContactsTests, runBackupTests, runProduceTests}) {
        failed += run(argc, argv);
    }
    return failed == 0 ? 0 : 1;
}
