#pragma once

#include "ScrivlyKit/pdf/AttributedText.h"
#include "ScrivlyKit/pdf/CairoHandles.h"
#include "ScrivlyKit/pdf/PDFExport.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace scrivly::pdf {

using PDFExport::Rect;

// One laid-out line of a set text. Positions are in points from the text's left edge.
struct LineBox {
    std::size_t paragraph = 0;       // index into the text's paragraphs
    PangoLayoutLine* line = nullptr; // owned by one of the set text's layouts
    std::size_t start = 0;           // byte range of the line in the paragraph's text
    std::size_t length = 0;
    double x = 0;          // the line's origin (alignment and direction applied)
    double spaceAbove = 0; // gap to the previous line, or the text's spacing before
    double height = 0;     // logical height of the line
    double ascent = 0;     // from the line's top to its baseline
};

// Text broken into lines at a width. The lines are what pages are made of: a page shows a run
// of consecutive lines, never part of one.
struct SetText {
    AttributedText text;
    double width = 0;
    std::vector<LineBox> lines;
    // Pango's layouts of the paragraphs (of pieces of the long ones), kept so that drawing shows
    // the lines as measured without shaping the text again.
    std::vector<PangoLayoutPtr> layouts;

    // Height of lines [first, first + count) stacked. Space above the first of them counts only
    // when it is the text's first line: a continuation starts flush at the top of its page.
    double height(std::size_t first, std::size_t count) const;
    // Offset of each of those lines' tops from the top of their run, same rule.
    std::vector<double> lineTops(std::size_t first, std::size_t count) const;
    // The characters of those lines; a line break between paragraphs.
    std::string characters(std::size_t first, std::size_t count) const;
};

// Typographic bounds of a single line, in points.
struct LineMetrics {
    double width = 0;
    double ascent = 0;
    double descent = 0;
};

// Shapes, breaks, measures and draws text with Pango on Cairo, in the fontconfig family
// "sans-serif" (other fonts, emoji among them, by fallback). One per export: it owns a font map
// and caches fonts. Not thread-safe. Throws PDFExport::Failed when Pango cannot be set up.
class TextSetter {
public:
    // language: an ICU locale identifier; it guides the choice among fonts for Han characters.
    explicit TextSetter(const std::string& language);
    ~TextSetter();
    TextSetter(const TextSetter&) = delete;
    TextSetter& operator=(const TextSetter&) = delete;

    SetText set(AttributedText text, double width);

    // Draws lines [first, first + count) of a set text with the top of the first at (x, y).
    void draw(cairo_t* cairo, const SetText& text, std::size_t first, std::size_t count, double x,
              double y);

    // A single line: no wrapping, line breaks shown as spaces.
    LineMetrics measureLine(std::string_view text, const TextStyle& style);
    void drawLine(cairo_t* cairo, std::string_view text, const TextStyle& style, double x,
                  double baseline);

    // The text when it fits into maxWidth; otherwise its longest start that fits with "…"
    // appended, cut between characters as the user perceives them.
    std::string truncated(std::string_view text, const TextStyle& style, double maxWidth);

private:
    void showLine(cairo_t* cairo, PangoLayoutLine* line, double x, double baseline);
    void showColorRun(cairo_t* cairo, const char* text, PangoGlyphItem* run, double x,
                      double baseline);
    cairo_surface_t* colorRunImage(PangoGlyphItem* run, const Rect& bounds);
    // natural: the direction of the paragraph's first strong character.
    enum class Direction { natural, leftToRight, rightToLeft };
    // Pango's layout of the paragraph's bytes [start, end) at a width (unbroken when negative).
    PangoLayoutPtr makeLayout(const Paragraph& paragraph, std::size_t start, std::size_t end,
                              double width, Direction direction = Direction::natural);
    void setParagraph(SetText& result, std::size_t index);
    PangoLayoutPtr makeLineLayout(std::string_view text, const TextStyle& style);
    const PangoFontDescription* font(const TextStyle& style);

    PangoFontMapPtr m_fontMap;
    PangoContextPtr m_context;
    // Fixed left-to-right and right-to-left, for the pieces after the first of a long paragraph.
    PangoContextPtr m_ltrContext;
    PangoContextPtr m_rtlContext;
    std::map<std::tuple<double, bool, bool>, FontDescriptionPtr> m_fonts; // size, bold, italic
    // Colour glyphs (emoji) drawn once at print resolution and reused, so the PDF holds each
    // picture once. Keyed by font and glyphs.
    std::map<std::string, CairoSurfacePtr> m_colorRuns;
};

} // namespace scrivly::pdf
