#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Pictures to bounded JPEG data, through libvips in a module loaded at the first call (see
// PictureModule.h). Every failure gives nothing, and so does every call when the module can't be
// loaded.
namespace scrivly::ImageConverter {

// A decoded picture: 8-bit sRGB pixels, RGB or RGBA, rows packed.
struct Image {
    int width = 0;
    int height = 0;
    int channels = 4; // 3 (RGB) or 4 (RGBA, straight alpha)
    std::vector<std::uint8_t> pixels;
};

// Pictures with more pixels than this are refused unread: a few kilobytes can claim billions of
// pixels, and decoding those (even at reduced size) would take minutes and much memory. Generous
// for any camera: a 48-megapixel phone photo or a long panorama passes.
inline constexpr long long kMaxPixels = 200'000'000;

// Decodes the file directly at reduced size (never the full picture), so the longer side is at
// most maxPixelSize (smaller pictures keep their size), applies the EXIF orientation, flattens
// transparency onto white and encodes a JPEG with quality 0..1. Gives nothing for anything but a
// regular file (a folder, a pipe, a device is never waited on; see PictureFile) and for a picture
// above kMaxPixels.
std::optional<std::vector<std::uint8_t>> jpegData(const std::string& path, int maxPixelSize,
                                                  double quality);

// Encodes an already decoded picture as JPEG, transparency flattened onto white.
std::optional<std::vector<std::uint8_t>> flattenedJPEG(const Image& image, double quality);

// The pixel size of JPEG data, read from its header; nothing when it is not a JPEG.
std::optional<std::pair<int, int>> jpegSize(const std::vector<std::uint8_t>& jpeg);

// Writes a picture to a file of the given type ("heic", "png", "jpeg"); whether it worked.
bool write(const Image& image, const std::string& path, const std::string& type);

} // namespace scrivly::ImageConverter
