#include "cli/TerminalText.h"

#include <gtest/gtest.h>

#include <string>

namespace scrivly::cli {
namespace {

// What a message may carry must never reach the terminal as a command: escape sequences and
// other controls become U+FFFD, bytes that are not UTF-8 too, and every kind of line break is
// one line break (or a visible mark where a line must stay one line). All else stays as it is.
TEST(TerminalText, CleanedTextCannotControlTheTerminalAndKeepsEverythingElse) {
    const std::string fffd = "\xEF\xBF\xBD";
    const auto bad = [&](int count) {
        std::string result;
        for (int index = 0; index < count; ++index) {
            result += fffd;
        }
        return result;
    };
    struct Case {
        std::string text;
        std::string kept;   // line breaks kept
        std::string joined; // one line
    };
    for (const Case& c : {
             Case{"plain text", "plain text", "plain text"},
             Case{"two\nlines", "two\nlines", "two ⏎ lines"},
             Case{"dos\r\nmac\rnew\n\u2028end\u2029\u0085", "dos\nmac\nnew\n\nend\n\n",
                  "dos ⏎ mac ⏎ new ⏎  ⏎ end ⏎  ⏎ "},
             Case{"\r\r\n", "\n\n", " ⏎  ⏎ "},
             Case{"red \x1b[31malert\x07", "red " + fffd + "[31malert" + fffd,
                  "red " + fffd + "[31malert" + fffd},
             Case{"csi \xC2\x9B"
                  "2J del\x7F",
                  "csi " + fffd + "2J del" + fffd, "csi " + fffd + "2J del" + fffd},
             Case{"tab\there", "tab here", "tab here"},
             Case{"caf\xC3\xA9 \xF0\x9F\x91\x8D \u05E9\u05DC\u05D5\u05DD",
                  "caf\xC3\xA9 \xF0\x9F\x91\x8D \u05E9\u05DC\u05D5\u05DD",
                  "caf\xC3\xA9 \xF0\x9F\x91\x8D \u05E9\u05DC\u05D5\u05DD"},
             // A surrogate's bytes are three ill-formed pieces.
             Case{"bad \xFF\xC3 end \xED\xA0\x80!", "bad " + bad(2) + " end " + bad(3) + "!",
                  "bad " + bad(2) + " end " + bad(3) + "!"},
             Case{"kept " + fffd + " as is", "kept " + fffd + " as is", "kept " + fffd + " as is"},
             Case{std::string("nul\0byte", 8), "nul" + fffd + "byte", "nul" + fffd + "byte"},
         }) {
        EXPECT_EQ(TerminalText::cleaned(c.text, true), c.kept) << c.text;
        EXPECT_EQ(TerminalText::cleaned(c.text, false), c.joined) << c.text;
    }
}

TEST(TerminalText, DisplayWidthCountsColumnsAsATerminalShowsThem) {
    EXPECT_EQ(TerminalText::displayWidth("abc"), 3u);
    EXPECT_EQ(TerminalText::displayWidth("\u5B57\u5B57"), 4u);         // wide
    EXPECT_EQ(TerminalText::displayWidth("e\u0301"), 1u);              // combining accent
    EXPECT_EQ(TerminalText::displayWidth("\U0001F44D\U0001F3FD"), 4u); // emoji and its tone
    EXPECT_EQ(TerminalText::padded("\u5B57", 4), "\u5B57  ");
}

} // namespace
} // namespace scrivly::cli
