#include "ScrivlyKit/pdf/TextSetter.h"

#include "ScrivlyKit/pdf/Graphemes.h"
#include "ScrivlyKit/text/Unicode.h"

#include <cairo.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <tuple>

namespace scrivly::pdf {

namespace {

double points(int units) {
    return static_cast<double>(units) / PANGO_SCALE;
}
int pangoUnits(double points) {
    return static_cast<int>(std::lround(points * PANGO_SCALE));
}

guint16 channel(double component) {
    return static_cast<guint16>(std::lround(std::clamp(component, 0.0, 1.0) * 65535.0));
}

// "de_CH@collation=phonebook" → "de-ch", as Pango names languages.
std::string pangoLanguageTag(const std::string& locale) {
    std::string tag = locale.substr(0, locale.find_first_of("@."));
    std::replace(tag.begin(), tag.end(), '_', '-');
    return tag.empty() ? "en" : tag;
}

// Chrome texts are single lines: every kind of line break becomes a space.
std::string singleLine(std::string_view text) {
    const std::string repaired = Unicode::repairedUTF8(text);
    std::string result;
    result.reserve(repaired.size());
    std::size_t offset = 0;
    while (offset < repaired.size()) {
        const std::size_t start = offset;
        const char32_t codePoint = Unicode::nextCodePoint(repaired, offset);
        if (codePoint == U'\n' || codePoint == U'\r' || codePoint == U'\t' ||
            codePoint == U'\u2028' || codePoint == U'\u2029' || codePoint == U'\u0085') {
            result += ' ';
        } else if (codePoint == 0) {
            result += "\xEF\xBF\xBD";
        } else {
            result.append(repaired, start, offset - start);
        }
    }
    return result;
}

void addAttribute(PangoAttrList* list, PangoAttribute* attribute, std::size_t start,
                  std::size_t end) {
    attribute->start_index = static_cast<guint>(start);
    attribute->end_index = static_cast<guint>(end);
    pango_attr_list_insert(list, attribute);
}

// Pango breaks a paragraph into lines by shaping all of it that is left for each line, and so
// takes time in the square of its length. Longer paragraphs are set in pieces of about this many
// bytes, each taking over from the start of the previous one's last line.
constexpr std::size_t kPieceBytes = 2048;

std::size_t byteLength(const Paragraph& paragraph) {
    std::size_t length = 0;
    for (const Run& run : paragraph.runs) {
        length += run.text.size();
    }
    return length;
}

// Appends bytes [start, start + length) of the paragraph's text.
void appendRange(std::string& out, const Paragraph& paragraph, std::size_t start,
                 std::size_t length) {
    std::size_t runStart = 0;
    for (const Run& run : paragraph.runs) {
        const std::size_t runEnd = runStart + run.text.size();
        const std::size_t from = std::max(runStart, start);
        const std::size_t to = std::min(runEnd, start + length);
        if (from < to) {
            out.append(run.text, from - runStart, to - from);
        }
        runStart = runEnd;
    }
}

PangoContextPtr newContext(PangoFontMap* fontMap, const std::string& language,
                           PangoDirection direction) {
    PangoContextPtr context(pango_font_map_create_context(fontMap));
    if (context == nullptr) {
        throw PDFExport::Failed("The PDF couldn’t be made: no fonts are available.");
    }
    // Unhinted metrics and unrounded positions: what is measured here is exactly what the PDF
    // shows, at any zoom.
    const CairoFontOptionsPtr fontOptions(cairo_font_options_create());
    cairo_font_options_set_hint_metrics(fontOptions.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(fontOptions.get(), CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context.get(), fontOptions.get());
    pango_cairo_context_set_resolution(context.get(), 72);
    pango_context_set_round_glyph_positions(context.get(), FALSE);
    pango_context_set_language(context.get(),
                               pango_language_from_string(pangoLanguageTag(language).c_str()));
    pango_context_set_base_dir(context.get(), direction);
    return context;
}

// The foreground colour attribute of a run, when it has one.
const PangoColor* runColor(const PangoGlyphItem* run) {
    for (GSList* node = run->item->analysis.extra_attrs; node != nullptr; node = node->next) {
        const auto* attribute = static_cast<const PangoAttribute*>(node->data);
        if (attribute->klass->type == PANGO_ATTR_FOREGROUND) {
            return &reinterpret_cast<const PangoAttrColor*>(attribute)->color;
        }
    }
    return nullptr;
}

void setColor(cairo_t* cairo, const PangoColor& color) {
    cairo_set_source_rgb(cairo, color.red / 65535.0, color.green / 65535.0, color.blue / 65535.0);
}

// Whether a paragraph might fit on one line of the width: its text is not too long for that at
// its largest font size, assuming an average character of less than half an em.
bool mayFitOnALine(const Paragraph& paragraph, std::size_t length, double width) {
    double largest = 0;
    for (const Run& run : paragraph.runs) {
        largest = std::max(largest, run.style.size);
    }
    return static_cast<double>(length) * largest * 0.45 <= width;
}

// Where Pango puts a line of a layout of the given width (Pango units), as its alignment and
// direction have it: right-to-left lines of a naturally aligned paragraph stand at the right.
int alignmentOffset(Alignment alignment, bool rightToLeft, int layoutWidth, int lineWidth) {
    if (alignment == Alignment::center) {
        int offset = (layoutWidth - lineWidth) / 2;
        if (((layoutWidth | lineWidth) & (PANGO_SCALE - 1)) == 0) {
            offset = PANGO_UNITS_ROUND(offset);
        }
        return offset;
    }
    return rightToLeft ? layoutWidth - lineWidth : 0;
}

// Appends the lines of a layout of the bytes from start of a paragraph; the width of the last
// one goes to lastWidth when asked for.
void collectLines(PangoLayout* layout, std::size_t paragraph, std::size_t start,
                  std::vector<std::pair<LineBox, PangoLayoutLine*>>& lines, int* lastWidth) {
    lines.clear();
    const LayoutIterPtr iter(pango_layout_get_iter(layout));
    do {
        PangoLayoutLine* line = pango_layout_iter_get_line_readonly(iter.get());
        PangoRectangle logical;
        pango_layout_iter_get_line_extents(iter.get(), nullptr, &logical);
        const int baseline = pango_layout_iter_get_baseline(iter.get());
        LineBox box;
        box.paragraph = paragraph;
        box.start = start + static_cast<std::size_t>(line->start_index);
        box.length = static_cast<std::size_t>(line->length);
        box.x = points(logical.x);
        box.height = points(logical.height);
        box.ascent = points(baseline - logical.y);
        lines.emplace_back(box, line);
        if (lastWidth != nullptr) {
            *lastWidth = logical.width;
        }
    } while (pango_layout_iter_next_line(iter.get()));
}

} // namespace

// What drawing and setting reuse from one text to the next.
struct TextSetter::Scratch {
    GlyphStore shaped;                  // the text being set, copied out when done
    std::vector<PangoGlyphInfo> glyphs; // a compact run unpacked for Pango
    std::vector<int> clusters;
    std::string paragraph; // the text of a paragraph of several runs, while its lines are drawn
    std::uint64_t paragraphSerial = 0;
    std::size_t paragraphIndex = 0;
};

TextSetter::TextSetter(const std::string& language, std::size_t keptShapeBytes,
                       PangoFontMap* fontMap)
    : m_keptShapeBytes(keptShapeBytes) {
    m_fontMap.reset(fontMap != nullptr ? PANGO_FONT_MAP(g_object_ref(fontMap))
                                       : pango_cairo_font_map_new());
    if (m_fontMap == nullptr) {
        throw PDFExport::Failed("The PDF couldn’t be made: no fonts are available.");
    }
    m_context = newContext(m_fontMap.get(), language, PANGO_DIRECTION_WEAK_LTR);
    m_ltrContext = newContext(m_fontMap.get(), language, PANGO_DIRECTION_LTR);
    m_rtlContext = newContext(m_fontMap.get(), language, PANGO_DIRECTION_RTL);
    m_item.reset(pango_item_new());
    m_scratch = std::make_unique<Scratch>();
}

TextSetter::~TextSetter() = default;

double SetText::height(std::size_t first, std::size_t count) const {
    double total = 0;
    for (std::size_t index = first; index < first + count && index < lines.size(); ++index) {
        if (index != first || index == 0) {
            total += lines[index].spaceAbove;
        }
        total += lines[index].height;
    }
    return total;
}

std::vector<double> SetText::lineTops(std::size_t first, std::size_t count) const {
    std::vector<double> tops;
    double top = 0;
    for (std::size_t index = first; index < first + count && index < lines.size(); ++index) {
        if (index != first || index == 0) {
            top += lines[index].spaceAbove;
        }
        tops.push_back(top);
        top += lines[index].height;
    }
    return tops;
}

std::string SetText::characters(std::size_t first, std::size_t count) const {
    std::string result;
    for (std::size_t index = first; index < first + count && index < lines.size(); ++index) {
        const LineBox& line = lines[index];
        if (index > first && line.paragraph != lines[index - 1].paragraph) {
            result += '\n';
        }
        appendRange(result, text.paragraphs()[line.paragraph], line.start, line.length);
    }
    return result;
}

const PangoFontDescription* TextSetter::font(const TextStyle& style) {
    const auto key = std::make_tuple(style.size, style.bold, style.italic);
    auto found = m_fonts.find(key);
    if (found == m_fonts.end()) {
        FontDescriptionPtr description(pango_font_description_new());
        pango_font_description_set_family(description.get(), "sans-serif");
        pango_font_description_set_weight(description.get(),
                                          style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
        pango_font_description_set_style(description.get(),
                                         style.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
        // Absolute size: device units, which are points on a PDF surface.
        pango_font_description_set_absolute_size(description.get(), style.size * PANGO_SCALE);
        found = m_fonts.emplace(key, std::move(description)).first;
    }
    return found->second.get();
}

PangoLayoutPtr TextSetter::makeLayout(const Paragraph& paragraph, std::size_t start,
                                      std::size_t end, double width, Direction direction) {
    PangoContext* context = direction == Direction::natural       ? m_context.get()
                            : direction == Direction::leftToRight ? m_ltrContext.get()
                                                                  : m_rtlContext.get();
    PangoLayoutPtr layout(pango_layout_new(context));
    std::string text;
    PangoAttrList* attributes = pango_attr_list_new();
    std::size_t runStart = 0;
    for (const Run& run : paragraph.runs) {
        const std::size_t runEnd = runStart + run.text.size();
        const std::size_t from = std::max(runStart, start);
        const std::size_t to = std::min(runEnd, end);
        runStart = runEnd;
        // An empty run still counts when it is all there is: it gives an empty line its height.
        if (from > to || (from == to && !run.text.empty())) {
            continue;
        }
        const std::size_t offset = text.size();
        text.append(run.text, from - (runEnd - run.text.size()), to - from);
        addAttribute(attributes, pango_attr_font_desc_new(font(run.style)), offset, text.size());
        addAttribute(attributes,
                     pango_attr_foreground_new(channel(run.style.color.red),
                                               channel(run.style.color.green),
                                               channel(run.style.color.blue)),
                     offset, text.size());
    }
    // A word broken at the end of a line keeps its exact characters: no inserted hyphens.
    addAttribute(attributes, pango_attr_insert_hyphens_new(FALSE), 0, text.size());
    if (!paragraph.runs.empty()) {
        pango_layout_set_font_description(layout.get(), font(paragraph.runs.front().style));
    }
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_attributes(layout.get(), attributes);
    pango_attr_list_unref(attributes);
    pango_layout_set_width(layout.get(), width < 0 ? -1 : pangoUnits(width));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    const bool centered = paragraph.style.alignment == Alignment::center;
    if (direction == Direction::natural) {
        // Left alignment with automatic direction is natural alignment: right-to-left
        // paragraphs stand at the right.
        pango_layout_set_auto_dir(layout.get(), TRUE);
        pango_layout_set_alignment(layout.get(), centered ? PANGO_ALIGN_CENTER : PANGO_ALIGN_LEFT);
    } else {
        // A fixed direction is taken literally, alignment too.
        pango_layout_set_auto_dir(layout.get(), FALSE);
        pango_layout_set_alignment(layout.get(), centered ? PANGO_ALIGN_CENTER
                                                 : direction == Direction::rightToLeft
                                                     ? PANGO_ALIGN_RIGHT
                                                     : PANGO_ALIGN_LEFT);
    }
    return layout;
}

const TextSetter::FontFacts& TextSetter::fontFacts(PangoFont* font) {
    auto found = m_shapingFonts.find(font);
    if (found == m_shapingFonts.end()) {
        FontFacts facts;
        facts.reference.reset(PANGO_FONT(g_object_ref(font)));
        facts.color = isColorFont(font);
        if (facts.color) {
            FontDescriptionPtr description(pango_font_describe(font));
            char* name = pango_font_description_to_string(description.get());
            facts.name = name;
            g_free(name);
            pango_font_description_set_family(description.get(), "sans-serif");
            facts.plain.reset(
                pango_font_map_load_font(m_fontMap.get(), m_context.get(), description.get()));
        }
        found = m_shapingFonts.emplace(font, std::move(facts)).first;
    }
    return found->second;
}

// A paragraph longer than a piece is set piece by piece. A piece's last line may end where it
// does only because the piece ends there, so it is set again as the start of the next piece;
// the lines kept are then the very lines of the whole paragraph. The pieces after the first take
// the first one's direction, which a piece's own first character might not give.
void TextSetter::setParagraph(SetText& result, std::size_t index, GlyphStore* shaped) {
    const auto& paragraphs = result.text.paragraphs();
    const Paragraph& paragraph = paragraphs[index];
    const std::size_t length = byteLength(paragraph);
    std::string whole;
    std::unique_ptr<Graphemes> graphemes;
    Direction direction = Direction::natural;
    std::size_t start = 0;
    std::size_t budget = kPieceBytes;
    bool first = true;
    std::vector<std::pair<LineBox, PangoLayoutLine*>> lines;
    while (true) {
        std::size_t end = length;
        if (length - start > budget) {
            if (!graphemes) {
                whole = paragraph.text();
                graphemes = std::make_unique<Graphemes>(whole);
            }
            end = graphemes->atOrBefore(start + budget);
            if (end <= start) {
                end = graphemes->after(start);
            }
        }
        // Pango shapes a paragraph twice when it breaks it at a width, but once when it has no
        // width to keep to. A paragraph short enough to fit on a line is tried that way first,
        // and kept if it did fit: the line is the same, only its alignment is left to do.
        PangoLayoutPtr layout;
        int unwrappedWidth = -1; // of the one line, when the layout has no width
        if (start == 0 && end == length && mayFitOnALine(paragraph, length, result.width)) {
            layout = makeLayout(paragraph, 0, length, -1, direction);
            collectLines(layout.get(), index, 0, lines, &unwrappedWidth);
            if (lines.size() != 1 || unwrappedWidth >= pangoUnits(result.width)) {
                layout.reset();
            }
        }
        if (layout == nullptr) {
            layout = makeLayout(paragraph, start, end, result.width, direction);
            collectLines(layout.get(), index, start, lines, nullptr);
        } else {
            lines.front().first.x +=
                points(alignmentOffset(paragraph.style.alignment,
                                       lines.front().second->resolved_dir == PANGO_DIRECTION_RTL,
                                       pangoUnits(result.width), unwrappedWidth));
        }

        std::size_t next = length;
        if (end < length) {
            if (lines.size() < 2) {
                // All of the piece went into one line, which may go on: a larger piece.
                budget *= 2;
                continue;
            }
            next = lines.back().first.start;
            lines.pop_back();
            if (direction == Direction::natural) {
                direction = lines.front().second->resolved_dir == PANGO_DIRECTION_RTL
                                ? Direction::rightToLeft
                                : Direction::leftToRight;
            }
        }
        for (auto& [box, line] : lines) {
            if (first) {
                box.spaceAbove = paragraph.style.spacingBefore +
                                 (index > 0 ? paragraphs[index - 1].style.spacing : 0.0);
                first = false;
            } else {
                box.spaceAbove = paragraph.style.lineSpacing;
            }
            if (shaped != nullptr) {
                box.firstRun = static_cast<std::uint32_t>(shaped->runCount());
                for (GSList* node = line->runs; node != nullptr; node = node->next) {
                    keepRun(*static_cast<const PangoGlyphItem*>(node->data), start, *shaped);
                }
                box.runCount = static_cast<std::uint32_t>(shaped->runCount()) - box.firstRun;
            }
            result.lines.push_back(box);
        }
        if (next == length) {
            return;
        }
        start = next;
        budget = kPieceBytes;
    }
}

SetText TextSetter::set(AttributedText text, double width) {
    SetText result = set(std::move(text), width, m_keptBytes < m_keptShapeBytes);
    if (result.shaped != nullptr) {
        m_keptBytes += result.shaped->bytes();
    }
    return result;
}

SetText TextSetter::set(AttributedText text, double width, bool keepShapes) {
    SetText result{std::move(text), width, {}, ++m_serial, {}};
    GlyphStore* shaped = keepShapes ? &m_scratch->shaped : nullptr;
    if (shaped != nullptr) {
        shaped->clear();
    }
    for (std::size_t index = 0; index < result.text.paragraphs().size(); ++index) {
        setParagraph(result, index, shaped);
    }
    result.lines.shrink_to_fit();
    if (shaped != nullptr) {
        result.shaped = shaped->copy();
    }
    return result;
}

void TextSetter::keepRun(const PangoGlyphItem& run, std::size_t offset, GlyphStore& shaped) {
    const PangoItem& item = *run.item;
    fontFacts(item.analysis.font); // holds the reference that keeps the font alive for drawing
    GlyphRun kept;
    kept.offset = static_cast<std::uint32_t>(offset + static_cast<std::size_t>(item.offset));
    kept.length = static_cast<std::uint32_t>(item.length);
    kept.face = m_faces.index({item.analysis.font, item.analysis.language});
    if (const PangoColor* color = runColor(&run)) {
        kept.red = color->red;
        kept.green = color->green;
        kept.blue = color->blue;
        kept.colored = true;
    }
    kept.level = item.analysis.level;
    kept.gravity = item.analysis.gravity;
    kept.script = static_cast<std::uint8_t>(item.analysis.script);
    shaped.add(kept, *run.glyphs);
}

void TextSetter::draw(cairo_t* cairo, const SetText& text, std::size_t first, std::size_t count,
                      double x, double y) {
    const SetText* shapedText = &text;
    if (text.shaped == nullptr) {
        if (m_again == nullptr || m_again->serial != text.serial) {
            m_again.reset();
            SetText again = set(text.text, text.width, true);
            again.serial = text.serial;
            m_again = std::make_unique<SetText>(std::move(again));
        }
        shapedText = m_again.get();
    }
    const std::vector<double> tops = text.lineTops(first, count);
    for (std::size_t offset = 0; offset < tops.size(); ++offset) {
        const LineBox& box = shapedText->lines[first + offset];
        showLine(cairo, *shapedText, box, x + box.x, y + tops[offset] + box.ascent);
    }
    if (first + count >= text.lines.size()) {
        text.shaped.reset();
    }
}

// Pango draws a run from the text of its paragraph.
const char* TextSetter::paragraphText(const SetText& text, std::size_t paragraph) {
    const Paragraph& whole = text.text.paragraphs()[paragraph];
    if (whole.runs.size() == 1) {
        return whole.runs.front().text.c_str();
    }
    Scratch& scratch = *m_scratch;
    if (scratch.paragraphSerial != text.serial || scratch.paragraphIndex != paragraph) {
        scratch.paragraph.clear();
        appendRange(scratch.paragraph, whole, 0, byteLength(whole));
        scratch.paragraphSerial = text.serial;
        scratch.paragraphIndex = paragraph;
    }
    return scratch.paragraph.c_str();
}

void TextSetter::showLine(cairo_t* cairo, const SetText& text, const LineBox& line, double x,
                          double baseline) {
    const GlyphStore& shaped = *text.shaped;
    const char* characters = paragraphText(text, line.paragraph);
    Scratch& scratch = *m_scratch;
    double runX = x;
    for (std::uint32_t index = line.firstRun; index < line.firstRun + line.runCount; ++index) {
        const GlyphRun& run = shaped.run(index);
        // Pango draws from a glyph item; this one borrows the kept glyphs, unpacked if need be.
        PangoGlyphString glyphs{};
        shaped.unpack(run, scratch.glyphs, scratch.clusters, glyphs);
        m_item->offset = static_cast<gint>(run.offset);
        m_item->length = static_cast<gint>(run.length);
        m_item->num_chars = static_cast<gint>(
            g_utf8_strlen(characters + run.offset, static_cast<gssize>(run.length)));
        std::tie(m_item->analysis.font, m_item->analysis.language) = m_faces[run.face];
        m_item->analysis.level = run.level;
        m_item->analysis.gravity = run.gravity;
        m_item->analysis.script = run.script;
        PangoGlyphItem item{};
        item.item = m_item.get();
        item.glyphs = &glyphs;
        if (run.colored) {
            setColor(cairo, PangoColor{run.red, run.green, run.blue});
        }
        showRun(cairo, characters, &item, runX, baseline);
        runX += points(pango_glyph_string_get_width(&glyphs));
    }
    m_item->analysis.font = nullptr; // borrowed
}

void TextSetter::showLine(cairo_t* cairo, PangoLayoutLine* line, double x, double baseline) {
    const char* text = pango_layout_get_text(line->layout);
    double runX = x;
    for (GSList* node = line->runs; node != nullptr; node = node->next) {
        auto* run = static_cast<PangoGlyphItem*>(node->data);
        if (const PangoColor* color = runColor(run)) {
            setColor(cairo, *color);
        }
        showRun(cairo, text, run, runX, baseline);
        runX += points(pango_glyph_string_get_width(run->glyphs));
    }
}

void TextSetter::showRun(cairo_t* cairo, const char* text, PangoGlyphItem* run, double x,
                         double baseline) {
    const FontFacts& facts = fontFacts(run->item->analysis.font);
    if (facts.color) {
        m_colorGlyphs.show(cairo, text, run, facts.name, facts.plain.get(), x, baseline);
    } else {
        cairo_move_to(cairo, x, baseline);
        pango_cairo_show_glyph_item(cairo, text, run);
    }
}

PangoLayoutPtr TextSetter::makeLineLayout(std::string_view text, const TextStyle& style) {
    AttributedText attributed;
    attributed.append(singleLine(text), style, ParagraphStyle{});
    const Paragraph& paragraph = attributed.paragraphs().front();
    return makeLayout(paragraph, 0, byteLength(paragraph), -1);
}

LineMetrics TextSetter::measureLine(std::string_view text, const TextStyle& style) {
    const PangoLayoutPtr layout = makeLineLayout(text, style);
    PangoRectangle logical;
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    const int baseline = pango_layout_get_baseline(layout.get());
    return LineMetrics{points(logical.width), points(baseline - logical.y),
                       points(logical.y + logical.height - baseline)};
}

void TextSetter::drawLine(cairo_t* cairo, std::string_view text, const TextStyle& style, double x,
                          double baseline) {
    const PangoLayoutPtr layout = makeLineLayout(text, style);
    if (PangoLayoutLine* line = pango_layout_get_line_readonly(layout.get(), 0)) {
        showLine(cairo, line, x, baseline);
    }
}

std::string TextSetter::truncated(std::string_view text, const TextStyle& style, double maxWidth) {
    const std::string line = singleLine(text);
    if (measureLine(line, style).width <= maxWidth) {
        return line;
    }
    // Byte offsets at which a cut leaves whole user-perceived characters.
    std::vector<std::size_t> cuts;
    {
        const PangoLayoutPtr layout = makeLineLayout(line, style);
        int attributeCount = 0;
        const PangoLogAttr* attributes =
            pango_layout_get_log_attrs_readonly(layout.get(), &attributeCount);
        std::size_t offset = 0;
        for (int index = 0; index < attributeCount; ++index) {
            if (attributes[index].is_cursor_position) {
                cuts.push_back(offset);
            }
            if (offset >= line.size()) {
                break;
            }
            Unicode::nextCodePoint(line, offset);
        }
    }
    const auto candidate = [&](std::size_t cut) {
        return Unicode::trimmed(std::string_view(line).substr(0, cut)) + "\u2026";
    };
    std::string best = "\u2026";
    std::size_t low = 0;
    std::size_t high = cuts.size();
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        std::string attempt = candidate(cuts[middle]);
        if (measureLine(attempt, style).width <= maxWidth) {
            best = std::move(attempt);
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return best;
}

} // namespace scrivly::pdf

#if defined(__SANITIZE_ADDRESS__)
// Leak checking in sanitizer builds, wherever this code is linked: these allocations belong to
// the system libraries, not to Scrivly. Fontconfig (reached only through Pango) never frees its
// configuration, and Pango's font thread drops the patterns of matches still running when a font
// map goes away. Cairo 1.16 loses a buffer when it subsets a CFF font (the CJK fonts) while
// finishing a PDF; that one is recognised only with full stacks (fast_unwind_on_malloc=0).
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n"
           "leak:cairo_surface_finish\n";
}
#endif
