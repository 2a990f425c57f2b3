#pragma once

#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Date.h"
#include "ScrivlyKit/names/NameBook.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivly {

// One person or group as the user thinks of it: the chats that belong together, merged.
struct Conversation {
    std::string id; // grouping key: "g:", "x:", "k:" or "c:" followed by the rest
    std::vector<std::int64_t> chatIDs; // ascending
    std::string title;
    bool isGroup = false;
    std::vector<std::string> participants; // names or tidied addresses, distinct, first seen first
    std::vector<std::string> addresses;    // raw addresses, distinct, first seen first
    std::int64_t messageCount = 0;
    std::optional<Date> lastDate;
    std::vector<std::string> services; // distinct, non-empty, ascending
    std::optional<std::string> detail; // tells apart people with the same title

    bool operator==(const Conversation&) const = default;
};

// Names a count of further group members ("1 other", "2 others").
using OthersText = std::function<std::string(std::int64_t count)>;

namespace Conversations {

// The English count text: "1 other" for 1, otherwise the count followed by " others".
std::string englishOthers(std::int64_t count);

// Groups the reader's chats into conversations, titles them, marks look-alike titles and sorts
// them newest first (stable). Chats without messages are left out.
std::vector<Conversation> group(const std::vector<Chat>& chats, const NameBook& names,
                                const OthersText& others = englishOthers);

// Whether the conversation matches the search text typed into the list's search field.
bool matches(const Conversation& conversation, std::string_view query);

} // namespace Conversations

} // namespace scrivly

template <> struct std::hash<scrivly::Conversation> {
    std::size_t operator()(const scrivly::Conversation& conversation) const noexcept;
};
