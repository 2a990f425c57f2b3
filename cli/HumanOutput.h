#pragma once

#include "ScrivlyKit/backup/BackupInfo.h"
#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Message.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace scrivly::cli {

// The forms of the tool's output meant for people: aligned lists and a readable transcript, with
// dates in the chosen zone and locale. Text from the database is cleaned before it reaches the
// terminal. With styled, titles and names are bold (for a terminal).
class HumanOutput {
public:
    HumanOutput(std::ostream& out, const std::string& timeZone, const std::string& locale,
                bool styled);

    // me names the user in the sender column.
    void chats(const std::vector<Chat>& chats);
    void messages(const std::vector<Message>& messages, const std::string& me);
    // search is the query that narrowed the list, if any.
    void conversations(const std::vector<Conversation>& conversations,
                       const std::optional<std::string>& search);
    void transcript(const Transcript& transcript, const ExportStrings& strings);
    void sample(const std::string& database, const std::string& home);
    void sampleBackup(const std::string& folder, const std::optional<std::string>& passwordFile);
    void backups(const std::vector<BackupInfo>& backups);

private:
    std::string dateTime(Date date) const;
    std::string dateTime(const std::optional<Date>& date) const;
    std::string bold(const std::string& text) const;
    std::string dim(const std::string& text) const;

    std::ostream& m_out;
    std::string m_timeZone;
    std::string m_locale;
    bool m_styled;
    Formatting::DateFormatter m_shortDate;
    Formatting::DateFormatter m_time;
    Formatting::DateFormatter m_day;
};

// Whether output to the descriptor should be styled: a terminal, and NO_COLOR not set.
bool wantsStyle(int descriptor);

} // namespace scrivly::cli
