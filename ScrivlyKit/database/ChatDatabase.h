#pragma once

#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Message.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace scrivly {

// The file on this computer that an attachment's stored file name stands for (nothing for no
// name). Called while a query runs, on its thread.
using AttachmentResolver =
    std::function<std::optional<std::string>(const std::optional<std::string>& stored)>;

// An open, checked Messages database, read-only. Copes with older schemas by probing the optional
// columns of table message once and selecting NULL where one is missing. Every public query holds
// the database's lock for its whole run, so one instance may be shared between threads.
class ChatDatabase {
public:
    // Opens path read-only (immutable for a private copy nothing else touches; a plain read-only
    // open otherwise) and checks that it holds the Messages tables. resolve turns stored
    // attachment names into files. Throws SQLiteError: open when the file cannot be opened, query
    // when it is not a Messages database or cannot be read.
    ChatDatabase(std::string path, AttachmentResolver resolve, bool immutable);
    // The same for a Mac's database, where a stored "~/" stands for the home folder.
    ChatDatabase(std::string path, const std::string& home, bool immutable);
    ChatDatabase(const ChatDatabase&) = delete;
    ChatDatabase& operator=(const ChatDatabase&) = delete;

    // How much chats() learns of each chat's messages.
    enum class Counting {
        exact,   // the number of ordinary messages and the newest one's date
        presence // only whether there is one: messageCount is 0 or 1 and lastDate stays unset
    };

    // Every chat with its members, the number of its ordinary messages (reactions and other item
    // types not counted) and the newest one's date, in the database's row order. Counting::presence
    // stops at each chat's first message instead of reading them all: enough to find a
    // conversation. Throws SQLiteError.
    std::vector<Chat> chats(Counting counting = Counting::exact);

    // The messages of the given chats, reactions included and retracted ones left out, ordered by
    // date then row id. A message in two of the chats comes once per chat, each time carrying that
    // chat's id. Throws SQLiteError.
    std::vector<Message> messages(const std::vector<std::int64_t>& chatIDs);

    const std::string& url() const { return m_url; }
    // The columns table message has; optional ones missing from it read as NULL.
    const std::set<std::string>& messageColumns() const { return m_messageColumns; }
    // Older databases have no chat_handle_join; members then come from the senders of messages.
    bool hasChatHandleJoin() const { return m_hasChatHandleJoin; }

private:
    // "m." + column when table message has it, else "NULL".
    std::string optionalColumn(const std::string& column) const;
    // The condition that keeps ordinary messages: "m.item_type = 0", or "1" without the column.
    std::string itemTypeCondition() const;

    std::mutex m_lock;
    std::string m_url;
    AttachmentResolver m_resolve;
    SQLiteConnection m_connection;
    std::set<std::string> m_messageColumns;
    bool m_hasChatHandleJoin = false;
};

} // namespace scrivly
