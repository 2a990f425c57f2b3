#pragma once

#include "ScrivlyKit/contacts/ContactCard.h"
#include "ScrivlyKit/names/NameBook.h"

#include <cstddef>
#include <string>
#include <vector>

// Fills a NameBook from the address books people have as files: vCard files and macOS
// address-book databases. The one entry point for the command line and the application.
namespace scrivly::ContactSources {

// What one load found.
struct Result {
    NameBook names;
    std::size_t cards = 0;            // cards read, named or not
    std::size_t skipped = 0;          // damaged vCard cards left out
    std::vector<std::string> sources; // the files read, in the order they were read
};

// Adds each named card's phone numbers, then its e-mail addresses, under the card's name and
// identifier. The name is the full name, else the organisation; cards with neither add nothing.
// An address already in the book keeps its first name.
void addCards(NameBook& names, const std::vector<ContactCard>& cards);

// Reads every path in order into one NameBook, so that an earlier source's card keeps an address
// that a later one also has. A path is a folder, a vCard file or an address-book database
// (recognised by its content, not its name). A folder gives its address-book databases (see
// AddressBookDatabase::find) and then the .vcf files directly in it, in name order; a folder with
// neither adds nothing. Databases are read through private copies made under scratchFolder and
// removed at once. Blocks; safe to run on any thread. Throws ContactsError naming the first file
// or path that cannot be read.
Result load(const std::vector<std::string>& paths, const std::string& scratchFolder);

} // namespace scrivly::ContactSources
