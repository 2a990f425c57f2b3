#include "ScrivlyKit/contacts/AddressBookDatabase.h"
#include "ScrivlyKit/contacts/ContactsError.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

using namespace scrivly;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

namespace fs = std::filesystem;
using scrivly::testing::readFile;

// The Core Data tables the reader looks at, filled with records out of key order, a group, a
// record without a unique id, a blank number, a number of no record, and numbers and addresses
// whose ordering index disagrees with their keys.
constexpr const char* kCurrentAddressBook = R"(
    CREATE TABLE ZABCDRECORD (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, ZUNIQUEID VARCHAR,
        ZTITLE VARCHAR, ZFIRSTNAME VARCHAR, ZMIDDLENAME VARCHAR, ZLASTNAME VARCHAR,
        ZSUFFIX VARCHAR, ZORGANIZATION VARCHAR, ZNICKNAME VARCHAR, ZNAME VARCHAR);
    CREATE TABLE ZABCDPHONENUMBER (Z_PK INTEGER PRIMARY KEY, ZOWNER INTEGER,
        ZORDERINGINDEX INTEGER, ZFULLNUMBER VARCHAR, ZLABEL VARCHAR);
    CREATE TABLE ZABCDEMAILADDRESS (Z_PK INTEGER PRIMARY KEY, ZOWNER INTEGER,
        ZORDERINGINDEX INTEGER, ZADDRESS VARCHAR, ZADDRESSNORMALIZED VARCHAR);
    INSERT INTO ZABCDRECORD (Z_PK, Z_ENT, ZUNIQUEID, ZTITLE, ZFIRSTNAME, ZMIDDLENAME, ZLASTNAME,
        ZSUFFIX, ZORGANIZATION, ZNAME) VALUES
        (9, 22, 'CC-9:ABPerson', NULL, NULL, NULL, NULL, NULL, 'Acme Plumbing', NULL),
        (3, 22, 'AA-3:ABPerson', 'Dr.', 'Ann', 'B.', 'Lee', 'PhD', 'Acme', NULL),
        (5, 22, NULL, NULL, 'Bo', NULL, NULL, NULL, NULL, NULL),
        (7, 21, 'GG-7:ABGroup', NULL, NULL, NULL, NULL, NULL, NULL, 'Family');
    INSERT INTO ZABCDPHONENUMBER (Z_PK, ZOWNER, ZORDERINGINDEX, ZFULLNUMBER) VALUES
        (1, 3, 1, '+1 (555) 010-2233'), (2, 3, 0, '555 010 9999'), (3, 5, 0, '  '),
        (4, 42, 0, '12345'), (5, 9, 0, '555-010-7000');
    INSERT INTO ZABCDEMAILADDRESS (Z_PK, ZOWNER, ZORDERINGINDEX, ZADDRESS, ZADDRESSNORMALIZED)
        VALUES (1, 3, 0, 'Ann.Lee@Example.com', 'ann.lee@example.com'),
        (2, 3, 0, NULL, 'ann@work.example'), (3, 5, 0, 'bo@example.net', NULL);)";

std::vector<ContactCard> expectedCurrent() {
    return {
        {"AA-3:ABPerson",
         "Dr. Ann B. Lee PhD",
         "Acme",
         {"555 010 9999", "+1 (555) 010-2233"},
         {"Ann.Lee@Example.com", "ann@work.example"}},
        {"abcd:5", "Bo", "", {}, {"bo@example.net"}},
        {"CC-9:ABPerson", "", "Acme Plumbing", {"555-010-7000"}, {}},
    };
}

bool isEmptyFolder(const fs::path& folder) {
    return fs::is_directory(folder) && fs::is_empty(folder);
}

} // namespace

TEST(AddressBookDatabaseRead, ReadsCardsThroughAPrivateCopy) {
    for (const bool logOnly : {false, true}) {
        SCOPED_TRACE(logOnly ? "rows only in the log" : "rows in the main file");
        scrivly::testing::TempDir folder;
        const auto path = folder.file(AddressBookDatabase::kFileName);
        // With the log, the writer stays open as the Contacts application would, so the rows
        // live in "-wal" only.
        auto book = std::make_unique<SQLiteConnection>(path, false, false);
        if (logOnly) {
            book->execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
        }
        book->execute(kCurrentAddressBook);
        if (logOnly) {
            ASSERT_GT(fs::file_size(path + "-wal"), 0U);
        } else {
            book.reset();
        }
        const auto before = readFile(path);

        const auto scratch = folder.path() / "scratch";
        EXPECT_EQ(AddressBookDatabase::read(path, scratch.string()), expectedCurrent());
        EXPECT_TRUE(isEmptyFolder(scratch));
        EXPECT_EQ(readFile(path), before);
    }
}

TEST(AddressBookDatabaseRead, OlderSchemaReadsMissingColumnsAsEmpty) {
    scrivly::testing::TempDir folder;
    const auto path = folder.file(AddressBookDatabase::kFileName);
    // No unique id, prefix, middle name or suffix, only normalised addresses, no phone table.
    SQLiteConnection(path, false, false).execute(R"(
        CREATE TABLE ZABCDRECORD (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, ZFIRSTNAME VARCHAR,
            ZLASTNAME VARCHAR, ZORGANIZATION VARCHAR);
        CREATE TABLE ZABCDEMAILADDRESS (Z_PK INTEGER PRIMARY KEY, ZOWNER INTEGER,
            ZADDRESSNORMALIZED VARCHAR);
        INSERT INTO ZABCDRECORD VALUES (2, 19, 'Cy', 'Dunn', NULL), (1, 19, NULL, NULL, 'Dunn & Co');
        INSERT INTO ZABCDEMAILADDRESS VALUES (1, 2, 'cy@example.org'),
            (2, 1, 'office@dunn.example');)");
    const std::vector<ContactCard> expected = {
        {"abcd:1", "", "Dunn & Co", {}, {"office@dunn.example"}},
        {"abcd:2", "Cy Dunn", "", {}, {"cy@example.org"}},
    };
    EXPECT_EQ(AddressBookDatabase::read(path, folder.file("scratch")), expected);
}

TEST(AddressBookDatabaseRead, FailuresNameTheFileAndLeaveNoCopy) {
    scrivly::testing::TempDir folder;
    const auto scratch = folder.path() / "scratch";
    const auto notAddressBook = folder.file("other.db");
    SQLiteConnection(notAddressBook, false, false).execute("CREATE TABLE t (x INTEGER);");
    const auto notSQLite = folder.file("notes.abcddb");
    std::ofstream(notSQLite) << "This is not a database, just some text long enough to look.\n";

    struct Row {
        const char* label;
        std::string path;
        std::string reason;
    };
    for (const auto& row : std::vector<Row>{
             {"no address-book tables", notAddressBook, "not an address-book database"},
             {"not SQLite", notSQLite, "file is not a database"},
             {"missing", folder.file("missing.abcddb"), "No such file or directory"},
         }) {
        SCOPED_TRACE(row.label);
        try {
            AddressBookDatabase::read(row.path, scratch.string());
            ADD_FAILURE() << "no error";
        } catch (const ContactsError& error) {
            EXPECT_EQ(error.path(), row.path);
            EXPECT_EQ(error.reason(), row.reason);
        }
        EXPECT_TRUE(isEmptyFolder(scratch));
    }
}

TEST(AddressBookDatabaseFind, MainDatabaseThenSourcesInNameOrder) {
    scrivly::testing::TempDir home;
    const auto book = fs::path(AddressBookDatabase::defaultFolder(home.path().string()));
    EXPECT_EQ(book, home.path() / "Library" / "Application Support" / "AddressBook");

    const auto touch = [](const fs::path& folder) {
        fs::create_directories(folder);
        std::ofstream(folder / AddressBookDatabase::kFileName) << "";
        return (folder / AddressBookDatabase::kFileName).string();
    };
    const auto main = touch(book);
    const auto second = touch(book / "Sources" / "B-SOURCE");
    const auto first = touch(book / "Sources" / "A-SOURCE");
    fs::create_directories(book / "Sources" / "C-EMPTY");

    EXPECT_THAT(AddressBookDatabase::find(home.path().string()), ElementsAre(main, first, second));
    EXPECT_THAT(AddressBookDatabase::find(book.string()), ElementsAre(main, first, second));
    EXPECT_THAT(AddressBookDatabase::find((book / "Sources" / "A-SOURCE").string()),
                ElementsAre(first));
    EXPECT_THAT(AddressBookDatabase::find(home.file("missing")), IsEmpty());
}
