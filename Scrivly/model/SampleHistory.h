#pragma once

#include "ScrivlyKit/history/Sources.h"
#include "ScrivlyKit/records/Date.h"

#include <QTemporaryDir>

#include <mutex>
#include <optional>

namespace scrivly {

// The made-up Messages history, written once into a private temporary folder that is removed
// with this object. Shared between the model and its loading tasks.
class SampleHistory {
public:
    // The folder is made under tempFolder.
    explicit SampleHistory(const QString& tempFolder);

    // Writes the history the first time it is called and answers its reader and names; later
    // calls answer the same. Safe to call from several threads. Throws what writing throws (a
    // failed write is tried again next time).
    Sources::Sample ensureCreated(Date now);

private:
    QTemporaryDir m_dir;
    std::mutex m_mutex;
    std::optional<Sources::Sample> m_sample;
};

} // namespace scrivly
