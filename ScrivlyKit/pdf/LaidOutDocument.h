#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/pdf/PDFExport.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace scrivly::PDFExport {

// The fonts that a thread's documents are set in, found once for all of them: finding them costs
// more than laying out a short conversation. Use it from one thread only.
class FontCache {
public:
    FontCache();
    ~FontCache();
    FontCache(const FontCache&) = delete;
    FontCache& operator=(const FontCache&) = delete;

private:
    friend class LaidOutDocument;
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// A transcript laid out once, without a cover, then drawn as one PDF file or as several pieces
// whose page numbers and Bates labels are given only when they are drawn: a document of a
// production, whose numbers depend on the documents before it and on how it is split. Not
// thread-safe: one thread at a time.
class LaidOutDocument {
public:
    struct Extras {
        // The file an attachment (by entry and attachment index) was produced as, or nothing;
        // its line in the document names that file.
        std::function<std::optional<std::string>(std::size_t entry, std::size_t attachment)>
            nativeName;
        std::size_t keptShapeBytes = std::size_t{160} << 20; // see TextSetter
        unsigned pictureWorkers = 0;                         // 0: one per core, at most four
        FontCache* fonts = nullptr; // borrowed, of this thread; fonts of its own when null
    };

    // Lays out every page but the cover, as PDFExport::render would (progress from 0 to 1).
    // options.batesStart only decides where the Bates labels go on the page; pieces give their
    // own numbers. Throws Cancelled or Failed.
    LaidOutDocument(Transcript transcript, const ExportOptions& options,
                    const ExportStrings& strings, Extras extras, const Progress& progress = {},
                    std::stop_token stop = {});
    ~LaidOutDocument();
    LaidOutDocument(const LaidOutDocument&) = delete;
    LaidOutDocument& operator=(const LaidOutDocument&) = delete;

    const Transcript& transcript() const;
    // Pages without the cover.
    std::size_t pageCount() const;
    // The page (0-based, without the cover) on which each entry's message begins.
    const std::vector<std::size_t>& entryPages() const;

    // The lines that name produced files, in page order, with the page (0-based, without the
    // cover) that shows each.
    struct NativeLine {
        std::size_t entry = 0;
        std::size_t attachment = 0;
        std::size_t page = 0;
    };
    std::vector<NativeLine> nativeLines() const;
    // Names the produced files anew in their lines. False, with nothing changed, when a line
    // would then break differently: the document must be laid out again with these names.
    bool renameNatives(
        const std::function<std::string(std::size_t entry, std::size_t attachment)>& name);

    // Pages (0-based, without the cover) drawn as one file, after a cover when one is given (the
    // usual rows, then these).
    struct Piece {
        std::size_t firstPage = 0;
        std::size_t pageCount = 0;
        std::optional<std::vector<CoverRow>> cover;
        std::int64_t batesStart = 1; // the number of the piece's first page
    };
    // The cover's pages for these rows.
    std::size_t coverPageCount(const std::vector<CoverRow>& rows);

    struct Drawn {
        std::vector<std::uint8_t> data;
        int pageCount = 0; // the cover included
        int coverPages = 0;
        // The size the file had reached after each page; the rest is what every file of this
        // document carries (fonts, the cross-reference table).
        std::vector<std::size_t> pageEnds;
    };
    // Throws Cancelled or Failed.
    Drawn draw(const Piece& piece, const Progress& progress = {});

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace scrivly::PDFExport
