#include "ScrivlyKit/sample/SampleWriter.h"

#include "ScrivlyKit/database/SQLiteError.h"
#include "ScrivlyKit/records/AppleTime.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/text/TypedStream.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace scrivly::SampleDatabase {

namespace {

using Value = SQLiteConnection::Value;

Value optionalText(const std::optional<std::string>& text) {
    return text ? Value::text(*text) : Value::null();
}

} // namespace

Writer::Writer(SQLiteConnection& db, Date now, std::string attachments, std::string timeZone)
    : m_db(db), m_now(now), m_attachments(std::move(attachments)), m_timeZone(std::move(timeZone)) {
}

std::string Writer::nextGuid() {
    ++m_guidCounter;
    char guid[48];
    std::snprintf(guid, sizeof guid, "5A3F0C2E-0000-4000-8000-%012lld",
                  static_cast<long long>(m_guidCounter));
    return guid;
}

std::int64_t Writer::lastInsertRowID() {
    std::int64_t rowID = 0;
    try {
        m_db.query("SELECT last_insert_rowid()", {},
                   [&rowID](const SQLiteConnection::Row& row) { rowID = row.integer(0); });
    } catch (const SQLiteError&) {
        // The row is written all the same; links to it then point at row 0.
        return 0;
    }
    return rowID;
}

Date Writer::date(int daysAgo, int hour, int minute) const {
    const Date sameTimeThatDay = m_now - static_cast<double>(daysAgo * m_day);
    const Date start =
        DayBounds::startOfDay(DayBounds::dayOf(sameTimeThatDay, m_timeZone), m_timeZone);
    return start + static_cast<double>((hour * 60 + minute) * 60);
}

std::int64_t Writer::handle(const std::string& address, const std::string& service) {
    m_db.run("INSERT INTO handle (id, country, service) VALUES (?, 'us', ?)",
             {Value::text(address), Value::text(service)});
    return lastInsertRowID();
}

std::int64_t Writer::chat(std::int64_t style, const std::string& identifier,
                          const std::string& service, const std::optional<std::string>& displayName,
                          const std::vector<std::int64_t>& handles) {
    const std::string kind = style == Chat::kGroupStyle ? "+" : "-";
    const std::string guid = service + ";" + kind + ";" + identifier;
    m_db.run("INSERT INTO chat (guid, style, chat_identifier, service_name, display_name) VALUES "
             "(?, ?, ?, ?, ?)",
             {Value::text(guid), Value::integer(style), Value::text(identifier),
              Value::text(service), optionalText(displayName)});
    const std::int64_t chatID = lastInsertRowID();
    for (const std::int64_t handleID : handles) {
        m_db.run("INSERT INTO chat_handle_join VALUES (?, ?)",
                 {Value::integer(chatID), Value::integer(handleID)});
    }
    return chatID;
}

std::string Writer::message(std::int64_t chat, std::int64_t handle, bool isFromMe,
                            const std::optional<std::string>& text, bool textOnlyInBody, Date date,
                            const std::string& service, std::int64_t itemType,
                            const std::optional<std::string>& associatedGuid,
                            std::int64_t associatedType,
                            const std::optional<std::string>& associatedEmoji) {
    const std::string guid = nextGuid();
    const std::int64_t timestamp = AppleTime::nanoseconds(date);
    const Value plainText = text && !textOnlyInBody ? Value::text(*text) : Value::null();
    const Value body = text ? Value::blob(TypedStream::archive(*text)) : Value::null();
    m_db.run("INSERT INTO message (guid, text, handle_id, attributedBody, service, date, "
             "date_read, date_delivered,\n"
             "    is_from_me, is_delivered, is_finished, is_read, item_type, "
             "associated_message_guid,\n"
             "    associated_message_type, associated_message_emoji)\n"
             "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 1, 1, 1, ?, ?, ?, ?)",
             {Value::text(guid), plainText, Value::integer(isFromMe ? 0 : handle), body,
              Value::text(service), Value::integer(timestamp), Value::integer(timestamp),
              Value::integer(timestamp), Value::integer(isFromMe ? 1 : 0), Value::integer(itemType),
              optionalText(associatedGuid), Value::integer(associatedType),
              optionalText(associatedEmoji)});
    const std::int64_t messageID = lastInsertRowID();
    m_db.run("INSERT INTO chat_message_join VALUES (?, ?, ?)",
             {Value::integer(chat), Value::integer(messageID), Value::integer(timestamp)});
    return guid;
}

void Writer::reaction(std::int64_t chat, std::int64_t handle, bool isFromMe,
                      const std::string& target, std::int64_t type,
                      const std::optional<std::string>& emoji, Date date) {
    message(chat, handle, isFromMe, std::nullopt, false, date, "iMessage", 0, "p:0/" + target, type,
            emoji);
}

void Writer::attach(const std::string& messageGuid, const std::string& fileName,
                    const FileType& type, const std::string& mimeType,
                    const std::optional<ImageConverter::Image>& image) {
    char subfolder[8];
    std::snprintf(subfolder, sizeof subfolder, "%02lld",
                  static_cast<long long>(m_guidCounter % 100));
    const std::filesystem::path folder = std::filesystem::path(m_attachments) / subfolder;
    std::filesystem::create_directories(folder);

    std::int64_t totalBytes = kMissingFileBytes;
    if (image) {
        const std::string path = (folder / fileName).string();
        const bool written =
            (!type.encoding.empty() && ImageConverter::write(*image, path, type.encoding)) ||
            ImageConverter::write(*image, path, "png");
        std::error_code error;
        const auto size = std::filesystem::file_size(path, error);
        if (written && !error) {
            totalBytes = static_cast<std::int64_t>(size);
        }
    }

    const std::string stored =
        "~/Library/Messages/Attachments/" + std::string(subfolder) + "/" + fileName;
    m_db.run("INSERT INTO attachment (guid, filename, uti, mime_type, transfer_name, total_bytes, "
             "transfer_state) VALUES (?, ?, ?, ?, ?, ?, 5)",
             {Value::text(nextGuid()), Value::text(stored), Value::text(type.identifier),
              Value::text(mimeType), Value::text(fileName), Value::integer(totalBytes)});
    const std::int64_t attachmentID = lastInsertRowID();

    std::int64_t messageID = 0;
    m_db.query("SELECT ROWID FROM message WHERE guid = ?", {Value::text(messageGuid)},
               [&messageID](const SQLiteConnection::Row& row) { messageID = row.integer(0); });
    m_db.run("INSERT INTO message_attachment_join VALUES (?, ?)",
             {Value::integer(messageID), Value::integer(attachmentID)});
    m_db.run("UPDATE message SET cache_has_attachments = 1 WHERE ROWID = ?",
             {Value::integer(messageID)});
}

} // namespace scrivly::SampleDatabase
