#include "ScrivlyKit/names/NameBook.h"

#include "ScrivlyKit/text/Unicode.h"

#include <algorithm>

namespace scrivly {

namespace {

constexpr std::size_t kPhoneKeyDigits = 10;

bool isASCIIDigit(char c) {
    return c >= '0' && c <= '9';
}

// Punctuation that people put into phone numbers; an address with anything else is not tidied.
bool isPhonePunctuation(char32_t codePoint) {
    return codePoint == U'+' || codePoint == U'-' || codePoint == U'(' || codePoint == U')' ||
           codePoint == U' ' || codePoint == U'.';
}

} // namespace

NameBook::NameBook(const std::vector<std::pair<std::string, std::string>>& pairs) {
    for (const auto& [address, name] : pairs) {
        add(address, name);
    }
}

std::optional<std::string> NameBook::key(std::string_view address) {
    const auto trimmedAddress = Unicode::trimmed(address);
    if (trimmedAddress.empty()) {
        return std::nullopt;
    }
    if (trimmedAddress.find('@') != std::string::npos) {
        return "e:" + Unicode::lowercased(trimmedAddress);
    }
    // Bytes below 0x80 are never part of a longer UTF-8 sequence, so this keeps ASCII digits only.
    std::string digits;
    for (const char c : trimmedAddress) {
        if (isASCIIDigit(c)) {
            digits += c;
        }
    }
    if (!digits.empty()) {
        // The last ten digits, so that a country code or trunk prefix does not matter.
        const auto keep = std::min(digits.size(), kPhoneKeyDigits);
        return "p:" + digits.substr(digits.size() - keep);
    }
    return "o:" + Unicode::lowercased(trimmedAddress);
}

void NameBook::add(std::string_view address, std::string_view name,
                   const std::optional<std::string>& contact) {
    auto trimmedName = Unicode::trimmed(name);
    if (trimmedName.empty()) {
        return;
    }
    const auto addressKey = key(address);
    if (!addressKey) {
        return;
    }
    // try_emplace leaves an existing entry alone: the first person recorded for a key keeps it.
    std::optional<std::string> contactID;
    if (contact && !contact->empty()) {
        contactID = contact;
    }
    m_names.try_emplace(*addressKey, Entry{std::move(trimmedName), std::move(contactID)});
}

const NameBook::Entry* NameBook::entry(std::string_view address) const {
    const auto addressKey = key(address);
    if (!addressKey) {
        return nullptr;
    }
    const auto found = m_names.find(*addressKey);
    return found == m_names.end() ? nullptr : &found->second;
}

std::optional<std::string> NameBook::name(std::string_view address) const {
    if (const auto* found = entry(address)) {
        return found->name;
    }
    return std::nullopt;
}

std::optional<std::string> NameBook::contact(std::string_view address) const {
    if (const auto* found = entry(address)) {
        return found->contact;
    }
    return std::nullopt;
}

std::string NameBook::display(std::string_view address) const {
    if (const auto* found = entry(address)) {
        return found->name;
    }
    return format(address);
}

std::string NameBook::format(std::string_view address) {
    if (address.find('@') != std::string_view::npos) {
        return std::string(address);
    }
    std::vector<char32_t> digits;
    bool onlyPhoneCharacters = true;
    Unicode::forEachCodePoint(address, [&](char32_t codePoint) {
        if (Unicode::isNumeric(codePoint)) {
            digits.push_back(codePoint);
        } else if (!isPhonePunctuation(codePoint)) {
            onlyPhoneCharacters = false;
        }
    });
    if (!onlyPhoneCharacters) {
        return std::string(address);
    }
    std::size_t first = 0;
    if (digits.size() == 11 && digits.front() == U'1') {
        first = 1;
    } else if (digits.size() != 10) {
        return std::string(address);
    }
    const auto appendDigits = [&](std::string& out, std::size_t from, std::size_t count) {
        for (std::size_t index = from; index < from + count; ++index) {
            Unicode::appendUTF8(out, digits[first + index]);
        }
    };
    std::string out = "+1 (";
    appendDigits(out, 0, 3);
    out += ") ";
    appendDigits(out, 3, 3);
    out += '-';
    appendDigits(out, 6, 4);
    return out;
}

void NameBook::merge(const NameBook& other) {
    for (const auto& [key, entry] : other.m_names) {
        m_names.try_emplace(key, entry);
    }
}

} // namespace scrivly
