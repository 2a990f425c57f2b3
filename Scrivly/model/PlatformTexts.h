#pragma once

#include <QString>

#include <optional>

// The texts that must be true of the system Scrivly runs on, in the application's language. A Mac
// build reads the signed-in user's own Messages history and keeps the design's words ("this Mac",
// Finder, Full Disk Access, Messages in iCloud); elsewhere Scrivly reads a database copied from a
// Mac or an iPhone backup, and says so in the same tone. Both tables sit side by side in
// PlatformTexts.cpp; every screen and export takes these texts from there.
namespace scrivly::PlatformTexts {

// The cover's Source line for the user's own history, on a Mac; elsewhere nothing, and the
// history is named by its file like any other database.
std::optional<QString> ownHistorySource();
// An export's line for an attachment whose file is missing; %1 is its name.
QString attachmentMissing();
// The transcript's line for the same; %1 is its name.
QString attachmentMissingShort();
// The button that shows a saved export in the file manager.
QString showInFolder();
// The access screen's first line: what keeps the history from being read. On a Mac, the steps
// of Full Disk Access follow it.
QString accessIntro();
QString fileMenu();
QString noHistoryTitle();
QString noHistoryText();
QString noConversations();
QString welcomePrivacy();
QString accessPrivacy();
// %1 is the support address.
QString aboutPrivacy();
// The Help topics: the first paragraph of "Getting started", and the first two of "Missing
// messages or photos" (%1 is the shortcut of Reload Messages).
QString helpGettingStarted();
QString helpMissingMessages();
QString helpMissingPhotos();

} // namespace scrivly::PlatformTexts
