#include "ScrivlyKit/export/SenderColors.h"

#include <array>

namespace scrivly {

namespace {

// Dark enough to read as text on white paper and on a light window.
constexpr std::array<SenderColor, 5> kPalette{{
    {0.13, 0.55, 0.27},
    {0.55, 0.27, 0.68},
    {0.8, 0.42, 0.05},
    {0.05, 0.52, 0.58},
    {0.72, 0.2, 0.3},
}};

} // namespace

const SenderColor SenderColors::kMine{0.0, 0.4, 0.85};

SenderColor SenderColors::colorOf(const std::string& sender, bool fromMe) {
    if (fromMe) {
        return kMine;
    }
    auto found = m_assigned.find(sender);
    if (found == m_assigned.end()) {
        found = m_assigned.emplace(sender, kPalette[m_assigned.size() % kPalette.size()]).first;
    }
    return found->second;
}

} // namespace scrivly
