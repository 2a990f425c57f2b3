#include "ScrivlyKit/export/SenderColors.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>

namespace scrivly {
namespace {

TEST(SenderColors, MyMessagesKeepTheirOwnColourWhateverTheName) {
    SenderColors colors;
    EXPECT_EQ(colors.colorOf("Me", true), SenderColors::kMine);
    EXPECT_EQ(colors.colorOf("Maya", true), SenderColors::kMine);
    // Taking mine does not use up a palette colour: the first other sender gets the first one.
    SenderColors fresh;
    EXPECT_EQ(colors.colorOf("Maya", false), fresh.colorOf("Theo", false));
}

TEST(SenderColors, OthersTakeDistinctColoursInOrderOfFirstAppearanceAndKeepThem) {
    SenderColors colors;
    const SenderColor maya = colors.colorOf("Maya", false);
    const SenderColor theo = colors.colorOf("Theo", false);
    EXPECT_NE(maya, theo);
    EXPECT_NE(maya, SenderColors::kMine);
    EXPECT_EQ(colors.colorOf("Maya", false), maya);
    EXPECT_EQ(colors.colorOf("Theo", false), theo);

    // Two transcripts that meet the same senders in the same order colour them alike.
    SenderColors other;
    EXPECT_EQ(other.colorOf("Ann", false), maya);
    EXPECT_EQ(other.colorOf("Bo", false), theo);
}

TEST(SenderColors, ManySendersGoRoundThePaletteWithoutFailing) {
    SenderColors colors;
    std::set<std::tuple<double, double, double>> seen;
    for (int i = 0; i < 40; ++i) {
        const SenderColor color = colors.colorOf("sender " + std::to_string(i), false);
        seen.insert({color.red, color.green, color.blue});
        EXPECT_NE(color, SenderColors::kMine);
    }
    EXPECT_GE(seen.size(), 5U);
    EXPECT_LT(seen.size(), 40U); // the palette repeats rather than inventing colours
}

} // namespace
} // namespace scrivly
