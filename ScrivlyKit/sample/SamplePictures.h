#pragma once

#include "ScrivlyKit/export/ImageConverter.h"

// The pictures of the sample history, drawn at run time so that no image file ships with the
// program. Both are opaque RGBA with straight alpha.
namespace scrivly::SamplePictures {

// A sunrise over a lake seen from a dock. Throws std::runtime_error when it cannot be drawn
// (only when memory runs out).
ImageConverter::Image sunrise(int width = 1600, int height = 1200);

// Seedlings in three pots on a table. Throws like sunrise.
ImageConverter::Image seedlings(int width = 800, int height = 600);

} // namespace scrivly::SamplePictures
