#include "ScrivlyKit/export/ExportStrings.h"

namespace scrivly {

ExportStrings::ExportStrings()
    : pageOf([](std::int64_t page, std::int64_t count) {
          return "Page " + std::to_string(page) + " of " + std::to_string(count);
      }),
      me("Me"), participants("Participants"), dateRange("Dates"), allDates("All messages"),
      messages("Messages"), attachments("Attachments"), exported("Exported"),
      timeZone("Times shown in"), source("Source"),
      sourceText("The Messages history on this Mac, read by Scrivly. Scrivly lays the messages "
                 "out; it doesn\u2019t change their wording."),
      includedDates([](const std::string& span) { return "Included: " + span; }),
      reactions("Reactions"), reactionName([](const ReactionKind& kind) -> std::string {
          using Case = ReactionKind::Case;
          switch (kind.kind) {
          case Case::emoji:
              return kind.emoji;
          case Case::loved:
              return "Loved";
          case Case::liked:
              return "Liked";
          case Case::disliked:
              return "Disliked";
          case Case::laughed:
              return "Laughed";
          case Case::emphasized:
              return "Emphasized";
          case Case::questioned:
              return "Questioned";
          }
          return kind.emoji;
      }),
      attachmentMissing(
          [](const std::string& name) { return "Attachment not on this Mac: " + name; }),
      attachmentLine([](const std::string& name, const std::string& size) {
          return "Attachment: " + name + " (" + size + ")";
      }),
      csvHeaders{"Date",    "Time", "Timestamp (ISO 8601)", "Sender",
                 "From Me", "Text", "Attachments",          "Reactions"},
      yes("Yes"), no("No") {}

} // namespace scrivly
