#include "ScrivlyKit/contacts/VCard.h"
#include "ScrivlyKit/text/Unicode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace scrivly;
using ::testing::ElementsAre;

namespace {

std::string lines(const std::vector<std::string_view>& parts) {
    std::string result;
    for (const auto part : parts) {
        result.append(part).append("\r\n");
    }
    return result;
}

std::string card(const std::vector<std::string_view>& properties) {
    return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + lines(properties) + "END:VCARD\r\n";
}

ContactCard only(const VCard::Result& result) {
    EXPECT_EQ(result.cards.size(), 1U);
    EXPECT_EQ(result.skipped, 0U);
    return result.cards.empty() ? ContactCard{} : result.cards.front();
}

// A phone's export: vCard 2.1, quoted-printable names in UTF-8 and ISO-8859-1, bare parameters,
// soft line breaks, and a photo whose base64 lines are neither indented nor quoted.
const std::string kPhoneExport = lines({
    "BEGIN:VCARD",
    "VERSION:2.1",
    "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCller;J=C3=BCrgen;;;",
    "FN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:J=C3=BCrgen M=C3=BC=",
    "ller",
    "TEL;CELL;PREF:+49 30 1234567",
    "TEL;HOME;VOICE:030-7654321",
    "ADR;HOME;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:;;Hauptstra=C3=9Fe 1=",
    "Berlin;;;;",
    "PHOTO;ENCODING=BASE64;JPEG:/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAgGBgcGBQgHBwcJ",
    "CQgKDBQNDAsLDBkSEw8UHRofHh0aHBwgJC4nICIsIxwcKDcpLDAxNDQ0Hyc5PTgyPC4zNDL/",
    "",
    "END:VCARD",
    "BEGIN:VCARD",
    "VERSION:2.1",
    "N;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:Garc=EDa;Jos=E9;;;",
    "TEL;CELL:555-010-4455",
    "EMAIL;INTERNET:jose@example.net",
    "END:VCARD",
});

// A webmail export: vCard 3.0 with grouped properties, folded lines and escapes.
const std::string kWebmailExport = lines({
    "BEGIN:VCARD",
    "VERSION:3.0",
    "PRODID:-//Example Webmail//Contacts//EN",
    "FN:Beatrice O’Neill\\, Jr.",
    "N:O’Neill;Beatrice;;;Jr.",
    "item1.EMAIL;TYPE=INTERNET:bea@example.com",
    "item1.X-ABLabel:_$!<Other>!$_",
    "item2.TEL;TYPE=CELL:+1 555 010 7788",
    "item2.X-ABLabel:mobile",
    "NOTE:Met at the conference\\; she likes long notes that are folded ",
    " across lines\\nwith a newline in them",
    "ORG:Lee\\, Partners & Co;Research",
    "UID:webmail-bea",
    "END:VCARD",
    "BEGIN:VCARD",
    "VERSION:3.0",
    "FN:Carl",
    " os Ruiz",
    "EMAIL;TYPE=INTERNET;TYPE=HOME:carlos@example.org",
    "EMAIL;TYPE=INTERNET;TYPE=WORK:c.ruiz@example.com",
    "END:VCARD",
});

} // namespace

TEST(VCardParse, ExportsOfEachVersion) {
    // Version 4.0 with tel: and mailto: values, lower-case keywords, LF line ends, a byte order
    // mark, and blank lines and text around the card.
    const std::string version4 =
        "\xEF\xBB\xBF"
        "begin:vcard\nversion:4.0\n"
        "UID:urn:uuid:4fbe8971\nfn:Chen Wei\n"
        "TEL;VALUE=uri;TYPE=\"voice,cell\";PREF=1:tel:+1-555-010-2233;ext=1\n"
        "tel;value=uri:tel:%2B44-20-7946-0018\n\n"
        "TEL;TYPE=home:tel:555-010-9900\n"
        "EMAIL;TYPE=work:mailto:Chen.Wei@Example.org?subject=hi\n"
        "end:vcard\n\nTrailing text\n";
    const auto card = [](std::string id, std::string name, std::vector<std::string> phones,
                         std::vector<std::string> emails, std::string organisation = "") {
        return ContactCard{std::move(id), std::move(name), std::move(organisation),
                           std::move(phones), std::move(emails)};
    };
    const auto fallback = VCard::fallbackIdentifier;
    const struct {
        const char* path;
        std::string bytes;
        std::vector<ContactCard> cards;
    } files[] = {
        {"/contacts/phone.vcf",
         kPhoneExport,
         {card(fallback("/contacts/phone.vcf", 0), "Jürgen Müller",
               {"+49 30 1234567", "030-7654321"}, {}),
          // The name comes from N, converted from ISO-8859-1.
          card(fallback("/contacts/phone.vcf", 1), "José García", {"555-010-4455"},
               {"jose@example.net"})}},
        {"webmail.vcf",
         kWebmailExport,
         {card("webmail-bea", "Beatrice O’Neill, Jr.", {"+1 555 010 7788"}, {"bea@example.com"},
               "Lee, Partners & Co"),
          // The fold's space is not part of the name.
          card(fallback("webmail.vcf", 1), "Carlos Ruiz", {},
               {"carlos@example.org", "c.ruiz@example.com"})}},
        {"four.vcf",
         version4,
         {card("urn:uuid:4fbe8971", "Chen Wei",
               {"+1-555-010-2233", "+44-20-7946-0018", "555-010-9900"}, {"Chen.Wei@Example.org"})}},
    };
    for (const auto& file : files) {
        SCOPED_TRACE(file.path);
        EXPECT_EQ(VCard::parse(file.bytes, file.path), (VCard::Result{file.cards, 0}));
    }
}

TEST(VCardParse, NamesAndValueEncodings) {
    struct Row {
        const char* label;
        std::vector<std::string_view> properties;
        std::string name;
    };
    const std::vector<Row> rows = {
        {"formatted name wins", {"FN:Ann Lee", "N:Other;Name;;;", "ORG:Acme"}, "Ann Lee"},
        {"name parts in reading order",
         {"N:Public;John;Quincy;Dr.;Jr."},
         "Dr. John Quincy Public Jr."},
        {"list values and stray spaces",
         {"N:  Stevenson ;John;Philip,Paul;;"},
         "John Philip Paul Stevenson"},
        {"blank formatted name", {"FN:   ", "N:Lee;Ann;;;", "ORG:Acme"}, "Ann Lee"},
        {"empty parts give the organisation", {"N:;;;;", "ORG:Acme\\; Sons;Sales"}, "Acme; Sons"},
        {"line breaks and doubled spaces", {"FN:Ann\\n  Lee  "}, "Ann Lee"},
        {"no name at all", {"TEL:555-010-1111"}, ""},
        {"Windows-1252 beyond Latin-1",
         {"FN;CHARSET=WINDOWS-1252:Caf\xE9 \x80 Owner"},
         "Café € Owner"},
        {"lower-case names and values",
         {"fn;charset=iso-8859-1;encoding=quoted-printable:Ren=E9"},
         "René"},
        {"lower-case hex digits", {"FN;ENCODING=QUOTED-PRINTABLE:Zo=c3=ab"}, "Zoë"},
        {"unknown charset keeps the bytes", {"FN;CHARSET=X-NOT-A-CHARSET:Ann"}, "Ann"},
        {"invalid UTF-8 is repaired", {"FN:Bad \xC3\x28 Name"}, "Bad \xEF\xBF\xBD( Name"},
        {"quoted parameter values with colons", {"FN;X-NOTE=\"a:b;c\":Ann Lee"}, "Ann Lee"},
        {"escaped backslash", {"FN:A\\\\B"}, "A\\B"},
        {"unknown escape stays as written", {"FN:A\\&B"}, "A\\&B"},
        {"equals without hex stays", {"FN;ENCODING=QUOTED-PRINTABLE:A=ZZ="}, "A=ZZ="},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const auto parsed = only(VCard::parse(card(row.properties), "names.vcf"));
        EXPECT_EQ(parsed.name(), row.name);
        EXPECT_TRUE(Unicode::isValidUTF8(parsed.fullName));
    }
}

TEST(VCardParse, DamagedCardsAreSkippedAndCounted) {
    const std::string bytes = lines({
        "BEGIN:VCARD", "VERSION:3.0", "FN:No End",   "TEL:555-010-0001", // no END
        "BEGIN:VCARD", "VERSION:3.0", "FN:No Colon", "this line has no colon", "TEL:555-010-0002",
        "END:VCARD", //
        "BEGIN:VCARD", "VERSION:3.0", "FN:Good One", "TEL:555-010-0003",       "END:VCARD",
        "END:VCARD",                                // a stray END outside any card changes nothing
        "BEGIN:VCARD", "VERSION:3.0", "FN:Cut Off", // the file ends inside the card
    });
    const auto result = VCard::parse(bytes, "damaged.vcf");
    EXPECT_EQ(result.skipped, 3U);
    ASSERT_EQ(result.cards.size(), 1U);
    EXPECT_EQ(result.cards[0].fullName, "Good One");
    EXPECT_THAT(result.cards[0].phoneNumbers, ElementsAre("555-010-0003"));
    // Positions count damaged cards too, so a repair elsewhere leaves this identifier alone.
    EXPECT_EQ(result.cards[0].identifier, VCard::fallbackIdentifier("damaged.vcf", 2));
}

TEST(VCardParse, IdentifiersWithoutUIDAreStablePerFileAndPosition) {
    const auto bytes = card({"FN:Ann"}) + card({"FN:Bob", "UID:  "}) + card({"FN:Cy", "UID:c"});
    const auto first = VCard::parse(bytes, "/home/a/contacts.vcf");
    const auto elsewhere = VCard::parse(bytes, "/home/b/contacts.vcf");
    ASSERT_EQ(first.cards.size(), 3U);
    ASSERT_EQ(elsewhere.cards.size(), 3U);

    EXPECT_EQ(first, VCard::parse(bytes, "/home/a/contacts.vcf"));
    EXPECT_THAT(first.cards[0].identifier, ::testing::MatchesRegex("vcf:[0-9a-f]{16}:0"));
    EXPECT_EQ(first.cards[1].identifier, VCard::fallbackIdentifier("/home/a/contacts.vcf", 1));
    EXPECT_NE(first.cards[0].identifier, elsewhere.cards[0].identifier);
    EXPECT_EQ(elsewhere.cards[2].identifier, "c");
}

TEST(VCardParse, BrokenBytesNeverCrashOrLeakInvalidText) {
    // Every truncation and a few corruptions at every offset of a file that uses every feature.
    const auto sample = kPhoneExport + kWebmailExport;
    const auto check = [](const std::string& bytes) {
        const auto result = VCard::parse(bytes, "broken.vcf");
        for (const auto& parsed : result.cards) {
            EXPECT_TRUE(Unicode::isValidUTF8(parsed.fullName));
            EXPECT_TRUE(Unicode::isValidUTF8(parsed.organisation));
            for (const auto& number : parsed.phoneNumbers) {
                EXPECT_TRUE(Unicode::isValidUTF8(number));
            }
        }
        return result.cards.size() + result.skipped;
    };
    for (std::size_t length = 0; length <= sample.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_LE(check(sample.substr(0, length)), 4U);
    }
    for (std::size_t offset = 0; offset < sample.size(); ++offset) {
        for (const char replacement : {':', '\n', '=', '\xFF'}) {
            auto bytes = sample;
            bytes[offset] = replacement;
            check(bytes);
        }
    }
}
