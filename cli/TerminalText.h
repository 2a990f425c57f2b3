#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text made safe and measured for a terminal.
namespace scrivly::cli::TerminalText {

// Columns the text takes in a terminal: wide East Asian characters and emoji take two, combining
// marks and other zero-width characters none, everything else one. An estimate, as terminals
// differ, but far closer than counting bytes.
std::size_t displayWidth(std::string_view text);

// Text from the database made harmless to print: invalid UTF-8 repaired, control characters
// (escape sequences among them) shown as U+FFFD, tabs as a space; line breaks kept when
// keepLineBreaks, else each becomes " ⏎ ".
std::string cleaned(std::string_view text, bool keepLineBreaks);

// The text followed by spaces up to width columns (never cut).
std::string padded(std::string_view text, std::size_t width);

} // namespace scrivly::cli::TerminalText
