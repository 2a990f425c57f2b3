#include "ScrivlyKit/contacts/ContactsError.h"
#include "ScrivlyKit/contacts/PhoneAddressBook.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace scrivly {
namespace {

// A phone's address book with every kind of name, values out of row order, values of other
// properties and of no person, and a person with nothing at all.
constexpr const char* kAddressBook = R"sql(
CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, First TEXT, Last TEXT,
    Middle TEXT, Organization TEXT, Nickname TEXT, Prefix TEXT, Suffix TEXT);
CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, property INTEGER,
    identifier INTEGER, label INTEGER, value TEXT);
INSERT INTO ABPerson (ROWID, First, Last, Middle, Organization, Nickname, Prefix, Suffix) VALUES
    (7, 'Ann', 'Lee', 'B.', 'Acme', NULL, 'Dr.', 'PhD'),
    (2, NULL, NULL, NULL, 'Bike  Shop', NULL, NULL, NULL),
    (3, NULL, NULL, NULL, NULL, 'Bo', NULL, NULL),
    (4, NULL, NULL, NULL, NULL, NULL, NULL, NULL),
    (5, ' ', NULL, NULL, NULL, NULL, NULL, NULL);
INSERT INTO ABMultiValue (UID, record_id, property, value) VALUES
    (1, 7, 4, 'ann@example.com'), (3, 7, 3, '+1 (555) 010-2233'), (2, 7, 3, '555 010 9999'),
    (4, 2, 3, '555-010-7000'), (5, 2, 5, 'https://bike.example'), (6, 42, 3, '12345'),
    (7, 3, 4, '  '), (8, 5, 3, '555 010 1111');)sql";

std::vector<ContactCard> expected() {
    return {
        {"phone:ID:2", "", "Bike Shop", {"555-010-7000"}, {}},
        {"phone:ID:3", "Bo", "", {}, {}},
        {"phone:ID:5", "", "", {"555 010 1111"}, {}},
        {"phone:ID:7",
         "Dr. Ann B. Lee PhD",
         "Acme",
         {"555 010 9999", "+1 (555) 010-2233"},
         {"ann@example.com"}},
    };
}

TEST(PhoneAddressBookRead, ReadsCardsAlsoFromTheLog) {
    for (const bool logOnly : {false, true}) {
        SCOPED_TRACE(logOnly ? "rows only in the log" : "rows in the main file");
        testing::TempDir folder;
        const auto path = folder.file("AddressBook.sqlitedb");
        auto book = std::make_unique<SQLiteConnection>(path, false, false);
        if (logOnly) {
            book->execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
        }
        book->execute(kAddressBook);
        if (!logOnly) {
            book.reset();
        }
        // With the log, read a copy as a backup holds it: main file and log, no writer.
        const auto copy = folder.file("copy.sqlitedb");
        std::filesystem::copy_file(path, copy);
        if (logOnly) {
            std::filesystem::copy_file(path + "-wal", copy + "-wal");
        }
        EXPECT_EQ(PhoneAddressBook::read(copy, "ID"), expected());
    }
}

TEST(PhoneAddressBookRead, RefusesWhatIsNoPhoneAddressBook) {
    testing::TempDir folder;
    const auto other = folder.file("other.db");
    SQLiteConnection(other, false, false).execute("CREATE TABLE ZABCDRECORD (Z_PK INTEGER)");
    EXPECT_THROW((void)PhoneAddressBook::read(other, "ID"), ContactsError);
    EXPECT_THROW((void)PhoneAddressBook::read(folder.file("missing.db"), "ID"), ContactsError);
    EXPECT_FALSE(std::filesystem::exists(folder.file("missing.db")));
}

} // namespace
} // namespace scrivly
