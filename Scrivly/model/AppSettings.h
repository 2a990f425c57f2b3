#pragma once

#include "ScrivlyKit/export/PaperSize.h"

#include <QByteArray>
#include <QMap>
#include <QString>

class QSettings;

namespace scrivly {

// The choices that outlive a session. Stored as one JSON object under the key "settings" of the
// preferences store; the per-export fields live in ExportForm instead.
struct AppSettings {
    bool onboardingDone = false; // the welcome sheet was closed once
    QString myName;              // labels the user's own messages; blank means "Me"
    PaperSize paper = PaperSize::letter;
    bool coverPage = true;
    bool includeImages = true;
    // The Attachments folder the user chose for a database file, by the file's absolute path.
    QMap<QString, QString> attachmentFolders;

    // The key under which the JSON document is stored.
    static constexpr const char* kStoreKey = "settings";

    // The stored settings, or the defaults when there are none or they cannot be decoded. An
    // unknown paper size falls back to letter without spoiling the other fields. Never fails.
    static AppSettings load(QSettings& store);
    // Writes the whole record at once; failures are ignored.
    static void save(QSettings& store, const AppSettings& settings);

    // The JSON document, and back (with the leniency of load).
    QByteArray encoded() const;
    static AppSettings decoded(const QByteArray& data);

    bool operator==(const AppSettings&) const = default;
};

} // namespace scrivly
