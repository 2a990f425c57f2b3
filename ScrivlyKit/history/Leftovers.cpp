#include "ScrivlyKit/history/Leftovers.h"

#include "ScrivlyKit/database/SnapshotLease.h"

namespace scrivly::Sources {

void removeLeftoverCopies(const std::string& folder) noexcept {
    removeLeftoverSnapshots(folder);
}

} // namespace scrivly::Sources
