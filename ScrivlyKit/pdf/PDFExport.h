#pragma once

#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/export/PaperSize.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

// A transcript as a paginated PDF: a layout pass that decides what goes on which page, then a
// drawing pass that adds the page chrome and writes the document.
namespace scrivly::PDFExport {

struct Result {
    std::vector<std::uint8_t> data;
    int pageCount = 0;
};

// Thrown when the stop token was triggered during an export.
class Cancelled : public std::exception {
public:
    const char* what() const noexcept override { return "The export was cancelled."; }
};

// Thrown when the PDF could not be made.
class Failed : public std::exception {
public:
    explicit Failed(std::string message) : m_message(std::move(message)) {}
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

// Progress is a fraction from 0 to 1, reported once per whole percent, from the calling thread.
using Progress = std::function<void(double fraction)>;

Result render(const Transcript& transcript, const ExportOptions& options,
              const ExportStrings& strings, const Progress& progress = {},
              std::stop_token stop = {});

// A rectangle in page coordinates: points, origin at the top left corner, y growing downwards.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double bottom() const { return y + height; }
};

// An sRGB colour, components 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;

    bool operator==(const Color&) const = default;
};

// One thing placed on a page by the layout pass.
struct Placed {
    enum class Kind { text, image, rule };

    Kind kind = Kind::text;
    Rect frame;                // for a rule: the line's height in y, the column in x and width
    std::string text;          // text: the characters shown on this page, paragraphs on lines
    std::size_t lineCount = 0; // text: how many laid-out lines this page shows
    std::optional<Color> bar;  // text and image: the colour of the message bar at the left
    int pixelWidth = 0;        // image: the embedded JPEG's size
    int pixelHeight = 0;
};

// A chrome text of a page: role "header", "title", "page" or "bates"; the frame spans the
// line's typographic bounds (baseline = frame.y + ascent).
struct ChromeLine {
    std::string role;
    std::string text;
    Rect frame;
};

struct PageLayout {
    std::vector<Placed> items;
    std::vector<ChromeLine> chrome;
};

// What the drawing pass would draw, for checking pages without parsing a PDF.
struct DocumentLayout {
    PageSize page;
    int headerRows = 0;
    double textTop = 0;     // top of the text area on every page
    double bottomLimit = 0; // lowest point text may reach
    std::vector<PageLayout> pages;
};

// Runs the layout pass (progress 0 to 0.5) and measures every page's chrome; draws nothing.
DocumentLayout layout(const Transcript& transcript, const ExportOptions& options,
                      const ExportStrings& strings, const Progress& progress = {},
                      std::stop_token stop = {});

// A row added to a cover after the usual ones.
struct CoverRow {
    std::string label;
    std::string value;
};

// A paragraph of a document of plain text.
struct TextParagraph {
    enum class Kind {
        title,     // as the cover's title
        heading,   // a section's name
        text,      // body text
        detail,    // small grey text, for long values such as hashes
        signature, // room to sign above a rule, with the text under the rule
    };
    Kind kind = Kind::text;
    std::string text;
    std::string detail; // small grey lines under the text, kept on its page (text only)
};

// A document of paragraphs with the chrome of an export's pages (header, "Page N of M", Bates
// labels counting from options.batesStart); options.coverPage is ignored. Throws Cancelled when
// stopped, Failed when the PDF could not be made.
Result renderParagraphs(const std::vector<TextParagraph>& paragraphs, const ExportOptions& options,
                        const ExportStrings& strings, std::stop_token stop = {});

} // namespace scrivly::PDFExport
