#pragma once

#include "FakePlatform.h"
#include "Scrivly/model/AppModel.h"

#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace scrivly {

// Readable values in QCOMPARE failures.
char* toString(const AppSettings& settings);

} // namespace scrivly

namespace scrivly::testing {

// Generous: the sample draws and encodes pictures, and sanitizers slow everything.
constexpr int kWait = 60000;

// The instant of a wall-clock time in an IANA zone.
Date localDate(int year, int month, int day, int hour, int minute, int second,
               const std::string& zone = "America/New_York");

struct TestMessage {
    std::string text;
    Date date;
    bool fromMe = false;
    std::optional<std::string> attachment = {}; // its file as stored, such as "~/Library/…"
};

// A one-to-one chat with one person.
struct TestChat {
    std::string address;
    std::vector<TestMessage> messages;
    std::optional<std::string> displayName = {};
    std::string service = "iMessage";
};

// Writes a small Messages database at path (replacing it, making its folder): only the tables and
// columns the reader needs.
void writeHistory(const QString& path, const std::vector<TestChat>& chats);

// A model over a fake platform whose folders lie in a fresh temporary folder, with settings in an
// INI file there. Onboarding is marked done, so no sheet is open at start.
class Harness {
    QTemporaryDir m_dir; // first, so that it outlives everything kept in it

public:
    Harness();

    QString path(const QString& name) const { return m_dir.path() + QLatin1Char('/') + name; }
    // Where the model looks for the user's own history.
    QString standardDatabase() const;
    // Makes the model on first use; it reads nothing until start().
    AppModel& model();
    // Waits for the list, selects the conversation with that title and waits for its transcript.
    bool open(const std::string& title);

    FakePlatform platform;
    std::unique_ptr<QSettings> store;

private:
    std::unique_ptr<AppModel> m_model;
};

} // namespace scrivly::testing

#define SCRIVLY_WAIT_FOR_PHASE(model, expected)                                                    \
    QTRY_COMPARE_WITH_TIMEOUT((model).phase(), expected, scrivly::testing::kWait)
