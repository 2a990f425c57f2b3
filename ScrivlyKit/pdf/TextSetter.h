#pragma once

#include "ScrivlyKit/pdf/AttributedText.h"
#include "ScrivlyKit/pdf/CairoHandles.h"
#include "ScrivlyKit/pdf/ColorGlyphPictures.h"
#include "ScrivlyKit/pdf/GlyphStore.h"
#include "ScrivlyKit/pdf/PDFExport.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace scrivly::pdf {

using PDFExport::Rect;

// One laid-out line of a set text. Positions are in points from the text's left edge.
struct LineBox {
    std::size_t paragraph = 0; // index into the text's paragraphs
    std::size_t start = 0;     // byte range of the line in the paragraph's text
    std::size_t length = 0;
    std::uint32_t firstRun = 0; // the line's glyph runs in the shaped text, in visual order
    std::uint32_t runCount = 0;
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
    std::uint64_t serial = 0; // tells apart the texts of one setter
    // Kept so that drawing does not shape the text again, unless the setter had used up the
    // memory it keeps for them; then drawing sets the text again. Drawing lets go of them once
    // it has drawn the last line, so that the memory of a long document falls as pages are done.
    mutable std::shared_ptr<const GlyphStore> shaped;

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
    // Kept shapes take about 10 bytes a character. Past this much, texts are shaped again for
    // drawing instead, so that a very long conversation does not hold all of its glyphs at once.
    static constexpr std::size_t kKeptShapeBytes = std::size_t{160} << 20;

    // language: an ICU locale identifier; it guides the choice among fonts for Han characters.
    // fontMap: fonts already found by earlier setters of this thread (finding them costs more
    // than setting a short document), or null for fonts of its own.
    explicit TextSetter(const std::string& language, std::size_t keptShapeBytes = kKeptShapeBytes,
                        PangoFontMap* fontMap = nullptr);
    ~TextSetter();
    TextSetter(const TextSetter&) = delete;
    TextSetter& operator=(const TextSetter&) = delete;

    SetText set(AttributedText text, double width);

    // Draws lines [first, first + count) of a set text with the top of the first at (x, y).
    // Drawing a text in consecutive calls, as pages show it, sets it again at most once.
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
    // What is known of a font that text was set in. The reference keeps kept glyph runs valid.
    struct FontFacts {
        PangoFontPtr reference;
        bool color = false; // colour glyphs: emoji
        std::string name;   // Pango's description, for the colour glyph pictures
        PangoFontPtr plain; // the text font at the same size
    };

    SetText set(AttributedText text, double width, bool keepShapes);
    void showLine(cairo_t* cairo, const SetText& text, const LineBox& line, double x,
                  double baseline);
    const char* paragraphText(const SetText& text, std::size_t paragraph);
    void keepRun(const PangoGlyphItem& run, std::size_t offset, GlyphStore& shaped);
    void showLine(cairo_t* cairo, PangoLayoutLine* line, double x, double baseline);
    void showRun(cairo_t* cairo, const char* text, PangoGlyphItem* run, double x, double baseline);
    // natural: the direction of the paragraph's first strong character.
    enum class Direction { natural, leftToRight, rightToLeft };
    // Pango's layout of the paragraph's bytes [start, end) at a width (unbroken when negative).
    PangoLayoutPtr makeLayout(const Paragraph& paragraph, std::size_t start, std::size_t end,
                              double width, Direction direction = Direction::natural);
    void setParagraph(SetText& result, std::size_t index, GlyphStore* shaped);
    const FontFacts& fontFacts(PangoFont* font);
    PangoLayoutPtr makeLineLayout(std::string_view text, const TextStyle& style);
    const PangoFontDescription* font(const TextStyle& style);

    PangoFontMapPtr m_fontMap;
    PangoContextPtr m_context;
    // Fixed left-to-right and right-to-left, for the pieces after the first of a long paragraph.
    PangoContextPtr m_ltrContext;
    PangoContextPtr m_rtlContext;
    std::map<std::tuple<double, bool, bool>, FontDescriptionPtr> m_fonts; // size, bold, italic
    // Every font that set text was shaped in: kept texts point to them.
    std::map<PangoFont*, FontFacts> m_shapingFonts;
    // Scratch item through which kept glyph runs are drawn.
    PangoItemPtr m_item;
    struct Scratch;
    std::unique_ptr<Scratch> m_scratch;
    GlyphFaces m_faces;
    std::size_t m_keptShapeBytes;
    std::size_t m_keptBytes = 0;
    std::uint64_t m_serial = 0;
    // The text last set again for drawing, while its pages are drawn.
    std::unique_ptr<SetText> m_again;
    ColorGlyphPictures m_colorGlyphs;
};

} // namespace scrivly::pdf
