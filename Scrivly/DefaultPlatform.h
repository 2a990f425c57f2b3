#pragma once

#include "Scrivly/Platform.h"

namespace scrivly {

// The platform through Qt Core alone: the system clock, zone and locale, the standard folders
// and the real access probe. Without a windowing toolkit it has no save panel (saving is always
// cancelled) and no address book (the request for contacts is answered with a refusal); the
// application overrides those. Addresses and folders are opened with xdg-open.
class DefaultPlatform : public Platform {
public:
    Date now() const override;
    std::string timeZone() const override;
    std::string locale() const override;

    QString homePath() const override;
    QString tempPath() const override;
    QString cachePath() const override;

    DatabaseAccess access(const std::string& path) const override;

    ContactsAuthorization contactsAuthorization() const override;
    void requestContactsAccess(std::function<void()> done) override;
    NameBook loadNames() const override;

    std::optional<QString> saveDestination(const QString& suggestedName, ExportKind kind) override;
    void openUrl(const QString& url) override;
    void revealFile(const QString& path) override;

private:
    ContactsAuthorization m_contacts = ContactsAuthorization::notDetermined;
};

} // namespace scrivly
