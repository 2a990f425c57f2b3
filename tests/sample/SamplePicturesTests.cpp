#include "ScrivlyKit/sample/SamplePictures.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace scrivly {
namespace {

using ImageConverter::Image;

std::array<int, 4> pixel(const Image& image, int x, int y) {
    const auto at = (static_cast<std::size_t>(y) * image.width + x) * 4;
    return {image.pixels[at], image.pixels[at + 1], image.pixels[at + 2], image.pixels[at + 3]};
}

// The sample's own sizes are checked with the sample history; other sizes serve the benchmark.
TEST(SamplePictures, ComeInTheAskedSize) {
    const Image small = SamplePictures::sunrise(160, 120);
    EXPECT_EQ(small.width, 160);
    EXPECT_EQ(small.height, 120);
    ASSERT_EQ(small.channels, 4);
    EXPECT_EQ(small.pixels.size(), 160U * 120U * 4U);
}

// Cairo stores native-endian ARGB words; the channels must come out in RGBA order, opaque.
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

    for (const auto& opaque : {sky, sun, table}) {
        EXPECT_EQ(opaque[3], 255);
    }
}

} // namespace
} // namespace scrivly
