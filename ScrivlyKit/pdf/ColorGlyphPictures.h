#pragma once

#include "ScrivlyKit/pdf/CairoHandles.h"
#include "ScrivlyKit/pdf/PDFExport.h"

#include <map>
#include <string>

namespace scrivly::pdf {

// Whether a font's glyphs are in colour (emoji), to be drawn by ColorGlyphPictures.
bool isColorFont(PangoFont* font);

// Colour glyphs drawn as pictures. Cairo can put colour glyphs into a PDF only as pictures at one
// pixel per point, which prints blurred; these are drawn sharper, once for each font and glyphs,
// and reused, so that the PDF holds each picture once. Lives as long as the PDF that shows them.
// Not thread-safe.
class ColorGlyphPictures {
public:
    // Draws a run of a colour font with its pen at (x, baseline). The run's characters go
    // underneath in plainFont, the text font at the same size, all but transparent, so that the
    // emoji stay searchable and selectable; with no plainFont, only the picture is drawn.
    // fontName: Pango's description of the run's font, which tells the pictures apart.
    void show(cairo_t* cairo, const char* text, PangoGlyphItem* run, const std::string& fontName,
              PangoFont* plainFont, double x, double baseline);

private:
    // Nothing when the run has no ink or Cairo cannot make the picture.
    cairo_surface_t* picture(PangoGlyphItem* run, const std::string& fontName,
                             const PDFExport::Rect& bounds);

    std::map<std::string, CairoSurfacePtr> m_pictures; // keyed by font and glyphs
};

} // namespace scrivly::pdf
