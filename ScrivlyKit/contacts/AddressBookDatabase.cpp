#include "ScrivlyKit/contacts/AddressBookDatabase.h"

#include "ScrivlyKit/contacts/ContactsError.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/text/Unicode.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <set>
#include <unordered_map>

namespace scrivly::AddressBookDatabase {
namespace {

namespace fs = std::filesystem;

// The column when the table has it, else NULL: the schema changes between macOS versions.
std::string column(const std::set<std::string>& columns, const std::string& name) {
    return columns.contains(name) ? name : "NULL";
}

std::string text(const SQLiteConnection::Row& row, int index) {
    return Unicode::repairedUTF8(row.text(index).value_or(""));
}

// The first of the candidate columns that is not NULL, over those the table has; empty when it
// has none of them.
std::string firstPresent(const std::set<std::string>& columns,
                         std::initializer_list<const char*> candidates) {
    std::vector<std::string> present;
    for (const char* candidate : candidates) {
        if (columns.contains(candidate)) {
            present.emplace_back(candidate);
        }
    }
    if (present.size() < 2) {
        return present.empty() ? "" : present.front();
    }
    std::string expression = "COALESCE(";
    for (std::size_t i = 0; i < present.size(); ++i) {
        expression += (i == 0 ? "" : ", ") + present[i];
    }
    return expression + ")";
}

// Appends the owners' values of one table (numbers or addresses) to their cards, in the order
// the user gave them. Nothing when the table, its owner column or every value column is missing.
void readValues(SQLiteConnection& db, const std::string& table,
                std::initializer_list<const char*> valueColumns,
                const std::unordered_map<std::int64_t, std::size_t>& cardIndex,
                std::vector<ContactCard>& cards, std::vector<std::string> ContactCard::*values) {
    const auto columns = db.columns(table);
    const auto value = firstPresent(columns, valueColumns);
    if (!columns.contains("ZOWNER") || value.empty()) {
        return;
    }
    const auto sql = "SELECT ZOWNER, " + value + " FROM " + table +
                     " WHERE ZOWNER IS NOT NULL ORDER BY ZOWNER, " +
                     column(columns, "ZORDERINGINDEX") + ", " + column(columns, "Z_PK");
    db.query(sql, {}, [&](const SQLiteConnection::Row& row) {
        const auto card = cardIndex.find(row.integer(0));
        auto entry = Unicode::trimmed(text(row, 1));
        if (card != cardIndex.end() && !entry.empty()) {
            (cards[card->second].*values).push_back(std::move(entry));
        }
    });
}

std::vector<ContactCard> readCards(SQLiteConnection& db, const std::string& path) {
    const auto records = db.columns("ZABCDRECORD");
    if (!records.contains("Z_PK")) {
        throw ContactsError(path, "not an address-book database");
    }
    std::vector<ContactCard> cards;
    std::unordered_map<std::int64_t, std::size_t> cardIndex;
    const auto sql = "SELECT Z_PK, " + column(records, "ZUNIQUEID") + ", " +
                     column(records, "ZTITLE") + ", " + column(records, "ZFIRSTNAME") + ", " +
                     column(records, "ZMIDDLENAME") + ", " + column(records, "ZLASTNAME") + ", " +
                     column(records, "ZSUFFIX") + ", " + column(records, "ZORGANIZATION") +
                     " FROM ZABCDRECORD ORDER BY Z_PK";
    db.query(sql, {}, [&](const SQLiteConnection::Row& row) {
        ContactCard card;
        const auto key = row.integer(0);
        card.identifier = Unicode::trimmed(text(row, 1));
        if (card.identifier.empty()) {
            card.identifier = "abcd:" + std::to_string(key);
        }
        card.fullName = ContactCard::joinedName(
            {text(row, 2), text(row, 3), text(row, 4), text(row, 5), text(row, 6)});
        card.organisation = ContactCard::joinedName({text(row, 7)});
        cardIndex.emplace(key, cards.size());
        cards.push_back(std::move(card));
    });

    readValues(db, "ZABCDPHONENUMBER", {"ZFULLNUMBER"}, cardIndex, cards,
               &ContactCard::phoneNumbers);
    readValues(db, "ZABCDEMAILADDRESS", {"ZADDRESS", "ZADDRESSNORMALIZED"}, cardIndex, cards,
               &ContactCard::emailAddresses);

    // Groups, the "me" placeholder and other bookkeeping rows share the record table.
    std::erase_if(cards, [](const ContactCard& card) {
        return card.fullName.empty() && card.organisation.empty() && card.phoneNumbers.empty() &&
               card.emailAddresses.empty();
    });
    return cards;
}

void addDatabases(const fs::path& base, std::vector<std::string>& found) {
    std::error_code ignored;
    if (fs::is_regular_file(base / kFileName, ignored)) {
        found.push_back((base / kFileName).string());
    }
    std::vector<fs::path> sources;
    std::error_code listing;
    for (fs::directory_iterator it(base / "Sources", listing), end; !listing && it != end;
         it.increment(listing)) {
        if (fs::is_regular_file(it->path() / kFileName, ignored)) {
            sources.push_back(it->path() / kFileName);
        }
    }
    std::sort(sources.begin(), sources.end());
    for (const auto& source : sources) {
        found.push_back(source.string());
    }
}

} // namespace

std::vector<ContactCard> read(const std::string& path, const std::string& scratchFolder) {
    try {
        std::vector<ContactCard> cards;
        withPrivateFolder(scratchFolder, [&](const std::string& folder) {
            SQLiteConnection db(copyDatabase(path, folder, kFileName), /*readOnly=*/true,
                                /*immutable=*/true);
            cards = readCards(db, path);
        });
        return cards;
    } catch (const SQLiteError& error) {
        throw ContactsError(path, error.message());
    } catch (const fs::filesystem_error& error) {
        throw ContactsError(path, error.code().message());
    }
}

std::vector<std::string> find(const std::string& folder) {
    std::vector<std::string> found;
    addDatabases(folder, found);
    addDatabases(fs::path(folder) / "Library" / "Application Support" / "AddressBook", found);
    return found;
}

std::string defaultFolder(const std::string& home) {
    return home + "/Library/Application Support/AddressBook";
}

} // namespace scrivly::AddressBookDatabase
