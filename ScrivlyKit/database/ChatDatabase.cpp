#include "ScrivlyKit/database/ChatDatabase.h"

#include "ScrivlyKit/records/AppleTime.h"
#include "ScrivlyKit/text/TypedStream.h"
#include "ScrivlyKit/text/Unicode.h"

#include <unordered_map>

namespace scrivly {
namespace {

using Row = SQLiteConnection::Row;

constexpr std::int64_t kMemoryMapBytes = std::int64_t{1} << 32;

// U+FFFC OBJECT REPLACEMENT CHARACTER, which stands in the text where an attachment was placed.
constexpr std::string_view kObjectReplacement = "\xEF\xBF\xBC";

// Stored text is whatever the writer put there: ill-formed UTF-8 and NUL bytes are replaced by
// U+FFFD, visibly and in place, so that no later step (Pango, a spreadsheet) cuts the text short
// or drops it.
std::optional<std::string> shownText(std::optional<std::string> text) {
    if (!text) {
        return text;
    }
    if (text->find('\0') == std::string::npos && Unicode::isValidUTF8(*text)) {
        return text; // nearly always: no copy
    }
    std::string repaired = Unicode::repairedUTF8(*text);
    for (auto found = repaired.find('\0'); found != std::string::npos;
         found = repaired.find('\0', found)) {
        repaired.replace(found, 1, "\xEF\xBF\xBD");
    }
    return repaired;
}

std::string textOrEmpty(const Row& row, int column) {
    return shownText(row.text(column)).value_or("");
}

std::optional<std::string> displayNameFrom(std::optional<std::string> stored) {
    // Only spaces and tabs make a name blank; a name is otherwise kept exactly as stored.
    if (!stored || stored->find_first_not_of(" \t") == std::string::npos) {
        return std::nullopt;
    }
    return stored;
}

std::string messageText(const Row& row, int textColumn, int bodyColumn) {
    std::string text = textOrEmpty(row, textColumn);
    if (text.empty()) {
        if (const auto body = row.blob(bodyColumn)) {
            text = shownText(TypedStream::plainText(*body)).value_or("");
        }
    }
    for (auto found = text.find(kObjectReplacement); found != std::string::npos;
         found = text.find(kObjectReplacement, found)) {
        text.erase(found, kObjectReplacement.size());
    }
    // Nearly always there is nothing to trim, and so nothing to copy.
    if (const std::string_view kept = Unicode::trimmedView(text); kept.size() != text.size()) {
        text = std::string(kept);
    }
    return text;
}

std::string joinedIDs(const std::vector<std::int64_t>& chatIDs) {
    std::string ids;
    for (const auto id : chatIDs) {
        if (!ids.empty()) {
            ids += ',';
        }
        ids += std::to_string(id);
    }
    return ids;
}

} // namespace

ChatDatabase::ChatDatabase(std::string path, const std::string& home, bool immutable)
    : ChatDatabase(
          std::move(path),
          [home](const std::optional<std::string>& stored) {
              return Attachment::expandedPath(stored, home);
          },
          immutable) {}

ChatDatabase::ChatDatabase(std::string path, AttachmentResolver resolve, bool immutable)
    : m_url(std::move(path)), m_resolve(std::move(resolve)),
      m_connection(m_url, /*readOnly=*/true, immutable) {
    // Reading pages through a memory map skips copying each one out of the file cache; the chat
    // list visits every page of the message table, on large histories many times over. SQLite
    // caps the size at its own limit and falls back to plain reads where mapping fails.
    m_connection.execute("PRAGMA mmap_size=" + std::to_string(kMemoryMapBytes));
    std::set<std::string> tables;
    m_connection.query("SELECT name FROM sqlite_master WHERE type = 'table'", {},
                       [&](const Row& row) {
                           if (auto name = row.text(0)) {
                               tables.insert(std::move(*name));
                           }
                       });
    for (const char* required : {"message", "handle", "chat", "chat_message_join"}) {
        if (!tables.contains(required)) {
            throw SQLiteError::query(std::string("This isn’t a Messages database (no ") + required +
                                     " table).");
        }
    }
    m_messageColumns = m_connection.columns("message");
    m_hasChatHandleJoin = tables.contains("chat_handle_join");
}

std::string ChatDatabase::optionalColumn(const std::string& column) const {
    return m_messageColumns.contains(column) ? "m." + column : "NULL";
}

std::string ChatDatabase::itemTypeCondition() const {
    return m_messageColumns.contains("item_type") ? "m.item_type = 0" : "1";
}

std::vector<Chat> ChatDatabase::chats(Counting counting) {
    const std::lock_guard lock(m_lock);

    std::unordered_map<std::int64_t, Handle> handles;
    m_connection.query("SELECT ROWID, id, service FROM handle", {}, [&](const Row& row) {
        const auto rowID = row.integer(0);
        handles[rowID] = Handle{rowID, textOrEmpty(row, 1), textOrEmpty(row, 2)};
    });

    std::unordered_map<std::int64_t, std::vector<Handle>> members;
    const std::string membersSQL =
        m_hasChatHandleJoin
            ? "SELECT chat_id, handle_id FROM chat_handle_join ORDER BY chat_id, handle_id"
            : "SELECT DISTINCT j.chat_id, m.handle_id FROM chat_message_join j JOIN message m ON "
              "m.ROWID = j.message_id WHERE m.handle_id > 0";
    m_connection.query(membersSQL, {}, [&](const Row& row) {
        if (const auto handle = handles.find(row.integer(1)); handle != handles.end()) {
            members[row.integer(0)].push_back(handle->second);
        }
    });

    std::string countCondition = itemTypeCondition();
    if (m_messageColumns.contains("associated_message_type")) {
        countCondition += " AND m.associated_message_type = 0";
    }
    const std::string columns =
        "SELECT c.ROWID, c.guid, c.chat_identifier, c.display_name, c.service_name, c.style,\n";
    const std::string sql =
        counting == Counting::exact
            ? columns +
                  "       COUNT(m.ROWID), MAX(m.date)\n"
                  "FROM chat c\n"
                  "LEFT JOIN chat_message_join j ON j.chat_id = c.ROWID\n"
                  "LEFT JOIN message m ON m.ROWID = j.message_id AND " +
                  countCondition + "\nGROUP BY c.ROWID"
            : columns +
                  "       EXISTS (SELECT 1 FROM chat_message_join j JOIN message m ON "
                  "m.ROWID = j.message_id WHERE j.chat_id = c.ROWID AND " +
                  countCondition + "), NULL\nFROM chat c ORDER BY c.ROWID";

    std::vector<Chat> chats;
    m_connection.query(sql, {}, [&](const Row& row) {
        Chat chat;
        chat.id = row.integer(0);
        chat.guid = textOrEmpty(row, 1);
        chat.identifier = textOrEmpty(row, 2);
        chat.displayName = displayNameFrom(shownText(row.text(3)));
        chat.service = textOrEmpty(row, 4);
        const bool groupStyle = row.integer(5) == Chat::kGroupStyle;
        chat.messageCount = row.integer(6);
        if (!row.isNull(7)) {
            chat.lastDate = AppleTime::date(row.integer(7));
        }
        if (const auto found = members.find(chat.id); found != members.end()) {
            chat.handles = std::move(found->second);
        }
        // A one-to-one chat whose member rows are missing still has its other party: the
        // identifier is that person's address.
        if (chat.handles.empty() && !groupStyle && !chat.identifier.empty()) {
            chat.handles.push_back(Handle{0, chat.identifier, chat.service});
        }
        chat.isGroup = groupStyle || chat.handles.size() > 1;
        chats.push_back(std::move(chat));
    });
    return chats;
}

std::vector<Message> ChatDatabase::messages(const std::vector<std::int64_t>& chatIDs) {
    const std::lock_guard lock(m_lock);
    if (chatIDs.empty()) {
        return {};
    }
    const std::string ids = joinedIDs(chatIDs);

    const std::string attachmentsSQL =
        "SELECT maj.message_id, a.ROWID, a.filename, a.mime_type, a.uti, a.transfer_name, "
        "a.total_bytes\n"
        "FROM message_attachment_join maj\n"
        "JOIN attachment a ON a.ROWID = maj.attachment_id\n"
        // Attachments are a few in a hundred messages: looking each up in the conversation's
        // chats is three times faster, for a long conversation, than listing its messages.
        "WHERE EXISTS (SELECT 1 FROM chat_message_join j WHERE j.message_id = maj.message_id "
        "AND j.chat_id IN (" +
        ids + "))\nORDER BY maj.message_id, a.ROWID";
    std::unordered_map<std::int64_t, std::vector<Attachment>> attachments;
    m_connection.query(attachmentsSQL, {}, [&](const Row& row) {
        const auto fileName = row.text(2);
        Attachment attachment;
        attachment.rowID = row.integer(1);
        attachment.path = m_resolve(fileName);
        attachment.name = Attachment::displayName(shownText(row.text(5)), shownText(fileName));
        attachment.mimeType = row.text(3);
        attachment.uti = row.text(4);
        attachment.totalBytes = row.integer(6);
        attachments[row.integer(0)].push_back(std::move(attachment));
    });

    std::unordered_map<std::int64_t, std::string> senders;
    m_connection.query("SELECT ROWID, id FROM handle", {},
                       [&](const Row& row) { senders[row.integer(0)] = textOrEmpty(row, 1); });

    std::string sql = "SELECT m.ROWID, m.guid, m.text, " + optionalColumn("attributedBody");
    sql += ", m.handle_id, m.date, m.is_from_me,\n       ";
    sql += optionalColumn("associated_message_guid") + ", " +
           optionalColumn("associated_message_type");
    sql += ",\n       ";
    sql += optionalColumn("associated_message_emoji") + ", " + optionalColumn("service") +
           ", j.chat_id, " + optionalColumn("date_retracted");
    sql += "\nFROM message m\nJOIN chat_message_join j ON j.message_id = m.ROWID";
    sql += "\nWHERE j.chat_id IN (" + ids + ") AND " + itemTypeCondition();
    sql += "\nORDER BY m.date, m.ROWID";

    std::vector<Message> messages;
    m_connection.query(sql, {}, [&](const Row& row) {
        // An unsent message keeps its row with a retraction date; it must not be shown.
        if (!row.isNull(12) && row.integer(12) != 0) {
            return;
        }
        Message message;
        message.id = row.integer(0);
        message.guid = textOrEmpty(row, 1);
        message.text = messageText(row, 2, 3);
        message.isFromMe = row.integer(6) != 0;
        message.chatID = row.integer(11);
        message.date = AppleTime::date(row.integer(5));
        if (!message.isFromMe) {
            if (const auto sender = senders.find(row.integer(4)); sender != senders.end()) {
                message.sender = sender->second;
            }
        }
        if (const auto found = attachments.find(message.id); found != attachments.end()) {
            message.attachments = found->second;
        }
        message.service = textOrEmpty(row, 10);
        message.reactionTarget = Message::reactionTargetFrom(row.text(7));
        message.reactionType = row.integer(8);
        message.reactionEmoji = shownText(row.text(9));
        messages.push_back(std::move(message));
    });
    return messages;
}

} // namespace scrivly
