#include "ScrivlyKit/export/ImageConverter.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <array>
#include <fstream>
#include <functional>

namespace scrivly::ImageConverter {
namespace {

using Pixel = std::array<std::uint8_t, 4>;

constexpr Pixel kRed{255, 0, 0, 255};
constexpr Pixel kBlue{0, 0, 255, 255};
constexpr Pixel kGreen{0, 160, 0, 255};
constexpr Pixel kClear{0, 0, 0, 0};

Image makeImage(int width, int height, int channels,
                const std::function<Pixel(int x, int y)>& colour) {
    Image image{width, height, channels, {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto pixel = colour(x, y);
            image.pixels.insert(image.pixels.end(), pixel.begin(), pixel.begin() + channels);
        }
    }
    return image;
}

Image plain(int width, int height, Pixel pixel, int channels = 3) {
    return makeImage(width, height, channels, [pixel](int, int) { return pixel; });
}

class ImageConverterTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(VIPS_INIT("test_export"), 0); }

    static vips::VImage decode(const std::vector<std::uint8_t>& jpeg) {
        return vips::VImage::new_from_buffer(jpeg.data(), jpeg.size(), "");
    }

    // Within JPEG's loss of the expected colour.
    static void expectColour(const vips::VImage& image, int x, int y, Pixel expected) {
        SCOPED_TRACE("pixel " + std::to_string(x) + "," + std::to_string(y));
        const auto values = image.getpoint(x, y);
        ASSERT_EQ(values.size(), 3u);
        for (std::size_t band = 0; band < 3; ++band) {
            EXPECT_NEAR(values[band], expected[band], 12) << "band " << band;
        }
    }

    testing::TempDir m_folder;
};

TEST_F(ImageConverterTest, ScalesTheLongerSideDownAndNeverUp) {
    const struct {
        const char* name;
        const char* type;
        int width, height;
        int expectedWidth, expectedHeight;
    } cases[] = {
        {"photo.heic", "heic", 4032, 3024, 1600, 1200},
        {"small.png", "png", 800, 600, 800, 600},
        {"tall.png", "png", 1000, 3000, 533, 1600},
        {"exact.jpg", "jpeg", 1600, 900, 1600, 900},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const auto path = m_folder.file(row.name);
        ASSERT_TRUE(write(plain(row.width, row.height, kGreen), path, row.type));
        const auto jpeg = jpegData(path, 1600, 0.82);
        ASSERT_TRUE(jpeg.has_value());
        EXPECT_EQ(jpegSize(*jpeg), std::pair(row.expectedWidth, row.expectedHeight));
        const auto decoded = decode(*jpeg);
        EXPECT_EQ(decoded.bands(), 3);
        expectColour(decoded, row.expectedWidth / 2, row.expectedHeight / 2, kGreen);
    }
}

TEST_F(ImageConverterTest, AppliesTheEXIFOrientation) {
    // Stored sideways: red on the left, blue on the right. Orientation 6 means "turn a quarter
    // clockwise to view", so upright the red half is on top.
    const auto stored = m_folder.file("stored.png");
    ASSERT_TRUE(write(makeImage(400, 300, 3, [](int x, int) { return x < 200 ? kRed : kBlue; }),
                      stored, "png"));
    auto rotated = vips::VImage::new_from_file(stored.c_str()).copy();
    rotated.set("orientation", 6);
    const auto path = m_folder.file("rotated.jpg");
    rotated.jpegsave(path.c_str());

    const auto jpeg = jpegData(path, 1600, 0.9);
    ASSERT_TRUE(jpeg.has_value());
    const auto upright = decode(*jpeg);
    EXPECT_EQ(upright.width(), 300);
    EXPECT_EQ(upright.height(), 400);
    expectColour(upright, 150, 50, kRed);
    expectColour(upright, 150, 350, kBlue);
    // The metadata is stripped, so no viewer turns the picture a second time.
    EXPECT_TRUE(upright.get_typeof("orientation") == 0 || upright.get_int("orientation") == 1);
}

TEST_F(ImageConverterTest, TransparencyBecomesWhite) {
    const auto picture =
        makeImage(100, 100, 4, [](int x, int) { return x < 50 ? kClear : kGreen; });
    const auto path = m_folder.file("clear.png");
    ASSERT_TRUE(write(picture, path, "png"));

    const auto fromFile = jpegData(path, 1600, 0.9);
    const auto fromPixels = flattenedJPEG(picture, 0.9);
    for (const auto* jpeg : {&fromFile, &fromPixels}) {
        ASSERT_TRUE(jpeg->has_value());
        const auto decoded = decode(**jpeg);
        EXPECT_EQ(decoded.bands(), 3);
        expectColour(decoded, 10, 50, {255, 255, 255, 255});
        expectColour(decoded, 90, 50, kGreen);
    }
}

TEST_F(ImageConverterTest, FailuresGiveNothing) {
    // Text named as a picture, an empty file, a missing one, and a PNG whose first chunk is
    // garbage (which its decoder would warn about on standard error).
    std::ofstream(m_folder.file("notes.jpg")) << "These are not the pixels you are looking for.";
    std::ofstream{m_folder.file("empty.png")};
    std::ofstream(m_folder.file("broken.png"), std::ios::binary)
        << std::string("\x89PNG\r\n\x1a\n\0\0\0\x05\x01\x02\x03\x04garbage", 23);
    ::testing::internal::CaptureStderr();
    for (const char* name : {"notes.jpg", "empty.png", "missing.heic", "broken.png"}) {
        EXPECT_FALSE(jpegData(m_folder.file(name), 1600, 0.82).has_value()) << name;
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");

    auto wrongSize = plain(10, 10, kRed);
    wrongSize.pixels.pop_back();
    EXPECT_FALSE(flattenedJPEG(wrongSize, 0.82).has_value());
    EXPECT_FALSE(flattenedJPEG(Image{}, 0.82).has_value());
    auto twoChannels = plain(10, 10, kRed);
    twoChannels.channels = 2;
    twoChannels.pixels.resize(200);
    EXPECT_FALSE(flattenedJPEG(twoChannels, 0.82).has_value());

    EXPECT_FALSE(write(plain(10, 10, kRed), m_folder.file("picture.bmp"), "bmp"));
    EXPECT_FALSE(write(plain(10, 10, kRed), m_folder.file("no/such/folder.png"), "png"));
    EXPECT_FALSE(write(wrongSize, m_folder.file("wrong.png"), "png"));
}

TEST_F(ImageConverterTest, ReadsTheSizeFromTheJPEGHeader) {
    const auto jpeg = flattenedJPEG(plain(123, 45, kBlue), 0.82);
    ASSERT_TRUE(jpeg.has_value());

    // Each prefix gives the size once it holds the whole frame header, and nothing before.
    std::optional<std::size_t> firstComplete;
    for (std::size_t length = 0; length <= jpeg->size(); ++length) {
        const std::vector<std::uint8_t> prefix(jpeg->begin(),
                                               jpeg->begin() + static_cast<long>(length));
        const auto size = jpegSize(prefix);
        if (size) {
            EXPECT_EQ(*size, std::pair(123, 45)) << "length " << length;
            firstComplete = firstComplete.value_or(length);
        } else {
            EXPECT_FALSE(firstComplete.has_value()) << "length " << length;
        }
    }
    EXPECT_TRUE(firstComplete.has_value());

    auto png = *jpeg;
    png[1] = 0x50;
    EXPECT_EQ(jpegSize(png), std::nullopt);
    EXPECT_EQ(jpegSize({0xFF, 0xD8, 0xFF, 0xD9}), std::nullopt);
    EXPECT_EQ(jpegSize({0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x01, 0x00, 0x00}), std::nullopt);
}

} // namespace
} // namespace scrivly::ImageConverter
