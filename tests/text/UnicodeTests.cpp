#include "ScrivlyKit/text/Unicode.h"

#include <gtest/gtest.h>

using namespace scrivly;

TEST(Unicode, TrimsUnicodeWhiteSpaceAndLineBreaks) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"  Ann  ", "Ann"},
        {"\n\t Ann Lee\r\n", "Ann Lee"},
        {"\xC2\xA0\xE2\x80\x83"
         "Ann\xE3\x80\x80",
         "Ann"},                              // no-break, em and ideographic spaces
        {"\xE2\x80\xA8 Ann \xC2\x85", "Ann"}, // line separator, next line
        {" \n\t ", ""},
        {"", ""},
        {"a \n b", "a \n b"},
    };
    for (const auto& [input, expected] : cases) {
        SCOPED_TRACE(input);
        EXPECT_EQ(Unicode::trimmed(input), expected);
    }
}

TEST(Unicode, LowerCasesFullUnicode) {
    EXPECT_EQ(Unicode::lowercased("Ann.Lee@Example.COM"), "ann.lee@example.com");
    EXPECT_EQ(Unicode::lowercased("\xC3\x89MILE@\xC3\x89T\xC3\x89.FR"),
              "\xC3\xA9mile@\xC3\xA9t\xC3\xA9.fr");
    EXPECT_EQ(Unicode::lowercased("\xCE\xA3\xCE\x91"), "\xCF\x83\xCE\xB1"); // ΣΑ
}

TEST(Unicode, MeasuresAndValidatesUTF8) {
    EXPECT_TRUE(Unicode::isValidUTF8("plain \xF0\x9F\x98\x80"));
    EXPECT_FALSE(Unicode::isValidUTF8("\xED\xA0\x80"));
    EXPECT_FALSE(Unicode::isValidUTF8("\xC0\xAF"));
    EXPECT_EQ(Unicode::repairedUTF8("a\xFF"
                                    "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(Unicode::utf16Length("a\xC3\xA9\xF0\x9F\x98\x80"), 4U);
}

TEST(Unicode, NumericCharactersFollowTheUnicodeCategories) {
    EXPECT_TRUE(Unicode::isNumeric(U'7'));
    EXPECT_TRUE(Unicode::isNumeric(U'\u0663')); // Arabic-Indic three
    EXPECT_TRUE(Unicode::isNumeric(U'\u00BD')); // one half
    EXPECT_TRUE(Unicode::isNumeric(U'\u2163')); // Roman numeral four
    EXPECT_FALSE(Unicode::isNumeric(U'x'));
    EXPECT_FALSE(Unicode::containsNumeric("+()-. "));
    EXPECT_TRUE(Unicode::containsNumeric("abc\xD9\xA3"));
}
