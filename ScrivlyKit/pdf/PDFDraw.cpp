#include "ScrivlyKit/pdf/PDFDraw.h"

#include "ScrivlyKit/pdf/PageGeometry.h"
#include "ScrivlyKit/text/Unicode.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <algorithm>
#include <new>
#include <string>

namespace scrivly::pdf {

namespace {

using Kind = PDFExport::Placed::Kind;

constexpr double kBarInset = 3; // below the top of its message's text
constexpr double kBarAlpha = 0.55;
constexpr double kRuleWidth = 0.5;

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length) {
    auto* bytes = static_cast<std::vector<std::uint8_t>*>(closure);
    try {
        bytes->insert(bytes->end(), data, data + length);
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

void setColor(cairo_t* cairo, const Color& color, double alpha = 1) {
    cairo_set_source_rgba(cairo, color.red, color.green, color.blue, alpha);
}

void drawRule(cairo_t* cairo, double x, double y, double width) {
    setColor(cairo, Layout::kLight);
    cairo_set_line_width(cairo, kRuleWidth);
    cairo_move_to(cairo, x, y);
    cairo_line_to(cairo, x + width, y);
    cairo_stroke(cairo);
}

void drawBar(cairo_t* cairo, const Rect& frame, const Color& color, double inset) {
    const double height = std::max(frame.height - inset, 0.0);
    if (height <= 0) {
        return;
    }
    setColor(cairo, color, kBarAlpha);
    cairo_rectangle(cairo, frame.x - PageGeometry::kBarOffset, frame.y + inset,
                    PageGeometry::kBarWidth, height);
    cairo_fill(cairo);
}

// The picture goes into the PDF as its JPEG bytes, unchanged; the surface only carries its size.
// The bytes belong to the layout, which outlives the PDF surface.
void drawPicture(cairo_t* cairo, const PageItem& item) {
    const CairoSurfacePtr picture(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, item.pixelWidth, item.pixelHeight));
    if (cairo_surface_status(picture.get()) != CAIRO_STATUS_SUCCESS) {
        throw PDFExport::Failed("The PDF couldn’t be made: a picture couldn’t be embedded.");
    }
    cairo_surface_set_mime_data(picture.get(), CAIRO_MIME_TYPE_JPEG, item.jpeg->data(),
                                item.jpeg->size(), nullptr, nullptr);
    cairo_save(cairo);
    cairo_rectangle(cairo, item.frame.x, item.frame.y, item.frame.width, item.frame.height);
    cairo_clip(cairo);
    cairo_translate(cairo, item.frame.x, item.frame.y);
    cairo_scale(cairo, item.frame.width / item.pixelWidth, item.frame.height / item.pixelHeight);
    cairo_set_source_surface(cairo, picture.get(), 0, 0);
    cairo_paint(cairo);
    cairo_restore(cairo);
    // A hairline keeps white pictures from melting into the page.
    setColor(cairo, Layout::kLight);
    cairo_set_line_width(cairo, kRuleWidth);
    cairo_rectangle(cairo, item.frame.x, item.frame.y, item.frame.width, item.frame.height);
    cairo_stroke(cairo);
}

void drawPage(Layout& layout, cairo_t* cairo, const std::vector<PageItem>& items,
              const std::vector<Chrome>& chrome) {
    const PageSize page = layout.page();
    for (const Chrome& line : chrome) {
        layout.setter().drawLine(cairo, line.text, line.style, line.x, line.baseline);
    }
    if (layout.headerRows() > 0) {
        drawRule(cairo, PageGeometry::kMargin, PageGeometry::headerRule(layout.headerRows()),
                 PageGeometry::textWidth(page));
    }
    const PageItem* previous = nullptr;
    for (const PageItem& item : items) {
        switch (item.kind) {
        case Kind::text:
            if (item.bar) {
                drawBar(cairo, item.frame, *item.bar, kBarInset);
            }
            layout.setter().draw(cairo, *item.text, item.firstLine, item.lineCount, item.frame.x,
                                 item.frame.y);
            break;
        case Kind::image:
            if (item.bar) {
                // Under its message's text or picture the bar runs on across the gap.
                const bool joined = previous != nullptr && previous->bar == item.bar &&
                                    previous->kind != Kind::rule;
                Rect frame = item.frame;
                if (joined) {
                    frame.height += frame.y - previous->frame.bottom();
                    frame.y = previous->frame.bottom();
                }
                drawBar(cairo, frame, *item.bar, 0);
            }
            drawPicture(cairo, item);
            break;
        case Kind::rule:
            drawRule(cairo, item.frame.x, item.frame.y, item.frame.width);
            break;
        }
        previous = &item;
    }
}

} // namespace

std::vector<std::uint8_t> drawDocument(Layout& layout) {
    std::vector<const std::vector<PageItem>*> pages;
    for (const auto& page : layout.pages()) {
        pages.push_back(&page);
    }
    const std::size_t count = pages.size();
    auto bytes = drawPages(
        layout, pages, [&layout](std::size_t index) { return layout.chrome(index); },
        [&layout, count](std::size_t index) {
            layout.checkCancelled();
            layout.report(static_cast<double>(index) / static_cast<double>(count) * 0.5 + 0.5);
        },
        nullptr);
    layout.report(1.0);
    return bytes;
}

std::vector<std::uint8_t>
drawPages(Layout& layout, const std::vector<const std::vector<PageItem>*>& pages,
          const std::function<std::vector<Chrome>(std::size_t index)>& chrome,
          const std::function<void(std::size_t index)>& beforePage,
          std::vector<std::size_t>* pageEnds) {
    std::vector<std::uint8_t> bytes;
    const PageSize page = layout.page();
    const CairoSurfacePtr surface(
        cairo_pdf_surface_create_for_stream(appendBytes, &bytes, page.width, page.height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        throw PDFExport::Failed(std::string("The PDF couldn’t be made: ") +
                                cairo_status_to_string(cairo_surface_status(surface.get())));
    }
    const std::string title = Unicode::trimmed(layout.options().documentTitle);
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE,
                                   title.empty() ? "Messages" : title.c_str());
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATOR, "Scrivly");

    {
        const CairoPtr cairo(cairo_create(surface.get()));
        for (std::size_t index = 0; index < pages.size(); ++index) {
            beforePage(index);
            drawPage(layout, cairo.get(), *pages[index], chrome(index));
            cairo_show_page(cairo.get());
            if (pageEnds != nullptr) {
                pageEnds->push_back(bytes.size());
            }
        }
        if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) {
            throw PDFExport::Failed(std::string("The PDF couldn’t be made: ") +
                                    cairo_status_to_string(cairo_status(cairo.get())));
        }
    }
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        throw PDFExport::Failed(std::string("The PDF couldn’t be made: ") +
                                cairo_status_to_string(cairo_surface_status(surface.get())));
    }
    return bytes;
}

} // namespace scrivly::pdf
