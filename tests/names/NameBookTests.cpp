#include "ScrivlyKit/names/NameBook.h"

#include <gtest/gtest.h>

using namespace scrivly;

TEST(NameBook, KeysByAddressForm) {
    const std::vector<std::pair<std::string, std::optional<std::string>>> cases = {
        {"  Ann.Lee@Example.COM \n", "e:ann.lee@example.com"},
        {"\xC3\x89MILE@EXAMPLE.FR", "e:\xC3\xA9mile@example.fr"}, // Unicode lower case
        {"+1 (555) 201-3344", "p:5552013344"},
        {"5552013344", "p:5552013344"},
        {"+44 20 7946 0018", "p:2079460018"},
        {"12345", "p:12345"},
        {"user123", "p:123"},
        {"1@2", "e:1@2"},                                                   // "@" wins over digits
        {"\xD9\xA1\xD9\xA2\xD9\xA3 Abc", "o:\xD9\xA1\xD9\xA2\xD9\xA3 abc"}, // non-ASCII digits
        {"  SomeHandle  ", "o:somehandle"},
        {"\xC2\xA0\xE2\x80\xA8Pat\t", "o:pat"}, // no-break space and line separator trimmed
        {"   ", std::nullopt},
        {"\n\t", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [address, key] : cases) {
        SCOPED_TRACE(address);
        EXPECT_EQ(NameBook::key(address), key);
    }
}

TEST(NameBook, FirstPersonKeepsAnAddressUnderAnyNotation) {
    NameBook book;
    book.add(" Ann@Example.com ", "  Ann Lee \n", "card-1");
    book.add("555 201 3344", "Ann Lee", "card-1");
    book.add("+1 (555) 201-3344", "Second Card", "B");
    book.add("bob@example.com", " \n ", "C"); // blank name
    book.add("   ", "Nobody", "D");           // no key
    book.add("sam@example.com", "Sam", "");   // empty contact is absent
    for (const auto* address : {"ANN@EXAMPLE.COM", "15552013344", "555.201.3344"}) {
        SCOPED_TRACE(address);
        EXPECT_EQ(book.name(address), "Ann Lee");
        EXPECT_EQ(book.contact(address), "card-1");
    }
    EXPECT_EQ(book.count(), 3U);
    EXPECT_EQ(book.name("   "), std::nullopt);
    EXPECT_EQ(book.names().at("e:sam@example.com"), (NameBook::Entry{"Sam", std::nullopt}));
    EXPECT_EQ(book.display("5552013344"), "Ann Lee");
    EXPECT_EQ(book.display("5559990000"), "+1 (555) 999-0000");

    // Built from pairs: the same rule, no contacts.
    const NameBook pairs({{"5552013344", "Ann"}, {"+15552013344", "Not Ann"}, {"x@y.z", "X"}});
    NameBook same;
    same.add("5552013344", "Ann");
    same.add("x@y.z", "X");
    EXPECT_EQ(pairs, same);

    // Merging keeps this book's names and adds only what it lacks.
    same.merge(NameBook({{"x@y.z", "Other X"}, {"new@y.z", "New"}}));
    EXPECT_EQ(same.name("x@y.z"), "X");
    EXPECT_EQ(same.name("new@y.z"), "New");
}

TEST(NameBook, FormatsNorthAmericanNumbersOnly) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"5552013344", "+1 (555) 201-3344"},
        {"555 201 3344", "+1 (555) 201-3344"},
        {"1-555-201-3344", "+1 (555) 201-3344"},
        {"+1 555 201 3344", "+1 (555) 201-3344"},
        {"(555) 201.3344", "+1 (555) 201-3344"},
        {"2013344", "2013344"},                   // seven digits
        {"555201334455", "555201334455"},         // twelve digits
        {"25552013344", "25552013344"},           // eleven digits not starting with 1
        {"+44 20 7946 0018", "+44 20 7946 0018"}, // eleven digits, country code 44
        {"555-201-3344x", "555-201-3344x"},       // a letter
        {"555/201/3344", "555/201/3344"},         // other punctuation
        {"555\t201\t3344", "555\t201\t3344"},     // only the plain space is allowed
        {"ann5552013344@example.com", "ann5552013344@example.com"},
        {"", ""},
        // Numeric per Unicode: Arabic-Indic digits count and are kept as written.
        {"\xD9\xA5\xD9\xA5\xD9\xA5\xD9\xA2\xD9\xA0\xD9\xA1\xD9\xA3\xD9\xA3\xD9\xA4\xD9\xA4",
         "+1 (\xD9\xA5\xD9\xA5\xD9\xA5) \xD9\xA2\xD9\xA0\xD9\xA1-\xD9\xA3\xD9\xA3\xD9\xA4\xD9\xA4"},
    };
    for (const auto& [address, formatted] : cases) {
        SCOPED_TRACE(address);
        EXPECT_EQ(NameBook::format(address), formatted);
    }
}
