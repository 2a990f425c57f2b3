#include "ScrivlyKit/conversations/Transcript.h"

#include "ScrivlyKit/records/Hashing.h"

#include <algorithm>
#include <unordered_map>

namespace scrivly {

namespace {

constexpr std::int64_t kFirstRemovalType = 3000;

struct PendingReaction {
    std::string target;
    bool adds = false;
    ShownReaction reaction;
};

void apply(std::vector<ShownReaction>& reactions, const PendingReaction& pending) {
    const auto& incoming = pending.reaction;
    if (!pending.adds) {
        std::erase_if(reactions, [&](const ShownReaction& shown) {
            return shown.who == incoming.who && shown.kind == incoming.kind;
        });
        return;
    }
    // A person holds at most one of the fixed kinds on a message; emoji reactions accumulate.
    if (!incoming.kind.isEmoji()) {
        std::erase_if(reactions, [&](const ShownReaction& shown) {
            return shown.who == incoming.who && !shown.kind.isEmoji();
        });
    }
    reactions.push_back(incoming);
}

} // namespace

std::string senderName(const Message& message, const std::string& me, const NameBook& names) {
    if (message.isFromMe) {
        return me;
    }
    if (!message.sender) {
        return "?";
    }
    return names.display(*message.sender);
}

std::optional<Date> Transcript::firstDate() const {
    if (entries.empty()) {
        return std::nullopt;
    }
    return entries.front().date;
}

std::optional<Date> Transcript::lastDate() const {
    if (entries.empty()) {
        return std::nullopt;
    }
    return entries.back().date;
}

std::size_t Transcript::attachmentCount() const {
    std::size_t count = 0;
    for (const auto& entry : entries) {
        count += entry.attachments.size();
    }
    return count;
}

Transcript Transcript::build(const std::string& title, const std::vector<std::string>& participants,
                             const std::vector<Message>& messages, std::optional<Date> from,
                             std::optional<Date> to, const std::string& me, const NameBook& names) {
    Transcript transcript;
    transcript.title = title;
    transcript.participants = participants;
    transcript.from = from;
    transcript.to = to;

    std::vector<PendingReaction> pending;
    std::unordered_map<std::string, std::size_t> entryByGUID;
    for (const auto& message : messages) {
        if (message.isReaction()) {
            // Reactions are kept regardless of their own date: they count whenever their target
            // is shown. An empty target cannot name a message.
            if (!message.reactionTarget || message.reactionTarget->empty()) {
                continue;
            }
            auto kind = ReactionKind::fromType(message.reactionType, message.reactionEmoji);
            if (!kind) {
                continue;
            }
            pending.push_back({*message.reactionTarget, message.reactionType < kFirstRemovalType,
                               ShownReaction{senderName(message, me, names), std::move(*kind),
                                             message.isFromMe}});
            continue;
        }
        if ((from && message.date < *from) || (to && message.date > *to)) {
            continue;
        }
        if (message.text.empty() && message.attachments.empty()) {
            continue;
        }
        ++transcript.totalInRange;
        if (!transcript.rangeFirstDate) {
            transcript.rangeFirstDate = message.date;
        }
        transcript.rangeLastDate = message.date;
        if (!message.guid.empty()) {
            entryByGUID[message.guid] = transcript.entries.size();
        }
        transcript.entries.push_back(TranscriptEntry{message.id,
                                                     message.date,
                                                     senderName(message, me, names),
                                                     message.isFromMe,
                                                     message.text,
                                                     message.attachments,
                                                     {},
                                                     message.service});
    }

    for (const auto& reaction : pending) {
        const auto found = entryByGUID.find(reaction.target);
        if (found == entryByGUID.end()) {
            continue;
        }
        apply(transcript.entries[found->second].reactions, reaction);
    }
    return transcript;
}

} // namespace scrivly

std::size_t std::hash<scrivly::ShownReaction>::operator()(
    const scrivly::ShownReaction& reaction) const noexcept {
    std::size_t seed = 0;
    scrivly::hashCombine(seed, reaction.who);
    scrivly::hashCombine(seed, reaction.kind);
    scrivly::hashCombine(seed, reaction.isFromMe);
    return seed;
}

std::size_t std::hash<scrivly::TranscriptEntry>::operator()(
    const scrivly::TranscriptEntry& entry) const noexcept {
    std::size_t seed = 0;
    scrivly::hashCombine(seed, entry.id);
    scrivly::hashCombine(seed, entry.date);
    scrivly::hashCombine(seed, entry.sender);
    scrivly::hashCombine(seed, entry.isFromMe);
    scrivly::hashCombine(seed, entry.text);
    scrivly::hashCombine(seed, entry.attachments);
    scrivly::hashCombine(seed, entry.reactions);
    scrivly::hashCombine(seed, entry.service);
    return seed;
}
