// The picture module (see PictureModule.h): everything that calls libvips. Built as a loadable
// module of its own and never linked into a program.

#include "ScrivlyKit/export/PictureModule.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <mutex>

namespace scrivly {

namespace {

using Bytes = std::vector<std::uint8_t>;

// Drops a message. libvips reports what its decoders notice in a damaged file (an invalid PNG
// chunk, a truncated JPEG) as GLib warnings on standard error; such a picture simply gives
// nothing and is listed as a file, so the messages would only alarm.
void dropMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

// libvips must be started once per process before any other call; false when it would not start.
bool vipsReady() {
    static std::once_flag once;
    static bool ready = false;
    std::call_once(once, [] {
        ready = VIPS_INIT("scrivly") == 0;
        if (ready) {
            g_log_set_handler("VIPS",
                              static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING |
                                                          G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO |
                                                          G_LOG_LEVEL_DEBUG),
                              dropMessage, nullptr);
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

Bytes bytesOf(VipsBlob* blob) {
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

Bytes encodeJPEG(const vips::VImage& image, double quality) {
    return bytesOf(image.jpegsave_buffer(
        vips::VImage::option()->set("Q", jpegQuality(quality))->set("strip", true)));
}

// Wraps the pixels without copying; the picture must outlive the returned image and its uses.
std::optional<vips::VImage> wrap(const ImageConverter::Image& image) {
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

std::optional<Bytes> jpegData(int descriptor, int maxPixelSize, double quality) noexcept {
    if (maxPixelSize <= 0 || !vipsReady()) {
        return std::nullopt;
    }
    try {
        // Read from the descriptor the caller checked, never by name again: the name could
        // meanwhile stand for something else. The source reads through a copy of it.
        auto source = vips::VSource::new_from_descriptor(descriptor);
        // The header alone gives the size; nothing is decoded yet.
        const auto header = vips::VImage::new_from_source(
            source, "", vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        if (static_cast<long long>(header.width()) * header.height() > ImageConverter::kMaxPixels) {
            return std::nullopt;
        }
        // thumbnail_source() asks the loader for a reduced decode (JPEG shrink-on-load, the HEIC
        // thumbnail or a subsampled read) and rotates by the EXIF orientation.
        auto thumbnail = vips::VImage::thumbnail_source(
            source, maxPixelSize,
            vips::VImage::option()->set("height", maxPixelSize)->set("size", VIPS_SIZE_DOWN));
        return encodeJPEG(flattenedSRGB(thumbnail), quality);
    } catch (...) {
        vips_error_clear();
        return std::nullopt;
    }
}

std::optional<Bytes> flattenedJPEG(const ImageConverter::Image& image, double quality) noexcept {
    if (!vipsReady()) {
        return std::nullopt;
    }
    try {
        const auto wrapped = wrap(image);
        if (!wrapped) {
            return std::nullopt;
        }
        return encodeJPEG(flattenedSRGB(*wrapped), quality);
    } catch (...) {
        vips_error_clear();
        return std::nullopt;
    }
}

bool write(const ImageConverter::Image& image, const std::string& path,
           const std::string& type) noexcept {
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
    } catch (...) {
        vips_error_clear();
        return false;
    }
}

} // namespace

} // namespace scrivly

// The one symbol the module exports (see kPictureFunctionsSymbol).
extern "C" {
extern __attribute__((visibility("default")))
const scrivly::PictureFunctions scrivly_picture_functions;
const scrivly::PictureFunctions scrivly_picture_functions{
    .version = scrivly::PictureFunctions::kVersion,
    .jpegData = scrivly::jpegData,
    .flattenedJPEG = scrivly::flattenedJPEG,
    .write = scrivly::write,
};
}
