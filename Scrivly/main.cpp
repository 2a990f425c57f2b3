#include "Scrivly/screens/ScrivlyApp.h"

#include "ScrivlyKit/platform/Memory.h"

#include <QApplication>

#include <cstring>

namespace {

void describeApplication() {
    QCoreApplication::setApplicationName(QStringLiteral("Scrivly"));
    QCoreApplication::setOrganizationName(QStringLiteral("Scrivly"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("scrivly.com"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIVLY_VERSION));
}

// --help and --version print and exit; they must work where no display can be opened.
bool onlyPrints(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        for (const char* flag : {"-h", "--help", "-help", "--help-all", "-v", "--version"}) {
            if (std::strcmp(argv[i], flag) == 0) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

int main(int argc, char** argv) {
    scrivly::Memory::useReturnableHeap();
    if (onlyPrints(argc, argv)) {
        QCoreApplication application(argc, argv);
        describeApplication();
        scrivly::ScrivlyApp::parse(QCoreApplication::arguments()); // prints and exits
        return 0;
    }
    QApplication application(argc, argv);
    describeApplication();
    QApplication::setDesktopFileName(QStringLiteral("com.scrivly.Scrivly"));

    scrivly::ScrivlyApp app(scrivly::ScrivlyApp::parse(QApplication::arguments()));
    app.start();
    return QApplication::exec();
}
