#pragma once

#include <string>

namespace scrivly::Sources {

// Removes from folder the private copies that runs which were killed mid-read left behind; those
// of reads still going, in this process or another, stay. Never throws: a copy that can't be
// removed now is tried again at the next start.
void removeLeftoverCopies(const std::string& folder) noexcept;

} // namespace scrivly::Sources
