#pragma once

#include "ScrivlyKit/records/Date.h"
#include "ScrivlyKit/records/Handle.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

// One chat as stored; a person usually has several, one per service and address.
struct Chat {
    std::int64_t id = 0;
    std::string guid;
    std::string identifier;                 // an address for one-to-one chats, a name for groups
    std::optional<std::string> displayName; // as stored; absent when NULL or only spaces and tabs
    std::string service;
    bool isGroup = false; // style 43, or more than one member
    std::vector<Handle> handles;
    std::int64_t messageCount = 0; // ordinary messages, reactions not counted
    std::optional<Date> lastDate;  // newest counted message

    // Style value that marks a group chat.
    static constexpr std::int64_t kGroupStyle = 43;

    bool operator==(const Chat&) const = default;
};

} // namespace scrivly

template <> struct std::hash<scrivly::Chat> {
    std::size_t operator()(const scrivly::Chat& chat) const noexcept;
};
