#include "ScrivlyKit/sample/SamplePictures.h"

#include "ScrivlyKit/pdf/CairoHandles.h"

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <stdexcept>

namespace scrivly::SamplePictures {

namespace {

using pdf::CairoPatternPtr;
using pdf::CairoPtr;
using pdf::CairoSurfacePtr;

[[noreturn]] void fail() {
    throw std::runtime_error("The sample pictures couldn’t be drawn.");
}

struct Canvas {
    CairoSurfacePtr surface;
    CairoPtr context;
};

Canvas makeCanvas(int width, int height) {
    CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        fail();
    }
    CairoPtr context(cairo_create(surface.get()));
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) {
        fail();
    }
    return {std::move(surface), std::move(context)};
}

// Colours are written as 0xRRGGBB for readability.
void setColour(cairo_t* cr, std::uint32_t rgb, double alpha = 1.0) {
    cairo_set_source_rgba(cr, ((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0,
                          (rgb & 0xFF) / 255.0, alpha);
}

void addStop(cairo_pattern_t* pattern, double offset, std::uint32_t rgb, double alpha = 1.0) {
    cairo_pattern_add_color_stop_rgba(pattern, offset, ((rgb >> 16) & 0xFF) / 255.0,
                                      ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, alpha);
}

void fillRectangle(cairo_t* cr, double x, double y, double width, double height, std::uint32_t rgb,
                   double alpha = 1.0) {
    setColour(cr, rgb, alpha);
    cairo_rectangle(cr, x, y, width, height);
    cairo_fill(cr);
}

// An ellipse centred on (x, y), turned by angle radians.
void fillEllipse(cairo_t* cr, double x, double y, double radiusX, double radiusY, std::uint32_t rgb,
                 double angle = 0, double alpha = 1.0) {
    cairo_save(cr);
    cairo_translate(cr, x, y);
    cairo_rotate(cr, angle);
    cairo_scale(cr, radiusX, radiusY);
    cairo_arc(cr, 0, 0, 1, 0, 2 * std::numbers::pi);
    cairo_restore(cr);
    setColour(cr, rgb, alpha);
    cairo_fill(cr);
}

void fillPolygon(cairo_t* cr, std::initializer_list<std::pair<double, double>> points,
                 std::uint32_t rgb) {
    bool first = true;
    for (const auto& [x, y] : points) {
        if (first) {
            cairo_move_to(cr, x, y);
            first = false;
        } else {
            cairo_line_to(cr, x, y);
        }
    }
    cairo_close_path(cr);
    setColour(cr, rgb);
    cairo_fill(cr);
}

void fillWithGradient(cairo_t* cr, double x, double y, double width, double height,
                      std::initializer_list<std::pair<double, std::uint32_t>> stops) {
    CairoPatternPtr gradient(cairo_pattern_create_linear(0, y, 0, y + height));
    for (const auto& [offset, rgb] : stops) {
        addStop(gradient.get(), offset, rgb);
    }
    cairo_set_source(cr, gradient.get());
    cairo_rectangle(cr, x, y, width, height);
    cairo_fill(cr);
}

// Cairo keeps native-endian premultiplied ARGB words; the converter wants straight RGBA bytes.
ImageConverter::Image toImage(Canvas& canvas) {
    cairo_surface_t* surface = canvas.surface.get();
    cairo_surface_flush(surface);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS ||
        cairo_status(canvas.context.get()) != CAIRO_STATUS_SUCCESS) {
        fail();
    }
    ImageConverter::Image image;
    image.width = cairo_image_surface_get_width(surface);
    image.height = cairo_image_surface_get_height(surface);
    image.channels = 4;
    image.pixels.resize(static_cast<std::size_t>(image.width) * image.height * 4);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    std::uint8_t* out = image.pixels.data();
    for (int y = 0; y < image.height; ++y) {
        const unsigned char* row = data + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < image.width; ++x) {
            std::uint32_t word = 0;
            std::memcpy(&word, row + static_cast<std::ptrdiff_t>(x) * 4, sizeof word);
            const std::uint32_t alpha = word >> 24;
            const auto straight = [alpha](std::uint32_t premultiplied) {
                return alpha == 0 ? 0U : (premultiplied * 255U + alpha / 2) / alpha;
            };
            *out++ = static_cast<std::uint8_t>(straight((word >> 16) & 0xFF));
            *out++ = static_cast<std::uint8_t>(straight((word >> 8) & 0xFF));
            *out++ = static_cast<std::uint8_t>(straight(word & 0xFF));
            *out++ = static_cast<std::uint8_t>(alpha);
        }
    }
    return image;
}

} // namespace

ImageConverter::Image sunrise(int width, int height) {
    Canvas canvas = makeCanvas(width, height);
    cairo_t* cr = canvas.context.get();
    const double w = width;
    const double h = height;
    const double horizon = h * 0.56;

    // An opaque ground first, so that antialiased edges between the areas never let it through.
    setColour(cr, 0xE99A6C);
    cairo_paint(cr);

    fillWithGradient(cr, 0, 0, w, horizon,
                     {{0.0, 0x27305E}, {0.45, 0x8E5A8C}, {0.8, 0xF3925E}, {1.0, 0xFFD58A}});

    // The sun is half risen: clip it to the sky, with a soft glow around it.
    const double sunX = w * 0.63;
    const double sunRadius = h * 0.085;
    cairo_save(cr);
    cairo_rectangle(cr, 0, 0, w, horizon);
    cairo_clip(cr);
    CairoPatternPtr glow(
        cairo_pattern_create_radial(sunX, horizon, sunRadius, sunX, horizon, h * 0.4));
    addStop(glow.get(), 0, 0xFFE7A8, 0.75);
    addStop(glow.get(), 1, 0xFFE7A8, 0.0);
    cairo_set_source(cr, glow.get());
    cairo_paint(cr);
    fillEllipse(cr, sunX, horizon, sunRadius, sunRadius, 0xFFF4C8);
    cairo_restore(cr);

    // Far shore: low hills in front of the sun.
    fillEllipse(cr, w * 0.12, horizon, w * 0.3, h * 0.045, 0x3E3050);
    fillEllipse(cr, w * 0.92, horizon, w * 0.26, h * 0.03, 0x4A3858);

    fillWithGradient(cr, 0, horizon, w, h - horizon,
                     {{0.0, 0xE99A6C}, {0.35, 0x7B6483}, {1.0, 0x22304F}});

    // The sun's reflection: short bright streaks that narrow towards the viewer.
    for (int i = 0; i < 9; ++i) {
        const double y = horizon + h * 0.015 + i * h * 0.03;
        const double half = sunRadius * (1.1 - i * 0.09);
        fillRectangle(cr, sunX - half, y, 2 * half, h * 0.008, 0xFFE3A0, 0.55 - i * 0.05);
    }

    // The dock runs from the bottom edge out towards the water, in perspective.
    const double dockFarY = h * 0.7;
    const double dockNearLeft = w * 0.18;
    const double dockNearRight = w * 0.62;
    const double dockFarLeft = w * 0.33;
    const double dockFarRight = w * 0.45;
    for (const double postX : {dockFarLeft - w * 0.008, dockFarRight - w * 0.004}) {
        fillRectangle(cr, postX, dockFarY - h * 0.03, w * 0.012, h * 0.06, 0x3A2719);
    }
    fillPolygon(
        cr,
        {{dockFarLeft, dockFarY}, {dockFarRight, dockFarY}, {dockNearRight, h}, {dockNearLeft, h}},
        0x7A5236);
    // Gaps between the planks, closer together towards the far end.
    cairo_set_line_width(cr, h * 0.004);
    setColour(cr, 0x4B3222);
    for (int i = 1; i < 14; ++i) {
        const double t = std::pow(i / 14.0, 1.6);
        const double y = dockFarY + (h - dockFarY) * t;
        const double left = dockFarLeft + (dockNearLeft - dockFarLeft) * t;
        const double right = dockFarRight + (dockNearRight - dockFarRight) * t;
        cairo_move_to(cr, left, y);
        cairo_line_to(cr, right, y);
    }
    cairo_stroke(cr);
    fillRectangle(cr, dockNearLeft - w * 0.01, h * 0.9, w * 0.02, h * 0.1, 0x3A2719);
    fillRectangle(cr, dockNearRight - w * 0.01, h * 0.9, w * 0.02, h * 0.1, 0x3A2719);

    return toImage(canvas);
}

ImageConverter::Image seedlings(int width, int height) {
    Canvas canvas = makeCanvas(width, height);
    cairo_t* cr = canvas.context.get();
    const double w = width;
    const double h = height;
    const double tableY = h * 0.72;

    setColour(cr, 0xE8DCC4);
    cairo_paint(cr);

    fillWithGradient(cr, 0, 0, w, tableY, {{0.0, 0xF7F1E3}, {1.0, 0xE8DCC4}});
    fillRectangle(cr, 0, tableY, w, h - tableY, 0xB9875A);
    fillRectangle(cr, 0, tableY, w, h * 0.015, 0x9C6E45);

    struct Pot {
        double centre;
        double size;
        int leaves;
    };
    for (const Pot pot : {Pot{0.2, 0.9, 2}, Pot{0.5, 1.1, 3}, Pot{0.8, 1.0, 2}}) {
        const double cx = w * pot.centre;
        const double potWidth = w * 0.17 * pot.size;
        const double potHeight = h * 0.2 * pot.size;
        const double potTop = tableY + h * 0.06 - potHeight;

        fillEllipse(cr, cx, tableY + h * 0.06, potWidth * 0.6, h * 0.02, 0x8A603C, 0, 0.6);
        fillRectangle(cr, cx - potWidth * 0.42, potTop, potWidth * 0.84, potHeight, 0xC8643B);
        fillRectangle(cr, cx - potWidth / 2, potTop - h * 0.03, potWidth, h * 0.045, 0xD9774D);
        fillEllipse(cr, cx, potTop - h * 0.03, potWidth * 0.46, h * 0.018, 0x4A3222);

        const double stemHeight = h * 0.2 * pot.size;
        const double stemTop = potTop - h * 0.03 - stemHeight;
        fillRectangle(cr, cx - w * 0.004, stemTop, w * 0.008, stemHeight, 0x4E8A34);
        for (int leaf = 0; leaf < pot.leaves; ++leaf) {
            const double y = stemTop + stemHeight * (0.15 + 0.3 * leaf);
            const double side = leaf % 2 == 0 ? -1.0 : 1.0;
            const double length = w * 0.05 * pot.size * (1.0 - 0.15 * leaf);
            fillEllipse(cr, cx + side * length * 0.9, y, length, length * 0.42, 0x6DB54A,
                        side * -0.45);
            fillEllipse(cr, cx - side * length * 0.8, y + stemHeight * 0.12, length * 0.85,
                        length * 0.36, 0x5AA03C, side * 0.45);
        }
        // The two first leaves at the top of each stem.
        fillEllipse(cr, cx - w * 0.025 * pot.size, stemTop, w * 0.03 * pot.size,
                    h * 0.018 * pot.size, 0x86C95F, 0.5);
        fillEllipse(cr, cx + w * 0.025 * pot.size, stemTop, w * 0.03 * pot.size,
                    h * 0.018 * pot.size, 0x86C95F, -0.5);
    }

    return toImage(canvas);
}

} // namespace scrivly::SamplePictures
