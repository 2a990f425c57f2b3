#include "ScrivlyKit/pdf/PDFLayout.h"

#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/export/Presentation.h"
#include "ScrivlyKit/export/ReactionSummary.h"
#include "ScrivlyKit/pdf/PageGeometry.h"
#include "ScrivlyKit/text/Unicode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace scrivly::pdf {

namespace {

using Kind = PDFExport::Placed::Kind;
using PageGeometry::kMargin;

constexpr double kPictureMaxWidth = 250;
constexpr double kSignatureSpace = 48; // above the rule that a signature goes on
constexpr double kPictureMaxHeight = 280;
// Enough pixels for the printed size at 300 dpi and more.
constexpr PictureQueue::Settings kPictureSettings{.maxPixelSize = 1600, .quality = 0.82};

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    std::string result;
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (index > 0) {
            result += separator;
        }
        result += parts[index];
    }
    return result;
}

} // namespace

Layout::Layout(const ExportOptions& options, const ExportStrings& strings,
               PDFExport::Progress progress, std::stop_token stop, LayoutExtras extras)
    : m_options(options), m_strings(strings), m_page(Paper::size(options.paper)),
      m_progress(std::move(progress)), m_stop(std::move(stop)), m_extras(std::move(extras)),
      m_setter(options.locale, m_extras.keptShapeBytes, m_extras.fontMap) {
    measureChrome();
    m_pages.assign(1, {});
    m_y = textTop();
}

double Layout::textTop() const {
    return PageGeometry::textTop(m_headerRows);
}

double Layout::bottomLimit() const {
    return PageGeometry::bottomLimit(m_page, m_footerRows);
}

void Layout::measureChrome() {
    const TextStyle style{8.5, false, false, kGray};
    const double textWidth = PageGeometry::textWidth(m_page);
    const std::string header = Unicode::trimmed(m_options.header);
    const std::string title = Unicode::trimmed(m_options.documentTitle);
    const auto line = [&](std::string role, const std::string& text, double maxWidth,
                          double baseline, bool atRight) {
        Chrome chrome{std::move(role), m_setter.truncated(text, style, maxWidth),
                      style,           kMargin,
                      baseline,        {}};
        chrome.metrics = m_setter.measureLine(chrome.text, style);
        if (atRight) {
            chrome.x = PageGeometry::rightAligned(m_page, chrome.metrics.width);
        }
        m_headerLines.push_back(std::move(chrome));
    };
    if (header.empty() && title.empty()) {
        m_headerRows = 0;
    } else if (header.empty() || title.empty()) {
        m_headerRows = 1;
        line(header.empty() ? "title" : "header", header.empty() ? title : header, textWidth,
             PageGeometry::headerBaseline(0), false);
    } else {
        const double headerWidth = m_setter.measureLine(header, style).width;
        const double titleWidth = m_setter.measureLine(title, style).width;
        if (textWidth < headerWidth + titleWidth + PageGeometry::kChromeGap) {
            m_headerRows = 2;
            line("header", header, textWidth, PageGeometry::headerBaseline(0), false);
            line("title", title, textWidth, PageGeometry::headerBaseline(1), false);
        } else {
            m_headerRows = 1;
            const double titleShare = std::min(titleWidth, textWidth * 0.5);
            line("header", header, textWidth - titleShare - PageGeometry::kChromeGap,
                 PageGeometry::headerBaseline(0), false);
            line("title", title, textWidth * 0.5, PageGeometry::headerBaseline(0), true);
        }
    }

    // Where the Bates number goes is settled once, from the widest labels any export has.
    if (const auto sample = m_options.batesLabel(9999); sample && m_strings.pageOf) {
        const double pageWidth = m_setter.measureLine(m_strings.pageOf(8888, 8888), style).width;
        const double batesWidth =
            m_setter.measureLine(*sample, TextStyle{9, true, false, kGray}).width;
        const double limit = PageGeometry::rightAligned(m_page, batesWidth);
        if (m_page.width * 0.5 + pageWidth * 0.5 + PageGeometry::kChromeGap <= limit) {
            m_pageAtLeft = false;
        } else if (kMargin + pageWidth + PageGeometry::kChromeGap <= limit) {
            m_pageAtLeft = true;
        } else {
            m_footerRows = 2;
        }
    }
}

std::vector<Chrome> Layout::chrome(std::size_t pageIndex) {
    return chrome(static_cast<std::int64_t>(pageIndex) + 1,
                  static_cast<std::int64_t>(m_pages.size()), m_options.batesStart);
}

std::vector<Chrome> Layout::chrome(std::int64_t page, std::int64_t count, std::int64_t batesStart) {
    std::vector<Chrome> lines = m_headerLines;
    if (m_strings.pageOf) {
        const TextStyle style{8.5, false, false, kGray};
        Chrome number{"page",  m_strings.pageOf(page, count),           style,
                      kMargin, PageGeometry::footerBaseline(m_page, 0), {}};
        number.metrics = m_setter.measureLine(number.text, style);
        if (!m_pageAtLeft) {
            number.x = m_page.width * 0.5 - number.metrics.width * 0.5;
        }
        lines.push_back(std::move(number));
    }
    // The label batesStart would give, from the options' own numbering.
    const std::int64_t shift =
        std::max<std::int64_t>(batesStart, 0) - std::max<std::int64_t>(m_options.batesStart, 0);
    if (auto label = m_options.batesLabel(page + shift)) {
        const TextStyle style{9, true, false, kGray};
        Chrome bates{"bates",
                     std::move(*label),
                     style,
                     0,
                     PageGeometry::footerBaseline(m_page, m_footerRows == 2 ? 1 : 0),
                     {}};
        bates.metrics = m_setter.measureLine(bates.text, style);
        bates.x = PageGeometry::rightAligned(m_page, bates.metrics.width);
        lines.push_back(std::move(bates));
    }
    return lines;
}

void Layout::report(double fraction) {
    const int percent = static_cast<int>(std::floor(fraction * 100));
    if (percent != m_reported) {
        m_reported = percent;
        if (m_progress) {
            m_progress(std::min(fraction, 1.0));
        }
    }
}

void Layout::checkCancelled() const {
    if (m_stop.stop_requested()) {
        throw PDFExport::Cancelled();
    }
}

void Layout::layOut(const Transcript& transcript) {
    report(0);
    if (m_options.includeImages) {
        // Pictures are converted on other threads from here on, in the order they will be needed.
        std::vector<std::string> paths;
        for (const auto& entry : transcript.entries) {
            for (const auto& attachment : entry.attachments) {
                if (attachment.path && !attachment.path->empty() &&
                    Presentation::isPicture(attachment)) {
                    paths.push_back(*attachment.path);
                }
            }
        }
        PictureQueue::Settings settings = kPictureSettings;
        settings.workers = m_extras.pictureWorkers;
        m_pictures.emplace(paths, settings, m_stop);
    }
    if (m_options.coverPage) {
        layOutCover(transcript, {});
    }
    layOutBody(transcript);
    // The cover ends with a page break; with no entries that page stays empty.
    if (m_pages.size() > 1 && m_pages.back().empty()) {
        m_pages.pop_back();
    }
}

void Layout::newPage() {
    checkCancelled();
    m_pages.emplace_back();
    m_y = textTop();
}

ParagraphStyle Layout::paragraphStyle(Alignment alignment, double spacingBefore, double spacing,
                                      double lineSpacing) {
    return m_paragraphs
        .try_emplace(std::make_tuple(alignment, spacingBefore, spacing, lineSpacing),
                     ParagraphStyle{alignment, spacingBefore, spacing, lineSpacing})
        .first->second;
}

const Formatting::DateFormatter& Layout::dayFormat() {
    if (!m_dayFormat) {
        m_dayFormat.emplace(Formatting::DateFormatter::Style::day, m_options.timeZone,
                            m_options.locale);
    }
    return *m_dayFormat;
}

const Formatting::DateFormatter& Layout::timeFormat() {
    if (!m_timeFormat) {
        m_timeFormat.emplace(Formatting::DateFormatter::Style::time, m_options.timeZone,
                             m_options.locale);
    }
    return *m_timeFormat;
}

const Formatting::DateFormatter& Layout::shortDate() {
    if (!m_shortDate) {
        m_shortDate.emplace(Formatting::DateFormatter::Style::shortDate, m_options.timeZone,
                            m_options.locale);
    }
    return *m_shortDate;
}

std::string Layout::dateRangeText(const Transcript& transcript) {
    const auto dates = Presentation::dateRange(transcript, m_strings, shortDate());
    return dates.included ? dates.range + '\n' + *dates.included : dates.range;
}

std::vector<std::vector<PageItem>>
Layout::coverPages(const Transcript& transcript, const std::vector<PDFExport::CoverRow>& rows) {
    std::vector<std::vector<PageItem>> document(1);
    std::swap(document, m_pages);
    const double y = m_y;
    layOutCover(transcript, rows);
    std::swap(document, m_pages);
    m_y = y;
    // The cover ends with a page break.
    document.pop_back();
    return document;
}

void Layout::layOutParagraphs(const std::vector<PDFExport::TextParagraph>& paragraphs) {
    using Kind = PDFExport::TextParagraph::Kind;
    report(0);
    const double width = PageGeometry::textWidth(m_page);
    for (const auto& paragraph : paragraphs) {
        AttributedText text;
        double keep = PageGeometry::kMessageKeep;
        switch (paragraph.kind) {
        case Kind::title:
            text.append(paragraph.text, TextStyle{24, true, false, kInk},
                        paragraphStyle(Alignment::natural, 0, 6, 2));
            break;
        case Kind::heading:
            // A heading at the foot of a page would stand apart from what it names.
            keep = PageGeometry::kDayKeep;
            text.append(paragraph.text, TextStyle{12, true, false, kInk},
                        paragraphStyle(Alignment::natural, 16, 4, 1.5));
            break;
        case Kind::text:
            text.append(paragraph.text, TextStyle{10.5, false, false, kInk},
                        paragraphStyle(Alignment::natural, 2, 0, 1.5));
            if (!paragraph.detail.empty()) {
                text.endParagraph();
                text.append(paragraph.detail, TextStyle{8.5, false, false, kGray},
                            paragraphStyle(Alignment::natural, 1, 0, 1.5));
                // Short enough to be kept whole on one page.
                keep = std::min(PageGeometry::kDayKeep, bottomLimit() - textTop());
            }
            break;
        case Kind::detail:
            text.append(paragraph.text, TextStyle{8.5, false, false, kGray},
                        paragraphStyle(Alignment::natural, 1, 0, 1.5));
            break;
        case Kind::signature:
            // Room to sign, then the rule to sign on.
            keep = kSignatureSpace + PageGeometry::kDayKeep;
            if (bottomLimit() - m_y < keep && !pageIsEmpty()) {
                newPage();
            }
            m_y += kSignatureSpace;
            placeRule(m_y);
            text.append(paragraph.text, TextStyle{8.5, false, false, kGray},
                        paragraphStyle(Alignment::natural, 2, 0, 1.5));
            break;
        }
        placeText(kMargin, width, keep, std::move(text), std::nullopt);
    }
}

void Layout::layOutCover(const Transcript& transcript,
                         const std::vector<PDFExport::CoverRow>& rows) {
    const std::string documentTitle = Unicode::trimmed(m_options.documentTitle);
    AttributedText cover;
    cover.append(documentTitle.empty() ? transcript.title : documentTitle,
                 TextStyle{24, true, false, kInk}, paragraphStyle(Alignment::natural, 0, 0, 2));
    cover.endParagraph();
    if (!documentTitle.empty() && documentTitle != transcript.title) {
        cover.append(transcript.title, TextStyle{14, false, false, kGray},
                     paragraphStyle(Alignment::natural, 4, 0, 1.5));
        cover.endParagraph();
    }

    const TextStyle labelStyle{9.5, true, false, kGray};
    const ParagraphStyle labelParagraph = paragraphStyle(Alignment::natural, 16, 0, 1.5);
    const TextStyle valueStyle{12, false, false, kInk};
    const ParagraphStyle valueParagraph = paragraphStyle(Alignment::natural, 2, 0, 1.5);
    const auto row = [&](const std::string& label, const std::string& value) {
        cover.append(label, labelStyle, labelParagraph);
        cover.endParagraph();
        cover.append(value, valueStyle, valueParagraph);
        cover.endParagraph();
    };
    row(m_strings.participants, joined(transcript.participants, ", "));
    row(m_strings.dateRange, dateRangeText(transcript));
    row(m_strings.messages,
        Formatting::integer(static_cast<std::int64_t>(transcript.entries.size()),
                            m_options.locale));
    row(m_strings.attachments,
        Formatting::integer(static_cast<std::int64_t>(transcript.attachmentCount()),
                            m_options.locale));
    const Formatting::DateFormatter exported(Formatting::DateFormatter::Style::longDateTime,
                                             m_options.timeZone, m_options.locale);
    row(m_strings.exported, exported.format(Date::now()));
    row(m_strings.timeZone, Formatting::timeZoneName(m_options.timeZone, m_options.locale));
    row(m_strings.source, m_strings.sourceText);
    for (const auto& extra : rows) {
        row(extra.label, extra.value);
    }

    m_y = textTop() + PageGeometry::kCoverTop;
    placeText(kMargin, PageGeometry::textWidth(m_page), PageGeometry::kCoverKeep, std::move(cover),
              std::nullopt);
    newPage();
}

void Layout::layOutBody(const Transcript& transcript) {
    const std::size_t count = transcript.entries.size();
    std::optional<std::string> previousDay;
    for (std::size_t index = 0; index < count; ++index) {
        if (index % 100 == 0) {
            checkCancelled();
            report(static_cast<double>(index) / static_cast<double>(count) * 0.5);
        }
        m_entryIndex = index;
        layOutEntry(transcript.entries[index], previousDay);
    }
}

Color Layout::colorOf(const TranscriptEntry& entry) {
    // The screen shows the same colours: both ask the export layer.
    const SenderColor color = m_senderColors.colorOf(entry.sender, entry.isFromMe);
    return {color.red, color.green, color.blue};
}

void Layout::layOutEntry(const TranscriptEntry& entry, std::optional<std::string>& previousDay) {
    std::string day = dayFormat().format(entry.date);
    if (!previousDay || *previousDay != day) {
        if (bottomLimit() - m_y < PageGeometry::kDayKeep && !pageIsEmpty()) {
            newPage();
        }
        if (!pageIsEmpty()) {
            placeRule(m_y + PageGeometry::kDayRuleBelow);
            m_y += PageGeometry::kDayRuleSpace;
        }
        // The spacing before keeps the day clear of the rule above it.
        AttributedText dayLine;
        dayLine.append(day, TextStyle{9.5, true, false, kGray},
                       paragraphStyle(Alignment::center, 6, 0, 1.5));
        placeText(kMargin, PageGeometry::textWidth(m_page), PageGeometry::kDayLineKeep,
                  std::move(dayLine), std::nullopt);
        m_y += PageGeometry::kDayLineSpace;
        previousDay = std::move(day);
    }

    const Color color = colorOf(entry);
    AttributedText block;
    const ParagraphStyle senderParagraph = paragraphStyle(Alignment::natural, 7, 0, 1.5);
    block.append(entry.sender, TextStyle{10, true, false, color}, senderParagraph);
    // The time is isolated so that a right-to-left name cannot reorder its parts ("AM 9:51").
    block.append("   \u2068" + timeFormat().format(entry.date) + "\u2069",
                 TextStyle{8.5, false, false, kGray}, senderParagraph);
    block.endParagraph();
    if (!entry.text.empty()) {
        block.append(entry.text, TextStyle{10.5, false, false, kInk},
                     paragraphStyle(Alignment::natural, 0, 1.5, 1.5));
        block.endParagraph();
    }
    std::vector<Picture> pictures;
    std::vector<NativeParagraph> natives;
    for (std::size_t index = 0; index < entry.attachments.size(); ++index) {
        appendAttachment(entry.attachments[index], index, block, pictures, natives);
    }
    if (!entry.reactions.empty()) {
        block.append(m_strings.reactions + ": " + reactionSummary(entry.reactions, m_strings),
                     TextStyle{8.5, false, false, kGray},
                     paragraphStyle(Alignment::natural, 2, 0, 1.5));
        block.endParagraph();
    }

    if (!pageIsEmpty()) {
        m_y += PageGeometry::kMessageSpace;
    }
    auto items = placeText(PageGeometry::bodyX(), PageGeometry::bodyWidth(m_page),
                           PageGeometry::kMessageKeep, std::move(block), color);
    m_entryPages.push_back(items.empty() ? m_pages.size() - 1 : items.front().first);
    if (!natives.empty() && !items.empty()) {
        const auto& [page, index] = items.front();
        m_nativeBlocks.push_back(
            NativeBlock{m_pages[page][index].text, std::move(items), std::move(natives)});
    }
    for (const Picture& picture : pictures) {
        placePicture(picture, color);
    }
}

void Layout::appendAttachment(const Attachment& attachment, std::size_t index,
                              AttributedText& block, std::vector<Picture>& pictures,
                              std::vector<NativeParagraph>& natives) {
    const auto shown = Presentation::attachment(attachment);
    const auto native =
        m_extras.nativeName ? m_extras.nativeName(m_entryIndex, index) : std::nullopt;
    const auto nativeLine = [&] {
        NativeParagraph line{block.paragraphs().size(), m_entryIndex, index,
                             Formatting::byteCount(shown.bytes, m_options.locale)};
        block.append(m_strings.attachmentLine(*native, line.size), TextStyle{9, false, true, kGray},
                     paragraphStyle(Alignment::natural, 0, 1.5, 1.5));
        block.endParagraph();
        natives.push_back(std::move(line));
    };
    if (shown.kind == Presentation::AttachmentShown::Kind::picture && m_options.includeImages) {
        // Without the queue of layOut (a single entry laid out alone), convert here.
        auto jpeg = m_pictures ? m_pictures->take(*attachment.path)
                               : PictureQueue({}, kPictureSettings, m_stop).take(*attachment.path);
        const auto size = jpeg ? ImageConverter::jpegSize(*jpeg) : std::nullopt;
        if (size && size->first > 0 && size->second > 0) {
            pictures.push_back(Picture{std::move(jpeg), size->first, size->second});
            if (native) {
                nativeLine();
            }
            return;
        }
    }
    if (native) {
        nativeLine();
        return;
    }
    block.append(Presentation::attachmentLine(attachment, shown, m_strings, m_options.locale),
                 TextStyle{9, false, true, kGray}, paragraphStyle(Alignment::natural, 0, 1.5, 1.5));
    block.endParagraph();
}

std::vector<std::pair<std::size_t, std::size_t>> Layout::placeText(double x, double width,
                                                                   double keep, AttributedText text,
                                                                   std::optional<Color> bar) {
    std::vector<std::pair<std::size_t, std::size_t>> placed;
    if (text.empty()) {
        return placed;
    }
    const auto set = std::make_shared<const SetText>(m_setter.set(std::move(text), width));
    if (bottomLimit() - m_y < keep && !pageIsEmpty()) {
        newPage();
    }
    const auto& lines = set->lines;
    std::size_t next = 0;
    while (next < lines.size()) {
        const double space = bottomLimit() - m_y;
        double used = 0;
        std::size_t count = 0;
        while (next + count < lines.size()) {
            const std::size_t index = next + count;
            const double add =
                (count > 0 || index == 0 ? lines[index].spaceAbove : 0) + lines[index].height;
            if (used + add > space) {
                break;
            }
            used += add;
            ++count;
        }
        // A message's sender line alone at the foot of a page would leave its text nameless on
        // the next one: the sender line goes along with it.
        const bool strandedFirstLine = next == 0 && count == 1 && lines.size() > 1;
        if (count == 0 || strandedFirstLine) {
            if (!pageIsEmpty()) {
                newPage();
                continue;
            }
            if (count == 0) {
                // Taller than a whole page: it still has to go somewhere.
                count = 1;
                used = set->height(next, 1);
            }
        }
        PageItem item;
        item.kind = Kind::text;
        item.frame = Rect{x, m_y, width, used};
        item.bar = bar;
        item.text = set;
        item.firstLine = next;
        item.lineCount = count;
        placed.emplace_back(m_pages.size() - 1, m_pages.back().size());
        m_pages.back().push_back(std::move(item));
        m_y += used;
        next += count;
        if (next < lines.size()) {
            newPage();
        }
    }
    return placed;
}

std::vector<NativeLine> Layout::nativeLines() const {
    std::vector<NativeLine> result;
    for (const NativeBlock& block : m_nativeBlocks) {
        for (const NativeParagraph& native : block.natives) {
            // The page of the piece that shows the paragraph's first line.
            std::size_t page = block.items.front().first;
            for (const auto& [pageIndex, itemIndex] : block.items) {
                const PageItem& item = m_pages[pageIndex][itemIndex];
                if (item.lineCount > 0 &&
                    block.text->lines[item.firstLine + item.lineCount - 1].paragraph >=
                        native.paragraph) {
                    page = pageIndex;
                    break;
                }
            }
            result.push_back(NativeLine{native.entry, native.attachment, page});
        }
    }
    return result;
}

bool Layout::renameNatives(
    const std::function<std::string(std::size_t entry, std::size_t attachment)>& name) {
    std::vector<std::shared_ptr<const SetText>> renamed;
    for (const NativeBlock& block : m_nativeBlocks) {
        AttributedText text = block.text->text;
        for (const NativeParagraph& native : block.natives) {
            text.replaceText(
                native.paragraph,
                m_strings.attachmentLine(name(native.entry, native.attachment), native.size));
        }
        auto set =
            std::make_shared<const SetText>(m_setter.set(std::move(text), block.text->width));
        // The pages stay as they are only if every line keeps its paragraph and its height.
        const auto& before = block.text->lines;
        const auto& after = set->lines;
        const bool same =
            before.size() == after.size() &&
            std::equal(before.begin(), before.end(), after.begin(),
                       [](const LineBox& a, const LineBox& b) {
                           return a.paragraph == b.paragraph && a.height == b.height &&
                                  a.spaceAbove == b.spaceAbove && a.ascent == b.ascent;
                       });
        if (!same) {
            return false;
        }
        renamed.push_back(std::move(set));
    }
    for (std::size_t index = 0; index < m_nativeBlocks.size(); ++index) {
        NativeBlock& block = m_nativeBlocks[index];
        block.text = renamed[index];
        for (const auto& [page, item] : block.items) {
            m_pages[page][item].text = block.text;
        }
    }
    return true;
}

void Layout::placePicture(const Picture& picture, Color bar) {
    const double maxWidth = std::min(PageGeometry::bodyWidth(m_page), kPictureMaxWidth);
    const double maxHeight = std::min(bottomLimit() - textTop(), kPictureMaxHeight);
    const double scale = std::min({maxWidth / picture.width, maxHeight / picture.height, 1.0});
    const double width = picture.width * scale;
    const double height = picture.height * scale;
    if (bottomLimit() - m_y < height + PageGeometry::kPictureKeep && !pageIsEmpty()) {
        newPage();
    }
    m_y += PageGeometry::kPictureSpace;
    PageItem item;
    item.kind = Kind::image;
    item.frame = Rect{PageGeometry::bodyX(), m_y, width, height};
    item.bar = bar;
    item.jpeg = picture.jpeg;
    item.pixelWidth = picture.width;
    item.pixelHeight = picture.height;
    m_pages.back().push_back(std::move(item));
    m_y += height;
}

void Layout::placeRule(double y) {
    PageItem item;
    item.kind = Kind::rule;
    item.frame = Rect{kMargin, y, PageGeometry::textWidth(m_page), 0};
    m_pages.back().push_back(std::move(item));
}

} // namespace scrivly::pdf
