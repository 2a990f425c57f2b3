#include "ScrivlyKit/text/Unicode.h"

#include <gtest/gtest.h>

#include <string>

namespace scrivly {
namespace {

// Every stored text passes this check before it is shown; a fault lets ill-formed bytes through
// to Pango (which drops the whole message) or replaces good text. Bad bytes are tried at every
// position of a long ASCII text, since plain runs are checked several bytes at a time.
TEST(Unicode, ValidUTF8IsToldFromIllFormedAtEveryPosition) {
    for (const char* good : {"", "a", "caf\xC3\xA9", "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD",
                             "\xE5\xAD\x97", "\xEF\xBF\xBD", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(Unicode::isValidUTF8(good)) << good;
    }
    for (const char* bad : {"\xFF", "\xC3", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80",
                            "\xF4\x90\x80\x80", "\xF0\x9F\x91", "\x80"}) {
        EXPECT_FALSE(Unicode::isValidUTF8(bad)) << bad;
    }
    const std::string ascii(40, 'x');
    for (std::size_t at = 0; at <= ascii.size(); ++at) {
        for (const std::string insert : {"\xF0\x9F\x91\x8D", "\xC3\xA9"}) {
            std::string text = ascii;
            text.insert(at, insert);
            EXPECT_TRUE(Unicode::isValidUTF8(text)) << at;
            // Cut short: the last byte of the character is missing.
            EXPECT_FALSE(Unicode::isValidUTF8(text.substr(0, at + insert.size() - 1))) << at;
        }
        std::string text = ascii;
        text.insert(at, "\x80");
        EXPECT_FALSE(Unicode::isValidUTF8(text)) << at;
        EXPECT_EQ(Unicode::repairedUTF8(text),
                  std::string(at, 'x') + "\xEF\xBF\xBD" + std::string(40 - at, 'x'));
    }
}

} // namespace
} // namespace scrivly
