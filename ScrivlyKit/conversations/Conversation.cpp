#include "ScrivlyKit/conversations/Conversation.h"

#include "ScrivlyKit/records/Hashing.h"
#include "ScrivlyKit/text/Unicode.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace scrivly {

namespace {

constexpr std::size_t kTitleNames = 3;
constexpr std::size_t kMinimumSearchDigits = 3;

std::string groupingKey(const Chat& chat, const NameBook& names) {
    if (chat.isGroup) {
        return "g:" + (chat.guid.empty() ? std::to_string(chat.id) : chat.guid);
    }
    if (chat.handles.empty()) {
        return "x:" + std::to_string(chat.id);
    }
    const auto& address = chat.handles.front().address;
    if (const auto contact = names.contact(address)) {
        return "k:" + *contact;
    }
    return "c:" + NameBook::key(address).value_or(address);
}

void appendDistinct(std::vector<std::string>& list, std::unordered_set<std::string>& seen,
                    const std::string& value) {
    if (seen.insert(value).second) {
        list.push_back(value);
    }
}

std::string joined(const std::vector<std::string>& parts, std::size_t count,
                   std::string_view separator) {
    std::string out;
    for (std::size_t index = 0; index < count && index < parts.size(); ++index) {
        if (index > 0) {
            out += separator;
        }
        out += parts[index];
    }
    return out;
}

std::string title(const Chat& first, const std::vector<std::string>& participants,
                  const OthersText& others) {
    std::string chosen;
    if (first.displayName) {
        chosen = *first.displayName;
    } else if (first.isGroup) {
        chosen = joined(participants, kTitleNames, ", ");
        if (participants.size() > kTitleNames) {
            chosen += " + " + others(static_cast<std::int64_t>(participants.size() - kTitleNames));
        }
    } else if (!participants.empty()) {
        chosen = participants.front();
    } else {
        chosen = NameBook::format(first.identifier);
    }
    // A present but empty display name lands here too, on purpose: the stored identifier is the
    // last resort, not the participants.
    if (chosen.empty()) {
        chosen = first.identifier;
    }
    return chosen;
}

Conversation build(std::string id, const std::vector<const Chat*>& chats, const NameBook& names,
                   const OthersText& others) {
    Conversation conversation;
    conversation.id = std::move(id);
    const Chat& first = *chats.front();

    std::unordered_set<std::string> seenAddresses;
    std::unordered_set<std::string> seenParticipants;
    std::unordered_set<std::string> seenServices;
    for (const auto* chat : chats) {
        for (const auto& handle : chat->handles) {
            if (!seenAddresses.insert(handle.address).second) {
                continue;
            }
            conversation.addresses.push_back(handle.address);
            appendDistinct(conversation.participants, seenParticipants,
                           names.display(handle.address));
        }
        conversation.chatIDs.push_back(chat->id);
        conversation.messageCount += chat->messageCount;
        if (chat->lastDate &&
            (!conversation.lastDate || *chat->lastDate > *conversation.lastDate)) {
            conversation.lastDate = chat->lastDate;
        }
        if (!chat->service.empty()) {
            appendDistinct(conversation.services, seenServices, chat->service);
        }
    }
    std::sort(conversation.chatIDs.begin(), conversation.chatIDs.end());
    // Byte order, so "SMS" sorts before "iMessage".
    std::sort(conversation.services.begin(), conversation.services.end());
    conversation.title = title(first, conversation.participants, others);
    conversation.isGroup = first.isGroup;
    return conversation;
}

// Two people with the same name get their addresses as a second line.
void markLookAlikeTitles(std::vector<Conversation>& conversations) {
    std::unordered_map<std::string, int> titleCounts;
    for (const auto& conversation : conversations) {
        if (!conversation.isGroup) {
            ++titleCounts[Unicode::lowercased(conversation.title)];
        }
    }
    for (auto& conversation : conversations) {
        if (conversation.isGroup || titleCounts[Unicode::lowercased(conversation.title)] < 2) {
            continue;
        }
        std::vector<std::string> tidied;
        for (const auto& address : conversation.addresses) {
            tidied.push_back(NameBook::format(address));
        }
        conversation.detail = joined(tidied, tidied.size(), ", ");
    }
}

bool isASCIIDigit(char32_t codePoint) {
    return codePoint >= U'0' && codePoint <= U'9';
}

std::string asciiDigits(std::string_view text) {
    std::string digits;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            digits += c;
        }
    }
    return digits;
}

bool looksLikePhoneNumber(std::string_view text) {
    bool allowed = true;
    Unicode::forEachCodePoint(text, [&](char32_t codePoint) {
        const bool punctuation = codePoint == U'+' || codePoint == U'-' || codePoint == U'(' ||
                                 codePoint == U')' || codePoint == U' ' || codePoint == U'.';
        if (!isASCIIDigit(codePoint) && !punctuation) {
            allowed = false;
        }
    });
    return allowed && Unicode::containsNumeric(text);
}

// The digits of text when it is phone-number-like with enough digits to search by, else nothing.
std::optional<std::string> searchDigits(std::string_view text) {
    if (!looksLikePhoneNumber(text)) {
        return std::nullopt;
    }
    auto digits = asciiDigits(text);
    if (digits.size() < kMinimumSearchDigits) {
        return std::nullopt;
    }
    return digits;
}

std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> result;
    std::string current;
    std::size_t offset = 0;
    while (offset < text.size()) {
        const auto start = offset;
        const auto codePoint = Unicode::nextCodePoint(text, offset);
        if (Unicode::isWhiteSpace(codePoint)) {
            if (!current.empty()) {
                result.push_back(std::move(current));
                current.clear();
            }
        } else {
            current.append(text.substr(start, offset - start));
        }
    }
    if (!current.empty()) {
        result.push_back(std::move(current));
    }
    return result;
}

} // namespace

namespace Conversations {

std::string englishOthers(std::int64_t count) {
    return count == 1 ? "1 other" : std::to_string(count) + " others";
}

std::vector<Conversation> group(const std::vector<Chat>& chats, const NameBook& names,
                                const OthersText& others) {
    std::vector<std::string> keys;
    std::unordered_map<std::string, std::vector<const Chat*>> chatsByKey;
    for (const auto& chat : chats) {
        if (chat.messageCount < 1) {
            continue;
        }
        auto key = groupingKey(chat, names);
        auto& members = chatsByKey[key];
        if (members.empty()) {
            keys.push_back(std::move(key));
        }
        members.push_back(&chat);
    }

    std::vector<Conversation> conversations;
    conversations.reserve(keys.size());
    for (auto& key : keys) {
        const auto& members = chatsByKey.at(key);
        conversations.push_back(build(std::move(key), members, names, others));
    }
    markLookAlikeTitles(conversations);

    // Newest first; undated conversations go last. Stable, so ties keep first-seen order.
    std::stable_sort(conversations.begin(), conversations.end(),
                     [](const Conversation& left, const Conversation& right) {
                         if (!right.lastDate) {
                             return left.lastDate.has_value();
                         }
                         return left.lastDate && *left.lastDate > *right.lastDate;
                     });
    return conversations;
}

bool matches(const Conversation& conversation, std::string_view query) {
    const auto needle = Unicode::lowercased(Unicode::trimmed(query));
    if (needle.empty()) {
        return true;
    }

    std::string haystack = conversation.title;
    for (const auto& participant : conversation.participants) {
        haystack += ' ' + participant;
    }
    for (const auto& address : conversation.addresses) {
        haystack += ' ' + address;
    }
    haystack += ' ' + conversation.detail.value_or("");
    haystack = Unicode::lowercased(haystack);

    std::vector<std::string> addressDigits;
    for (const auto& address : conversation.addresses) {
        addressDigits.push_back(asciiDigits(address));
    }

    if (const auto digits = searchDigits(needle)) {
        for (const auto& candidate : addressDigits) {
            if (candidate.find(*digits) != std::string::npos) {
                return true;
            }
        }
    }

    const auto allDigits = joined(addressDigits, addressDigits.size(), " ");
    for (const auto& word : words(needle)) {
        if (haystack.find(word) != std::string::npos) {
            continue;
        }
        const auto digits = searchDigits(word);
        if (!digits || allDigits.find(*digits) == std::string::npos) {
            return false;
        }
    }
    return true;
}

} // namespace Conversations

} // namespace scrivly

std::size_t std::hash<scrivly::Conversation>::operator()(
    const scrivly::Conversation& conversation) const noexcept {
    std::size_t seed = 0;
    scrivly::hashCombine(seed, conversation.id);
    scrivly::hashCombine(seed, conversation.chatIDs);
    scrivly::hashCombine(seed, conversation.title);
    scrivly::hashCombine(seed, conversation.isGroup);
    scrivly::hashCombine(seed, conversation.participants);
    scrivly::hashCombine(seed, conversation.addresses);
    scrivly::hashCombine(seed, conversation.messageCount);
    scrivly::hashCombine(seed, conversation.lastDate);
    scrivly::hashCombine(seed, conversation.services);
    scrivly::hashCombine(seed, conversation.detail);
    return seed;
}
