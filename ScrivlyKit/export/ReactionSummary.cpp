#include "ScrivlyKit/export/ReactionSummary.h"

namespace scrivly {

std::string reactionSummary(const std::vector<ShownReaction>& reactions,
                            const ExportStrings& strings) {
    std::string summary;
    for (std::size_t index = 0; index < reactions.size(); ++index) {
        const auto& reaction = reactions[index];
        if (index > 0) {
            summary += " \u00B7 ";
        }
        summary += reaction.who + ": " + strings.reactionName(reaction.kind);
    }
    return summary;
}

} // namespace scrivly
