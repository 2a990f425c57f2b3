// layout-floor: the least work a paginated PDF of a transcript needs, as a yardstick for export.
//
//   layout-floor TRANSCRIPT.json OUT.pdf
//
// Reads the entries of `scrivly-cli transcript --json`, sets each one (sender and time in bold,
// then the text) with Pango at the width of a Letter page's text column and draws the lines onto
// Cairo PDF pages, breaking between lines. No cover, chrome, colours, day lines or reactions: what
// remains is shaping, line breaking, font subsetting and PDF writing, which no exporter escapes.

#include <cairo-pdf.h>
#include <cairo.h>
#include <nlohmann/json.hpp>
#include <pango/pangocairo.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

namespace {

constexpr double kPageWidth = 612;
constexpr double kPageHeight = 792;
constexpr double kMargin = 54;
constexpr double kGap = 5;

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextDeleter {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
struct ObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct FontDeleter {
    void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
};
struct AttributesDeleter {
    void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: layout-floor TRANSCRIPT.json OUT.pdf\n";
        return 2;
    }
    std::ifstream in(argv[1]);
    const auto transcript = nlohmann::json::parse(in);

    std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface(
        cairo_pdf_surface_create(argv[2], kPageWidth, kPageHeight));
    std::unique_ptr<cairo_t, ContextDeleter> cairo(cairo_create(surface.get()));
    std::unique_ptr<PangoLayout, ObjectDeleter> layout(pango_cairo_create_layout(cairo.get()));
    std::unique_ptr<PangoFontDescription, FontDeleter> font(
        pango_font_description_from_string("sans-serif 10.5"));
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_width(layout.get(), pango_units_from_double(kPageWidth - 2 * kMargin - 12));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);

    int pages = 1;
    double y = kMargin;
    for (const auto& entry : transcript.at("entries")) {
        const std::string sender = entry.value("sender", "");
        const std::string date = entry.value("date", "");
        const std::string time = date.size() >= 16 ? date.substr(11, 5) : date;
        const std::string head = sender + "   " + time;
        const std::string text = head + "\n" + entry.value("text", "");
        pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
        std::unique_ptr<PangoAttrList, AttributesDeleter> attributes(pango_attr_list_new());
        PangoAttribute* bold = pango_attr_weight_new(PANGO_WEIGHT_BOLD);
        bold->start_index = 0;
        bold->end_index = static_cast<guint>(head.size());
        pango_attr_list_insert(attributes.get(), bold);
        pango_layout_set_attributes(layout.get(), attributes.get());

        y += kGap;
        PangoLayoutIter* lines = pango_layout_get_iter(layout.get());
        double top = 0; // layout offset of the first line on this page
        do {
            PangoRectangle logical;
            pango_layout_iter_get_line_extents(lines, nullptr, &logical);
            const double lineTop = pango_units_to_double(logical.y);
            const double lineHeight = pango_units_to_double(logical.height);
            if (y + lineTop - top + lineHeight > kPageHeight - kMargin && y > kMargin + kGap) {
                cairo_show_page(cairo.get());
                ++pages;
                y = kMargin;
                top = lineTop;
            }
            const double baseline = pango_units_to_double(pango_layout_iter_get_baseline(lines));
            cairo_move_to(cairo.get(), kMargin + 12, y + baseline - top);
            pango_cairo_show_layout_line(cairo.get(), pango_layout_iter_get_line_readonly(lines));
            if (!pango_layout_iter_next_line(lines)) {
                y += lineTop + lineHeight - top;
                break;
            }
        } while (true);
        pango_layout_iter_free(lines);
    }
    cairo_show_page(cairo.get());
    cairo.reset();
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        std::cerr << "layout-floor: the PDF could not be written\n";
        return 1;
    }
    std::cout << pages << " pages\n";
    return 0;
}
