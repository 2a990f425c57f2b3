#include "ScrivlyKit/pdf/GlyphStore.h"

#include <pango/pango.h>

#include <limits>

namespace scrivly::pdf {

GlyphStore::GlyphStore() = default;
GlyphStore::~GlyphStore() = default;

void GlyphStore::add(GlyphRun run, const PangoGlyphString& shaped) {
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
    // The colour mark is kept once for the run, so it must be the same for all its glyphs.
    compact = compact && (colorCount == 0 || colorCount == count);
    run.wide = !compact;
    run.colorGlyphs = colorCount > 0;
    if (run.wide) {
        run.firstGlyph = static_cast<std::uint32_t>(m_wideGlyphs.size());
        m_wideGlyphs.insert(m_wideGlyphs.end(), shaped.glyphs, shaped.glyphs + count);
        m_wideClusters.insert(m_wideClusters.end(), shaped.log_clusters,
                              shaped.log_clusters + count);
    } else {
        run.firstGlyph = static_cast<std::uint32_t>(m_glyphs.size());
        for (std::size_t index = 0; index < count; ++index) {
            const PangoGlyphInfo& glyph = shaped.glyphs[index];
            m_glyphs.push_back(CompactGlyph{static_cast<std::uint16_t>(glyph.glyph),
                                            static_cast<std::uint16_t>(shaped.log_clusters[index]),
                                            static_cast<std::int16_t>(glyph.geometry.width)});
        }
    }
    m_runs.push_back(run);
}

void GlyphStore::unpack(const GlyphRun& run, std::vector<PangoGlyphInfo>& glyphBuffer,
                        std::vector<int>& clusterBuffer, PangoGlyphString& glyphs) const {
    glyphs.num_glyphs = static_cast<gint>(run.glyphCount);
    glyphs.space = glyphs.num_glyphs;
    if (run.wide) {
        // Pango only reads them while drawing.
        glyphs.glyphs = const_cast<PangoGlyphInfo*>(m_wideGlyphs.data() + run.firstGlyph);
        glyphs.log_clusters = const_cast<int*>(m_wideClusters.data() + run.firstGlyph);
        return;
    }
    glyphBuffer.resize(run.glyphCount);
    clusterBuffer.resize(run.glyphCount);
    const CompactGlyph* kept = m_glyphs.data() + run.firstGlyph;
    for (std::uint32_t glyph = 0; glyph < run.glyphCount; ++glyph) {
        PangoGlyphInfo& info = glyphBuffer[glyph];
        info = PangoGlyphInfo{};
        info.glyph = kept[glyph].glyph;
        info.geometry.width = kept[glyph].width;
        info.attr.is_cluster_start =
            glyph == 0 || kept[glyph].cluster != kept[glyph - 1].cluster ? 1 : 0;
        info.attr.is_color = run.colorGlyphs ? 1 : 0;
        clusterBuffer[glyph] = kept[glyph].cluster;
    }
    glyphs.glyphs = glyphBuffer.data();
    glyphs.log_clusters = clusterBuffer.data();
}

std::size_t GlyphStore::bytes() const {
    return sizeof(GlyphStore) + m_runs.size() * sizeof(GlyphRun) +
           m_glyphs.size() * sizeof(CompactGlyph) +
           m_wideGlyphs.size() * (sizeof(PangoGlyphInfo) + sizeof(int));
}

void GlyphStore::clear() {
    m_runs.clear();
    m_glyphs.clear();
    m_wideGlyphs.clear();
    m_wideClusters.clear();
}

std::shared_ptr<const GlyphStore> GlyphStore::copy() const {
    auto result = std::make_shared<GlyphStore>();
    result->m_runs.assign(m_runs.begin(), m_runs.end());
    result->m_glyphs.assign(m_glyphs.begin(), m_glyphs.end());
    result->m_wideGlyphs.assign(m_wideGlyphs.begin(), m_wideGlyphs.end());
    result->m_wideClusters.assign(m_wideClusters.begin(), m_wideClusters.end());
    return result;
}

std::uint32_t GlyphFaces::index(const Face& face) {
    const auto [found, added] =
        m_indices.try_emplace(face, static_cast<std::uint32_t>(m_faces.size()));
    if (added) {
        m_faces.push_back(face);
    }
    return found->second;
}

} // namespace scrivly::pdf
