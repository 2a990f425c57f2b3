#pragma once

#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/records/Attachment.h"

#include <cstdint>
#include <optional>
#include <string>

namespace scrivly {

struct Transcript;

// How an entry is shown, decided once here so that the PDF, the CSV, the command line and the
// application's transcript only draw the decision.
namespace Presentation {

// A picture by its MIME type ("image/…"), else its type identifier, else the extension of its
// name or stored file (heic, heif, jpg, jpeg, png, gif, tif, tiff, webp).
bool isPicture(const Attachment& attachment);

// Whether the attachment's file is on this computer and what to show for it. Decided from the
// file's status alone: nothing is opened, so a pipe or a device standing in its place never
// blocks.
struct AttachmentShown {
    enum class Kind {
        picture, // a regular file that is a picture (drawn when pictures are included)
        file,    // there, listed by name and size
        missing, // no stored name, or nothing at that path
    };
    Kind kind = Kind::missing;
    // For a regular file its size; for anything else that is there (a bundle folder, a pipe)
    // the size the database recorded.
    std::int64_t bytes = 0;
};
AttachmentShown attachment(const Attachment& attachment);

// The text line for an attachment that is not drawn as a picture: its name and size, or the
// missing-file text.
std::string attachmentLine(const Attachment& attachment, const AttachmentShown& shown,
                           const ExportStrings& strings, const std::string& locale);

// The dates row: the chosen range ("Mar 1, 2024 – Mar 5, 2024", "…" for an open end, or
// strings.allDates without a range), and strings.includedDates of the span the entries cover
// when that span is narrower than the range (one date when it is a single day).
struct DateRange {
    std::string range;
    std::optional<std::string> included;
};
DateRange dateRange(const Transcript& transcript, const ExportStrings& strings,
                    const Formatting::DateFormatter& shortDate);

} // namespace Presentation
} // namespace scrivly
