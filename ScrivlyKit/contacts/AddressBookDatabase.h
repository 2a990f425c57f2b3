#pragma once

#include "ScrivlyKit/contacts/ContactCard.h"

#include <string>
#include <vector>

// Reads the macOS address-book database (AddressBook-v22.abcddb, a Core Data SQLite file) that
// the Contacts application keeps: one main file and one more per account under Sources/.
namespace scrivly::AddressBookDatabase {

// The file name of every address-book database.
inline constexpr const char* kFileName = "AddressBook-v22.abcddb";

// The cards of the database at path, read through a private copy made under scratchFolder and
// removed before this returns, so the live files are only ever copied. Cards come in record
// order, their numbers and addresses in the order the user gave them. Records with no name, no
// organisation, no number and no address (groups, for instance) are left out. Columns missing
// from older or newer schemas read as empty. Throws ContactsError naming path when the file
// cannot be copied or opened, or is not an address-book database.
std::vector<ContactCard> read(const std::string& path, const std::string& scratchFolder);

// The address-book databases in a folder: the folder's own, then the one under
// Library/Application Support/AddressBook in it (the folder may be a home folder), each followed
// by those of its Sources subfolders in name order. Missing folders give nothing.
std::vector<std::string> find(const std::string& folder);

// The signed-in user's address-book folder on macOS, under the home folder.
std::string defaultFolder(const std::string& home);

} // namespace scrivly::AddressBookDatabase
