#include "ScrivlyKit/pdf/ColorGlyphPictures.h"

#include <cairo-ft.h>
#include <cairo.h>
#include <pango/pangocairo.h>

#include <cmath>
#include <memory>

namespace scrivly::pdf {

namespace {

// Colour glyphs are drawn at this many pixels per point: about 430 pixels per inch.
constexpr double kScale = 6;

} // namespace

bool isColorFont(PangoFont* font) {
    cairo_scaled_font_t* scaled = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
    if (scaled == nullptr || cairo_scaled_font_get_type(scaled) != CAIRO_FONT_TYPE_FT) {
        return false;
    }
    FT_Face face = cairo_ft_scaled_font_lock_face(scaled);
    const bool color = face != nullptr && FT_HAS_COLOR(face);
    cairo_ft_scaled_font_unlock_face(scaled);
    return color;
}

void ColorGlyphPictures::show(cairo_t* cairo, const char* text, PangoGlyphItem* run,
                              const std::string& fontName, PangoFont* plainFont, double x,
                              double baseline) {
    PangoRectangle ink;
    pango_glyph_string_extents(run->glyphs, run->item->analysis.font, &ink, nullptr);
    // A point of room all round for the antialiased edges.
    const PDFExport::Rect bounds{pango_units_to_double(ink.x) - 1, pango_units_to_double(ink.y) - 1,
                                 pango_units_to_double(ink.width) + 2,
                                 pango_units_to_double(ink.height) + 2};
    if (cairo_surface_t* image = picture(run, fontName, bounds)) {
        cairo_save(cairo);
        cairo_translate(cairo, x + bounds.x, baseline + bounds.y);
        cairo_scale(cairo, 1 / kScale, 1 / kScale);
        cairo_set_source_surface(cairo, image, 0, 0);
        cairo_paint(cairo);
        cairo_restore(cairo);
    }

    if (plainFont == nullptr) {
        return;
    }
    const GlyphItemPtr hidden(pango_glyph_item_copy(run));
    g_object_unref(hidden->item->analysis.font);
    hidden->item->analysis.font = PANGO_FONT(g_object_ref(plainFont));
    // Glyph numbers of the colour font mean nothing in the text font: all become its glyph 0,
    // and the characters travel with them as the PDF's actual text.
    for (int index = 0; index < hidden->glyphs->num_glyphs; ++index) {
        hidden->glyphs->glyphs[index].glyph = 0;
    }
    cairo_save(cairo);
    cairo_set_source_rgba(cairo, 0, 0, 0, 1.0 / 255);
    cairo_move_to(cairo, x, baseline);
    pango_cairo_show_glyph_item(cairo, text, hidden.get());
    cairo_restore(cairo);
}

cairo_surface_t* ColorGlyphPictures::picture(PangoGlyphItem* run, const std::string& fontName,
                                             const PDFExport::Rect& bounds) {
    std::string key = fontName;
    for (int index = 0; index < run->glyphs->num_glyphs; ++index) {
        const PangoGlyphInfo& glyph = run->glyphs->glyphs[index];
        for (const long number :
             {static_cast<long>(glyph.glyph), static_cast<long>(glyph.geometry.width),
              static_cast<long>(glyph.geometry.x_offset),
              static_cast<long>(glyph.geometry.y_offset)}) {
            key += ' ';
            key += std::to_string(number);
        }
    }
    auto found = m_pictures.find(key);
    if (found != m_pictures.end()) {
        return found->second.get();
    }
    const int width = static_cast<int>(std::ceil(bounds.width * kScale));
    const int height = static_cast<int>(std::ceil(bounds.height * kScale));
    if (width <= 0 || height <= 0) {
        return nullptr;
    }
    CairoSurfacePtr image(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    if (cairo_surface_status(image.get()) != CAIRO_STATUS_SUCCESS) {
        return nullptr;
    }
    {
        const CairoPtr painter(cairo_create(image.get()));
        cairo_scale(painter.get(), kScale, kScale);
        cairo_move_to(painter.get(), -bounds.x, -bounds.y);
        pango_cairo_show_glyph_string(painter.get(), run->item->analysis.font, run->glyphs);
    }
    cairo_surface_flush(image.get());
    return m_pictures.emplace(std::move(key), std::move(image)).first->second.get();
}

} // namespace scrivly::pdf
