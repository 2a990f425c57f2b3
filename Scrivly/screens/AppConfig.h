#pragma once

#include <QString>
#include <QUrl>

class QSettings;

// Fixed facts about the product that the screens show or use.
namespace scrivly::AppConfig {

inline constexpr const char* kDisplayName = "Scrivly";
inline constexpr const char* kSupportAddress = "support@scrivly.example";
inline constexpr const char* kWebsite = "https://scrivly.example";
// The feed of released versions that "Check for Updates…" reads.
inline constexpr const char* kAppcastURL = "https://scrivly.example/appcast.xml";
// Preferences key that points the update check at another feed (a file: URL in tests).
inline constexpr const char* kAppcastKey = "appcastURL";

// The version the build was made from ("0.1.0").
QString version();
// The update feed: the preference under kAppcastKey when set, else kAppcastURL.
QUrl appcastURL(QSettings& store);

} // namespace scrivly::AppConfig
