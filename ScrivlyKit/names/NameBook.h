#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace scrivly {

// Names for the addresses that the Messages database stores, keyed by a normalised form of the
// address ("e:" e-mail, "p:" last ten digits of a phone number, "o:" anything else), so that one
// number written in different notations finds one person. A plain value.
class NameBook {
public:
    struct Entry {
        std::string name;                   // trimmed, never empty
        std::optional<std::string> contact; // address-book record identifier; never empty

        bool operator==(const Entry&) const = default;
    };

    NameBook() = default;
    // Adds each (address, name) pair in order, with no contact identifier.
    explicit NameBook(const std::vector<std::pair<std::string, std::string>>& pairs);

    // The normalised key of an address; nothing when it is empty after trimming.
    static std::optional<std::string> key(std::string_view address);

    // Records one address of one person; the first person recorded for a key keeps it.
    void add(std::string_view address, std::string_view name,
             const std::optional<std::string>& contact = std::nullopt);

    // Adds the other book's entries for keys this book doesn't have yet: this book's names win.
    void merge(const NameBook& other);

    std::optional<std::string> name(std::string_view address) const;
    std::optional<std::string> contact(std::string_view address) const;
    // The name when known, else the tidied address.
    std::string display(std::string_view address) const;
    // Tidies an address for showing: North American ten-digit numbers become +1 (555) 201-3344;
    // everything else comes back unchanged.
    static std::string format(std::string_view address);

    std::size_t count() const { return m_names.size(); }
    bool isEmpty() const { return m_names.empty(); }
    const std::unordered_map<std::string, Entry>& names() const { return m_names; }

    bool operator==(const NameBook&) const = default;

private:
    const Entry* entry(std::string_view address) const;

    std::unordered_map<std::string, Entry> m_names;
};

} // namespace scrivly
