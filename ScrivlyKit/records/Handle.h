#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace scrivly {

// One address that messages come from or go to.
struct Handle {
    std::int64_t rowID = 0; // 0 for a handle made up from a chat's identifier
    std::string address;    // phone number or e-mail address as stored
    std::string service;    // "iMessage", "SMS", ...; empty when not stored

    bool operator==(const Handle&) const = default;
};

} // namespace scrivly

template <> struct std::hash<scrivly::Handle> {
    std::size_t operator()(const scrivly::Handle& handle) const noexcept;
};
