#pragma once

#include "ScrivlyKit/pdf/PDFExport.h"

#include <string>
#include <string_view>
#include <vector>

namespace scrivly::pdf {

using PDFExport::Color;

// Font and colour of a stretch of text. Sizes are in points.
struct TextStyle {
    double size = 10;
    bool bold = false;
    bool italic = false;
    Color color;
};

enum class Alignment { natural, center };

// Extra space in points, as in a typesetting paragraph style.
struct ParagraphStyle {
    Alignment alignment = Alignment::natural;
    double spacingBefore = 0; // above the paragraph's first line
    double spacing = 0;       // below the paragraph's last line
    double lineSpacing = 0;   // between the paragraph's lines

    bool operator==(const ParagraphStyle&) const = default;
};

struct Run {
    std::string text; // valid UTF-8 without paragraph breaks
    TextStyle style;
};

// A paragraph takes the paragraph style that came with its first text.
struct Paragraph {
    std::vector<Run> runs;
    ParagraphStyle style;

    std::string text() const;
};

// Text with fonts, colours and paragraph styles, the input of the text setter. Any text may be
// appended: ill-formed UTF-8 is repaired and line breaks start new paragraphs.
class AttributedText {
public:
    // Appends to the open paragraph, or starts one with this paragraph style. Each line break
    // ("\n", "\r\n", "\r", U+2029) in the text starts a further paragraph with the same style.
    void append(std::string_view text, const TextStyle& style, const ParagraphStyle& paragraph);

    // Closes the open paragraph, so that the next text starts a new one.
    void endParagraph() { m_open = false; }

    // Gives a paragraph new text in the style of its first run (a line break in it becomes a
    // space, so the paragraphs keep their indexes).
    void replaceText(std::size_t paragraph, std::string_view text);

    const std::vector<Paragraph>& paragraphs() const { return m_paragraphs; }
    bool empty() const { return m_paragraphs.empty(); }

private:
    void appendRun(std::string text, const TextStyle& style, const ParagraphStyle& paragraph);

    std::vector<Paragraph> m_paragraphs;
    bool m_open = false;
};

} // namespace scrivly::pdf
