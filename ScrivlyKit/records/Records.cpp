#include "ScrivlyKit/records/AppleTime.h"
#include "ScrivlyKit/records/Attachment.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Date.h"
#include "ScrivlyKit/records/Handle.h"
#include "ScrivlyKit/records/Hashing.h"
#include "ScrivlyKit/records/Message.h"
#include "ScrivlyKit/records/Reaction.h"

#include <cmath>
#include <cstdlib>

namespace scrivly {

Date Date::fromSystemClock(std::chrono::system_clock::time_point time) {
    const auto micros =
        std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
    return fromUnixSeconds(static_cast<double>(micros) / 1e6);
}

std::chrono::system_clock::time_point Date::toSystemClock() const {
    const auto micros = static_cast<std::int64_t>(std::llround(unixSeconds() * 1e6));
    return std::chrono::system_clock::time_point{std::chrono::microseconds{micros}};
}

Date Date::now() { return fromSystemClock(std::chrono::system_clock::now()); }

Date AppleTime::date(std::int64_t stored) {
    // Compare magnitudes without negating, which would overflow for the most negative value.
    const bool isSeconds = stored > -kSecondsLimit && stored < kSecondsLimit;
    if (isSeconds) {
        return Date{static_cast<double>(stored)};
    }
    return Date{static_cast<double>(stored) / 1e9};
}

std::int64_t AppleTime::nanoseconds(Date date) {
    return static_cast<std::int64_t>(date.seconds * 1e9);
}

std::optional<std::string> Attachment::expandedPath(const std::optional<std::string>& stored,
                                                    const std::string& home) {
    if (!stored) {
        return std::nullopt;
    }
    if (stored->starts_with("~/")) {
        return home + stored->substr(1);
    }
    return stored;
}

std::string Attachment::displayName(const std::optional<std::string>& transferName,
                                    const std::optional<std::string>& storedFileName) {
    if (transferName && !transferName->empty()) {
        return *transferName;
    }
    if (storedFileName) {
        std::string_view path = *storedFileName;
        while (!path.empty() && path.back() == '/') {
            path.remove_suffix(1);
        }
        const auto slash = path.rfind('/');
        const auto last = slash == std::string_view::npos ? path : path.substr(slash + 1);
        if (!last.empty()) {
            return std::string(last);
        }
    }
    return "Attachment";
}

std::optional<std::string> Message::reactionTargetFrom(const std::optional<std::string>& stored) {
    if (!stored || stored->empty()) {
        return std::nullopt;
    }
    if (const auto slash = stored->find('/'); slash != std::string::npos) {
        return stored->substr(slash + 1);
    }
    if (stored->starts_with("bp:")) {
        return stored->substr(3);
    }
    return stored;
}

std::optional<ReactionKind> ReactionKind::fromType(std::int64_t reactionType,
                                                   const std::optional<std::string>& emoji) {
    switch (reactionType % 1000) {
    case 0:
        return fixed(Case::loved);
    case 1:
        return fixed(Case::liked);
    case 2:
        return fixed(Case::disliked);
    case 3:
        return fixed(Case::laughed);
    case 4:
        return fixed(Case::emphasized);
    case 5:
        return fixed(Case::questioned);
    case 6:
        if (emoji && !emoji->empty()) {
            return emojiReaction(*emoji);
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

std::string ReactionKind::caseName() const {
    switch (kind) {
    case Case::emoji:
        return "emoji";
    case Case::loved:
        return "loved";
    case Case::liked:
        return "liked";
    case Case::disliked:
        return "disliked";
    case Case::laughed:
        return "laughed";
    case Case::emphasized:
        return "emphasized";
    case Case::questioned:
        return "questioned";
    }
    return "emoji";
}

} // namespace scrivly

using namespace scrivly;

std::size_t std::hash<Date>::operator()(const Date& date) const noexcept {
    return std::hash<double>{}(date.seconds);
}

std::size_t std::hash<Handle>::operator()(const Handle& handle) const noexcept {
    std::size_t seed = 0;
    hashCombine(seed, handle.rowID);
    hashCombine(seed, handle.address);
    hashCombine(seed, handle.service);
    return seed;
}

std::size_t std::hash<Chat>::operator()(const Chat& chat) const noexcept {
    std::size_t seed = 0;
    hashCombine(seed, chat.id);
    hashCombine(seed, chat.guid);
    hashCombine(seed, chat.identifier);
    hashCombine(seed, chat.displayName);
    hashCombine(seed, chat.service);
    hashCombine(seed, chat.isGroup);
    hashCombine(seed, chat.handles);
    hashCombine(seed, chat.messageCount);
    hashCombine(seed, chat.lastDate);
    return seed;
}

std::size_t std::hash<Attachment>::operator()(const Attachment& attachment) const noexcept {
    std::size_t seed = 0;
    hashCombine(seed, attachment.rowID);
    hashCombine(seed, attachment.path);
    hashCombine(seed, attachment.name);
    hashCombine(seed, attachment.mimeType);
    hashCombine(seed, attachment.uti);
    hashCombine(seed, attachment.totalBytes);
    return seed;
}

std::size_t std::hash<Message>::operator()(const Message& message) const noexcept {
    std::size_t seed = 0;
    hashCombine(seed, message.id);
    hashCombine(seed, message.guid);
    hashCombine(seed, message.chatID);
    hashCombine(seed, message.date);
    hashCombine(seed, message.isFromMe);
    hashCombine(seed, message.sender);
    hashCombine(seed, message.text);
    hashCombine(seed, message.attachments);
    hashCombine(seed, message.service);
    hashCombine(seed, message.reactionTarget);
    hashCombine(seed, message.reactionType);
    hashCombine(seed, message.reactionEmoji);
    return seed;
}

std::size_t std::hash<ReactionKind>::operator()(const ReactionKind& kind) const noexcept {
    std::size_t seed = 0;
    hashCombine(seed, static_cast<int>(kind.kind));
    hashCombine(seed, kind.emoji);
    return seed;
}

std::size_t std::hash<Reaction>::operator()(const Reaction& reaction) const noexcept {
    std::size_t seed = 0;
    hashCombine(seed, reaction.kind);
    hashCombine(seed, reaction.sender);
    return seed;
}
