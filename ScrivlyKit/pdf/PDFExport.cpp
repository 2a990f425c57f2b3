#include "ScrivlyKit/pdf/PDFExport.h"

#include "ScrivlyKit/pdf/PDFDraw.h"
#include "ScrivlyKit/pdf/PDFLayout.h"
#include "ScrivlyKit/platform/Memory.h"

namespace scrivly::PDFExport {

Result render(const Transcript& transcript, const ExportOptions& options,
              const ExportStrings& strings, const Progress& progress, std::stop_token stop) {
    Result result;
    {
        pdf::Layout layout(options, strings, progress, std::move(stop));
        layout.layOut(transcript);
        result.data = pdf::drawDocument(layout);
        result.pageCount = static_cast<int>(layout.pages().size());
    }
    // The layout of a long conversation leaves hundreds of megabytes of small free blocks.
    Memory::releaseFreePages();
    return result;
}

Result renderParagraphs(const std::vector<TextParagraph>& paragraphs, const ExportOptions& options,
                        const ExportStrings& strings, std::stop_token stop) {
    Result result;
    pdf::Layout layout(options, strings, {}, std::move(stop));
    layout.layOutParagraphs(paragraphs);
    result.data = pdf::drawDocument(layout);
    result.pageCount = static_cast<int>(layout.pages().size());
    return result;
}

DocumentLayout layout(const Transcript& transcript, const ExportOptions& options,
                      const ExportStrings& strings, const Progress& progress,
                      std::stop_token stop) {
    pdf::Layout pass(options, strings, progress, std::move(stop));
    pass.layOut(transcript);

    DocumentLayout document;
    document.page = pass.page();
    document.headerRows = pass.headerRows();
    document.textTop = pass.textTop();
    document.bottomLimit = pass.bottomLimit();
    for (std::size_t index = 0; index < pass.pages().size(); ++index) {
        PageLayout page;
        for (const pdf::PageItem& item : pass.pages()[index]) {
            Placed placed;
            placed.kind = item.kind;
            placed.frame = item.frame;
            placed.bar = item.bar;
            if (item.text) {
                placed.text = item.text->characters(item.firstLine, item.lineCount);
                placed.lineCount = item.lineCount;
            }
            placed.pixelWidth = item.pixelWidth;
            placed.pixelHeight = item.pixelHeight;
            page.items.push_back(std::move(placed));
        }
        for (const pdf::Chrome& line : pass.chrome(index)) {
            const double top = line.baseline - line.metrics.ascent;
            page.chrome.push_back(ChromeLine{
                line.role, line.text,
                Rect{line.x, top, line.metrics.width, line.metrics.ascent + line.metrics.descent}});
        }
        document.pages.push_back(std::move(page));
    }
    return document;
}

} // namespace scrivly::PDFExport
