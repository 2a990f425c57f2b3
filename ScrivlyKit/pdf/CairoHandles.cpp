#include "ScrivlyKit/pdf/CairoHandles.h"

#include <cairo.h>
#include <pango/pango.h>

namespace scrivly::pdf {

void CairoDeleter::operator()(cairo_t* cairo) const noexcept {
    cairo_destroy(cairo);
}
void CairoSurfaceDeleter::operator()(cairo_surface_t* surface) const noexcept {
    cairo_surface_destroy(surface);
}
void CairoPatternDeleter::operator()(cairo_pattern_t* pattern) const noexcept {
    cairo_pattern_destroy(pattern);
}
void CairoFontOptionsDeleter::operator()(cairo_font_options_t* options) const noexcept {
    cairo_font_options_destroy(options);
}
void GObjectDeleter::operator()(void* object) const noexcept {
    g_object_unref(object);
}
void LayoutIterDeleter::operator()(PangoLayoutIter* iter) const noexcept {
    pango_layout_iter_free(iter);
}
void PangoItemDeleter::operator()(PangoItem* item) const noexcept {
    pango_item_free(item);
}
void GlyphItemDeleter::operator()(PangoGlyphItem* item) const noexcept {
    pango_glyph_item_free(item);
}
void FontDescriptionDeleter::operator()(PangoFontDescription* description) const noexcept {
    pango_font_description_free(description);
}

} // namespace scrivly::pdf
