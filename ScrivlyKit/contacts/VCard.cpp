#include "ScrivlyKit/contacts/VCard.h"

#include "ScrivlyKit/platform/FileSystem.h"

#include "ScrivlyKit/contacts/ContactsError.h"
#include "ScrivlyKit/text/Unicode.h"

#include <unicode/ucnv.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

namespace scrivly::VCard {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (upper(a[i]) != upper(b[i])) {
            return false;
        }
    }
    return true;
}

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           equalsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

std::string upperCased(std::string_view text) {
    std::string result(text);
    for (auto& c : result) {
        c = upper(c);
    }
    return result;
}

// Spaces and tabs only: the white space that vCard syntax itself uses.
std::string_view trimmedBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char u = upper(c);
    if (u >= 'A' && u <= 'F') {
        return u - 'A' + 10;
    }
    return -1;
}

// Decodes escapes of the form marker followed by two hexadecimal digits; anything else is kept.
std::string hexDecoded(std::string_view text, char marker) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == marker && i + 2 < text.size()) {
            const int high = hexValue(text[i + 1]);
            const int low = hexValue(text[i + 2]);
            if (high >= 0 && low >= 0) {
                result += static_cast<char>(high * 16 + low);
                i += 2;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

struct CloseConverter {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};

// The bytes converted from charset to UTF-8; nothing when ICU does not know the charset.
std::optional<std::string> convertedToUTF8(std::string_view bytes, const std::string& charset) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(charset.c_str(), &status));
    if (U_FAILURE(status) || !converter) {
        return std::nullopt;
    }
    const auto length = static_cast<std::int32_t>(bytes.size());
    // UTF-8 takes at most three bytes per UTF-16 unit, and a source byte yields at most two
    // units, so this bound needs no second pass.
    std::string result(bytes.size() * 6 + 4, '\0');
    status = U_ZERO_ERROR;
    const auto written =
        ucnv_toAlgorithmic(UCNV_UTF8, converter.get(), result.data(),
                           static_cast<std::int32_t>(result.size()), bytes.data(), length, &status);
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    result.resize(static_cast<std::size_t>(written));
    return result;
}

bool isUTF8Name(std::string_view charset) {
    return equalsIgnoringCase(charset, "UTF-8") || equalsIgnoringCase(charset, "UTF8");
}

// What the parameters of one property say about its value.
struct Parameters {
    bool quotedPrintable = false;
    bool base64 = false;
    bool uri = false;    // VALUE=uri
    std::string charset; // empty when not given
};

void applyEncoding(Parameters& parameters, std::string_view encoding) {
    if (equalsIgnoringCase(encoding, "QUOTED-PRINTABLE")) {
        parameters.quotedPrintable = true;
    } else if (equalsIgnoringCase(encoding, "BASE64") || equalsIgnoringCase(encoding, "B")) {
        parameters.base64 = true;
    }
}

// The name (without its group) and the parameters of a property, from the text before its
// value. Parameter values may be quoted; vCard 2.1 also allows bare values (TEL;CELL;PREF).
struct Head {
    std::string name; // upper case
    Parameters parameters;
};

std::size_t findOutsideQuotes(std::string_view text, char wanted, std::size_t from = 0) {
    bool quoted = false;
    for (std::size_t i = from; i < text.size(); ++i) {
        if (text[i] == '"') {
            quoted = !quoted;
        } else if (text[i] == wanted && !quoted) {
            return i;
        }
    }
    return std::string_view::npos;
}

std::string_view unquoted(std::string_view text) {
    text = trimmedBlanks(text);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = text.substr(1, text.size() - 2);
    }
    return text;
}

std::string_view nameOf(std::string_view head) {
    auto name = head.substr(0, std::min(head.find(';'), head.size()));
    const auto dot = name.rfind('.');
    if (dot != std::string_view::npos) {
        name.remove_prefix(dot + 1); // item1.TEL: the group only ties labels to values
    }
    return trimmedBlanks(name);
}

Head parseHead(std::string_view head) {
    Head result;
    result.name = upperCased(nameOf(head));
    auto start = head.find(';');
    while (start != std::string_view::npos) {
        const auto end = findOutsideQuotes(head, ';', start + 1);
        const auto parameter = head.substr(
            start + 1, end == std::string_view::npos ? std::string_view::npos : end - start - 1);
        start = end;
        const auto equals = parameter.find('=');
        if (equals == std::string_view::npos) {
            applyEncoding(result.parameters, trimmedBlanks(parameter));
            continue;
        }
        const auto key = trimmedBlanks(parameter.substr(0, equals));
        const auto value = unquoted(parameter.substr(equals + 1));
        if (equalsIgnoringCase(key, "ENCODING")) {
            applyEncoding(result.parameters, value);
        } else if (equalsIgnoringCase(key, "CHARSET")) {
            result.parameters.charset = std::string(value);
        } else if (equalsIgnoringCase(key, "VALUE")) {
            result.parameters.uri = equalsIgnoringCase(value, "uri");
        }
    }
    return result;
}

// The value's text in UTF-8, before vCard escapes are undone.
std::string decodedValue(std::string_view raw, const Parameters& parameters) {
    std::string bytes = parameters.quotedPrintable ? hexDecoded(raw, '=') : std::string(raw);
    if (!parameters.charset.empty() && !isUTF8Name(parameters.charset)) {
        if (auto converted = convertedToUTF8(bytes, parameters.charset)) {
            bytes = std::move(*converted);
        }
    }
    return Unicode::repairedUTF8(bytes);
}

// Undoes the backslash escapes of text values. Unknown escapes are kept as written, since
// vCard 2.1 writers put bare backslashes into values.
std::string unescaped(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        const char next = text[i + 1];
        if (next == 'n' || next == 'N') {
            result += '\n';
        } else if (next == '\\' || next == ',' || next == ';' || next == ':') {
            result += next;
        } else {
            result += '\\';
            result += next;
        }
        ++i;
    }
    return result;
}

// Splits at separators that are not escaped; the parts keep their escapes.
std::vector<std::string_view> splitUnescaped(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == separator) {
            parts.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(text.substr(start));
    return parts;
}

// One component of a structured value (N, ORG); its list values joined by spaces.
std::string component(const std::vector<std::string_view>& components, std::size_t index) {
    if (index >= components.size()) {
        return {};
    }
    std::string result;
    for (const auto item : splitUnescaped(components[index], ',')) {
        if (!result.empty()) {
            result += ' ';
        }
        result += unescaped(item);
    }
    return result;
}

// The number of a tel: URI ("tel:+1-555-010-2233;ext=1" gives "+1-555-010-2233").
std::string telURINumber(std::string_view text) {
    text = trimmedBlanks(text);
    if (startsWithIgnoringCase(text, "tel:")) {
        text.remove_prefix(4);
    }
    text = text.substr(0, std::min(text.find(';'), text.size()));
    return Unicode::repairedUTF8(hexDecoded(text, '%'));
}

// The address of a mailto: URI, or the text itself.
std::string emailAddress(std::string_view text) {
    auto value = unescaped(text);
    std::string_view address = trimmedBlanks(value);
    if (!startsWithIgnoringCase(address, "mailto:")) {
        return std::string(address);
    }
    address.remove_prefix(7);
    address = address.substr(0, std::min(address.find('?'), address.size()));
    return Unicode::repairedUTF8(hexDecoded(address, '%'));
}

bool isInteresting(std::string_view name) {
    for (const std::string_view wanted :
         {"BEGIN", "END", "VERSION", "FN", "N", "ORG", "TEL", "EMAIL", "UID"}) {
        if (equalsIgnoringCase(name, wanted)) {
            return true;
        }
    }
    return false;
}

// A line that only base64 data can be: 2.1 writers continue binary values without indenting.
bool isBase64Data(std::string_view line) {
    for (const char c : line) {
        const bool alphanumeric =
            (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        if (!alphanumeric && c != '+' && c != '/' && c != '=' && c != ' ' && c != '\t') {
            return false;
        }
    }
    return true;
}

bool isCardBoundary(std::string_view line) {
    line = trimmedBlanks(line);
    return equalsIgnoringCase(line, "END:VCARD") || equalsIgnoringCase(line, "BEGIN:VCARD");
}

// The card being read, with what it has collected so far.
struct OpenCard {
    std::size_t index = 0;
    bool damaged = false;
    bool version21 = false;
    std::optional<std::string> formattedName;  // FN
    std::optional<std::string> structuredName; // made from N
    std::optional<std::string> organisation;
    std::optional<std::string> uid;
    std::vector<std::string> phoneNumbers;
    std::vector<std::string> emailAddresses;
};

class Parser {
public:
    Parser(std::string_view bytes, std::string_view source) : m_bytes(bytes), m_source(source) {}

    Result run() {
        while (auto first = nextLine()) {
            auto line = *first;
            if (line.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
                line.remove_prefix(kByteOrderMark.size()); // also where files were joined
            }
            if (trimmedBlanks(line).empty()) {
                continue;
            }
            readProperty(line);
        }
        if (m_card) {
            ++m_result.skipped; // the bytes ended inside a card
        }
        return std::move(m_result);
    }

private:
    // The next physical line without its terminator (CRLF, LF or CR); nothing at the end.
    std::optional<std::string_view> peekLine(std::size_t& after) const {
        if (m_position >= m_bytes.size()) {
            return std::nullopt;
        }
        const auto end = m_bytes.find_first_of("\r\n", m_position);
        if (end == std::string_view::npos) {
            after = m_bytes.size();
            return m_bytes.substr(m_position);
        }
        after = end + 1;
        if (m_bytes[end] == '\r' && after < m_bytes.size() && m_bytes[after] == '\n') {
            ++after;
        }
        return m_bytes.substr(m_position, end - m_position);
    }

    std::optional<std::string_view> nextLine() {
        std::size_t after = 0;
        auto line = peekLine(after);
        if (line) {
            m_position = after;
        }
        return line;
    }

    // Gathers one property from its first line and its continuations, then handles it. Only the
    // properties a name needs are gathered; the rest (photos above all) are passed over without
    // copying.
    void readProperty(std::string_view first) {
        const auto colon = findOutsideQuotes(first, ':');
        const auto head = parseHead(first.substr(0, std::min(colon, first.size())));
        const bool keep = colon == std::string_view::npos || isInteresting(head.name);
        const bool version21 = m_card && m_card->version21;

        std::string text;
        if (keep) {
            text.assign(first);
        }
        bool softBreak = head.parameters.quotedPrintable && !first.empty() && first.back() == '=';
        std::size_t after = 0;
        while (auto next = peekLine(after)) {
            if (softBreak && !isCardBoundary(*next)) {
                // Quoted-printable soft line break: the "=" and the line end are not content.
                if (keep) {
                    text.pop_back();
                    text.append(*next);
                }
            } else if (!next->empty() && (next->front() == ' ' || next->front() == '\t')) {
                // A folded line. vCard 2.1 folds before white space that belongs to the value;
                // later versions insert the white space character as part of the fold.
                if (keep) {
                    text.append(version21 ? *next : next->substr(1));
                }
            } else if (head.parameters.base64 && next->empty()) {
                m_position = after; // the blank line that ends 2.1 binary data
                break;
            } else if (!head.parameters.base64 || !isBase64Data(*next)) {
                break;
            }
            m_position = after;
            softBreak = head.parameters.quotedPrintable && !next->empty() && next->back() == '=';
        }
        if (keep) {
            handle(text);
        }
    }

    void handle(std::string_view line) {
        const auto colon = findOutsideQuotes(line, ':');
        if (colon == std::string_view::npos) {
            if (m_card) {
                m_card->damaged = true;
            }
            return;
        }
        const auto head = parseHead(line.substr(0, colon));
        const auto raw = line.substr(colon + 1);

        if (head.name == "BEGIN" && equalsIgnoringCase(trimmedBlanks(raw), "VCARD")) {
            if (m_card) {
                ++m_result.skipped; // no END before this BEGIN
            }
            m_card.emplace();
            m_card->index = m_cardCount++;
            return;
        }
        if (head.name == "END" && equalsIgnoringCase(trimmedBlanks(raw), "VCARD")) {
            finishCard();
            return;
        }
        if (!m_card || m_card->damaged) {
            return;
        }
        auto& card = *m_card;
        if (head.name == "VERSION") {
            card.version21 = trimmedBlanks(raw) == "2.1";
        } else if (head.name == "FN") {
            if (!card.formattedName) {
                card.formattedName = unescaped(decodedValue(raw, head.parameters));
            }
        } else if (head.name == "N") {
            if (!card.structuredName) {
                const auto value = decodedValue(raw, head.parameters);
                const auto parts = splitUnescaped(value, ';');
                // Family; given; additional; prefixes; suffixes, shown in reading order.
                card.structuredName = ContactCard::joinedName(
                    {component(parts, 3), component(parts, 1), component(parts, 2),
                     component(parts, 0), component(parts, 4)});
            }
        } else if (head.name == "ORG") {
            if (!card.organisation) {
                const auto value = decodedValue(raw, head.parameters);
                card.organisation = unescaped(splitUnescaped(value, ';').front());
            }
        } else if (head.name == "UID") {
            if (!card.uid) {
                card.uid = Unicode::trimmed(unescaped(decodedValue(raw, head.parameters)));
            }
        } else if (head.name == "TEL") {
            const auto value = decodedValue(raw, head.parameters);
            auto number = head.parameters.uri || startsWithIgnoringCase(value, "tel:")
                              ? telURINumber(value)
                              : unescaped(value);
            number = Unicode::trimmed(number);
            if (!number.empty()) {
                card.phoneNumbers.push_back(std::move(number));
            }
        } else if (head.name == "EMAIL") {
            auto address = Unicode::trimmed(emailAddress(decodedValue(raw, head.parameters)));
            if (!address.empty()) {
                card.emailAddresses.push_back(std::move(address));
            }
        }
    }

    void finishCard() {
        if (!m_card) {
            return;
        }
        auto open = std::move(*m_card);
        m_card.reset();
        if (open.damaged) {
            ++m_result.skipped;
            return;
        }
        ContactCard card;
        card.identifier = open.uid && !open.uid->empty() ? std::move(*open.uid)
                                                         : fallbackIdentifier(m_source, open.index);
        card.fullName = ContactCard::joinedName({open.formattedName.value_or("")});
        if (card.fullName.empty()) {
            card.fullName = open.structuredName.value_or("");
        }
        card.organisation = ContactCard::joinedName({open.organisation.value_or("")});
        card.phoneNumbers = std::move(open.phoneNumbers);
        card.emailAddresses = std::move(open.emailAddresses);
        m_result.cards.push_back(std::move(card));
    }

    std::string_view m_bytes;
    std::string_view m_source;
    std::size_t m_position = 0;
    std::optional<OpenCard> m_card;
    std::size_t m_cardCount = 0;
    Result m_result;
};

std::string errnoText(int error) {
    return std::generic_category().message(error);
}

} // namespace

Result parse(std::string_view bytes, std::string_view source) {
    return Parser(bytes, source).run();
}

Result readFile(const std::string& path) {
    try {
        return parse(FileSystem::readRegularFile(path), path);
    } catch (const std::filesystem::filesystem_error& error) {
        throw ContactsError(path, errnoText(error.code().value()));
    }
}

std::string fallbackIdentifier(std::string_view source, std::size_t index) {
    // FNV-1a, written out so that the identifier is the same on every platform and run.
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    for (const char c : source) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3ULL;
    }
    char hex[17];
    std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(hash));
    return "vcf:" + std::string(hex) + ":" + std::to_string(index);
}

} // namespace scrivly::VCard
