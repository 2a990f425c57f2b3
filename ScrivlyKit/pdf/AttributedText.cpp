#include "ScrivlyKit/pdf/AttributedText.h"

#include "ScrivlyKit/text/Unicode.h"

namespace scrivly::pdf {

std::string Paragraph::text() const {
    std::string result;
    for (const Run& run : runs) {
        result += run.text;
    }
    return result;
}

void AttributedText::append(std::string_view text, const TextStyle& style,
                            const ParagraphStyle& paragraph) {
    const std::string repaired = Unicode::repairedUTF8(text);
    // U+2029 PARAGRAPH SEPARATOR in UTF-8.
    static constexpr std::string_view kParagraphSeparator = "\xE2\x80\xA9";
    std::string current;
    std::size_t offset = 0;
    while (offset < repaired.size()) {
        const char byte = repaired[offset];
        std::size_t breakLength = 0;
        if (byte == '\n') {
            breakLength = 1;
        } else if (byte == '\r') {
            breakLength = offset + 1 < repaired.size() && repaired[offset + 1] == '\n' ? 2 : 1;
        } else if (repaired.compare(offset, kParagraphSeparator.size(), kParagraphSeparator) == 0) {
            breakLength = kParagraphSeparator.size();
        }
        if (breakLength == 0) {
            // Pango reads a NUL as the end of the text; show it as a replacement character.
            if (byte == '\0') {
                current += "\xEF\xBF\xBD";
            } else {
                current += byte;
            }
            ++offset;
            continue;
        }
        appendRun(std::move(current), style, paragraph);
        current.clear();
        m_open = false;
        offset += breakLength;
    }
    appendRun(std::move(current), style, paragraph);
}

void AttributedText::appendRun(std::string text, const TextStyle& style,
                               const ParagraphStyle& paragraph) {
    if (!m_open) {
        m_paragraphs.push_back(Paragraph{{}, paragraph});
        m_open = true;
    }
    auto& runs = m_paragraphs.back().runs;
    // An empty run still matters when it is the paragraph's only one: it sets an empty line's
    // height.
    if (!text.empty() || runs.empty()) {
        runs.push_back(Run{std::move(text), style});
    }
}

void AttributedText::replaceText(std::size_t paragraph, std::string_view text) {
    std::string repaired = Unicode::repairedUTF8(text);
    for (char& c : repaired) {
        if (c == '\n' || c == '\r' || c == '\0') {
            c = ' ';
        }
    }
    auto& runs = m_paragraphs.at(paragraph).runs;
    const TextStyle style = runs.empty() ? TextStyle{} : runs.front().style;
    runs.assign(1, Run{std::move(repaired), style});
}

} // namespace scrivly::pdf
