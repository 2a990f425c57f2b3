#include "ScrivlyKit/export/ImageConverter.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <mutex>

#include <sys/stat.h>

namespace scrivly::ImageConverter {

namespace {

// libvips must be started once per process before any other call; false when it would not start.
bool vipsReady() {
    static std::once_flag once;
    static bool ready = false;
    std::call_once(once, [] {
        ready = VIPS_INIT("scrivly") == 0;
        if (ready) {
            // Each picture is converted once; an operation cache would only hold decoded pixels
            // (and open files) long after the conversion.
            vips_cache_set_max(0);
            // Exports convert several pictures at once, one per thread; a thread pool inside
            // each conversion would only add threads, and every thread keeps its own heap.
            vips_concurrency_set(1);
        }
    });
    return ready;
}

struct BlobRelease {
    void operator()(VipsBlob* blob) const { vips_area_unref(VIPS_AREA(blob)); }
};
using BlobOwner = std::unique_ptr<VipsBlob, BlobRelease>;

std::vector<std::uint8_t> bytesOf(VipsBlob* blob) {
    const BlobOwner owner{blob};
    std::size_t length = 0;
    const auto* data = static_cast<const std::uint8_t*>(vips_blob_get(blob, &length));
    return {data, data + length};
}

int jpegQuality(double quality) {
    const double clamped = std::isnan(quality) ? 0.82 : std::clamp(quality, 0.0, 1.0);
    return std::max(1, static_cast<int>(std::lround(clamped * 100.0)));
}

// 8-bit sRGB with transparency blended onto white: what a JPEG can hold.
vips::VImage flattenedSRGB(vips::VImage image) {
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB || image.format() != VIPS_FORMAT_UCHAR) {
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    }
    if (image.has_alpha()) {
        image = image.flatten(vips::VImage::option()->set("background", 255.0));
    }
    if (image.bands() > 3) {
        image = image.extract_band(0, vips::VImage::option()->set("n", 3));
    }
    return image.cast(VIPS_FORMAT_UCHAR);
}

std::vector<std::uint8_t> encodeJPEG(const vips::VImage& image, double quality) {
    return bytesOf(image.jpegsave_buffer(
        vips::VImage::option()->set("Q", jpegQuality(quality))->set("strip", true)));
}

// Wraps the pixels without copying; the picture must outlive the returned image and its uses.
std::optional<vips::VImage> wrap(const Image& image) {
    if (image.width <= 0 || image.height <= 0 || (image.channels != 3 && image.channels != 4)) {
        return std::nullopt;
    }
    const auto expected = static_cast<std::size_t>(image.width) *
                          static_cast<std::size_t>(image.height) *
                          static_cast<std::size_t>(image.channels);
    if (image.pixels.size() != expected) {
        return std::nullopt;
    }
    auto wrapped =
        vips::VImage::new_from_memory(const_cast<std::uint8_t*>(image.pixels.data()), expected,
                                      image.width, image.height, image.channels, VIPS_FORMAT_UCHAR);
    return wrapped.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

} // namespace

std::optional<std::vector<std::uint8_t>> jpegData(const std::string& path, int maxPixelSize,
                                                  double quality) {
    if (maxPixelSize <= 0 || !vipsReady()) {
        return std::nullopt;
    }
    // Only a regular file: opening a pipe would wait forever and a device would never end.
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    try {
        // The header alone gives the size; nothing is decoded yet.
        const auto header = vips::VImage::new_from_file(
            path.c_str(), vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        if (static_cast<long long>(header.width()) * header.height() > kMaxPixels) {
            return std::nullopt;
        }
        // thumbnail() asks the loader for a reduced decode (JPEG shrink-on-load, the HEIC
        // thumbnail or a subsampled read) and rotates by the EXIF orientation.
        auto thumbnail = vips::VImage::thumbnail(
            path.c_str(), maxPixelSize,
            vips::VImage::option()->set("height", maxPixelSize)->set("size", VIPS_SIZE_DOWN));
        return encodeJPEG(flattenedSRGB(thumbnail), quality);
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
}

std::optional<std::vector<std::uint8_t>> flattenedJPEG(const Image& image, double quality) {
    if (!vipsReady()) {
        return std::nullopt;
    }
    try {
        const auto wrapped = wrap(image);
        if (!wrapped) {
            return std::nullopt;
        }
        return encodeJPEG(flattenedSRGB(*wrapped), quality);
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
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
    if (!vipsReady()) {
        return false;
    }
    try {
        const auto wrapped = wrap(image);
        if (!wrapped) {
            return false;
        }
        if (type == "heic") {
            wrapped->heifsave(path.c_str(), vips::VImage::option()->set(
                                                "compression", VIPS_FOREIGN_HEIF_COMPRESSION_HEVC));
        } else if (type == "png") {
            wrapped->pngsave(path.c_str());
        } else if (type == "jpeg" || type == "jpg") {
            flattenedSRGB(*wrapped).jpegsave(path.c_str());
        } else {
            return false;
        }
        return true;
    } catch (const vips::VError&) {
        vips_error_clear();
        return false;
    }
}

} // namespace scrivly::ImageConverter
