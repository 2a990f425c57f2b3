#include "ScrivlyKit/sample/SamplePictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace scrivly {
namespace {

using ImageConverter::Image;

std::array<int, 4> pixel(const Image& image, int x, int y) {
    const auto at = (static_cast<std::size_t>(y) * image.width + x) * 4;
    return {image.pixels[at], image.pixels[at + 1], image.pixels[at + 2], image.pixels[at + 3]};
}

TEST(SamplePictures, AreOpaqueRGBAOfTheAskedSize) {
    struct Case {
        const char* name;
        Image image;
        int width;
        int height;
    };
    const Case cases[] = {
        {"sunrise", SamplePictures::sunrise(), 1600, 1200},
        {"seedlings", SamplePictures::seedlings(), 800, 600},
        {"small sunrise", SamplePictures::sunrise(160, 120), 160, 120},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.image.width, c.width);
        EXPECT_EQ(c.image.height, c.height);
        ASSERT_EQ(c.image.channels, 4);
        ASSERT_EQ(c.image.pixels.size(), static_cast<std::size_t>(c.width) * c.height * 4);
        bool opaque = true;
        for (std::size_t i = 3; i < c.image.pixels.size(); i += 4) {
            opaque = opaque && c.image.pixels[i] == 255;
        }
        EXPECT_TRUE(opaque);
        // Something is drawn: the picture is not one flat colour.
        EXPECT_NE(pixel(c.image, 0, 0), pixel(c.image, c.width / 2, c.height - 1));
    }
}

// Cairo stores native-endian ARGB words; the channels must come out in RGBA order.
TEST(SamplePictures, KeepColourChannelsInOrder) {
    const Image sunrise = SamplePictures::sunrise();
    const auto sky = pixel(sunrise, 5, 5);
    EXPECT_GT(sky[2], sky[0] + 30) << "the sky at the top is deep blue";

    const auto sun = pixel(sunrise, 1008, 640);
    EXPECT_GT(sun[0], 230) << "the sun is pale yellow";
    EXPECT_GT(sun[0], sun[2]);

    const Image seedlings = SamplePictures::seedlings();
    const auto table = pixel(seedlings, 5, 590);
    EXPECT_GT(table[0], table[2] + 40) << "the table is warm brown";
}

} // namespace
} // namespace scrivly
