#pragma once

#include "ScrivlyKit/pdf/CairoHandles.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace scrivly::pdf {

// A run of a line in one font and colour. Its glyphs are kept compactly, or, when one of them
// does not fit that form, as Pango has them. 32 bytes: a long conversation keeps hundreds of
// thousands of runs.
struct GlyphRun {
    std::uint32_t offset = 0; // bytes of the run in its paragraph's text
    std::uint32_t length = 0;
    std::uint32_t firstGlyph = 0; // set by the store
    std::uint32_t glyphCount = 0; // set by the store
    std::uint32_t face = 0;       // font and language, in the setter's GlyphFaces
    std::uint16_t red = 0;
    std::uint16_t green = 0;
    std::uint16_t blue = 0;
    std::uint8_t level = 0; // bidirectional embedding level
    std::uint8_t gravity = 0;
    std::uint8_t script = 0;
    bool colored = false;     // when false the run takes the colour of the one before
    bool wide = false;        // set by the store
    bool colorGlyphs = false; // set by the store: Pango marked every glyph as a colour glyph
};

// The common glyph in 6 bytes instead of Pango's 24: a glyph number below 65536, an advance of
// less than 32 points, no offsets from its pen position, a cluster starting less than 64 KB into
// its run, and the cluster-start mark that Pango derives from the clusters.
struct CompactGlyph {
    std::uint16_t glyph = 0;
    std::uint16_t cluster = 0; // byte offset of its characters in the run
    std::int16_t width = 0;    // advance, Pango units
};

// The glyphs of a set text's lines as Pango shaped them: all that drawing needs of the text, in
// about 10 bytes a character. Not thread-safe.
class GlyphStore {
public:
    GlyphStore();
    ~GlyphStore();
    GlyphStore(const GlyphStore&) = delete;
    GlyphStore& operator=(const GlyphStore&) = delete;

    // Keeps the glyphs of a run and appends the run, its glyph fields filled in.
    void add(GlyphRun run, const PangoGlyphString& glyphs);

    std::size_t runCount() const { return m_runs.size(); }
    const GlyphRun& run(std::size_t index) const { return m_runs[index]; }

    // Pango's form of a kept run's glyphs, for drawing it. The string borrows from this store or,
    // for compact glyphs, from the buffers, which are reused from run to run: it is valid until
    // either changes.
    void unpack(const GlyphRun& run, std::vector<PangoGlyphInfo>& glyphBuffer,
                std::vector<int>& clusterBuffer, PangoGlyphString& glyphs) const;

    // Memory held, for the setter's budget of kept glyphs.
    std::size_t bytes() const;
    void clear();
    // Exactly as large as it needs to be: kept glyphs add up over a long document.
    std::shared_ptr<const GlyphStore> copy() const;

private:
    std::vector<GlyphRun> m_runs;
    std::vector<CompactGlyph> m_glyphs;       // compact runs' glyphs, from their firstGlyph
    std::vector<PangoGlyphInfo> m_wideGlyphs; // the other runs' glyphs, from their firstGlyph
    std::vector<int> m_wideClusters; // Pango's log clusters: byte offsets in the run of each glyph
};

// The fonts and languages of kept glyph runs, which name them by their place here. The fonts are
// borrowed: whoever keeps runs keeps their fonts alive.
class GlyphFaces {
public:
    using Face = std::pair<PangoFont*, PangoLanguage*>;

    std::uint32_t index(const Face& face);
    const Face& operator[](std::uint32_t index) const { return m_faces[index]; }

private:
    std::vector<Face> m_faces;
    std::map<Face, std::uint32_t> m_indices;
};

} // namespace scrivly::pdf
