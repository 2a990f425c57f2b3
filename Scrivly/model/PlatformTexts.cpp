#include "Scrivly/model/PlatformTexts.h"

#include <QCoreApplication>

namespace scrivly::PlatformTexts {

namespace {

// A text as lupdate finds it; the comment tells apart two tables' texts with equal words.
struct Text {
    const char* source;
    const char* comment;
};

struct Table {
    Text ownHistorySource; // no source: named by its file
    Text attachmentMissing;
    Text attachmentMissingShort;
    Text showInFolder;
    Text accessIntro;
    Text fileMenu;
    Text noHistoryTitle;
    Text noHistoryText;
    Text noConversations;
    Text welcomePrivacy;
    Text accessPrivacy;
    Text aboutPrivacy;
    Text helpGettingStarted;
    Text helpMissingMessages;
    Text helpMissingPhotos;
};

// The design's words, for the signed-in user's own history on a Mac.
constexpr Table kMac{
    .ownHistorySource = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "The Messages history on this Mac, read by Scrivly. Scrivly lays the messages out; it "
        "doesn’t change their wording.",
        ""),
    .attachmentMissing =
        QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "Attachment not on this Mac: %1", ""),
    .attachmentMissingShort =
        QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "Not on this Mac: %1", ""),
    .showInFolder = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "Show in Finder", ""),
    .accessIntro = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "macOS keeps Messages private until you allow an app. It takes three steps.", ""),
    .fileMenu = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "&File", "the macOS menu"),
    .noHistoryTitle =
        QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "No Messages history on this Mac", ""),
    .noHistoryText = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Open Messages and sign in, or turn on Messages in iCloud (Messages › Settings › "
        "iMessage) so your conversations download to this Mac. Then check again.",
        ""),
    .noConversations = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts",
                                          "Messages on this Mac has no conversations yet.", ""),
    .welcomePrivacy = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Scrivly reads a copy of your Messages history on this Mac. Nothing is uploaded, and "
        "your messages are never changed.",
        ""),
    .accessPrivacy = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Everything stays on this Mac. Your messages are never uploaded or sent anywhere.", ""),
    .aboutPrivacy = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts",
                                       "Your messages stay on this Mac. Questions: %1", ""),
    .helpGettingStarted = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "The first time, Scrivly asks for Full Disk Access: macOS keeps Messages private until "
        "you allow an app. Choose Open Full Disk Access Settings, turn Scrivly on, and come back. "
        "If macOS offers to quit and reopen Scrivly, choose Quit & Reopen.",
        ""),
    .helpMissingMessages = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Scrivly reads the Messages history on this Mac. If a conversation or older messages are "
        "missing, turn on Messages in iCloud (Messages › Settings › iMessage) and let it "
        "download, then choose File › Reload Messages (%1).",
        ""),
    .helpMissingPhotos = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Photos that Messages keeps only in iCloud show as “not on this Mac”. Open the "
        "conversation in Messages to download them, then reload.",
        ""),
};

// Elsewhere the history is a copy brought from a Mac, or an iPhone backup: nothing here is "this
// Mac", and there is no Finder or Full Disk Access.
constexpr Table kElsewhere{
    .ownHistorySource = {nullptr, nullptr},
    .attachmentMissing = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts",
                                            "Attachment not found on this computer: %1", ""),
    .attachmentMissingShort =
        QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "Not found on this computer: %1", ""),
    .showInFolder = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "Show in Folder", ""),
    .accessIntro = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Your user account isn’t allowed to read this Messages database. Make the file and the "
        "folders above it readable to you, or copy it into a folder of your own and open the "
        "copy, then check again.",
        ""),
    .fileMenu = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "&File", "the menu elsewhere"),
    .noHistoryTitle =
        QT_TRANSLATE_NOOP3("scrivly::PlatformTexts", "No Messages history to read", ""),
    .noHistoryText = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Scrivly reads a Messages history copied from a Mac (chat.db with its Attachments "
        "folder, from Library/Messages) or an iPhone backup. Open one, or try the sample history.",
        ""),
    .noConversations = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts",
                                          "This Messages history has no conversations yet.", ""),
    .welcomePrivacy = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Scrivly reads a copy of your Messages history on this computer. Nothing is uploaded, "
        "and your messages are never changed.",
        ""),
    .accessPrivacy = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Everything stays on this computer. Your messages are never uploaded or sent anywhere.",
        ""),
    .aboutPrivacy = QT_TRANSLATE_NOOP3("scrivly::PlatformTexts",
                                       "Your messages stay on this computer. Questions: %1", ""),
    .helpGettingStarted = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Scrivly reads a Messages history copied from a Mac, or an iPhone backup. Copy the "
        "Library/Messages folder from the Mac (chat.db and its Attachments folder) and choose "
        "File › Open Messages Database…, or choose File › Open iPhone Backup… for a backup made "
        "with Finder or iTunes. Choose Try the Sample History to see how it works without either.",
        ""),
    .helpMissingMessages = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Scrivly reads the database or backup as it was when it was copied. If a conversation or "
        "older messages are missing, let Messages download them on the Mac or iPhone first "
        "(Messages in iCloud), copy the database or make the backup again, then choose File › "
        "Reload Messages (%1).",
        ""),
    .helpMissingPhotos = QT_TRANSLATE_NOOP3(
        "scrivly::PlatformTexts",
        "Photos missing from the copy show as “not found on this computer”. Copy the Attachments "
        "folder with chat.db and keep it beside it, or show Scrivly where it is with File › "
        "Choose Attachments Folder… A backup holds only the photos the phone had downloaded.",
        ""),
};

#ifdef __APPLE__
constexpr bool kOnMac = true;
#else
constexpr bool kOnMac = false;
#endif

// Both tables are compiled everywhere, so a build checks the other platform's too.
const Table& table() {
    return kOnMac ? kMac : kElsewhere;
}

QString translated(const Text& text) {
    return QCoreApplication::translate("scrivly::PlatformTexts", text.source,
                                       *text.comment != '\0' ? text.comment : nullptr);
}

} // namespace

std::optional<QString> ownHistorySource() {
    if (table().ownHistorySource.source == nullptr) {
        return std::nullopt;
    }
    return translated(table().ownHistorySource);
}

QString attachmentMissing() {
    return translated(table().attachmentMissing);
}

QString attachmentMissingShort() {
    return translated(table().attachmentMissingShort);
}

QString showInFolder() {
    return translated(table().showInFolder);
}

QString accessIntro() {
    return translated(table().accessIntro);
}

QString fileMenu() {
    return translated(table().fileMenu);
}

QString noHistoryTitle() {
    return translated(table().noHistoryTitle);
}

QString noHistoryText() {
    return translated(table().noHistoryText);
}

QString noConversations() {
    return translated(table().noConversations);
}

QString welcomePrivacy() {
    return translated(table().welcomePrivacy);
}

QString accessPrivacy() {
    return translated(table().accessPrivacy);
}

QString aboutPrivacy() {
    return translated(table().aboutPrivacy);
}

QString helpGettingStarted() {
    return translated(table().helpGettingStarted);
}

QString helpMissingMessages() {
    return translated(table().helpMissingMessages);
}

QString helpMissingPhotos() {
    return translated(table().helpMissingPhotos);
}

} // namespace scrivly::PlatformTexts
