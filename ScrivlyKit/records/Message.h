#pragma once

#include "ScrivlyKit/records/Attachment.h"
#include "ScrivlyKit/records/Date.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

// One message row of one chat.
struct Message {
    std::int64_t id = 0;
    std::string guid;
    std::int64_t chatID = 0; // the chat through which this row was read
    Date date;
    bool isFromMe = false;
    std::optional<std::string> sender; // sender's address; absent for my messages
    std::string text;                  // cleaned text; may be empty
    std::vector<Attachment> attachments;
    std::string service;
    std::optional<std::string> reactionTarget; // guid of the message reacted to
    std::int64_t reactionType = 0;
    std::optional<std::string> reactionEmoji;

    // 2000 to 3999: a reaction (below 3000 adds, from 3000 takes back).
    bool isReaction() const { return static_cast<std::uint64_t>(reactionType) - 2000U < 2000U; }

    // The target guid in a stored associated_message_guid: after the first "/", else after a
    // leading "bp:", else the whole text; nothing when absent or empty.
    static std::optional<std::string> reactionTargetFrom(const std::optional<std::string>& stored);

    bool operator==(const Message&) const = default;
};

} // namespace scrivly

template <> struct std::hash<scrivly::Message> {
    std::size_t operator()(const scrivly::Message& message) const noexcept;
};
