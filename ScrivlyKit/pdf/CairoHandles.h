#pragma once

#include <memory>

// Owners of the Cairo and Pango handles the PDF exporter uses. The C headers stay out of here.
typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;
typedef struct _PangoContext PangoContext;
typedef struct _PangoFontMap PangoFontMap;
typedef struct _PangoLayout PangoLayout;
typedef struct _PangoFontDescription PangoFontDescription;
typedef struct _PangoLayoutLine PangoLayoutLine;
typedef struct _PangoGlyphItem PangoGlyphItem;
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
// Contexts, font maps and layouts are GObjects: released with g_object_unref.
struct GObjectDeleter {
    void operator()(void* object) const noexcept;
};
struct PangoItemDeleter {
    void operator()(PangoItem* item) const noexcept;
};
struct FontDescriptionDeleter {
    void operator()(PangoFontDescription* description) const noexcept;
};

using CairoPtr = std::unique_ptr<cairo_t, CairoDeleter>;
using CairoSurfacePtr = std::unique_ptr<cairo_surface_t, CairoSurfaceDeleter>;
using PangoContextPtr = std::unique_ptr<PangoContext, GObjectDeleter>;
using PangoFontMapPtr = std::unique_ptr<PangoFontMap, GObjectDeleter>;
using PangoLayoutPtr = std::unique_ptr<PangoLayout, GObjectDeleter>;
using FontDescriptionPtr = std::unique_ptr<PangoFontDescription, FontDescriptionDeleter>;

} // namespace scrivly::pdf
