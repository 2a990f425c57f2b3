#include "Scrivly/screens/ScrivlyApp.h"

#include "ScrivlyKit/platform/Memory.h"

#include <QApplication>

int main(int argc, char** argv) {
    scrivly::Memory::useReturnableHeap();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Scrivly"));
    QApplication::setOrganizationName(QStringLiteral("Scrivly"));
    QApplication::setOrganizationDomain(QStringLiteral("scrivly.com"));
    QApplication::setApplicationVersion(QStringLiteral(SCRIVLY_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.scrivly.Scrivly"));

    scrivly::ScrivlyApp app(scrivly::ScrivlyApp::parse(QApplication::arguments()));
    app.start();
    return QApplication::exec();
}
