#include "ScrivlyKit/pdf/PDFExport.h"

#include "tests/pdf/PDFTestSupport.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>

namespace scrivly {
namespace {

using PDFExport::Color;
using PDFExport::DocumentLayout;
using PDFExport::Placed;
using testing::TranscriptBuilder;

constexpr double kEpsilon = 0.01;

// Nothing may reach into the margins or the chrome rows.
void expectInsideTextArea(const DocumentLayout& document) {
    for (std::size_t page = 0; page < document.pages.size(); ++page) {
        for (const Placed& item : document.pages[page].items) {
            SCOPED_TRACE("page " + std::to_string(page + 1) + ": " + item.text);
            EXPECT_GE(item.frame.y, document.textTop - kEpsilon);
            EXPECT_LE(item.frame.bottom(), document.bottomLimit + kEpsilon);
            EXPECT_GE(item.frame.x, 54 - kEpsilon);
            EXPECT_LE(item.frame.x + item.frame.width, document.page.width - 54 + kEpsilon);
        }
    }
}

DocumentLayout layOut(const Transcript& transcript,
                      ExportOptions options = testing::testOptions()) {
    return PDFExport::layout(transcript, options, ExportStrings());
}

ExportOptions withoutCover() {
    ExportOptions options = testing::testOptions();
    options.coverPage = false;
    return options;
}

TEST(PDFLayout, CoverSummarisesTheTranscriptAndNamesTheSpanActuallyIncluded) {
    TranscriptBuilder empty;
    TranscriptBuilder builder;
    builder.add(1, 0, "Jordan Avery", "Hello");
    builder.add(3, 0, "Jordan Avery", "Bye");
    struct Case {
        const char* name;
        bool messages;
        std::optional<double> fromDay, toDay;
        const char* expected;
    };
    const Case cases[] = {
        {"no messages", false, std::nullopt, std::nullopt,
         "Jordan Avery\nParticipants\nJordan Avery\nDates\nAll messages\nMessages\n0\n"
         "Attachments\n0\nExported\n"},
        {"no range", true, std::nullopt, std::nullopt,
         "Dates\nAll messages\nMessages\n2\nAttachments\n0\n"},
        {"range wider than the messages", true, 0, 4,
         "Dates\nMar 5, 2024 – Mar 9, 2024\nIncluded: Mar 6, 2024 – Mar 8, 2024\nMessages\n2\n"},
        {"range equal to the messages", true, 1, 3,
         "Dates\nMar 6, 2024 – Mar 8, 2024\nMessages\n2\n"},
        {"open end", true, 1, std::nullopt,
         "Dates\nMar 6, 2024 – …\nIncluded: Mar 6, 2024 – Mar 8, 2024\nMessages\n2\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Transcript transcript = (c.messages ? builder : empty).transcript();
        // Whole days in New York (before the change to summer time): midnight to 23:59:59.
        const auto dayStart = [](double day) {
            return Date::fromUnixSeconds(testing::kMarchFifth - 9 * 3600 + day * testing::kDay);
        };
        transcript.from = c.fromDay ? std::optional(dayStart(*c.fromDay)) : std::nullopt;
        transcript.to =
            c.toDay ? std::optional(dayStart(*c.toDay + 1) - 1.0) : std::optional<Date>();
        const DocumentLayout document = layOut(transcript);
        // With nothing to show, the cover is all there is.
        ASSERT_EQ(document.pages.size(), c.messages ? 2u : 1u);
        const auto& cover = document.pages[0].items;
        ASSERT_EQ(cover.size(), 1u);
        EXPECT_NE(cover[0].text.find(c.expected), std::string::npos) << cover[0].text;
        EXPECT_EQ(cover[0].frame.y, document.textTop + 60);
    }
    // Without a cover, nothing to show still makes a page.
    const DocumentLayout bare = layOut(empty.transcript(), withoutCover());
    ASSERT_EQ(bare.pages.size(), 1u);
    EXPECT_TRUE(bare.pages[0].items.empty());
    ASSERT_FALSE(bare.pages[0].chrome.empty());
    EXPECT_EQ(bare.pages[0].chrome.back().text, "Page 1 of 1");
}

TEST(PDFLayout, DayLineNearTheBottomMovesToTheNextPageWithItsMessage) {
    int moved = 0;
    int stayed = 0;
    for (int count = 20; count <= 45; ++count) {
        SCOPED_TRACE(std::to_string(count) + " messages before the new day");
        TranscriptBuilder builder;
        for (int index = 0; index < count; ++index) {
            builder.add(0, index, "Jordan Avery", "Message " + std::to_string(index));
        }
        builder.add(1, 0, "Sam Okafor", "Next day");
        const DocumentLayout document = layOut(builder.transcript(), withoutCover());
        expectInsideTextArea(document);

        // A name with a one-line message is never split: the name would stand alone.
        for (const auto& page : document.pages) {
            for (const Placed* item : testing::textItems(page)) {
                EXPECT_TRUE(!item->bar || item->lineCount == 2) << item->text;
            }
        }
        bool found = false;
        for (std::size_t page = 0; page < document.pages.size() && !found; ++page) {
            const auto& items = document.pages[page].items;
            for (std::size_t index = 0; index < items.size(); ++index) {
                if (items[index].text != "Wednesday, March 6, 2024") {
                    continue;
                }
                found = true;
                ASSERT_LT(index + 1, items.size()) << "the day line was left alone";
                EXPECT_EQ(items[index + 1].text.find("Sam Okafor"), 0u);
                EXPECT_NE(items[index + 1].text.find("Next day"), std::string::npos);
                if (index == 0) {
                    ASSERT_GT(page, 0u);
                    const Placed& last = document.pages[page - 1].items.back();
                    EXPECT_LT(document.bottomLimit - last.frame.bottom(), 70);
                    ++moved;
                } else {
                    ASSERT_GE(index, 2u);
                    EXPECT_EQ(items[index - 1].kind, Placed::Kind::rule);
                    EXPECT_GE(document.bottomLimit - items[index - 2].frame.bottom(), 70);
                    ++stayed;
                }
            }
        }
        EXPECT_TRUE(found);
    }
    // Both outcomes occur over the range of counts.
    EXPECT_GT(moved, 0);
    EXPECT_GT(stayed, 0);
}

TEST(PDFLayout, MessageLongerThanAPageContinuesBetweenLines) {
    std::string sentences;
    for (int sentence = 1; sentence <= 150; ++sentence) {
        sentences +=
            "Sentence " + std::to_string(sentence) + " of a very long account of the day. ";
    }
    // One word of characters made of several code points each (an accented letter, a family
    // emoji, a flag, a thumb with a skin tone), and Hebrew and Han letters.
    std::string word;
    std::vector<bool> starts; // whether a character starts at a byte of the word
    while (word.size() < 20000) {
        for (const std::string character :
             {"e\u0301", "\U0001F468\u200D\U0001F469\u200D\U0001F467", "\U0001F1E9\U0001F1EA",
              "\u05E9", "\u05DC", "\u5B57", "\U0001F44D\U0001F3FD"}) {
            starts.push_back(true);
            starts.resize(starts.size() + character.size() - 1, false);
            word += character;
        }
    }
    for (const std::string* message : {&sentences, &word}) {
        const std::string& text = *message;
        TranscriptBuilder builder;
        builder.add(0, 0, "Jordan Avery", text);
        const DocumentLayout document = layOut(builder.transcript(), withoutCover());
        expectInsideTextArea(document);
        ASSERT_GE(document.pages.size(), 2u);

        std::string joined;
        for (std::size_t page = 0; page < document.pages.size(); ++page) {
            for (const Placed* item : testing::textItems(document.pages[page])) {
                if (!item->bar) {
                    continue; // the day line
                }
                if (page > 0) {
                    EXPECT_EQ(item->frame.y, document.textTop) << "page " << page + 1;
                    // A page starts with a word, or a whole character of one.
                    const std::size_t at = joined.size() - joined.find('\n') - 1;
                    EXPECT_TRUE(message == &word ? starts.at(at) : text.at(at - 1) == ' ')
                        << "page " << page + 1 << " starts at " << at;
                }
                EXPECT_GT(item->lineCount, 0u);
                joined += item->text;
            }
        }
        const std::size_t lineBreak = joined.find('\n');
        ASSERT_NE(lineBreak, std::string::npos);
        EXPECT_EQ(joined.substr(0, 12), "Jordan Avery");
        // Every character once, in order: nothing lost or doubled at the page breaks.
        EXPECT_TRUE(joined.substr(lineBreak + 1) == text);
    }
}

TEST(PDFLayout, SendersKeepTheirPaletteColourAndMeHasMine) {
    const Color colors[] = {{0.13, 0.55, 0.27}, {0.55, 0.27, 0.68}, {0.8, 0.42, 0.05},
                            {0.05, 0.52, 0.58}, {0.72, 0.2, 0.3},   {0.0, 0.4, 0.85}};
    // Sender, and the expected colour: the palette in order of first appearance, 5 for me.
    const std::pair<std::string, int> steps[] = {{"Ana", 0}, {"Ben", 1}, {"", 5},
                                                 {"Ana", 0}, {"Cy", 2},  {"Di", 3},
                                                 {"Ed", 4},  {"Flo", 0}, {"Ben", 1}};
    TranscriptBuilder builder;
    for (const auto& [sender, color] : steps) {
        builder.add(0, 0, sender, "Hi", color == 5);
    }
    const DocumentLayout document = layOut(builder.transcript(), withoutCover());
    const auto items = testing::textItems(document.pages.at(0));
    ASSERT_EQ(items.size(), std::size(steps) + 1); // and the day line
    for (std::size_t index = 0; index < std::size(steps); ++index) {
        SCOPED_TRACE(std::to_string(index) + ": " + steps[index].first);
        EXPECT_EQ(items[index + 1]->bar, colors[steps[index].second]);
    }
}

TEST(PDFLayout, AttachmentsArePicturesScaledIntoTheirBoxOrLines) {
    testing::TempDir folder;
    const auto picture = [&](int width, int height) {
        const std::string path = folder.file(std::to_string(width) + "x" + std::to_string(height));
        EXPECT_TRUE(testing::writePicture(path, width, height));
        return path;
    };
    const std::string notes = folder.file("notes.txt");
    std::ofstream(notes) << "twelve bytes";
    const std::string broken = folder.file("broken.png");
    std::ofstream(broken) << "not a picture at all";

    struct Case {
        const char* name;
        Attachment attachment;
        bool includeImages;
        std::string expectedLine; // empty: drawn as a picture of this size
        double width, height;
    };
    const Case cases[] = {
        {"taller than the page, by MIME type",
         testing::attachment(1, picture(600, 2400), "a.bin", "IMAGE/png"), true, "", 70, 280},
        {"small, by type identifier",
         testing::attachment(2, picture(40, 30), "b.dat", std::nullopt, "public.jpeg"), true, "",
         40, 30},
        {"wide and large, by extension", testing::attachment(3, picture(3000, 1000), "c.JPG"), true,
         "", 250, 250.0 * 533 / 1600},
        {"exactly the width limit", testing::attachment(4, picture(250, 100), "d.png"), true, "",
         250, 100},
        {"not a picture", testing::attachment(5, notes, "notes.txt", "text/plain"), true,
         "Attachment: notes.txt (12 bytes)", 0, 0},
        {"picture not on disk",
         testing::attachment(6, folder.file("gone.heic"), "IMG_0042.HEIC", "image/heic"), true,
         ExportStrings().attachmentMissing("IMG_0042.HEIC"), 0, 0},
        {"picture that cannot be decoded",
         testing::attachment(7, broken, "broken.png", "image/png"), true,
         "Attachment: broken.png (20 bytes)", 0, 0},
        {"pictures turned off", testing::attachment(8, picture(64, 48), "e.png", "image/png"),
         false, "Attachment: e.png (", 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TranscriptBuilder builder;
        // Enough text before it that the tall picture cannot stay on the first page.
        builder.add(0, 0, "Jordan Avery", std::string(3000, 'x'));
        builder.add(0, 1, "Jordan Avery", "Look").attachments.push_back(c.attachment);
        ExportOptions options = withoutCover();
        options.includeImages = c.includeImages;
        const DocumentLayout document = layOut(builder.transcript(), options);
        expectInsideTextArea(document);

        std::vector<Placed> images;
        std::string block; // of the message with the attachment
        for (const auto& page : document.pages) {
            for (const Placed& item : page.items) {
                if (item.kind == Placed::Kind::image) {
                    images.push_back(item);
                } else if (item.text.find("Look") != std::string::npos) {
                    block = item.text;
                }
            }
        }
        if (!c.expectedLine.empty()) {
            EXPECT_TRUE(images.empty());
            EXPECT_NE(block.find("\n" + c.expectedLine), std::string::npos) << block;
            continue;
        }
        EXPECT_EQ(block.find("Attachment"), std::string::npos) << block;
        ASSERT_EQ(images.size(), 1u);
        EXPECT_NEAR(images[0].frame.width, c.width, 0.5);
        EXPECT_NEAR(images[0].frame.height, c.height, 0.5);
        EXPECT_EQ(images[0].frame.x, 66);
        EXPECT_LE(std::max(images[0].pixelWidth, images[0].pixelHeight), 1600);
        EXPECT_EQ(images[0].bar, (Color{0.13, 0.55, 0.27}));
    }
}

TEST(PDFLayout, BatesNumberIsPlacedByTheWidthOfTheWidestLabel) {
    struct Case {
        const char* name;
        std::string prefix;
        int footerRows;
        bool pageAtLeft;
    };
    const Case cases[] = {
        {"short prefix shares the row with the centred page number", "SMITH-", 1, false},
        {"longer prefix sends the page number to the left margin",
         "SMITH-JONES-HARBOUR-CAFE-PRODUCTION-", 1, true},
        {"very long prefix gets a row of its own",
         "SMITH-JONES-AND-HARBOUR-CAFE-HOLDINGS-SECOND-PRODUCTION-VOLUME-THREE-", 2, false},
    };
    TranscriptBuilder builder;
    builder.add(0, 0, "Jordan Avery", "Hello");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ExportOptions options = testing::testOptions();
        options.batesPrefix = c.prefix;
        const DocumentLayout document = layOut(builder.transcript(), options);
        EXPECT_EQ(document.bottomLimit, 792 - 54 - 22 - (c.footerRows - 1) * 12);
        ASSERT_EQ(document.pages.size(), 2u);
        for (std::size_t page = 0; page < document.pages.size(); ++page) {
            const auto& chrome = document.pages[page].chrome;
            ASSERT_EQ(chrome.size(), 2u);
            const PDFExport::ChromeLine& number = chrome[0];
            const PDFExport::ChromeLine& bates = chrome[1];
            EXPECT_EQ(number.role, "page");
            EXPECT_EQ(number.text, "Page " + std::to_string(page + 1) + " of 2");
            EXPECT_EQ(bates.role, "bates");
            EXPECT_EQ(bates.text, c.prefix + "00000" + std::to_string(page + 1));
            EXPECT_NEAR(bates.frame.x + bates.frame.width, 612 - 54, kEpsilon);
            if (c.pageAtLeft) {
                EXPECT_EQ(number.frame.x, 54);
            } else {
                EXPECT_NEAR(number.frame.x + number.frame.width / 2, 306, kEpsilon);
            }
            if (c.footerRows == 1) {
                EXPECT_LE(number.frame.x + number.frame.width + 18, bates.frame.x);
            } else {
                EXPECT_LE(bates.frame.bottom(), number.frame.y + 12);
            }
        }
    }
}

TEST(PDFLayout, HeaderRowsShareOrSplitAndLongLinesAreCut) {
    const std::string longHeader =
        "Confidential — produced under the protective order of March 2024 in the matter of "
        "Avery v. Harbour Cafe";
    struct Case {
        const char* name;
        std::string header, title;
        int rows;
        std::size_t lines;
    };
    const Case cases[] = {
        {"none", "  ", "", 0, 0},
        {"header only", "Confidential", "", 1, 1},
        {"title only", "", "Exhibit 12", 1, 1},
        {"both on one row", "Confidential", "Exhibit 12", 1, 2},
        {"too wide to share a row", longHeader, "Avery v. Harbour Cafe — Exhibit 12", 2, 2},
        {"a lone header longer than the line", longHeader + " " + longHeader, "", 1, 1},
        {"two rows, each cut", longHeader + " " + longHeader, longHeader + " " + longHeader, 2, 2},
    };
    TranscriptBuilder builder;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ExportOptions options = withoutCover();
        options.header = c.header;
        options.documentTitle = c.title;
        const DocumentLayout document = layOut(builder.transcript(), options);
        EXPECT_EQ(document.headerRows, c.rows);
        EXPECT_EQ(document.textTop, c.rows == 0 ? 54 : 80 + (c.rows - 1) * 11);
        std::vector<PDFExport::ChromeLine> lines;
        for (const auto& line : document.pages.at(0).chrome) {
            if (line.role == "header" || line.role == "title") {
                lines.push_back(line);
            }
        }
        ASSERT_EQ(lines.size(), c.lines);
        for (const auto& line : lines) {
            SCOPED_TRACE(line.role);
            const std::string& original = line.role == "header" ? c.header : c.title;
            EXPECT_GE(line.frame.x, 54 - kEpsilon);
            EXPECT_LE(line.frame.x + line.frame.width, 612 - 54 + kEpsilon);
            if (line.text != original) {
                ASSERT_TRUE(line.text.ends_with("…")) << line.text;
                EXPECT_EQ(original.find(line.text.substr(0, line.text.size() - 3)), 0u);
            }
        }
        if (lines.size() == 2 && c.rows == 1) {
            EXPECT_LE(lines[0].frame.x + lines[0].frame.width + 18, lines[1].frame.x + kEpsilon);
            EXPECT_EQ(lines[0].frame.y, lines[1].frame.y);
        } else if (lines.size() == 2) {
            EXPECT_NEAR(lines[1].frame.y - lines[0].frame.y, 11, kEpsilon);
        }
    }
}

} // namespace
} // namespace scrivly
