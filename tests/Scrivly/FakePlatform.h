#pragma once

#include "Scrivly/model/Platform.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace scrivly::testing {

// A platform whose clock, folders, answers and desktop the test sets, recording what it was
// asked. Set fields before the model uses them: loadNames reads book from a worker thread.
class FakePlatform : public Platform {
public:
    Date clock = Date::fromUnixSeconds(1710936000); // 2024-03-20 12:00 UTC
    std::string zone = "America/New_York";
    QString home;
    QString temp;
    QString cache;
    std::optional<DatabaseAccess> accessAnswer; // nothing: probe the file for real
    ContactsAuthorization authorization = ContactsAuthorization::notDetermined;
    ContactsAuthorization authorizationAfterRequest = ContactsAuthorization::authorized;
    NameBook book;
    std::optional<QString> destination; // what the save panel answers

    QStringList suggestedNames;
    std::vector<ExportKind> savedKinds;
    QStringList openedUrls;
    QStringList revealedFiles;

    Date now() const override { return clock; }
    std::string timeZone() const override { return zone; }
    std::string locale() const override { return "en_US"; }
    QString homePath() const override { return home; }
    QString tempPath() const override { return temp; }
    QString cachePath() const override { return cache; }
    DatabaseAccess access(const MessagesReader& reader) const override {
        return accessAnswer ? *accessAnswer : Platform::access(reader);
    }
    ContactsAuthorization contactsAuthorization() const override { return authorization; }
    void requestContactsAccess(std::function<void()> done) override {
        authorization = authorizationAfterRequest;
        done();
    }
    NameBook loadNames() const override { return book; }
    std::optional<QString> saveDestination(const QString& suggestedName, ExportKind kind) override {
        suggestedNames.append(suggestedName);
        savedKinds.push_back(kind);
        return destination;
    }
    void openUrl(const QString& url) override { openedUrls.append(url); }
    void revealFile(const QString& path) override { revealedFiles.append(path); }
};

} // namespace scrivly::testing
