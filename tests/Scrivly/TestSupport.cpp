#include "TestSupport.h"

#include "Scrivly/model/AppSettings.h"
#include "ScrivlyKit/database/SQLiteConnection.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <cmath>

namespace scrivly {

char* toString(const AppSettings& settings) {
    return qstrdup(settings.encoded().constData());
}

} // namespace scrivly

namespace scrivly::testing {

Date localDate(int year, int month, int day, int hour, int minute, int second,
               const std::string& zone) {
    const QDateTime time(QDate(year, month, day), QTime(hour, minute, second),
                         QTimeZone(QByteArray::fromStdString(zone)));
    return Date::fromUnixSeconds(static_cast<double>(time.toSecsSinceEpoch()));
}

void writeHistory(const QString& path, const std::vector<TestChat>& chats) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile::remove(path);
    SQLiteConnection db(path.toStdString(), false, false);
    // Test data need not survive a power cut; syncing every insert costs seconds.
    db.execute("PRAGMA synchronous = OFF;"
               "CREATE TABLE handle (ROWID INTEGER PRIMARY KEY, id TEXT, service TEXT);"
               "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY, guid TEXT, style INTEGER,"
               " chat_identifier TEXT, service_name TEXT, display_name TEXT);"
               "CREATE TABLE message (ROWID INTEGER PRIMARY KEY, guid TEXT, text TEXT,"
               " handle_id INTEGER, service TEXT, date INTEGER, is_from_me INTEGER,"
               " item_type INTEGER DEFAULT 0, associated_message_type INTEGER DEFAULT 0);"
               "CREATE TABLE chat_handle_join (chat_id INTEGER, handle_id INTEGER);"
               "CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER);"
               "CREATE TABLE attachment (ROWID INTEGER PRIMARY KEY, filename TEXT, uti TEXT,"
               " mime_type TEXT, transfer_name TEXT, total_bytes INTEGER);"
               "CREATE TABLE message_attachment_join (message_id INTEGER, attachment_id INTEGER);");
    using Value = SQLiteConnection::Value;
    std::int64_t messageRow = 0;
    for (std::size_t index = 0; index < chats.size(); ++index) {
        const TestChat& chat = chats[index];
        const auto row = static_cast<std::int64_t>(index + 1); // chat and its handle alike
        db.run("INSERT INTO handle VALUES (?, ?, ?)",
               {Value::integer(row), Value::text(chat.address), Value::text(chat.service)});
        db.run("INSERT INTO chat VALUES (?, ?, 45, ?, ?, ?)",
               {Value::integer(row), Value::text(chat.service + ";-;" + chat.address),
                Value::text(chat.address), Value::text(chat.service),
                chat.displayName ? Value::text(*chat.displayName) : Value::null()});
        db.run("INSERT INTO chat_handle_join VALUES (?, ?)",
               {Value::integer(row), Value::integer(row)});
        for (const TestMessage& message : chat.messages) {
            ++messageRow;
            db.run("INSERT INTO message (ROWID, guid, text, handle_id, service, date, is_from_me)"
                   " VALUES (?, ?, ?, ?, ?, ?, ?)",
                   {Value::integer(messageRow), Value::text("guid-" + std::to_string(messageRow)),
                    Value::text(message.text), Value::integer(message.fromMe ? 0 : row),
                    Value::text(chat.service),
                    Value::integer(std::llround(message.date.seconds * 1e9)),
                    Value::integer(message.fromMe)});
            db.run("INSERT INTO chat_message_join VALUES (?, ?)",
                   {Value::integer(row), Value::integer(messageRow)});
            if (message.attachment) {
                db.run("INSERT INTO attachment (ROWID, filename) VALUES (?, ?)",
                       {Value::integer(messageRow), Value::text(*message.attachment)});
                db.run("INSERT INTO message_attachment_join VALUES (?, ?)",
                       {Value::integer(messageRow), Value::integer(messageRow)});
            }
        }
    }
}

Harness::Harness() {
    platform.home = path(QStringLiteral("home"));
    platform.temp = path(QStringLiteral("tmp"));
    platform.cache = path(QStringLiteral("caches"));
    QDir().mkpath(platform.temp);
    store = std::make_unique<QSettings>(path(QStringLiteral("settings.ini")), QSettings::IniFormat);
    AppSettings settings;
    settings.onboardingDone = true;
    AppSettings::save(*store, settings);
}

QString Harness::standardDatabase() const {
    return platform.home + QStringLiteral("/Library/Messages/chat.db");
}

AppModel& Harness::model() {
    if (!m_model) {
        m_model = std::make_unique<AppModel>(platform, *store);
    }
    return *m_model;
}

bool Harness::open(const std::string& title) {
    AppModel& model = this->model();
    if (!QTest::qWaitFor([&] { return model.phase() == AppModel::Phase::ready; }, kWait)) {
        return false;
    }
    for (const Conversation& conversation : model.conversations()) {
        if (conversation.title == title) {
            model.select(conversation.id);
            return QTest::qWaitFor([&] { return model.transcript().has_value(); }, kWait);
        }
    }
    return false;
}

} // namespace scrivly::testing
