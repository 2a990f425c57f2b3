#include "Scrivly/screens/Updater.h"

#include <QNetworkReply>
#include <QXmlStreamReader>

namespace scrivly {

namespace {
constexpr const char* kSparkleNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle";
constexpr int kTimeoutMilliseconds = 20000;
} // namespace

Updater::Updater(QUrl feed, QString currentVersion, QObject* parent)
    : QObject(parent), m_feed(std::move(feed)),
      m_current(QVersionNumber::fromString(currentVersion)) {
    m_network.setTransferTimeout(kTimeoutMilliseconds);
}

std::optional<Updater::Release> Updater::newestRelease(const QByteArray& feed) {
    QXmlStreamReader xml(feed);
    std::optional<Release> newest;
    Release item;
    bool inItem = false;
    const auto consider = [&newest](const Release& release) {
        if (!release.version.isNull() && (!newest || release.version > newest->version)) {
            newest = release;
        }
    };
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            const auto name = xml.name();
            if (name == QLatin1String("item")) {
                inItem = true;
                item = Release{};
            } else if (inItem && name == QLatin1String("enclosure")) {
                const auto attributes = xml.attributes();
                const QString shortVersion = attributes
                                                 .value(QLatin1String(kSparkleNamespace),
                                                        QLatin1String("shortVersionString"))
                                                 .toString();
                const QString version =
                    attributes.value(QLatin1String(kSparkleNamespace), QLatin1String("version"))
                        .toString();
                const QString shown = shortVersion.isEmpty() ? version : shortVersion;
                if (!shown.isEmpty()) {
                    item.shortVersion = shown;
                    item.version = QVersionNumber::fromString(shown);
                }
                if (item.link.isEmpty()) {
                    item.link = QUrl(attributes.value(QLatin1String("url")).toString());
                }
            } else if (inItem && xml.namespaceUri() == QLatin1String(kSparkleNamespace) &&
                       (name == QLatin1String("shortVersionString") ||
                        (name == QLatin1String("version") && item.shortVersion.isEmpty()))) {
                item.shortVersion = xml.readElementText().trimmed();
                item.version = QVersionNumber::fromString(item.shortVersion);
            } else if (inItem && name == QLatin1String("link") && xml.namespaceUri().isEmpty()) {
                item.link = QUrl(xml.readElementText().trimmed());
            }
        } else if (xml.isEndElement() && xml.name() == QLatin1String("item")) {
            inItem = false;
            consider(item);
        }
    }
    if (xml.hasError()) {
        return std::nullopt;
    }
    return newest;
}

void Updater::checkForUpdates() {
    fetch(true);
}

void Updater::checkInBackground() {
    fetch(false);
}

void Updater::fetch(bool requested) {
    if (requested && !m_checking) {
        m_checking = true;
        emit checkingChanged();
    }
    if (m_busy) {
        return; // the check under way reports for both
    }
    m_busy = true;
    QNetworkRequest request(m_feed);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply* reply = m_network.get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        m_busy = false;
        const bool requested = m_checking;
        if (m_checking) {
            m_checking = false;
            emit checkingChanged();
        }
        std::optional<Release> newest;
        if (reply->error() == QNetworkReply::NoError) {
            newest = newestRelease(reply->readAll());
        }
        if (!newest) {
            if (requested) {
                emit finished(Outcome::failed, {});
            }
        } else if (newest->version > m_current) {
            emit finished(Outcome::updateAvailable, *newest);
        } else if (requested) {
            emit finished(Outcome::upToDate, *newest);
        }
    });
}

} // namespace scrivly
