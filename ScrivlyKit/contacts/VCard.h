#pragma once

#include "ScrivlyKit/contacts/ContactCard.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Reads vCard files (.vcf) as address books export them: versions 2.1, 3.0 and 4.0, folded
// lines, quoted-printable values in any character set ICU knows, grouped properties, tel: and
// mailto: URIs, a byte-order mark, any number of cards per file.
namespace scrivly::VCard {

struct Result {
    std::vector<ContactCard> cards; // the complete cards, in file order
    std::size_t skipped = 0;        // damaged cards left out

    bool operator==(const Result&) const = default;
};

// Parses the bytes of one vCard file. source names the file (its path as given) and is used
// only for the identifiers of cards without a UID. Never throws: a damaged card (a line without
// a colon, or no END before the next BEGIN or the end of the bytes) is left out and counted, and
// the rest still loads; invalid UTF-8 is repaired.
Result parse(std::string_view bytes, std::string_view source);

// Reads and parses the file at path. Throws ContactsError naming the file when it cannot be read.
Result readFile(const std::string& path);

// The identifier given to the card at index (its zero-based position among the file's cards,
// damaged ones included) of the file source when it has no UID: stable for the same path.
std::string fallbackIdentifier(std::string_view source, std::size_t index);

} // namespace scrivly::VCard
