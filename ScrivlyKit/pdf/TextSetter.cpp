#include "ScrivlyKit/pdf/TextSetter.h"

#include "ScrivlyKit/text/Unicode.h"

#include <cairo-ft.h>
#include <cairo.h>
#include <pango/pangocairo.h>
#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace scrivly::pdf {

void CairoDeleter::operator()(cairo_t* cairo) const noexcept {
    cairo_destroy(cairo);
}
void CairoSurfaceDeleter::operator()(cairo_surface_t* surface) const noexcept {
    cairo_surface_destroy(surface);
}
void GObjectDeleter::operator()(void* object) const noexcept {
    g_object_unref(object);
}
void FontDescriptionDeleter::operator()(PangoFontDescription* description) const noexcept {
    pango_font_description_free(description);
}

namespace {

struct LayoutIterDeleter {
    void operator()(PangoLayoutIter* iter) const noexcept { pango_layout_iter_free(iter); }
};
using LayoutIterPtr = std::unique_ptr<PangoLayoutIter, LayoutIterDeleter>;

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

struct BreakIteratorDeleter {
    void operator()(UBreakIterator* iterator) const noexcept { ubrk_close(iterator); }
};
struct UTextDeleter {
    void operator()(UText* text) const noexcept { utext_close(text); }
};

// The boundaries of the characters as the user perceives them (grapheme clusters) in UTF-8 text,
// which must outlive it. Where ICU is unavailable, code point boundaries stand in.
class Graphemes {
public:
    explicit Graphemes(std::string_view text) : m_text(text) {
        if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
            return;
        }
        UErrorCode status = U_ZERO_ERROR;
        m_utext.reset(
            utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
        m_iterator.reset(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
        if (U_SUCCESS(status)) {
            ubrk_setUText(m_iterator.get(), m_utext.get(), &status);
        }
        if (U_FAILURE(status)) {
            m_iterator.reset();
        }
    }

    // The last boundary at or before offset.
    std::size_t atOrBefore(std::size_t offset) {
        if (m_iterator == nullptr) {
            while (offset > 0 && offset < m_text.size() && (m_text[offset] & 0xC0) == 0x80) {
                --offset;
            }
            return offset;
        }
        const auto position = static_cast<std::int32_t>(offset);
        if (ubrk_isBoundary(m_iterator.get(), position)) {
            return offset;
        }
        const std::int32_t found = ubrk_preceding(m_iterator.get(), position);
        return found == UBRK_DONE ? 0 : static_cast<std::size_t>(found);
    }

    // The first boundary after offset.
    std::size_t after(std::size_t offset) {
        if (m_iterator == nullptr) {
            do {
                ++offset;
            } while (offset < m_text.size() && (m_text[offset] & 0xC0) == 0x80);
            return std::min(offset, m_text.size());
        }
        const std::int32_t found =
            ubrk_following(m_iterator.get(), static_cast<std::int32_t>(offset));
        return found == UBRK_DONE ? m_text.size() : static_cast<std::size_t>(found);
    }

private:
    std::string_view m_text;
    std::unique_ptr<UText, UTextDeleter> m_utext;
    std::unique_ptr<UBreakIterator, BreakIteratorDeleter> m_iterator;
};

PangoContextPtr newContext(PangoFontMap* fontMap, const std::string& language,
                           PangoDirection direction) {
    PangoContextPtr context(pango_font_map_create_context(fontMap));
    if (context == nullptr) {
        throw PDFExport::Failed("The PDF couldn’t be made: no fonts are available.");
    }
    // Unhinted metrics and unrounded positions: what is measured here is exactly what the PDF
    // shows, at any zoom.
    cairo_font_options_t* fontOptions = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(fontOptions, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(fontOptions, CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context.get(), fontOptions);
    cairo_font_options_destroy(fontOptions);
    pango_cairo_context_set_resolution(context.get(), 72);
    pango_context_set_round_glyph_positions(context.get(), FALSE);
    pango_context_set_language(context.get(),
                               pango_language_from_string(pangoLanguageTag(language).c_str()));
    pango_context_set_base_dir(context.get(), direction);
    return context;
}

} // namespace

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

void PangoItemDeleter::operator()(PangoItem* item) const noexcept {
    pango_item_free(item);
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

// A run of a line in one font and colour. Its glyphs are kept compactly, Shaped::glyphs
// [firstGlyph, firstGlyph + glyphCount), or, when one of them does not fit that form, as Pango
// has them, Shaped::wideGlyphs and wideClusters from firstGlyph. 32 bytes: a long conversation
// keeps hundreds of thousands of runs.
struct GlyphRun {
    std::uint32_t offset = 0; // bytes of the run in its paragraph's text
    std::uint32_t length = 0;
    std::uint32_t firstGlyph = 0;
    std::uint32_t glyphCount = 0;
    std::uint32_t face = 0; // font and language, in the setter's table of them
    std::uint16_t red = 0;
    std::uint16_t green = 0;
    std::uint16_t blue = 0;
    std::uint8_t level = 0; // bidirectional embedding level
    std::uint8_t gravity = 0;
    std::uint8_t script = 0;
    bool colored = false; // when false the run takes the colour of the one before
    bool wide = false;
    bool colorGlyphs = false; // Pango marked every glyph as a colour glyph
};

// The common glyph in 6 bytes instead of Pango's 24: a glyph number below 65536, an advance of
// less than 32 points, no offsets from its pen position, a cluster starting less than 64 KB into
// its run, and the cluster-start mark that Pango derives from the clusters.
struct CompactGlyph {
    std::uint16_t glyph = 0;
    std::uint16_t cluster = 0; // byte offset of its characters in the run
    std::int16_t width = 0;    // advance, Pango units
};

struct Shaped {
    std::vector<GlyphRun> runs;
    std::vector<CompactGlyph> glyphs;
    std::vector<PangoGlyphInfo> wideGlyphs;
    std::vector<int> wideClusters; // Pango's log clusters: byte offsets in the run of each glyph

    std::size_t bytes() const {
        return sizeof(Shaped) + runs.size() * sizeof(GlyphRun) +
               glyphs.size() * sizeof(CompactGlyph) +
               wideGlyphs.size() * (sizeof(PangoGlyphInfo) + sizeof(int));
    }

    void clear() {
        runs.clear();
        glyphs.clear();
        wideGlyphs.clear();
        wideClusters.clear();
    }

    // Exactly as large as they need to be: kept shapes add up over a long document.
    std::shared_ptr<const Shaped> copy() const {
        auto result = std::make_shared<Shaped>();
        result->runs.assign(runs.begin(), runs.end());
        result->glyphs.assign(glyphs.begin(), glyphs.end());
        result->wideGlyphs.assign(wideGlyphs.begin(), wideGlyphs.end());
        result->wideClusters.assign(wideClusters.begin(), wideClusters.end());
        return result;
    }

    void keep(GlyphRun& run, const PangoGlyphString& shaped) {
        const auto count = static_cast<std::size_t>(shaped.num_glyphs);
        run.glyphCount = static_cast<std::uint32_t>(count);
        bool compact = true;
        std::size_t colorCount = 0;
        for (std::size_t index = 0; index < count && compact; ++index) {
            const PangoGlyphInfo& glyph = shaped.glyphs[index];
            const int cluster = shaped.log_clusters[index];
            const bool clusterStart = index == 0 || cluster != shaped.log_clusters[index - 1];
            compact = glyph.glyph <= 0xFFFF && cluster >= 0 && cluster <= 0xFFFF &&
                      glyph.geometry.width >= std::numeric_limits<std::int16_t>::min() &&
                      glyph.geometry.width <= std::numeric_limits<std::int16_t>::max() &&
                      glyph.geometry.x_offset == 0 && glyph.geometry.y_offset == 0 &&
                      glyph.attr.is_cluster_start == (clusterStart ? 1U : 0U);
            colorCount += glyph.attr.is_color;
        }
        compact = compact && (colorCount == 0 || colorCount == count);
        run.wide = !compact;
        run.colorGlyphs = colorCount > 0;
        if (run.wide) {
            run.firstGlyph = static_cast<std::uint32_t>(wideGlyphs.size());
            wideGlyphs.insert(wideGlyphs.end(), shaped.glyphs, shaped.glyphs + count);
            wideClusters.insert(wideClusters.end(), shaped.log_clusters,
                                shaped.log_clusters + count);
            return;
        }
        run.firstGlyph = static_cast<std::uint32_t>(glyphs.size());
        for (std::size_t index = 0; index < count; ++index) {
            const PangoGlyphInfo& glyph = shaped.glyphs[index];
            glyphs.push_back(CompactGlyph{static_cast<std::uint16_t>(glyph.glyph),
                                          static_cast<std::uint16_t>(shaped.log_clusters[index]),
                                          static_cast<std::int16_t>(glyph.geometry.width)});
        }
    }
};

// What drawing and setting reuse from one text to the next.
struct TextSetter::Scratch {
    Shaped shaped;                      // the text being set, copied out when done
    std::vector<PangoGlyphInfo> glyphs; // a compact run unpacked for Pango
    std::vector<int> clusters;
    std::string paragraph; // the text of a paragraph of several runs, while its lines are drawn
    std::uint64_t paragraphSerial = 0;
    std::size_t paragraphIndex = 0;
};

TextSetter::TextSetter(const std::string& language, std::size_t keptShapeBytes)
    : m_keptShapeBytes(keptShapeBytes) {
    m_fontMap.reset(pango_cairo_font_map_new());
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

namespace {

// Colour glyphs are drawn at this many pixels per point: about 430 pixels per inch.
constexpr double kColorGlyphScale = 6;

bool isColorFont(PangoFont* font) {
    cairo_scaled_font_t* scaled = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
    if (scaled == nullptr || cairo_scaled_font_get_type(scaled) != CAIRO_FONT_TYPE_FT) {
        return false;
    }
    FT_Face face = cairo_ft_scaled_font_lock_face(scaled);
    const bool color = face != nullptr && FT_HAS_COLOR(face);
    cairo_ft_scaled_font_unlock_face(scaled);
    return color;
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

struct GlyphItemDeleter {
    void operator()(PangoGlyphItem* item) const noexcept { pango_glyph_item_free(item); }
};

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
void TextSetter::setParagraph(SetText& result, std::size_t index, Shaped* shaped) {
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
                box.firstRun = static_cast<std::uint32_t>(shaped->runs.size());
                for (GSList* node = line->runs; node != nullptr; node = node->next) {
                    keepRun(*static_cast<const PangoGlyphItem*>(node->data), start, *shaped);
                }
                box.runCount = static_cast<std::uint32_t>(shaped->runs.size()) - box.firstRun;
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
    Shaped* shaped = keepShapes ? &m_scratch->shaped : nullptr;
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

void TextSetter::keepRun(const PangoGlyphItem& run, std::size_t offset, Shaped& shaped) {
    const PangoItem& item = *run.item;
    fontFacts(item.analysis.font); // holds the reference that keeps the font alive for drawing
    const std::pair face(item.analysis.font, item.analysis.language);
    const auto [found, added] =
        m_faceIndex.try_emplace(face, static_cast<std::uint32_t>(m_faces.size()));
    if (added) {
        m_faces.push_back(face);
    }
    GlyphRun kept;
    kept.offset = static_cast<std::uint32_t>(offset + static_cast<std::size_t>(item.offset));
    kept.length = static_cast<std::uint32_t>(item.length);
    kept.face = found->second;
    if (const PangoColor* color = runColor(&run)) {
        kept.red = color->red;
        kept.green = color->green;
        kept.blue = color->blue;
        kept.colored = true;
    }
    kept.level = item.analysis.level;
    kept.gravity = item.analysis.gravity;
    kept.script = static_cast<std::uint8_t>(item.analysis.script);
    shaped.keep(kept, *run.glyphs);
    shaped.runs.push_back(kept);
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
    const Shaped& shaped = *text.shaped;
    const char* characters = paragraphText(text, line.paragraph);
    Scratch& scratch = *m_scratch;
    double runX = x;
    for (std::uint32_t index = line.firstRun; index < line.firstRun + line.runCount; ++index) {
        const GlyphRun& run = shaped.runs[index];
        // Pango draws from a glyph item; this one borrows the kept glyphs, unpacked if need be.
        PangoGlyphString glyphs{};
        glyphs.num_glyphs = static_cast<gint>(run.glyphCount);
        glyphs.space = glyphs.num_glyphs;
        if (run.wide) {
            glyphs.glyphs = const_cast<PangoGlyphInfo*>(shaped.wideGlyphs.data() + run.firstGlyph);
            glyphs.log_clusters = const_cast<int*>(shaped.wideClusters.data() + run.firstGlyph);
        } else {
            scratch.glyphs.resize(run.glyphCount);
            scratch.clusters.resize(run.glyphCount);
            const CompactGlyph* kept = shaped.glyphs.data() + run.firstGlyph;
            for (std::uint32_t glyph = 0; glyph < run.glyphCount; ++glyph) {
                PangoGlyphInfo& info = scratch.glyphs[glyph];
                info = PangoGlyphInfo{};
                info.glyph = kept[glyph].glyph;
                info.geometry.width = kept[glyph].width;
                info.attr.is_cluster_start =
                    glyph == 0 || kept[glyph].cluster != kept[glyph - 1].cluster ? 1 : 0;
                info.attr.is_color = run.colorGlyphs ? 1 : 0;
                scratch.clusters[glyph] = kept[glyph].cluster;
            }
            glyphs.glyphs = scratch.glyphs.data();
            glyphs.log_clusters = scratch.clusters.data();
        }
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
    if (fontFacts(run->item->analysis.font).color) {
        showColorRun(cairo, text, run, x, baseline);
    } else {
        cairo_move_to(cairo, x, baseline);
        pango_cairo_show_glyph_item(cairo, text, run);
    }
}

// Cairo can put colour glyphs into a PDF only as pictures at one pixel per point, which prints
// blurred. So the run is drawn as a sharper picture of its own, and its characters go underneath
// in the text font, all but transparent, so that the emoji stay searchable and selectable.
void TextSetter::showColorRun(cairo_t* cairo, const char* text, PangoGlyphItem* run, double x,
                              double baseline) {
    PangoRectangle ink;
    pango_glyph_string_extents(run->glyphs, run->item->analysis.font, &ink, nullptr);
    const Rect bounds{points(ink.x) - 1, points(ink.y) - 1, points(ink.width) + 2,
                      points(ink.height) + 2};
    if (cairo_surface_t* image = colorRunImage(run, bounds)) {
        cairo_save(cairo);
        cairo_translate(cairo, x + bounds.x, baseline + bounds.y);
        cairo_scale(cairo, 1 / kColorGlyphScale, 1 / kColorGlyphScale);
        cairo_set_source_surface(cairo, image, 0, 0);
        cairo_paint(cairo);
        cairo_restore(cairo);
    }

    PangoFont* plainFont = fontFacts(run->item->analysis.font).plain.get();
    if (plainFont == nullptr) {
        return;
    }
    const std::unique_ptr<PangoGlyphItem, GlyphItemDeleter> hidden(pango_glyph_item_copy(run));
    g_object_unref(hidden->item->analysis.font);
    hidden->item->analysis.font = PANGO_FONT(g_object_ref(plainFont));
    // Glyph numbers of the colour font mean nothing in the text font: all become its glyph 0,
    // and the characters travel with them as the PDF's actual text.
    for (int index = 0; index < hidden->glyphs->num_glyphs; ++index) {
        hidden->glyphs->glyphs[index].glyph = 0;
    }
    cairo_save(cairo);
    cairo_set_source_rgba(cairo, 0, 0, 0, 1.0 / 255);
    cairo_move_to(cairo, x, baseline);
    pango_cairo_show_glyph_item(cairo, text, hidden.get());
    cairo_restore(cairo);
}

cairo_surface_t* TextSetter::colorRunImage(PangoGlyphItem* run, const Rect& bounds) {
    std::string key = fontFacts(run->item->analysis.font).name;
    for (int index = 0; index < run->glyphs->num_glyphs; ++index) {
        const PangoGlyphInfo& glyph = run->glyphs->glyphs[index];
        for (const long number :
             {static_cast<long>(glyph.glyph), static_cast<long>(glyph.geometry.width),
              static_cast<long>(glyph.geometry.x_offset),
              static_cast<long>(glyph.geometry.y_offset)}) {
            key += ' ';
            key += std::to_string(number);
        }
    }
    auto found = m_colorRuns.find(key);
    if (found != m_colorRuns.end()) {
        return found->second.get();
    }
    const int width = static_cast<int>(std::ceil(bounds.width * kColorGlyphScale));
    const int height = static_cast<int>(std::ceil(bounds.height * kColorGlyphScale));
    if (width <= 0 || height <= 0) {
        return nullptr;
    }
    CairoSurfacePtr image(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    if (cairo_surface_status(image.get()) != CAIRO_STATUS_SUCCESS) {
        return nullptr;
    }
    {
        const CairoPtr painter(cairo_create(image.get()));
        cairo_scale(painter.get(), kColorGlyphScale, kColorGlyphScale);
        cairo_move_to(painter.get(), -bounds.x, -bounds.y);
        pango_cairo_show_glyph_string(painter.get(), run->item->analysis.font, run->glyphs);
    }
    cairo_surface_flush(image.get());
    return m_colorRuns.emplace(std::move(key), std::move(image)).first->second.get();
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
