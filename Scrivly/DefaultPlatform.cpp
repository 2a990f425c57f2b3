#include "Scrivly/DefaultPlatform.h"

#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/export/ExportOptions.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace scrivly {

Date DefaultPlatform::now() const {
    return Date::now();
}

std::string DefaultPlatform::timeZone() const {
    return DayBounds::systemTimeZone();
}

std::string DefaultPlatform::locale() const {
    return systemLocale();
}

QString DefaultPlatform::homePath() const {
    return QDir::homePath();
}

QString DefaultPlatform::tempPath() const {
    return QDir::tempPath();
}

QString DefaultPlatform::cachePath() const {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

DatabaseAccess DefaultPlatform::access(const std::string& path) const {
    return scrivly::access(path);
}

ContactsAuthorization DefaultPlatform::contactsAuthorization() const {
    return m_contacts;
}

void DefaultPlatform::requestContactsAccess(std::function<void()> done) {
    // There is no address book to grant access to yet; answer as a user who declined.
    m_contacts = ContactsAuthorization::denied;
    done();
}

NameBook DefaultPlatform::loadNames() const {
    return {};
}

std::optional<QString> DefaultPlatform::saveDestination(const QString&, ExportKind) {
    return std::nullopt;
}

void DefaultPlatform::openUrl(const QString& url) {
    QProcess::startDetached(QStringLiteral("xdg-open"), {url});
}

void DefaultPlatform::revealFile(const QString& path) {
    // xdg-open cannot select a file, so the folder that holds it is opened.
    QProcess::startDetached(QStringLiteral("xdg-open"), {QFileInfo(path).absolutePath()});
}

} // namespace scrivly
