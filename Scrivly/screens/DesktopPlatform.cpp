#include "Scrivly/screens/DesktopPlatform.h"

#include "ScrivlyKit/contacts/AddressBookDatabase.h"
#include "ScrivlyKit/text/Regional.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QUrl>

namespace scrivly {

std::string DesktopPlatform::locale() const {
    // Exports speak the language the application shows ("de_DE"), which ICU reads as it is; the
    // system's when Qt has none ("C").
    const std::string name = QLocale().name().toStdString();
    return Regional::isKnownLocale(name) ? name : DefaultPlatform::locale();
}

QWidget* DesktopPlatform::dialogParent() const {
    return QApplication::activeWindow() ? QApplication::activeWindow() : m_window.data();
}

std::optional<QString> DesktopPlatform::saveDestination(const QString& suggestedName,
                                                        ExportKind kind) {
    QWidget* parent = dialogParent();
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

std::optional<QStringList> DesktopPlatform::chooseContactsSources() {
    const auto tr = [](const char* text) {
        return QCoreApplication::translate("scrivly::DesktopPlatform", text);
    };
    QWidget* parent = dialogParent();
    const QString addressBook = QFile::decodeName(QByteArray::fromStdString(
        AddressBookDatabase::defaultFolder(QFile::encodeName(homePath()).toStdString())));

    QMessageBox box(QMessageBox::Question, tr("Use Contacts"), tr("Where are your contacts?"),
                    QMessageBox::NoButton, parent);
    box.setInformativeText(tr("Scrivly reads names from vCard files (.vcf) exported from your "
                              "address book, or from a folder that holds them. It remembers "
                              "your choice and never changes your contacts."));
    QPushButton* thisMac = nullptr;
    if (QFileInfo(addressBook).isDir()) {
        thisMac = box.addButton(tr("Use This Mac’s Contacts"), QMessageBox::AcceptRole);
    }
    QPushButton* files = box.addButton(tr("Choose vCard Files…"), QMessageBox::AcceptRole);
    QPushButton* folder = box.addButton(tr("Choose a Folder…"), QMessageBox::AcceptRole);
    box.addButton(tr("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(thisMac ? thisMac : files);
    box.exec();

    const QAbstractButton* clicked = box.clickedButton();
    if (clicked && clicked == thisMac) {
        return QStringList{addressBook};
    }
    if (clicked == files) {
        const QStringList chosen = QFileDialog::getOpenFileNames(
            parent, tr("Choose vCard Files"), homePath(),
            tr("vCard files (*.vcf *.vcard)") + QStringLiteral(";;") + tr("All files (*)"));
        return chosen.isEmpty() ? std::nullopt : std::optional(chosen);
    }
    if (clicked == folder) {
        const QString chosen =
            QFileDialog::getExistingDirectory(parent, tr("Choose a Contacts Folder"), homePath());
        return chosen.isEmpty() ? std::nullopt : std::optional(QStringList{chosen});
    }
    return std::nullopt;
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
