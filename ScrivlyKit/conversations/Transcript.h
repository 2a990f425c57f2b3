#pragma once

#include "ScrivlyKit/records/Attachment.h"
#include "ScrivlyKit/records/Date.h"
#include "ScrivlyKit/records/Message.h"
#include "ScrivlyKit/records/Reaction.h"
#include "ScrivlyKit/names/NameBook.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

// A reaction under a transcript entry.
struct ShownReaction {
    std::string who; // display name of the reacting person, or the user's own name
    ReactionKind kind;
    bool isFromMe = false;

    bool operator==(const ShownReaction&) const = default;
};

// One shown message.
struct TranscriptEntry {
    std::int64_t id = 0;
    Date date;
    std::string sender; // display name; the user's own name for the user's messages
    bool isFromMe = false;
    std::string text;
    std::vector<Attachment> attachments;
    std::vector<ShownReaction> reactions; // in the order they were applied
    std::string service;

    bool operator==(const TranscriptEntry&) const = default;
};

// The messages of one conversation inside a date range, with reactions folded onto them.
struct Transcript {
    std::string title;
    std::vector<std::string> participants;
    std::vector<TranscriptEntry> entries;
    std::optional<Date> from; // lower bound used, inclusive
    std::optional<Date> to;   // upper bound used, inclusive
    std::int64_t totalInRange = 0;
    std::optional<Date> rangeFirstDate;
    std::optional<Date> rangeLastDate;

    std::optional<Date> firstDate() const;
    std::optional<Date> lastDate() const;
    std::size_t attachmentCount() const;

    // Builds the transcript from the conversation's messages in reader order (date, then row id).
    static Transcript build(const std::string& title, const std::vector<std::string>& participants,
                            const std::vector<Message>& messages, std::optional<Date> from,
                            std::optional<Date> to, const std::string& me, const NameBook& names);

    bool operator==(const Transcript&) const = default;
};

// Sender name as shown: me for my messages, "?" without an address, else the name or tidied
// address.
std::string senderName(const Message& message, const std::string& me, const NameBook& names);

} // namespace scrivly

template <> struct std::hash<scrivly::ShownReaction> {
    std::size_t operator()(const scrivly::ShownReaction& reaction) const noexcept;
};
template <> struct std::hash<scrivly::TranscriptEntry> {
    std::size_t operator()(const scrivly::TranscriptEntry& entry) const noexcept;
};
