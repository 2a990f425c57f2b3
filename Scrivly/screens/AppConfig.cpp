#include "Scrivly/screens/AppConfig.h"

#include <QSettings>

namespace scrivly::AppConfig {

QString version() {
    return QStringLiteral(SCRIVLY_VERSION);
}

QUrl appcastURL(QSettings& store) {
    const QString configured = store.value(QLatin1String(kAppcastKey)).toString();
    return QUrl(configured.isEmpty() ? QLatin1String(kAppcastURL) : configured);
}

} // namespace scrivly::AppConfig
