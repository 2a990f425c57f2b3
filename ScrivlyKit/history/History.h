#pragma once

#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/database/DatabaseAccess.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/history/ExportJob.h"
#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Message.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace scrivly {

// A day range as the user typed it ("YYYY-MM-DD", either end open). Throws InvalidDay.
struct DayRange {
    std::optional<DayBounds::Day> first;
    std::optional<DayBounds::Day> last;

    static DayRange parse(const std::optional<std::string>& first,
                          const std::optional<std::string>& last);
};

// A typed day that is not a real calendar day; what() names it.
class InvalidDay : public std::runtime_error {
public:
    explicit InvalidDay(const std::string& text);
};

// No conversation, or more than one, answers to the id or title a user gave. what() says which;
// sameTitle lists the conversations that share the title, suggestions the likely ones otherwise.
class ConversationNotFound : public std::runtime_error {
public:
    ConversationNotFound(const std::string& text, std::vector<Conversation> sameTitle,
                         std::vector<Conversation> suggestions);
    std::vector<Conversation> sameTitle;
    std::vector<Conversation> suggestions;
};

// A Messages history and how it is shown: the one way from a source to its conversations, a
// conversation's transcript and its exports, for the command line and the application alike.
// Every read takes a fresh private copy of the database (see MessagesReader). Blocks; safe to
// use from one thread at a time.
class History {
public:
    struct Settings {
        std::string me = "Me"; // the name of the user's own messages
        std::string timeZone;  // IANA zone of day bounds and dates
        std::string locale;    // ICU locale of dates and numbers
    };

    History(MessagesReader reader, NameBook names, Settings settings);

    const MessagesReader& reader() const { return m_reader; }
    const NameBook& names() const { return m_names; }
    const Settings& settings() const { return m_settings; }
    // Names of the address books given; names already known keep their address. Throws
    // ContactsError naming a source that can't be read.
    void addContacts(const std::vector<std::string>& paths);

    DatabaseAccess access() const;
    // Throws SQLiteError::open naming the reason when the database file can't be opened, so that
    // a missing file reads the same with or without the private copy.
    void requireReadable() const;

    // Rows as stored.
    std::vector<Chat> chats() const;
    std::vector<Message> messages(const std::vector<std::int64_t>& chatIDs) const;
    // Grouped and sorted, newest first; with a search text, those it matches (as the list's
    // search field does).
    std::vector<Conversation> conversations(const std::optional<std::string>& search = {}) const;
    // The conversation named by its id, else the only one whose title equals the text ignoring
    // case, and its transcript for the days, read from one private copy. Throws
    // ConversationNotFound.
    Transcript transcript(const std::string& conversation, const DayRange& days) const;

    // Makes a document of the transcript (see ExportJob::run). Attachments whose files the
    // source keeps encrypted are read from copies in a private folder, removed afterwards.
    ExportJob::Result exportDocument(ExportJob::Format format, const Transcript& transcript,
                                     const ExportOptions& options, const ExportStrings& strings,
                                     const ExportJob::Progress& progress = {},
                                     std::stop_token stop = {}) const;

    // The English export texts with the user's name, and options in this history's zone and
    // locale.
    ExportStrings exportStrings() const;
    ExportOptions exportOptions() const;

private:
    MessagesReader m_reader;
    NameBook m_names;
    Settings m_settings;
};

// The conversation the text names: its id exactly, else the only title equal to it ignoring
// case. Throws ConversationNotFound with the look-alikes.
const Conversation& findConversation(const std::vector<Conversation>& conversations,
                                     const std::string& text);

} // namespace scrivly
