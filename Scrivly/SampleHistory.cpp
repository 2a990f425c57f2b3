#include "Scrivly/SampleHistory.h"

#include "ScrivlyKit/sample/SampleDatabase.h"

#include <stdexcept>

namespace scrivly {

SampleHistory::SampleHistory(const QString& tempFolder)
    : m_dir(tempFolder + QStringLiteral("/scrivly-sample-XXXXXX")) {}

std::string SampleHistory::folder() const {
    return m_dir.path().toStdString() + "/history";
}

std::string SampleHistory::databasePath() const {
    return folder() + "/chat.db";
}

std::string SampleHistory::homePath() const {
    return folder() + "/home";
}

void SampleHistory::ensureCreated(Date now) {
    const std::lock_guard lock(m_mutex);
    if (m_created) {
        return;
    }
    // Without its own folder the path would fall back to the file system's root.
    if (!m_dir.isValid()) {
        throw std::runtime_error(m_dir.errorString().toStdString());
    }
    SampleDatabase::create(folder(), now);
    m_created = true;
}

} // namespace scrivly
