#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/export/PaperSize.h"
#include "ScrivlyKit/export/PictureQueue.h"
#include "ScrivlyKit/export/SenderColors.h"
#include "ScrivlyKit/pdf/AttributedText.h"
#include "ScrivlyKit/pdf/PDFExport.h"
#include "ScrivlyKit/pdf/TextSetter.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <tuple>
#include <vector>

namespace scrivly::pdf {

// One thing on a page. Pictures are held as JPEG bytes, never as decoded pixels.
struct PageItem {
    PDFExport::Placed::Kind kind = PDFExport::Placed::Kind::text;
    Rect frame;
    std::optional<Color> bar;
    std::shared_ptr<const SetText> text; // text: lines [firstLine, firstLine + lineCount)
    std::size_t firstLine = 0;
    std::size_t lineCount = 0;
    std::shared_ptr<const std::vector<std::uint8_t>> jpeg; // image
    int pixelWidth = 0;
    int pixelHeight = 0;
};

// A chrome text as drawn: a single line at a baseline.
struct Chrome {
    std::string role; // "header", "title", "page" or "bates"
    std::string text;
    TextStyle style;
    double x = 0;
    double baseline = 0;
    LineMetrics metrics;
};

// What a production adds to the layout of a document.
struct LayoutExtras {
    // The file an attachment (by entry and attachment index) was produced as, or nothing. Its
    // line then names that file, and a picture drawn inline gets such a line too.
    std::function<std::optional<std::string>(std::size_t entry, std::size_t attachment)> nativeName;
    std::size_t keptShapeBytes = TextSetter::kKeptShapeBytes;
    unsigned pictureWorkers = 0;     // as PictureQueue::Settings::workers
    PangoFontMap* fontMap = nullptr; // shared with other layouts of this thread (see TextSetter)
};

// The page (0-based) whose attachment line names a produced file.
struct NativeLine {
    std::size_t entry = 0;
    std::size_t attachment = 0;
    std::size_t page = 0;
};

// The first pass of a PDF export: decides what goes on which page and where, measuring all text
// with the text setter, and measures the chrome of every page. Used for one export only.
class Layout {
public:
    static constexpr Color kInk{0.08, 0.08, 0.08};
    static constexpr Color kGray{0.42, 0.42, 0.42};
    static constexpr Color kLight{0.78, 0.78, 0.78};

    // Throws PDFExport::Failed when text cannot be set up.
    Layout(const ExportOptions& options, const ExportStrings& strings, PDFExport::Progress progress,
           std::stop_token stop, LayoutExtras extras = {});

    // The whole first pass: the cover when the options ask for one, then the entries. Throws
    // PDFExport::Cancelled when stopped.
    void layOut(const Transcript& transcript);

    const std::vector<std::vector<PageItem>>& pages() const { return m_pages; }
    PageSize page() const { return m_page; }
    int headerRows() const { return m_headerRows; }
    double textTop() const;
    double bottomLimit() const;
    const ExportOptions& options() const { return m_options; }
    TextSetter& setter() { return m_setter; }

    // The chrome of a page (0-based) of the finished document.
    std::vector<Chrome> chrome(std::size_t pageIndex);
    // The chrome of page (1-based) of count, whose Bates number counts from batesStart.
    std::vector<Chrome> chrome(std::int64_t page, std::int64_t count, std::int64_t batesStart);

    // The page (0-based) on which each entry's message begins, in entry order.
    const std::vector<std::size_t>& entryPages() const { return m_entryPages; }
    // The lines that name produced files, in page order.
    std::vector<NativeLine> nativeLines() const;
    // Sets the lines that name produced files again with the names given. False, and nothing
    // changed, when any of their texts would then break into lines differently: the document
    // must be laid out again with those names.
    bool renameNatives(
        const std::function<std::string(std::size_t entry, std::size_t attachment)>& name);

    // A cover page (or more, for a very long one) with rows added after the usual ones, laid out
    // apart from the pages of the document.
    std::vector<std::vector<PageItem>> coverPages(const Transcript& transcript,
                                                  const std::vector<PDFExport::CoverRow>& rows);
    // Lays out paragraphs of plain text instead of a transcript.
    void layOutParagraphs(const std::vector<PDFExport::TextParagraph>& paragraphs);

    // Reports a fraction when its whole percentage differs from the last one reported.
    void report(double fraction);
    // Throws PDFExport::Cancelled when the export was stopped.
    void checkCancelled() const;

private:
    struct Picture {
        std::shared_ptr<const std::vector<std::uint8_t>> jpeg;
        int width = 0;
        int height = 0;
    };

    void measureChrome();
    // An attachment line that names a produced file, by its paragraph in the message's text.
    struct NativeParagraph {
        std::size_t paragraph = 0;
        std::size_t entry = 0;
        std::size_t attachment = 0;
        std::string size; // as the line shows it
    };
    // A message's text holding such lines, and the page items that show it.
    struct NativeBlock {
        std::shared_ptr<const SetText> text;
        std::vector<std::pair<std::size_t, std::size_t>> items; // page, index on the page
        std::vector<NativeParagraph> natives;
    };

    void layOutCover(const Transcript& transcript, const std::vector<PDFExport::CoverRow>& rows);
    void layOutBody(const Transcript& transcript);
    void layOutEntry(const TranscriptEntry& entry, std::optional<std::string>& previousDay);
    void appendAttachment(const Attachment& attachment, std::size_t index, AttributedText& block,
                          std::vector<Picture>& pictures, std::vector<NativeParagraph>& natives);
    // Answers the page items made, as page and index on the page.
    std::vector<std::pair<std::size_t, std::size_t>>
    placeText(double x, double width, double keep, AttributedText text, std::optional<Color> bar);
    void placePicture(const Picture& picture, Color bar);
    void placeRule(double y);
    void newPage();
    bool pageIsEmpty() const { return m_y == textTop(); }
    Color colorOf(const TranscriptEntry& entry);
    ParagraphStyle paragraphStyle(Alignment alignment, double spacingBefore, double spacing,
                                  double lineSpacing);
    std::string dateRangeText(const Transcript& transcript);

    const Formatting::DateFormatter& dayFormat();
    const Formatting::DateFormatter& timeFormat();
    const Formatting::DateFormatter& shortDate();

    ExportOptions m_options;
    ExportStrings m_strings;
    PageSize m_page;
    PDFExport::Progress m_progress;
    std::stop_token m_stop;
    LayoutExtras m_extras;
    int m_headerRows = 0;
    int m_footerRows = 1;
    bool m_pageAtLeft = false;
    std::vector<std::vector<PageItem>> m_pages;
    double m_y = 0;
    int m_reported = -1;
    TextSetter m_setter;
    // Keyed by alignment, spacing before, spacing and line spacing.
    std::map<std::tuple<Alignment, double, double, double>, ParagraphStyle> m_paragraphs;
    SenderColors m_senderColors;
    std::optional<Formatting::DateFormatter> m_dayFormat;
    std::optional<Formatting::DateFormatter> m_timeFormat;
    std::optional<Formatting::DateFormatter> m_shortDate;
    std::vector<Chrome> m_headerLines; // the same on every page
    std::size_t m_entryIndex = 0;      // of the entry being laid out
    std::vector<std::size_t> m_entryPages;
    std::vector<NativeBlock> m_nativeBlocks;
    // Last, so that its workers stop before anything they could touch goes.
    std::optional<PictureQueue> m_pictures;
};

} // namespace scrivly::pdf
