#include "ScrivlyKit/contacts/AddressBookDatabase.h"
#include "ScrivlyKit/contacts/ContactSources.h"
#include "ScrivlyKit/contacts/ContactsError.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using namespace scrivly;
using ::testing::ElementsAre;

namespace {

namespace fs = std::filesystem;
using scrivly::testing::writeFile;

std::string vcard(const std::string& uid, const std::string& name,
                  const std::vector<std::string>& properties) {
    std::string result = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nFN:" + name + "\r\n";
    for (const auto& property : properties) {
        result += property + "\r\n";
    }
    return result + "END:VCARD\r\n";
}

// An address-book database with one person, whose number another source also has.
void writeAddressBook(const std::string& path) {
    fs::create_directories(fs::path(path).parent_path());
    SQLiteConnection db(path, false, false);
    db.execute(R"(
        CREATE TABLE ZABCDRECORD (Z_PK INTEGER PRIMARY KEY, ZUNIQUEID VARCHAR,
            ZFIRSTNAME VARCHAR, ZLASTNAME VARCHAR);
        CREATE TABLE ZABCDPHONENUMBER (Z_PK INTEGER PRIMARY KEY, ZOWNER INTEGER,
            ZORDERINGINDEX INTEGER, ZFULLNUMBER VARCHAR);
        INSERT INTO ZABCDRECORD VALUES (1, 'MAC-1:ABPerson', 'Mac', 'Person');
        INSERT INTO ZABCDPHONENUMBER VALUES (1, 1, 0, '(555) 010-2233');)");
}

} // namespace

TEST(ContactSourcesLoad, EarlierSourcesKeepAddressesOverLaterOnes) {
    scrivly::testing::TempDir folder;
    // Within a file the first card keeps the number too; a card without a name claims nothing.
    const auto ann = writeFile(folder.file("ann.vcf"),
                               vcard("card-ann", "Ann Lee", {"TEL:+1 555 010 2233"}) +
                                   vcard("card-ann2", "Ann Again", {"TEL:555.010.2233"}) +
                                   vcard("nameless", "", {"EMAIL:zed@example.com"}));
    const auto zed =
        writeFile(folder.file("zed.vcf"),
                  vcard("card-zed", "Zed Moss", {"TEL:(555) 010-2233", "EMAIL:zed@example.com"}));
    struct Row {
        const char* label;
        std::vector<std::string> paths;
        std::string numberName;
    };
    for (const auto& row : std::vector<Row>{{"ann first", {ann, zed}, "Ann Lee"},
                                            {"zed first", {zed, ann}, "Zed Moss"}}) {
        SCOPED_TRACE(row.label);
        const auto result = ContactSources::load(row.paths, folder.file("scratch"));
        EXPECT_EQ(result.names.name("5550102233"), row.numberName);
        EXPECT_EQ(result.names.name("zed@example.com"), "Zed Moss");
        EXPECT_EQ(result.names.contact("zed@example.com"), "card-zed");
        EXPECT_EQ(result.cards, 4U);
        EXPECT_EQ(result.sources, row.paths);
    }
}

TEST(ContactSourcesLoad, FolderGivesDatabasesThenVCardFilesInNameOrder) {
    scrivly::testing::TempDir home;
    const auto book = AddressBookDatabase::defaultFolder(home.path().string());
    const auto main = book + "/" + AddressBookDatabase::kFileName;
    writeAddressBook(main);
    const auto later = writeFile(home.file("b.VCF"), vcard("b", "Bee", {"TEL:555-010-2233"}));
    const auto earlier = writeFile(home.file("a.vcf"), "BEGIN:VCARD\r\nFN:Broken\r\nbroken\r\n" +
                                                           vcard("a", "Ay", {"TEL:555-010-8888"}));
    // Not named as contacts: only read when asked for, and then by what it holds.
    const auto text = writeFile(home.file("export.txt"), vcard("t", "Tee", {"TEL:555-010-1212"}));

    const auto scratch = home.path() / "scratch";
    const auto result = ContactSources::load({home.path().string(), text}, scratch.string());
    EXPECT_THAT(result.sources, ElementsAre(main, earlier, later, text));
    EXPECT_EQ(result.names.name("+15550102233"), "Mac Person");
    EXPECT_EQ(result.names.contact("+15550102233"), "MAC-1:ABPerson");
    EXPECT_EQ(result.names.name("555-010-8888"), "Ay");
    EXPECT_EQ(result.names.name("555-010-1212"), "Tee");
    EXPECT_EQ(result.cards, 4U);
    EXPECT_EQ(result.skipped, 1U);
    EXPECT_TRUE(fs::is_empty(scratch));
}

TEST(ContactSourcesLoad, AnUnreadablePathIsAnErrorNamingIt) {
    scrivly::testing::TempDir folder;
    const auto good = writeFile(folder.file("good.vcf"), vcard("g", "Gee", {"TEL:555-010-3434"}));
    const auto missing = folder.file("missing.vcf");
    const auto load = [&] { ContactSources::load({good, missing}, folder.file("scratch")); };
    EXPECT_THAT(load,
                ::testing::ThrowsMessage<ContactsError>("The contacts file couldn’t be read: " +
                                                        missing + " (No such file or directory)"));
}
