#include "Scrivly/screens/Symbols.h"

#include <QApplication>
#include <QStyle>

#include <array>

namespace scrivly::Symbols {

namespace {

struct Mapping {
    const char* symbol;
    std::array<const char*, 3> themeNames; // tried in order
    QStyle::StandardPixmap fallback;
};

// Full-colour theme names come first: they read better at the larger sizes the screens use.
constexpr std::array kMappings{
    Mapping{"person.3.fill",
            {"system-users", "system-users-symbolic", nullptr},
            QStyle::SP_DirHomeIcon},
    Mapping{"person.crop.circle.fill",
            {"avatar-default", "avatar-default-symbolic", nullptr},
            QStyle::SP_DirHomeIcon},
    Mapping{"person.2", {"system-users", "system-users-symbolic", nullptr}, QStyle::SP_DirHomeIcon},
    Mapping{"person.text.rectangle",
            {"x-office-address-book", "contact-new", "avatar-default"},
            QStyle::SP_FileDialogContentsView},
    Mapping{"bubble.left.and.bubble.right",
            {"mail-message-new", "internet-chat", nullptr},
            QStyle::SP_MessageBoxInformation},
    Mapping{"bubble.left.and.exclamationmark.bubble.right",
            {"dialog-question", "mail-message-new", nullptr},
            QStyle::SP_MessageBoxQuestion},
    Mapping{"exclamationmark.triangle",
            {"dialog-warning", nullptr, nullptr},
            QStyle::SP_MessageBoxWarning},
    Mapping{"calendar.badge.exclamationmark",
            {"x-office-calendar", "appointment-new", nullptr},
            QStyle::SP_MessageBoxInformation},
    Mapping{"square.and.arrow.up",
            {"document-send", "document-export", "document-save"},
            QStyle::SP_DialogSaveButton},
    Mapping{"arrow.clockwise", {"view-refresh", nullptr, nullptr}, QStyle::SP_BrowserReload},
    Mapping{"doc.text.magnifyingglass",
            {"document-print-preview", "edit-find", nullptr},
            QStyle::SP_FileDialogContentsView},
    // A missing attachment. A Mac (no icon theme) keeps the download arrow of a file waiting in
    // iCloud; where a theme draws it, nothing can fetch the file, so it shows a missing picture.
    Mapping{"icloud.and.arrow.down",
            {"image-missing", "dialog-warning", nullptr},
            QStyle::SP_ArrowDown},
    Mapping{"paperclip", {"mail-attachment", nullptr, nullptr}, QStyle::SP_FileIcon},
    Mapping{"photo", {"image-x-generic", nullptr, nullptr}, QStyle::SP_FileIcon},
    Mapping{"checkmark.circle.fill",
            {"emblem-ok-symbolic", "emblem-default", "dialog-ok"},
            QStyle::SP_DialogApplyButton},
    Mapping{"lock.shield",
            {"changes-prevent", "security-high", "system-lock-screen"},
            QStyle::SP_VistaShield},
    Mapping{"doc.richtext",
            {"x-office-document", "emblem-documents", "text-x-generic"},
            QStyle::SP_FileIcon},
    Mapping{"play.circle", {"media-playback-start", nullptr, nullptr}, QStyle::SP_MediaPlay},
    Mapping{"questionmark.circle",
            {"help-browser", "dialog-question", nullptr},
            QStyle::SP_MessageBoxQuestion},
    Mapping{"envelope", {"mail-unread", "mail-send", nullptr}, QStyle::SP_FileIcon},
    Mapping{"folder", {"folder-open", "folder", nullptr}, QStyle::SP_DirOpenIcon},
    Mapping{"gear",
            {"preferences-system", "emblem-system", nullptr},
            QStyle::SP_FileDialogDetailedView},
    Mapping{"sparkles", {"face-smile", nullptr, nullptr}, QStyle::SP_DialogYesButton},
};

} // namespace

QIcon icon(const QString& symbol) {
    for (const Mapping& mapping : kMappings) {
        if (symbol != QLatin1String(mapping.symbol)) {
            continue;
        }
        for (const char* name : mapping.themeNames) {
            if (name && QIcon::hasThemeIcon(QLatin1String(name))) {
                return QIcon::fromTheme(QLatin1String(name));
            }
        }
        return QApplication::style()->standardIcon(mapping.fallback);
    }
    return appIcon();
}

QIcon appIcon() {
    return QIcon(QStringLiteral(":/scrivly/scrivly.svg"));
}

void useFallbackTheme() {
    if (!QIcon::hasThemeIcon(QStringLiteral("view-refresh"))) {
        QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
        if (!QIcon::hasThemeIcon(QStringLiteral("view-refresh"))) {
            QIcon::setThemeName(QStringLiteral("Adwaita"));
        }
    }
}

} // namespace scrivly::Symbols
