#include "ScrivlyKit/pdf/LaidOutDocument.h"

#include "ScrivlyKit/pdf/CairoHandles.h"
#include "ScrivlyKit/pdf/PDFDraw.h"
#include "ScrivlyKit/pdf/PDFLayout.h"

#include <pango/pangocairo.h>

namespace scrivly::PDFExport {

namespace {

ExportOptions withoutCover(ExportOptions options) {
    options.coverPage = false;
    return options;
}

} // namespace

struct FontCache::Impl {
    pdf::PangoFontMapPtr fontMap{pango_cairo_font_map_new()};
};

FontCache::FontCache() : m_impl(std::make_unique<Impl>()) {
    if (m_impl->fontMap == nullptr) {
        throw Failed("The PDF couldn’t be made: no fonts are available.");
    }
}

FontCache::~FontCache() = default;

struct LaidOutDocument::Impl {
    Transcript transcript;
    pdf::Layout layout;

    Impl(Transcript transcript, const ExportOptions& options, const ExportStrings& strings,
         Extras extras, const Progress& progress, std::stop_token stop)
        : transcript(std::move(transcript)),
          layout(withoutCover(options), strings,
                 // The layout reports 0 to 0.5 of a whole export; this is all of this one.
                 progress ? Progress([progress](double fraction) { progress(fraction * 2); })
                          : Progress(),
                 std::move(stop),
                 pdf::LayoutExtras{
                     std::move(extras.nativeName), extras.keptShapeBytes, extras.pictureWorkers,
                     extras.fonts != nullptr ? extras.fonts->m_impl->fontMap.get() : nullptr}) {}
};

LaidOutDocument::LaidOutDocument(Transcript transcript, const ExportOptions& options,
                                 const ExportStrings& strings, Extras extras,
                                 const Progress& progress, std::stop_token stop)
    : m_impl(std::make_unique<Impl>(std::move(transcript), options, strings, std::move(extras),
                                    progress, std::move(stop))) {
    m_impl->layout.layOut(m_impl->transcript);
}

LaidOutDocument::~LaidOutDocument() = default;

const Transcript& LaidOutDocument::transcript() const {
    return m_impl->transcript;
}

std::size_t LaidOutDocument::pageCount() const {
    return m_impl->layout.pages().size();
}

const std::vector<std::size_t>& LaidOutDocument::entryPages() const {
    return m_impl->layout.entryPages();
}

std::vector<LaidOutDocument::NativeLine> LaidOutDocument::nativeLines() const {
    std::vector<NativeLine> lines;
    for (const auto& line : m_impl->layout.nativeLines()) {
        lines.push_back(NativeLine{line.entry, line.attachment, line.page});
    }
    return lines;
}

bool LaidOutDocument::renameNatives(
    const std::function<std::string(std::size_t entry, std::size_t attachment)>& name) {
    return m_impl->layout.renameNatives(name);
}

std::size_t LaidOutDocument::coverPageCount(const std::vector<CoverRow>& rows) {
    return m_impl->layout.coverPages(m_impl->transcript, rows).size();
}

LaidOutDocument::Drawn LaidOutDocument::draw(const Piece& piece, const Progress& progress) {
    pdf::Layout& layout = m_impl->layout;
    std::vector<std::vector<pdf::PageItem>> cover;
    if (piece.cover) {
        cover = layout.coverPages(m_impl->transcript, *piece.cover);
    }
    std::vector<const std::vector<pdf::PageItem>*> pages;
    for (const auto& page : cover) {
        pages.push_back(&page);
    }
    const std::size_t end = std::min(piece.firstPage + piece.pageCount, layout.pages().size());
    for (std::size_t index = piece.firstPage; index < end; ++index) {
        pages.push_back(&layout.pages()[index]);
    }
    const auto count = static_cast<std::int64_t>(pages.size());
    Drawn drawn;
    drawn.data = pdf::drawPages(
        layout, pages,
        [&](std::size_t index) {
            return layout.chrome(static_cast<std::int64_t>(index) + 1, count, piece.batesStart);
        },
        [&](std::size_t index) {
            layout.checkCancelled();
            if (progress) {
                progress(static_cast<double>(index) / static_cast<double>(count));
            }
        },
        &drawn.pageEnds);
    drawn.pageCount = static_cast<int>(count);
    drawn.coverPages = static_cast<int>(cover.size());
    return drawn;
}

} // namespace scrivly::PDFExport
