#include "ScrivlyKit/export/ImageConverter.h"

#include "ScrivlyKit/export/PictureFile.h"
#include "ScrivlyKit/export/PictureModule.h"

#include <cstddef>

namespace scrivly::ImageConverter {

std::optional<std::vector<std::uint8_t>> jpegData(const std::string& path, int maxPixelSize,
                                                  double quality) {
    if (maxPixelSize <= 0) {
        return std::nullopt;
    }
    // The file first: what is no picture never loads the module.
    const auto file = PictureFile::open(path);
    const auto* module = file ? PictureModule::functions() : nullptr;
    if (module == nullptr) {
        return std::nullopt;
    }
    return module->jpegData(file->get(), maxPixelSize, quality);
}

std::optional<std::vector<std::uint8_t>> flattenedJPEG(const Image& image, double quality) {
    const auto* module = PictureModule::functions();
    return module != nullptr ? module->flattenedJPEG(image, quality) : std::nullopt;
}

std::optional<std::pair<int, int>> jpegSize(const std::vector<std::uint8_t>& jpeg) {
    const auto size = jpeg.size();
    if (size < 4 || jpeg[0] != 0xFF || jpeg[1] != 0xD8) {
        return std::nullopt;
    }
    std::size_t offset = 2;
    while (offset < size) {
        if (jpeg[offset] != 0xFF) {
            return std::nullopt;
        }
        // Any number of 0xFF fill bytes may precede a marker.
        while (offset < size && jpeg[offset] == 0xFF) {
            ++offset;
        }
        if (offset >= size) {
            return std::nullopt;
        }
        const std::uint8_t marker = jpeg[offset++];
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
            continue; // stand-alone markers carry no length
        }
        if (marker == 0xD9 || marker == 0xDA) {
            return std::nullopt; // end of image or scan data before any frame header
        }
        if (offset + 2 > size) {
            return std::nullopt;
        }
        const std::size_t length = (std::size_t{jpeg[offset]} << 8) | jpeg[offset + 1];
        if (length < 2 || offset + length > size) {
            return std::nullopt;
        }
        const bool isFrame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame) {
            // Length, precision, then height and width, big-endian.
            if (length < 7) {
                return std::nullopt;
            }
            const int height = (jpeg[offset + 3] << 8) | jpeg[offset + 4];
            const int width = (jpeg[offset + 5] << 8) | jpeg[offset + 6];
            if (width == 0 || height == 0) {
                return std::nullopt;
            }
            return std::pair{width, height};
        }
        offset += length;
    }
    return std::nullopt;
}

bool write(const Image& image, const std::string& path, const std::string& type) {
    const auto* module = PictureModule::functions();
    return module != nullptr && module->write(image, path, type);
}

} // namespace scrivly::ImageConverter
