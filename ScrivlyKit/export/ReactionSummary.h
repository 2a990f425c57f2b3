#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportStrings.h"

#include <string>
#include <vector>

namespace scrivly {

// Each reaction as who, ": " and its name, joined with " · ". Shared by the PDF and the CSV.
std::string reactionSummary(const std::vector<ShownReaction>& reactions,
                            const ExportStrings& strings);

} // namespace scrivly
