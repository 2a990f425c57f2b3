#pragma once

#include "ScrivlyKit/export/PaperSize.h"

// Where things go on a page of an export, for the layout pass and the drawing pass alike. Points,
// origin at the top left corner, y growing downwards.
namespace scrivly::pdf::PageGeometry {

// The same on all four sides.
inline constexpr double kMargin = 54;

// The header: one or two rows of chrome just under the top margin, a rule under them, and the
// text under the rule. Each row moves the rule and the text down by a row's pitch.
inline constexpr double kHeaderBaseline = 58; // of the first row
inline constexpr double kHeaderRowPitch = 11;
inline constexpr double kHeaderRule = 66;         // under one row
inline constexpr double kTextTopUnderHeader = 80; // under one row

// The footer: the page number's baseline sits in the bottom margin; a Bates number that does not
// fit beside it takes a row of its own above it, and the text ends a row higher.
inline constexpr double kFooterBaselineBelowMargin = 8;
inline constexpr double kFooterRowPitch = 12;
inline constexpr double kFooterSpace = 22; // between the text and the bottom margin, one row
// The least room between two chrome texts on a row.
inline constexpr double kChromeGap = 18;

// The body: messages stand in from the day lines and rules, with their bar in the gap.
inline constexpr double kBodyIndent = 12;
inline constexpr double kBarOffset = 10; // from the message's left edge to the bar's
inline constexpr double kBarWidth = 2.5;

// The flow of the body, top to bottom.
inline constexpr double kCoverTop = 60;    // the cover's text below the text top
inline constexpr double kDayKeep = 70;     // room a new day needs, else it starts a page
inline constexpr double kDayRuleBelow = 8; // the rule between days, below the last message
inline constexpr double kDayRuleSpace = 6; // the day line's top below the last message
inline constexpr double kDayLineSpace = 4; // below the day line
inline constexpr double kMessageSpace = 5; // between messages
inline constexpr double kPictureSpace = 4; // above a picture
inline constexpr double kPictureKeep = 6;  // beyond its height, room a picture needs on a page
inline constexpr double kCoverKeep = 30;   // room the cover's first lines need
inline constexpr double kDayLineKeep = 60; // room the day line's first line needs
inline constexpr double kMessageKeep = 14; // room a message's first lines need

// Baseline of a header row, 0 the first.
constexpr double headerBaseline(int row) {
    return kHeaderBaseline + row * kHeaderRowPitch;
}

// The rule under the header rows; there is none without them.
constexpr double headerRule(int headerRows) {
    return kHeaderRule + (headerRows - 1) * kHeaderRowPitch;
}

// Top of the text area on every page.
constexpr double textTop(int headerRows) {
    return headerRows == 0 ? kMargin : kTextTopUnderHeader + (headerRows - 1) * kHeaderRowPitch;
}

// The lowest point text may reach.
constexpr double bottomLimit(PageSize page, int footerRows) {
    return page.height - kMargin - kFooterSpace - (footerRows - 1) * kFooterRowPitch;
}

// Baseline of a footer row, 0 the page number's at the bottom, 1 the one above it.
constexpr double footerBaseline(PageSize page, int row) {
    return page.height - kMargin + kFooterBaselineBelowMargin - row * kFooterRowPitch;
}

// Width between the margins: chrome, day lines, rules and the cover.
constexpr double textWidth(PageSize page) {
    return page.width - 2 * kMargin;
}

// Where a text that ends at the right margin starts.
constexpr double rightAligned(PageSize page, double width) {
    return page.width - kMargin - width;
}

// The left edge of messages and their pictures.
constexpr double bodyX() {
    return kMargin + kBodyIndent;
}

// The width of messages: from the indent to the right margin.
constexpr double bodyWidth(PageSize page) {
    return page.width - (2 * kMargin + kBodyIndent);
}

} // namespace scrivly::pdf::PageGeometry
