// A document laid out once and drawn as pieces numbered at drawing time, as a production does.

#include "ScrivlyKit/pdf/LaidOutDocument.h"

#include "tests/pdf/PDFTestSupport.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <regex>

namespace scrivly::testing {
namespace {

using PDFExport::LaidOutDocument;
using ::testing::HasSubstr;

std::string commandOutput(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string out;
    char buffer[4096];
    std::size_t count = 0;
    while (pipe && (count = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0) {
        out.append(buffer, count);
    }
    return out;
}

// The text of each page of a PDF.
std::vector<std::string> pages(const std::vector<std::uint8_t>& pdf) {
    TempDir folder;
    const std::string path =
        writeFile(folder.path() / "piece.pdf", std::string(pdf.begin(), pdf.end()));
    std::vector<std::string> result;
    std::string text = commandOutput("pdftotext -q '" + path + "' -");
    for (auto at = text.find('\f'); at != std::string::npos; at = text.find('\f')) {
        result.push_back(text.substr(0, at));
        text.erase(0, at + 1);
    }
    return result;
}

// Ninety messages over several pages; the fortieth has a file attached.
struct Fixture {
    TempDir folder;
    Transcript transcript;
    ExportOptions options = testOptions();

    Fixture() {
        TranscriptBuilder builder;
        for (int index = 0; index < 90; ++index) {
            builder.add(index / 30, index, "Jordan Avery",
                        "Message number " + std::to_string(index) + " with some words to wrap.");
        }
        builder.transcript().entries[40].attachments.push_back(
            attachment(7, writeFile(folder.path() / "notes.txt", "notes"), "notes.txt"));
        transcript = builder.transcript();
        options.batesPrefix = "P";
    }

    std::unique_ptr<LaidOutDocument> layOut(const std::string& nativeName) const {
        LaidOutDocument::Extras extras;
        extras.nativeName = [nativeName](std::size_t entry,
                                         std::size_t index) -> std::optional<std::string> {
            return entry == 40 && index == 0 ? std::optional(nativeName) : std::nullopt;
        };
        return std::make_unique<LaidOutDocument>(transcript, options, ExportStrings(), extras);
    }
};

TEST(LaidOutDocument, DrawsPiecesWithTheNumbersGiven) {
    const Fixture fixture;
    auto document = fixture.layOut("P000000-01 notes.txt");
    ASSERT_GE(document->pageCount(), 3U);
    const auto& entryPages = document->entryPages();
    ASSERT_EQ(entryPages.size(), 90U);
    EXPECT_TRUE(std::is_sorted(entryPages.begin(), entryPages.end()));
    EXPECT_EQ(entryPages.back(), document->pageCount() - 1);
    const auto lines = document->nativeLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].page, entryPages[40]);

    LaidOutDocument::Piece piece;
    piece.firstPage = 1;
    piece.pageCount = 2;
    piece.cover = std::vector<PDFExport::CoverRow>{{"Bates range", "P000041 \u2013 P000043"}};
    piece.batesStart = 41;
    const auto drawn = document->draw(piece);
    EXPECT_EQ(drawn.pageCount, 3);
    EXPECT_EQ(drawn.coverPages, 1);
    ASSERT_EQ(drawn.pageEnds.size(), 3U);
    EXPECT_TRUE(std::is_sorted(drawn.pageEnds.begin(), drawn.pageEnds.end()));
    EXPECT_LT(drawn.pageEnds.back(), drawn.data.size());

    const auto text = pages(drawn.data);
    ASSERT_EQ(text.size(), 3U);
    EXPECT_THAT(text[0], HasSubstr("Bates range\n\nP000041 \u2013 P000043"));
    for (std::size_t page = 0; page < 3; ++page) {
        SCOPED_TRACE(page);
        EXPECT_THAT(text[page], HasSubstr("Page " + std::to_string(page + 1) + " of 3"));
        EXPECT_THAT(text[page], HasSubstr("P0000" + std::to_string(41 + page)));
    }
    // The second page of the body is the piece's first after its cover.
    const auto firstOnPage =
        std::find(entryPages.begin(), entryPages.end(), 1U) - entryPages.begin();
    EXPECT_THAT(text[1], HasSubstr("Message number " + std::to_string(firstOnPage) + " "));
}

TEST(LaidOutDocument, RenamesNativesOnlyWhereTheLinesStayPut) {
    const Fixture fixture;
    auto document = fixture.layOut("P000000-01 notes.txt");
    const std::size_t page = document->nativeLines().front().page;

    // A name as wide as before keeps every line where it was.
    ASSERT_TRUE(document->renameNatives(
        [](std::size_t, std::size_t) { return std::string("P000017-01 notes.txt"); }));
    LaidOutDocument::Piece piece;
    piece.firstPage = page;
    piece.pageCount = 1;
    piece.batesStart = 17;
    EXPECT_THAT(pages(document->draw(piece).data).front(),
                HasSubstr("Attachment: P000017-01 notes.txt"));

    // A name that wraps onto more lines would move what follows: refused, nothing changed.
    EXPECT_FALSE(document->renameNatives(
        [](std::size_t, std::size_t) { return std::string(400, 'x') + " notes.txt"; }));
    EXPECT_THAT(pages(document->draw(piece).data).front(),
                HasSubstr("Attachment: P000017-01 notes.txt"));
}

} // namespace
} // namespace scrivly::testing
