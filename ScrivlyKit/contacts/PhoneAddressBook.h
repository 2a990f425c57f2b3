#pragma once

#include "ScrivlyKit/contacts/ContactCard.h"

#include <string>
#include <vector>

// Reads the address book of an iPhone (AddressBook.sqlitedb, as an iPhone backup holds it):
// table ABPerson for the names, ABMultiValue for the numbers (property 3) and e-mail addresses
// (property 4).
namespace scrivly::PhoneAddressBook {

// The cards of the private copy at path; its log ("-wal" beside it), when there, is folded into
// the copy first, so the newest cards count. Each card's identifier is "phone:" + sourceID +
// ":" + the person's ROWID, stable for as long as the phone keeps the card; sourceID tells one
// phone's address book from another's (a backup's id, say). Cards come in ROWID order, their
// numbers and addresses in the order the phone stores them; persons with no name, organisation,
// number or address are left out. Columns missing from other iOS versions read as empty.
// Throws ContactsError naming path when the copy can't be opened or is no phone address book.
std::vector<ContactCard> read(const std::string& path, const std::string& sourceID);

} // namespace scrivly::PhoneAddressBook
