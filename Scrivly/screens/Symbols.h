#pragma once

#include <QIcon>
#include <QString>

// The symbols the screens name, as icons from the desktop's icon theme, with Qt's standard icons
// (or the application icon) where the theme has none.
namespace scrivly::Symbols {

// An icon for a symbol name such as "person.2" or "square.and.arrow.up"; never null.
QIcon icon(const QString& symbol);

// Scrivly's own icon.
QIcon appIcon();

// Makes themed icons work on desktops that name no theme, by falling back to Adwaita.
void useFallbackTheme();

} // namespace scrivly::Symbols
