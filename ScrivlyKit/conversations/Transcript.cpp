#include "ScrivlyKit/conversations/Transcript.h"

#include "ScrivlyKit/records/Hashing.h"

#include <algorithm>
#include <string_view>
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

    // A conversation has few senders but may have hundreds of thousands of messages: each
    // sender's address is normalised and looked up once.
    std::unordered_map<std::string_view, std::string> senderNames;
    const auto nameOf = [&](const Message& message) -> const std::string& {
        static const std::string kUnknown = "?";
        if (message.isFromMe) {
            return me;
        }
        if (!message.sender) {
            return kUnknown;
        }
        auto [found, isNew] = senderNames.try_emplace(*message.sender);
        if (isNew) {
            found->second = names.display(*message.sender);
        }
        return found->second;
    };

    std::vector<PendingReaction> pending;
    // The GUID of each entry's message, viewed in messages (which outlives this call).
    std::vector<std::string_view> entryGUIDs;
    if (!from && !to) {
        // Without bounds nearly every message becomes an entry.
        transcript.entries.reserve(messages.size());
        entryGUIDs.reserve(messages.size());
    }
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
                               ShownReaction{nameOf(message), std::move(*kind), message.isFromMe}});
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
        entryGUIDs.push_back(message.guid);
        transcript.entries.push_back(TranscriptEntry{message.id,
                                                     message.date,
                                                     nameOf(message),
                                                     message.isFromMe,
                                                     message.text,
                                                     message.attachments,
                                                     {},
                                                     message.service});
    }
    if (pending.empty()) {
        return transcript;
    }

    // Only the few messages that reactions point at need finding, so only their GUIDs are
    // indexed. When two entries share a GUID, the later one takes the reactions.
    constexpr std::size_t kNoEntry = static_cast<std::size_t>(-1);
    std::unordered_map<std::string_view, std::size_t> targets;
    targets.reserve(pending.size());
    for (const auto& reaction : pending) {
        targets.emplace(reaction.target, kNoEntry);
    }
    for (std::size_t index = 0; index < entryGUIDs.size(); ++index) {
        if (entryGUIDs[index].empty()) {
            continue;
        }
        if (const auto found = targets.find(entryGUIDs[index]); found != targets.end()) {
            found->second = index;
        }
    }
    for (const auto& reaction : pending) {
        const auto index = targets.find(reaction.target)->second;
        if (index != kNoEntry) {
            apply(transcript.entries[index].reactions, reaction);
        }
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
