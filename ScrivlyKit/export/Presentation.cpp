#include "ScrivlyKit/export/Presentation.h"

#include "ScrivlyKit/conversations/Transcript.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <sys/stat.h>

namespace scrivly::Presentation {

namespace {

std::string asciiLowercased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return result;
}

bool hasPictureExtension(std::string_view name) {
    static constexpr std::array<std::string_view, 9> kExtensions{
        "heic", "heif", "jpg", "jpeg", "png", "gif", "tif", "tiff", "webp"};
    const auto dot = name.rfind('.');
    const auto slash = name.rfind('/');
    if (dot == std::string_view::npos || dot + 1 >= name.size() ||
        (slash != std::string_view::npos && dot < slash)) {
        return false;
    }
    const std::string extension = asciiLowercased(name.substr(dot + 1));
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

std::string span(const std::optional<Date>& first, const std::optional<Date>& last,
                 const Formatting::DateFormatter& format) {
    return (first ? format.format(*first) : std::string("\u2026")) + " \u2013 " +
           (last ? format.format(*last) : std::string("\u2026"));
}

} // namespace

bool isPicture(const Attachment& attachment) {
    static constexpr std::array<std::string_view, 7> kTypes{
        "public.jpeg", "public.png",         "public.heic", "public.heif",
        "public.tiff", "com.compuserve.gif", "public.image"};
    if (attachment.mimeType && asciiLowercased(*attachment.mimeType).starts_with("image/")) {
        return true;
    }
    if (attachment.uti &&
        std::find(kTypes.begin(), kTypes.end(), *attachment.uti) != kTypes.end()) {
        return true;
    }
    return hasPictureExtension(attachment.name) ||
           (attachment.path && hasPictureExtension(*attachment.path));
}

AttachmentShown attachment(const Attachment& attachment) {
    AttachmentShown shown;
    struct stat status {};
    // stat, not open: a pipe in the file's place must not wait for a writer.
    if (!attachment.path || attachment.path->empty() ||
        ::stat(attachment.path->c_str(), &status) != 0) {
        return shown;
    }
    if (S_ISREG(status.st_mode)) {
        shown.kind =
            isPicture(attachment) ? AttachmentShown::Kind::picture : AttachmentShown::Kind::file;
        shown.bytes = static_cast<std::int64_t>(status.st_size);
    } else {
        shown.kind = AttachmentShown::Kind::file;
        shown.bytes = attachment.totalBytes;
    }
    return shown;
}

std::string attachmentLine(const Attachment& attachment, const AttachmentShown& shown,
                           const ExportStrings& strings, const std::string& locale) {
    if (shown.kind == AttachmentShown::Kind::missing) {
        return strings.attachmentMissing(attachment.name);
    }
    return strings.attachmentLine(attachment.name, Formatting::byteCount(shown.bytes, locale));
}

DateRange dateRange(const Transcript& transcript, const ExportStrings& strings,
                    const Formatting::DateFormatter& shortDate) {
    DateRange result;
    const bool ranged = transcript.from || transcript.to;
    result.range = ranged ? span(transcript.from, transcript.to, shortDate) : strings.allDates;
    const auto first = transcript.firstDate();
    const auto last = transcript.lastDate();
    if (!ranged || !first || !last || !strings.includedDates) {
        return result;
    }
    const std::string firstDay = shortDate.format(*first);
    const std::string lastDay = shortDate.format(*last);
    // Narrower when it starts or ends on another day than the range, or the range is open on one
    // side (then the span is what tells where the messages stop).
    const bool narrower = !transcript.from || !transcript.to ||
                          firstDay != shortDate.format(*transcript.from) ||
                          lastDay != shortDate.format(*transcript.to);
    if (narrower) {
        result.included =
            strings.includedDates(firstDay == lastDay ? firstDay : firstDay + " \u2013 " + lastDay);
    }
    return result;
}

} // namespace scrivly::Presentation
