#pragma once

#include <memory>

// Owners of the Cairo and Pango handles, one per kind of handle, for all of the code base. The C
// headers stay out of here: the handles are declared as the libraries declare them.
typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;
typedef struct _cairo_pattern cairo_pattern_t;
typedef struct _cairo_font_options cairo_font_options_t;
typedef struct _PangoContext PangoContext;
typedef struct _PangoFontMap PangoFontMap;
typedef struct _PangoLayout PangoLayout;
typedef struct _PangoLayoutIter PangoLayoutIter;
typedef struct _PangoFontDescription PangoFontDescription;
typedef struct _PangoLayoutLine PangoLayoutLine;
typedef struct _PangoGlyphItem PangoGlyphItem;
typedef struct _PangoGlyphString PangoGlyphString;
typedef struct _PangoGlyphInfo PangoGlyphInfo;
typedef struct _PangoItem PangoItem;
typedef struct _PangoFont PangoFont;
typedef struct _PangoLanguage PangoLanguage;

namespace scrivly::pdf {

struct CairoDeleter {
    void operator()(cairo_t* cairo) const noexcept;
};
struct CairoSurfaceDeleter {
    void operator()(cairo_surface_t* surface) const noexcept;
};
struct CairoPatternDeleter {
    void operator()(cairo_pattern_t* pattern) const noexcept;
};
struct CairoFontOptionsDeleter {
    void operator()(cairo_font_options_t* options) const noexcept;
};
// Contexts, font maps, fonts and layouts are GObjects: released with g_object_unref.
struct GObjectDeleter {
    void operator()(void* object) const noexcept;
};
struct LayoutIterDeleter {
    void operator()(PangoLayoutIter* iter) const noexcept;
};
struct PangoItemDeleter {
    void operator()(PangoItem* item) const noexcept;
};
struct GlyphItemDeleter {
    void operator()(PangoGlyphItem* item) const noexcept;
};
struct FontDescriptionDeleter {
    void operator()(PangoFontDescription* description) const noexcept;
};

using CairoPtr = std::unique_ptr<cairo_t, CairoDeleter>;
using CairoSurfacePtr = std::unique_ptr<cairo_surface_t, CairoSurfaceDeleter>;
using CairoPatternPtr = std::unique_ptr<cairo_pattern_t, CairoPatternDeleter>;
using CairoFontOptionsPtr = std::unique_ptr<cairo_font_options_t, CairoFontOptionsDeleter>;
using PangoContextPtr = std::unique_ptr<PangoContext, GObjectDeleter>;
using PangoFontMapPtr = std::unique_ptr<PangoFontMap, GObjectDeleter>;
using PangoFontPtr = std::unique_ptr<PangoFont, GObjectDeleter>;
using PangoLayoutPtr = std::unique_ptr<PangoLayout, GObjectDeleter>;
using LayoutIterPtr = std::unique_ptr<PangoLayoutIter, LayoutIterDeleter>;
using PangoItemPtr = std::unique_ptr<PangoItem, PangoItemDeleter>;
using GlyphItemPtr = std::unique_ptr<PangoGlyphItem, GlyphItemDeleter>;
using FontDescriptionPtr = std::unique_ptr<PangoFontDescription, FontDescriptionDeleter>;

} // namespace scrivly::pdf
