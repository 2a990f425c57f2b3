#pragma once

#include "ScrivlyKit/records/Date.h"

#include <QTemporaryDir>

#include <mutex>
#include <string>

namespace scrivly {

// The made-up Messages history, written once into a private temporary folder that is removed
// with this object. Shared between the model and its loading tasks.
class SampleHistory {
public:
    // The folder is made under tempFolder.
    explicit SampleHistory(const QString& tempFolder);

    std::string databasePath() const;
    std::string homePath() const;

    // Writes the history the first time it is called; later calls do nothing. Safe to call from
    // several threads. Throws what writing throws (a failed write is tried again next time).
    void ensureCreated(Date now);

private:
    std::string folder() const;

    QTemporaryDir m_dir;
    std::mutex m_mutex;
    bool m_created = false;
};

} // namespace scrivly
