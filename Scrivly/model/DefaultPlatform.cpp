#include "Scrivly/model/DefaultPlatform.h"

#include "Scrivly/model/AppModel.h"
#include "ScrivlyKit/contacts/ContactSources.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/text/Regional.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>

#include <exception>

namespace scrivly {

DefaultPlatform::DefaultPlatform(QSettings* store) : m_store(store) {
    if (m_store) {
        m_sources = m_store->value(QLatin1String(kContactsSourcesKey)).toStringList();
    }
}

Date DefaultPlatform::now() const {
    return Date::now();
}

std::string DefaultPlatform::timeZone() const {
    return Regional::systemTimeZone();
}

std::string DefaultPlatform::locale() const {
    return Regional::systemLocale();
}

QString DefaultPlatform::homePath() const {
    return QDir::homePath();
}

QString DefaultPlatform::tempPath() const {
    // A per-user place: on Linux the shared temporary folder is visible to other users.
    return QString::fromStdString(FileSystem::userTemporaryFolder());
}

QString DefaultPlatform::cachePath() const {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

ContactsAuthorization DefaultPlatform::contactsAuthorization() const {
    const std::lock_guard lock(m_mutex);
    if (m_sources.isEmpty()) {
        return ContactsAuthorization::notDetermined;
    }
    if (m_unreadable) {
        return ContactsAuthorization::denied;
    }
    for (const QString& source : m_sources) {
        if (!QFileInfo(source).isReadable()) {
            return ContactsAuthorization::denied;
        }
    }
    return ContactsAuthorization::authorized;
}

void DefaultPlatform::requestContactsAccess(std::function<void()> done) {
    const std::optional<QStringList> chosen = chooseContactsSources();
    if (chosen && !chosen->isEmpty()) {
        {
            const std::lock_guard lock(m_mutex);
            m_sources = *chosen;
            m_unreadable = false;
        }
        if (m_store) {
            m_store->setValue(QLatin1String(kContactsSourcesKey), *chosen);
            m_store->sync();
        }
    }
    done();
}

NameBook DefaultPlatform::loadNames() const {
    QStringList sources;
    {
        const std::lock_guard lock(m_mutex);
        sources = m_sources;
    }
    std::vector<std::string> paths;
    for (const QString& source : sources) {
        paths.push_back(QFile::encodeName(source).toStdString());
    }
    try {
        NameBook names =
            ContactSources::load(paths, QFile::encodeName(contactsScratchFolder()).toStdString())
                .names;
        const std::lock_guard lock(m_mutex);
        if (m_sources == sources) {
            m_unreadable = false;
        }
        return names;
    } catch (const std::exception&) {
        // The choice stays remembered but shows as refused until the user chooses again.
        const std::lock_guard lock(m_mutex);
        if (m_sources == sources) {
            m_unreadable = true;
        }
        throw;
    }
}

QStringList DefaultPlatform::contactsSources() const {
    const std::lock_guard lock(m_mutex);
    return m_sources;
}

QString DefaultPlatform::contactsScratchFolder() const {
    return tempPath() + QLatin1Char('/') + AppModel::bundleIdentifier() +
           QStringLiteral("-contacts");
}

std::optional<QStringList> DefaultPlatform::chooseContactsSources() {
    return std::nullopt;
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
