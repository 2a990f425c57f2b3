#include "ScrivlyKit/pdf/PDFExport.h"
#include "ScrivlyKit/text/Unicode.h"

#include "tests/pdf/PDFTestSupport.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#if defined(__SANITIZE_ADDRESS__)
// Full stacks at every allocation, so that the leak checker can tell Cairo's own known leak (see
// TextSetter.cpp) from ours.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
#endif

namespace scrivly {
namespace {

using testing::commandOutput;
using testing::TranscriptBuilder;

bool havePDFTools() {
    int status = 0;
    commandOutput("pdfinfo -v && pdftotext -v && pdfimages -v && qpdf --version", &status);
    return status == 0;
}

// Text without any white space or bidirectional marks, so that line breaks and the extractor's
// direction marks do not matter when looking for a message.
std::string squeezed(const std::string& text) {
    std::string result;
    Unicode::forEachCodePoint(text, [&](char32_t codePoint) {
        const bool mark = (codePoint >= 0x202A && codePoint <= 0x202E) ||
                          (codePoint >= 0x2066 && codePoint <= 0x2069);
        if (!mark && !Unicode::isWhiteSpace(codePoint)) {
            Unicode::appendUTF8(result, codePoint);
        }
    });
    return result;
}

std::string writeFile(const testing::TempDir& folder, const PDFExport::Result& result) {
    const std::string path = folder.file("export.pdf");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(result.data.data()),
               static_cast<std::streamsize>(result.data.size()));
    return path;
}

class PDFDocument : public ::testing::Test {
protected:
    void SetUp() override {
        if (!havePDFTools()) {
            GTEST_SKIP() << "poppler-utils and qpdf are needed";
        }
    }

    testing::TempDir m_folder;
};

TEST_F(PDFDocument, RealisticTranscriptIsAValidSearchablePaginatedPDF) {
    const std::string photo = m_folder.file("harbour.png");
    ASSERT_TRUE(testing::writePicture(photo, 2000, 1500));

    TranscriptBuilder builder("Jordan Avery & Sam Okafor");
    builder.transcript().participants = {"Jordan Avery", "Sam Okafor", "Layla Haddad"};
    builder.add(0, 0, "Jordan Avery", "Are we still on for Saturday? 🎉");
    builder.add(0, 2, "", "Yes, 10 am at the harbour. I’ll bring the coffee ☕️", true)
        .reactions = {{"Jordan Avery", ReactionKind::fixed(ReactionKind::Case::loved), false},
                      {"Sam Okafor", ReactionKind::emojiReaction("👍🏽"), false}};
    builder.add(1, 0, "Jordan Avery", "The photo from last time")
        .attachments.push_back(testing::attachment(1, photo, "harbour.png", "image/png"));
    builder.add(1, 1, "Sam Okafor", "")
        .attachments.push_back(
            testing::attachment(2, m_folder.file("gone.heic"), "IMG_0042.HEIC", "image/heic"));
    builder.add(1, 2, "Layla Haddad", "مرحبا هل يمكنني المجيء معكم يوم السبت");
    builder.add(1, 3, "", "שלום כן בטח נתראה בשבת בבוקר", true);
    builder.add(1, 4, "Sam Okafor", "日本語のテキストも大丈夫ですか？中文也可以。");
    std::string longText;
    for (int sentence = 1; sentence <= 120; ++sentence) {
        longText += "Sentence " + std::to_string(sentence) + " of the long account. ";
    }
    builder.add(2, 0, "Jordan Avery", longText);
    for (int index = 0; index < 40; ++index) {
        builder.add(3, index, index % 2 == 0 ? "Sam Okafor" : "", "Note " + std::to_string(index),
                    index % 2 == 1);
    }

    ExportOptions options = testing::testOptions();
    options.documentTitle = "  Avery v. Harbour Cafe — Exhibit 12 ";
    options.header = "Confidential";
    options.batesPrefix = "SMITH-";
    std::vector<double> reports;
    const PDFExport::Result result =
        PDFExport::render(builder.transcript(), options, ExportStrings(),
                          [&](double fraction) { reports.push_back(fraction); });
    const std::string path = writeFile(m_folder, result);

    int status = 0;
    const std::string check = commandOutput("qpdf --check '" + path + "'", &status);
    EXPECT_EQ(status, 0) << check;

    const std::string info = commandOutput("pdfinfo '" + path + "'");
    ASSERT_GE(result.pageCount, 5);
    EXPECT_NE(info.find("Pages:           " + std::to_string(result.pageCount) + "\n"),
              std::string::npos)
        << info;
    EXPECT_NE(info.find("Title:           Avery v. Harbour Cafe — Exhibit 12\n"), std::string::npos)
        << info;
    EXPECT_NE(info.find("Creator:         Scrivly\n"), std::string::npos) << info;
    EXPECT_NE(info.find("612 x 792 pts (letter)"), std::string::npos) << info;

    for (int page = 1; page <= result.pageCount; ++page) {
        SCOPED_TRACE("page " + std::to_string(page));
        const std::string text = commandOutput("pdftotext -f " + std::to_string(page) + " -l " +
                                               std::to_string(page) + " '" + path + "' -");
        EXPECT_NE(
            text.find("Page " + std::to_string(page) + " of " + std::to_string(result.pageCount)),
            std::string::npos);
        EXPECT_NE(text.find("SMITH-00000" + std::to_string(page)), std::string::npos);
        EXPECT_NE(text.find("Confidential"), std::string::npos);
    }

    const std::string all = squeezed(commandOutput("pdftotext '" + path + "' -"));
    for (const char* cover :
         {"Participants", "JordanAvery,SamOkafor,LaylaHaddad", "AllmessagesMessages", "Attachments",
          "Timesshownin", "Scrivlylaysthemessagesout;itdoesn’tchangetheirwording."}) {
        EXPECT_NE(all.find(cover), std::string::npos) << cover;
    }
    // A message that runs over a page break has the page chrome in the middle of its extracted
    // text, so it is looked for sentence by sentence.
    for (const TranscriptEntry& entry : builder.transcript().entries) {
        std::istringstream sentences(entry.text);
        std::string sentence;
        while (std::getline(sentences, sentence, '.')) {
            EXPECT_NE(all.find(squeezed(sentence)), std::string::npos) << sentence;
        }
    }
    EXPECT_NE(all.find(squeezed("Reactions: Jordan Avery: Loved · Sam Okafor: 👍🏽")),
              std::string::npos);
    EXPECT_NE(all.find(squeezed(ExportStrings().attachmentMissing("IMG_0042.HEIC"))),
              std::string::npos);

    // The one photo is embedded as a JPEG of at most 1600 pixels; emoji are other pictures.
    const std::string images = commandOutput("pdfimages -list '" + path + "'");
    const std::regex jpeg(R"(image +(\d+) +(\d+) .* jpeg )");
    const auto found = std::sregex_iterator(images.begin(), images.end(), jpeg);
    ASSERT_EQ(std::distance(found, std::sregex_iterator()), 1) << images;
    EXPECT_EQ((*found)[1].str() + "x" + (*found)[2].str(), "1600x1200");

    ASSERT_FALSE(reports.empty());
    EXPECT_EQ(reports.front(), 0.0);
    EXPECT_EQ(reports.back(), 1.0);
    for (std::size_t index = 1; index < reports.size(); ++index) {
        EXPECT_GT(std::floor(reports[index] * 100), std::floor(reports[index - 1] * 100));
    }
}

TEST_F(PDFDocument, UntitledExportIsCalledMessagesAndTakesThePaperSize) {
    TranscriptBuilder builder;
    builder.add(0, 0, "Jordan Avery", "Hello");
    ExportOptions options = testing::testOptions();
    options.paper = PaperSize::a4;
    options.documentTitle = " \t ";
    options.coverPage = false;
    const PDFExport::Result result = PDFExport::render(builder.transcript(), options, {});
    EXPECT_EQ(result.pageCount, 1);
    const std::string info = commandOutput("pdfinfo '" + writeFile(m_folder, result) + "'");
    EXPECT_NE(info.find("Title:           Messages\n"), std::string::npos) << info;
    EXPECT_NE(info.find("595.28 x 841.89 pts (A4)"), std::string::npos) << info;
}

TEST(PDFExportCancellation, StopTokenEndsTheExportWithCancelled) {
    TranscriptBuilder builder;
    for (int index = 0; index < 250; ++index) {
        builder.add(index / 50, index, "Jordan Avery", "Message " + std::to_string(index));
    }
    struct Case {
        const char* name;
        double stopAt; // progress fraction at which the stop is requested; below 0: before
    };
    const Case cases[] = {{"before the start", -1}, {"during layout", 0}, {"while drawing", 0.5}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::stop_source source;
        if (c.stopAt < 0) {
            source.request_stop();
        }
        double last = -1;
        const auto progress = [&](double fraction) {
            last = fraction;
            if (c.stopAt >= 0 && fraction >= c.stopAt) {
                source.request_stop();
            }
        };
        EXPECT_THROW(PDFExport::render(builder.transcript(), testing::testOptions(), {}, progress,
                                       source.get_token()),
                     PDFExport::Cancelled);
        EXPECT_LT(last, 1.0);
    }
}

} // namespace
} // namespace scrivly
