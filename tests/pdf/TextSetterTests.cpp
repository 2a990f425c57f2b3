#include "ScrivlyKit/pdf/CairoHandles.h"
#include "ScrivlyKit/pdf/GlyphStore.h"
#include "ScrivlyKit/pdf/Graphemes.h"
#include "ScrivlyKit/pdf/TextSetter.h"

#include <cairo.h>
#include <gtest/gtest.h>
#include <pango/pango.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace scrivly::pdf {
namespace {

// A setter keeps the glyphs it shaped for drawing, up to a limit; past it, drawing sets the text
// again, as it does once the kept glyphs were let go after the last line. All must draw the very
// same pixels, in whatever slices pages take of the lines, whether a glyph was kept compactly
// (plain letters, emoji) or as Pango had it (a combining accent, moved onto its letter).
TEST(TextSetter, DrawsTheSameWhetherItKeptTheShapesOrSetsTheTextAgain) {
    AttributedText first;
    first.append("Ann Lee \U0001F44D\U0001F3FD \u05E9\u05DC\u05D5\u05DD",
                 TextStyle{10, true, false, {0.2, 0.4, 0.6}}, ParagraphStyle{});
    first.append("   9:41 AM", TextStyle{8.5, false, false, {0.5, 0.5, 0.5}}, ParagraphStyle{});
    first.endParagraph();
    std::string words;
    while (words.size() < 5000) {
        words += "word \u5B57 e\u0301 q\u0323\u0301 \U0001F1E9\U0001F1EA ";
    }
    first.append(words, TextStyle{10.5, false, false, {}},
                 ParagraphStyle{Alignment::natural, 0, 1.5, 1.5});
    AttributedText second;
    second.append("\u05E9\u05DC\u05D5\u05DD world", TextStyle{9, false, true, {0.5, 0, 0}},
                  ParagraphStyle{Alignment::center, 2, 0, 1});

    const auto pixels = [&](std::size_t keptShapeBytes) {
        TextSetter setter("en_US", keptShapeBytes);
        const SetText a = setter.set(first, 240);
        const SetText b = setter.set(second, 240);
        EXPECT_EQ(a.shaped != nullptr, keptShapeBytes > 0);
        EXPECT_GT(a.lines.size(), 20u);
        std::vector<unsigned char> result;
        // Slices of 9 lines, with the other text drawn between two of them; all of it twice.
        for (std::size_t line = 0; line < 2 * a.lines.size(); line += 9) {
            const CairoSurfacePtr surface(
                cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 260, 160));
            {
                const CairoPtr cairo(cairo_create(surface.get()));
                setter.draw(cairo.get(), a, line % a.lines.size(), 9, 10, 5);
                if (line == 9) {
                    setter.draw(cairo.get(), b, 0, 1, 10, 140);
                }
            }
            cairo_surface_flush(surface.get());
            const unsigned char* data = cairo_image_surface_get_data(surface.get());
            result.insert(result.end(), data,
                          data + 160 * cairo_image_surface_get_stride(surface.get()));
        }
        return result;
    };
    const auto kept = pixels(TextSetter::kKeptShapeBytes);
    EXPECT_TRUE(kept == pixels(0));
    EXPECT_NE(std::count(kept.begin(), kept.end(), 0), static_cast<std::ptrdiff_t>(kept.size()));
}

TEST(TextSetter, LinesStandWhereTheirAlignmentAndDirectionPutThem) {
    TextSetter setter("en_US");
    const TextStyle style{10.5, false, false, {}};
    struct Case {
        const char* text;
        Alignment alignment;
        double share; // of the space the line leaves, the part at its left
    };
    for (const Case& c :
         {Case{"Hello there", Alignment::natural, 0},
          Case{"\u05E9\u05DC\u05D5\u05DD \u05E2\u05D5\u05DC\u05DD", Alignment::natural, 1},
          Case{"Tuesday, March 5", Alignment::center, 0.5},
          Case{"\u05E9\u05DC\u05D5\u05DD", Alignment::center, 0.5}}) {
        SCOPED_TRACE(c.text);
        AttributedText text;
        text.append(c.text, style, ParagraphStyle{c.alignment, 0, 0, 0});
        const SetText set = setter.set(std::move(text), 300);
        ASSERT_EQ(set.lines.size(), 1u);
        const double space = 300 - setter.measureLine(c.text, style).width;
        EXPECT_NEAR(set.lines[0].x, space * c.share, 0.01);
    }
}

// Kept glyphs must come back exactly as Pango shaped them, whichever form they were kept in.
TEST(GlyphStore, GivesBackTheGlyphsAsPangoShapedThem) {
    struct Glyph {
        PangoGlyph glyph;
        int width, xOffset, yOffset, cluster;
        bool clusterStart, color;
    };
    struct Case {
        const char* name;
        std::vector<Glyph> glyphs;
        bool wide;
    };
    const Case cases[] = {
        {"plain letters",
         {{36, 6144, 0, 0, 0, true, false}, {72, 5120, 0, 0, 1, true, false}},
         false},
        {"a cluster of two glyphs",
         {{36, 6144, 0, 0, 0, true, false}, {5, 0, 0, 0, 0, false, false}},
         false},
        {"colour glyphs",
         {{1200, 12288, 0, 0, 0, true, true}, {1201, 12288, 0, 0, 4, true, true}},
         false},
        {"a mark moved onto its letter",
         {{36, 6144, 0, 0, 0, true, false}, {900, 0, -3000, 250, 1, true, false}},
         true},
        {"a glyph number past 16 bits", {{70000, 6144, 0, 0, 0, true, false}}, true},
        {"an advance of more than 32 points", {{36, 40000, 0, 0, 0, true, false}}, true},
        {"a negative advance", {{36, -200, 0, 0, 0, true, false}}, false},
        {"a cluster past 64 KB", {{36, 6144, 0, 0, 70000, true, false}}, true},
        {"a cluster start where the clusters say none",
         {{36, 6144, 0, 0, 0, true, false}, {37, 6144, 0, 0, 0, true, false}},
         true},
        {"colour and plain glyphs in one run",
         {{36, 6144, 0, 0, 0, true, false}, {1200, 12288, 0, 0, 1, true, true}},
         true},
    };
    const auto add = [](GlyphStore& store, const std::vector<Glyph>& glyphs) {
        const std::unique_ptr<PangoGlyphString, decltype(&pango_glyph_string_free)> shaped(
            pango_glyph_string_new(), &pango_glyph_string_free);
        pango_glyph_string_set_size(shaped.get(), static_cast<gint>(glyphs.size()));
        for (std::size_t index = 0; index < glyphs.size(); ++index) {
            const Glyph& glyph = glyphs[index];
            PangoGlyphInfo& info = shaped->glyphs[index];
            info = PangoGlyphInfo{};
            info.glyph = glyph.glyph;
            info.geometry = {glyph.width, glyph.xOffset, glyph.yOffset};
            info.attr.is_cluster_start = glyph.clusterStart ? 1 : 0;
            info.attr.is_color = glyph.color ? 1 : 0;
            shaped->log_clusters[index] = glyph.cluster;
        }
        store.add(GlyphRun{}, *shaped);
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        GlyphStore store;
        // After a run of its own, so that the case does not start at the store's first glyph.
        add(store, {{40, 6000, 0, 0, 0, true, false}});
        add(store, c.glyphs);
        ASSERT_EQ(store.runCount(), 2u);
        EXPECT_EQ(store.run(1).wide, c.wide);

        const auto kept = store.copy();
        EXPECT_EQ(kept->bytes(), store.bytes());
        std::vector<PangoGlyphInfo> glyphBuffer;
        std::vector<int> clusterBuffer;
        PangoGlyphString unpacked{};
        kept->unpack(kept->run(1), glyphBuffer, clusterBuffer, unpacked);
        ASSERT_EQ(unpacked.num_glyphs, static_cast<gint>(c.glyphs.size()));
        for (std::size_t index = 0; index < c.glyphs.size(); ++index) {
            SCOPED_TRACE("glyph " + std::to_string(index));
            const Glyph& glyph = c.glyphs[index];
            const PangoGlyphInfo& info = unpacked.glyphs[index];
            EXPECT_EQ(info.glyph, glyph.glyph);
            EXPECT_EQ(info.geometry.width, glyph.width);
            EXPECT_EQ(info.geometry.x_offset, glyph.xOffset);
            EXPECT_EQ(info.geometry.y_offset, glyph.yOffset);
            EXPECT_EQ(info.attr.is_cluster_start, glyph.clusterStart ? 1U : 0U);
            EXPECT_EQ(info.attr.is_color, glyph.color ? 1U : 0U);
            EXPECT_EQ(unpacked.log_clusters[index], glyph.cluster);
        }
    }
}

TEST(Graphemes, BoundariesFallBetweenTheCharactersAsTheUserSeesThem) {
    // e + combining acute (3 bytes), a flag (8), a family joined by ZWJs (18), "x".
    const std::string text = "e\u0301\U0001F1E9\U0001F1EA"
                             "\U0001F468\u200D\U0001F469\u200D\U0001F467x";
    ASSERT_EQ(text.size(), 30u);
    struct Case {
        std::size_t offset, atOrBefore, after;
    };
    const Case cases[] = {
        {0, 0, 3},    {1, 0, 3},    {2, 0, 3},    {3, 3, 11},   {7, 3, 11},
        {11, 11, 29}, {20, 11, 29}, {28, 11, 29}, {29, 29, 30},
    };
    Graphemes graphemes(text);
    for (const Case& c : cases) {
        SCOPED_TRACE("offset " + std::to_string(c.offset));
        EXPECT_EQ(graphemes.atOrBefore(c.offset), c.atOrBefore);
        EXPECT_EQ(graphemes.after(c.offset), c.after);
    }
    EXPECT_EQ(graphemes.atOrBefore(30), 30u);
}

} // namespace
} // namespace scrivly::pdf
