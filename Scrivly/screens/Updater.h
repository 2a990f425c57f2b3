#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVersionNumber>

#include <optional>

class QNetworkReply;

namespace scrivly {

// Looks for a newer Scrivly in an appcast feed (RSS items whose enclosure carries the version, as
// update frameworks publish them). A check started by the user always reports back; a scheduled
// check reports only a new version.
class Updater : public QObject {
    Q_OBJECT

public:
    struct Release {
        QVersionNumber version;
        QString shortVersion; // as shown
        QUrl link;            // where to get it
    };
    enum class Outcome { upToDate, updateAvailable, failed };
    Q_ENUM(Outcome)

    Updater(QUrl feed, QString currentVersion, QObject* parent = nullptr);

    const QUrl& feed() const { return m_feed; }
    // True while a check started from the menu runs.
    bool checking() const { return m_checking; }

    // The newest release the feed lists, or nothing when it lists none that can be read.
    static std::optional<Release> newestRelease(const QByteArray& feed);

public slots:
    // "Check for Updates…": always ends in finished().
    void checkForUpdates();
    // The check made on its own: ends in finished() only when a newer version exists.
    void checkInBackground();

signals:
    void checkingChanged();
    void finished(scrivly::Updater::Outcome outcome, const scrivly::Updater::Release& release);

private:
    void fetch(bool requested);

    QUrl m_feed;
    QVersionNumber m_current;
    QNetworkAccessManager m_network;
    bool m_checking = false;
    bool m_busy = false;
};

} // namespace scrivly
