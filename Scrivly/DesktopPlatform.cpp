#include "Scrivly/DesktopPlatform.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QUrl>

namespace scrivly {

std::string DesktopPlatform::locale() const {
    // Exports speak the language the application shows ("de_DE"), which ICU reads as it is.
    return QLocale().name().toStdString();
}

std::optional<QString> DesktopPlatform::saveDestination(const QString& suggestedName,
                                                        ExportKind kind) {
    QWidget* parent = QApplication::activeWindow() ? QApplication::activeWindow() : m_window.data();
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        folder = QDir::homePath();
    }
    const bool pdf = kind == ExportKind::pdf;
    const QString filter =
        pdf ? QCoreApplication::translate("scrivly::DesktopPlatform", "PDF document (*.pdf)")
            : QCoreApplication::translate("scrivly::DesktopPlatform", "CSV file (*.csv)");
    QString path = QFileDialog::getSaveFileName(
        parent, QCoreApplication::translate("scrivly::DesktopPlatform", "Export"),
        QDir(folder).filePath(suggestedName), filter);
    if (path.isEmpty()) {
        return std::nullopt;
    }
    // The panel limits the type; a name typed without it still gets it.
    const QString suffix = pdf ? QStringLiteral("pdf") : QStringLiteral("csv");
    if (QFileInfo(path).suffix().compare(suffix, Qt::CaseInsensitive) != 0) {
        path += QLatin1Char('.') + suffix;
    }
    return path;
}

void DesktopPlatform::openUrl(const QString& url) {
    // The privacy panes of macOS System Settings mean nothing elsewhere.
    if (url.startsWith(QLatin1String("x-apple.systempreferences:"))) {
#ifdef Q_OS_MACOS
        QDesktopServices::openUrl(QUrl(url));
#endif
        return;
    }
    QDesktopServices::openUrl(QUrl(url));
}

void DesktopPlatform::revealFile(const QString& path) {
    // The desktop's opener shows folders, not a file inside one, so the folder is opened.
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

} // namespace scrivly
