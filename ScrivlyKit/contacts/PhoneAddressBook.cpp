#include "ScrivlyKit/contacts/PhoneAddressBook.h"

#include "ScrivlyKit/contacts/ContactsError.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/text/Unicode.h"

#include <filesystem>
#include <set>
#include <unordered_map>

namespace scrivly::PhoneAddressBook {
namespace {

constexpr std::int64_t kPhoneProperty = 3;
constexpr std::int64_t kEmailProperty = 4;

std::string column(const std::set<std::string>& columns, const std::string& name) {
    return columns.contains(name) ? name : "NULL";
}

std::string text(const SQLiteConnection::Row& row, int index) {
    return Unicode::repairedUTF8(row.text(index).value_or(""));
}

std::vector<ContactCard> readCards(SQLiteConnection& db, const std::string& path,
                                   const std::string& sourceID) {
    const auto persons = db.columns("ABPerson");
    if (persons.empty()) {
        throw ContactsError(path, "not a phone address book");
    }
    std::vector<ContactCard> cards;
    std::unordered_map<std::int64_t, std::size_t> cardIndex;
    const auto sql = "SELECT ROWID, " + column(persons, "Prefix") + ", " +
                     column(persons, "First") + ", " + column(persons, "Middle") + ", " +
                     column(persons, "Last") + ", " + column(persons, "Suffix") + ", " +
                     column(persons, "Organization") + ", " + column(persons, "Nickname") +
                     " FROM ABPerson ORDER BY ROWID";
    db.query(sql, {}, [&](const SQLiteConnection::Row& row) {
        ContactCard card;
        const auto key = row.integer(0);
        card.identifier = "phone:" + sourceID + ":" + std::to_string(key);
        card.fullName = ContactCard::joinedName(
            {text(row, 1), text(row, 2), text(row, 3), text(row, 4), text(row, 5)});
        if (card.fullName.empty()) {
            card.fullName = ContactCard::joinedName({text(row, 7)});
        }
        card.organisation = ContactCard::joinedName({text(row, 6)});
        cardIndex.emplace(key, cards.size());
        cards.push_back(std::move(card));
    });

    const auto values = db.columns("ABMultiValue");
    if (values.contains("record_id") && values.contains("property") && values.contains("value")) {
        db.query("SELECT record_id, property, value FROM ABMultiValue WHERE property IN (?, ?) "
                 "ORDER BY record_id, " +
                     column(values, "UID"),
                 {SQLiteConnection::Value::integer(kPhoneProperty),
                  SQLiteConnection::Value::integer(kEmailProperty)},
                 [&](const SQLiteConnection::Row& row) {
                     const auto card = cardIndex.find(row.integer(0));
                     auto value = Unicode::trimmed(text(row, 2));
                     if (card == cardIndex.end() || value.empty()) {
                         return;
                     }
                     auto& owner = cards[card->second];
                     (row.integer(1) == kPhoneProperty ? owner.phoneNumbers : owner.emailAddresses)
                         .push_back(std::move(value));
                 });
    }

    std::erase_if(cards, [](const ContactCard& card) {
        return card.fullName.empty() && card.organisation.empty() && card.phoneNumbers.empty() &&
               card.emailAddresses.empty();
    });
    return cards;
}

} // namespace

std::vector<ContactCard> read(const std::string& path, const std::string& sourceID) {
    // Folding would create an empty database where none is.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) {
        throw ContactsError(path, "no such file");
    }
    try {
        foldLog(path);
        SQLiteConnection db(path, /*readOnly=*/true, /*immutable=*/true);
        return readCards(db, path, sourceID);
    } catch (const SQLiteError& error) {
        throw ContactsError(path, error.message());
    }
}

} // namespace scrivly::PhoneAddressBook
