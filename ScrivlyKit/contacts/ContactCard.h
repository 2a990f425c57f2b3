#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace scrivly {

// One person or organisation from an address book (a vCard file or the macOS address-book
// database), reduced to what naming addresses needs. A plain value.
struct ContactCard {
    std::string identifier;   // the card's UID or record id, else one made from its file
    std::string fullName;     // as written on the card, or made from its name parts; may be empty
    std::string organisation; // the organisation's name (its first unit); may be empty
    std::vector<std::string> phoneNumbers;   // in the card's order, as written
    std::vector<std::string> emailAddresses; // in the card's order, as written

    // The name to show: the full name, else the organisation; empty when the card has neither.
    std::string name() const;

    // Joins name parts in the order given, skipping empty ones, with runs of white space and
    // line breaks turned into single spaces and both ends trimmed.
    static std::string joinedName(std::initializer_list<std::string_view> parts);

    bool operator==(const ContactCard&) const = default;
};

} // namespace scrivly
