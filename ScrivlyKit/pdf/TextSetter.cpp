#include "ScrivlyKit/pdf/TextSetter.h"

#include "ScrivlyKit/text/Unicode.h"

#include <cairo.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <charconv>
#include <cmath>

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

// Shortest decimal form, so that 9.5 gives "9.5" and 10 gives "10".
std::string decimal(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
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
    std::size_t paragraphText = static_cast<std::size_t>(-1);
    std::string paragraph;
    for (std::size_t index = first; index < first + count && index < lines.size(); ++index) {
        const LineBox& line = lines[index];
        if (line.paragraph != paragraphText) {
            if (paragraphText != static_cast<std::size_t>(-1)) {
                result += '\n';
            }
            paragraphText = line.paragraph;
            paragraph = text.paragraphs()[line.paragraph].text();
        }
        result.append(paragraph, line.start, line.length);
    }
    return result;
}

TextSetter::TextSetter(const std::string& language) {
    m_fontMap.reset(pango_cairo_font_map_new());
    if (m_fontMap == nullptr) {
        throw PDFExport::Failed("The PDF couldn’t be made: no fonts are available.");
    }
    m_context.reset(pango_font_map_create_context(m_fontMap.get()));
    if (m_context == nullptr) {
        throw PDFExport::Failed("The PDF couldn’t be made: no fonts are available.");
    }
    // Unhinted metrics and unrounded positions: what is measured here is exactly what the PDF
    // shows, at any zoom.
    cairo_font_options_t* fontOptions = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(fontOptions, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(fontOptions, CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(m_context.get(), fontOptions);
    cairo_font_options_destroy(fontOptions);
    pango_cairo_context_set_resolution(m_context.get(), 72);
    pango_context_set_round_glyph_positions(m_context.get(), FALSE);
    pango_context_set_language(m_context.get(),
                               pango_language_from_string(pangoLanguageTag(language).c_str()));
}

TextSetter::~TextSetter() = default;

const PangoFontDescription* TextSetter::font(const TextStyle& style) {
    const std::string key = decimal(style.size) + "-" + (style.bold ? "true" : "false") + "-" +
                            (style.italic ? "true" : "false");
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

PangoLayoutPtr TextSetter::makeLayout(const Paragraph& paragraph, double width) {
    PangoLayoutPtr layout(pango_layout_new(m_context.get()));
    std::string text;
    PangoAttrList* attributes = pango_attr_list_new();
    for (const Run& run : paragraph.runs) {
        const std::size_t start = text.size();
        text += run.text;
        addAttribute(attributes, pango_attr_font_desc_new(font(run.style)), start, text.size());
        addAttribute(attributes,
                     pango_attr_foreground_new(channel(run.style.color.red),
                                               channel(run.style.color.green),
                                               channel(run.style.color.blue)),
                     start, text.size());
    }
    // A word broken at the end of a line keeps its exact characters: no inserted hyphens.
    addAttribute(attributes, pango_attr_insert_hyphens_new(FALSE), 0, text.size());
    if (!paragraph.runs.empty()) {
        pango_layout_set_font_description(layout.get(), font(paragraph.runs.front().style));
    }
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_attributes(layout.get(), attributes);
    pango_attr_list_unref(attributes);
    pango_layout_set_width(layout.get(), pangoUnits(width));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    // Left alignment with automatic direction is natural alignment: right-to-left paragraphs
    // stand at the right.
    pango_layout_set_auto_dir(layout.get(), TRUE);
    pango_layout_set_alignment(layout.get(), paragraph.style.alignment == Alignment::center
                                                 ? PANGO_ALIGN_CENTER
                                                 : PANGO_ALIGN_LEFT);
    return layout;
}

SetText TextSetter::set(AttributedText text, double width) {
    SetText result{std::move(text), width, {}};
    const auto& paragraphs = result.text.paragraphs();
    for (std::size_t index = 0; index < paragraphs.size(); ++index) {
        const Paragraph& paragraph = paragraphs[index];
        const PangoLayoutPtr layout = makeLayout(paragraph, width);
        const LayoutIterPtr iter(pango_layout_get_iter(layout.get()));
        int lineIndex = 0;
        do {
            const PangoLayoutLine* line = pango_layout_iter_get_line_readonly(iter.get());
            PangoRectangle logical;
            pango_layout_iter_get_line_extents(iter.get(), nullptr, &logical);
            const int baseline = pango_layout_iter_get_baseline(iter.get());
            LineBox box;
            box.paragraph = index;
            box.lineInParagraph = lineIndex;
            box.start = static_cast<std::size_t>(line->start_index);
            box.length = static_cast<std::size_t>(line->length);
            box.x = points(logical.x);
            box.height = points(logical.height);
            box.ascent = points(baseline - logical.y);
            if (lineIndex == 0) {
                box.spaceAbove = paragraph.style.spacingBefore +
                                 (index > 0 ? paragraphs[index - 1].style.spacing : 0.0);
            } else {
                box.spaceAbove = paragraph.style.lineSpacing;
            }
            result.lines.push_back(box);
            ++lineIndex;
        } while (pango_layout_iter_next_line(iter.get()));
    }
    return result;
}

void TextSetter::draw(cairo_t* cairo, const SetText& text, std::size_t first, std::size_t count,
                      double x, double y) {
    const std::vector<double> tops = text.lineTops(first, count);
    PangoLayoutPtr layout;
    std::size_t layoutParagraph = 0;
    for (std::size_t offset = 0; offset < tops.size(); ++offset) {
        const LineBox& box = text.lines[first + offset];
        if (layout == nullptr || layoutParagraph != box.paragraph) {
            layout = makeLayout(text.text.paragraphs()[box.paragraph], text.width);
            layoutParagraph = box.paragraph;
        }
        PangoLayoutLine* line = pango_layout_get_line_readonly(layout.get(), box.lineInParagraph);
        if (line == nullptr) {
            continue;
        }
        cairo_move_to(cairo, x + box.x, y + tops[offset] + box.ascent);
        pango_cairo_show_layout_line(cairo, line);
    }
}

PangoLayoutPtr TextSetter::makeLineLayout(std::string_view text, const TextStyle& style) {
    AttributedText attributed;
    attributed.append(singleLine(text), style, ParagraphStyle{});
    PangoLayoutPtr layout = makeLayout(attributed.paragraphs().front(), 0);
    pango_layout_set_width(layout.get(), -1);
    return layout;
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
    cairo_move_to(cairo, x, baseline - points(pango_layout_get_baseline(layout.get())));
    pango_cairo_show_layout(cairo, layout.get());
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
