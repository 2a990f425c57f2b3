#include "Scrivly/model/SampleHistory.h"

#include <QFile>

#include <stdexcept>

namespace scrivly {

SampleHistory::SampleHistory(const QString& tempFolder)
    : m_dir(tempFolder + QStringLiteral("/scrivly-sample-XXXXXX")) {}

Sources::Sample SampleHistory::ensureCreated(Date now) {
    const std::lock_guard lock(m_mutex);
    if (!m_sample) {
        // Without its own folder the history would be written at the file system's root.
        if (!m_dir.isValid()) {
            throw std::runtime_error(m_dir.errorString().toStdString());
        }
        m_sample = Sources::sample(
            QFile::encodeName(m_dir.filePath(QStringLiteral("history"))).toStdString(), now);
    }
    return *m_sample;
}

} // namespace scrivly
