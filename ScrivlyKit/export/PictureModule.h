#pragma once

#include "ScrivlyKit/export/ImageConverter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

// The conversions that need libvips. libvips and the hundred libraries it brings take longer to
// load than most commands take to run, so they live in a module of their own (the CMake target
// scrivly_pictures) that the core loads when the first picture is converted. The core and the
// module are built together from this header; the table's version changes with its layout, so
// a module left over from another build is refused instead of called wrongly.
//
// Every function catches everything: a failure gives nothing (or false), as ImageConverter says.
struct PictureFunctions {
    static constexpr std::uint32_t kVersion = 1;

    std::uint32_t version = kVersion;
    // ImageConverter::jpegData on an open regular file; the descriptor stays the caller's.
    std::optional<std::vector<std::uint8_t>> (*jpegData)(int descriptor, int maxPixelSize,
                                                         double quality) noexcept = nullptr;
    std::optional<std::vector<std::uint8_t>> (*flattenedJPEG)(const ImageConverter::Image& image,
                                                              double quality) noexcept = nullptr;
    bool (*write)(const ImageConverter::Image& image, const std::string& path,
                  const std::string& type) noexcept = nullptr;
};

// The module exports one function under this name: extern "C" const PictureFunctions* NAME().
inline constexpr const char* kPictureFunctionsSymbol = "scrivly_picture_functions";

namespace PictureModule {

// The module's table, loading the module at the first call (safe from any thread); null when it
// can't be loaded, after saying why once on standard error. Never unloaded: libvips keeps
// threads and registered types for the life of the process.
const PictureFunctions* functions();

} // namespace PictureModule

} // namespace scrivly
