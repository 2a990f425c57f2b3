#pragma once

#include "Scrivly/model/DefaultPlatform.h"

#include <QPointer>
#include <QWidget>

namespace scrivly {

// The platform for the desktop application: Qt's save panel and file choosers (for the address
// books that give names), the desktop's opener for addresses and folders, and the application's
// own language for exported dates and times.
class DesktopPlatform : public DefaultPlatform {
public:
    using DefaultPlatform::DefaultPlatform;

    // Save panels open over the active window, or over window when none is active.
    void setWindow(QWidget* window) { m_window = window; }

    std::string locale() const override;
    std::optional<QString> saveDestination(const QString& suggestedName, ExportKind kind) override;
    void openUrl(const QString& url) override;
    void revealFile(const QString& path) override;

protected:
    // vCard files or a folder; the signed-in user's macOS address book first when there is one.
    std::optional<QStringList> chooseContactsSources() override;

private:
    QWidget* dialogParent() const;

    QPointer<QWidget> m_window;
};

} // namespace scrivly
