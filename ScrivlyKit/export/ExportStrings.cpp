#include "ScrivlyKit/export/ExportStrings.h"

#include "ScrivlyKit/export/Formatting.h"

namespace scrivly {

namespace {

// The texts that must be true of where Scrivly runs: on a Mac reading the user's own history
// they say "this Mac"; elsewhere they name what was read.
struct PlatformTexts {
    const char* missingAttachment;
    bool namesOwnHistory; // the user's own history is "the Messages history on this Mac"
};
#ifdef __APPLE__
constexpr PlatformTexts kPlatformTexts{"Attachment not on this Mac: ", true};
#else
constexpr PlatformTexts kPlatformTexts{"Attachment not found on this computer: ", false};
#endif

constexpr const char* kUnchanged =
    "Scrivly lays the messages out; it doesn\u2019t change their wording.";

std::string folderAndName(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) {
        return path;
    }
    return path.substr(slash + 1) + " in " +
           (slash == 0 ? std::string("/") : path.substr(0, slash));
}

SourceDescription ownHistory() {
    SourceDescription own;
    own.kind = SourceDescription::Kind::userHistory;
    return own;
}

} // namespace

std::string ExportStrings::englishSourceText(const SourceDescription& source,
                                             const std::string& locale) {
    using Kind = SourceDescription::Kind;
    std::string read;
    switch (source.kind) {
    case Kind::userHistory:
        read = kPlatformTexts.namesOwnHistory
                   ? "The Messages history on this Mac"
                   : "The Messages database " + folderAndName(source.path);
        break;
    case Kind::databaseFile:
        read = "The Messages database " + folderAndName(source.path);
        break;
    case Kind::sample:
        read = "The demonstration history";
        break;
    case Kind::backup:
        read = "The iPhone backup of \u201C" + source.deviceName + "\u201D";
        if (!source.productVersion.empty()) {
            read += " (iOS " + source.productVersion + ")";
        }
        if (source.backupDate) {
            read += ", made " +
                    Formatting::DateFormatter(Formatting::DateFormatter::Style::longDateTime, "UTC",
                                              locale)
                        .format(*source.backupDate) +
                    " UTC";
        }
        break;
    }
    return read + ", read by Scrivly. " + kUnchanged;
}

ExportStrings::ExportStrings()
    : pageOf([](std::int64_t page, std::int64_t count) {
          return "Page " + std::to_string(page) + " of " + std::to_string(count);
      }),
      me("Me"), participants("Participants"), dateRange("Dates"), allDates("All messages"),
      messages("Messages"), attachments("Attachments"), exported("Exported"),
      timeZone("Times shown in"), source("Source"),
      sourceText(englishSourceText(ownHistory(), "en_US")),
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
          [](const std::string& name) { return kPlatformTexts.missingAttachment + name; }),
      attachmentLine([](const std::string& name, const std::string& size) {
          return "Attachment: " + name + " (" + size + ")";
      }),
      csvHeaders{"Date",    "Time", "Timestamp (ISO 8601)", "Sender",
                 "From Me", "Text", "Attachments",          "Reactions"},
      yes("Yes"), no("No") {}

} // namespace scrivly
