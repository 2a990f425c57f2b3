#include "ScrivlyKit/history/History.h"

#include "ScrivlyKit/contacts/ContactSources.h"
#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/MessagesSource.h"
#include "ScrivlyKit/database/PrivateCopy.h"
#include "ScrivlyKit/database/SQLiteError.h"
#include "ScrivlyKit/history/Sources.h"
#include "ScrivlyKit/history/Suggestions.h"
#include "ScrivlyKit/platform/FileDescriptor.h"
#include "ScrivlyKit/text/Unicode.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace scrivly {

namespace {

std::string notFoundText(const std::string& text, std::size_t sameTitle) {
    if (sameTitle == 0) {
        return "No conversation has the id or title “" + text + "”.";
    }
    return std::to_string(sameTitle) + " conversations are titled “" + text +
           "”; name one by its id:";
}

std::optional<DayBounds::Day> parsedDay(const std::optional<std::string>& text) {
    if (!text) {
        return std::nullopt;
    }
    auto day = DayBounds::parseDay(*text);
    if (!day) {
        throw InvalidDay(*text);
    }
    return day;
}

} // namespace

DayRange DayRange::parse(const std::optional<std::string>& first,
                         const std::optional<std::string>& last) {
    return DayRange{parsedDay(first), parsedDay(last)};
}

InvalidDay::InvalidDay(const std::string& text)
    : std::runtime_error("“" + text + "” isn’t a day; write it as YYYY-MM-DD.") {}

ConversationNotFound::ConversationNotFound(const std::string& text,
                                           std::vector<Conversation> sameTitle,
                                           std::vector<Conversation> suggestions)
    : std::runtime_error(notFoundText(text, sameTitle.size())), sameTitle(std::move(sameTitle)),
      suggestions(std::move(suggestions)) {}

const Conversation& findConversation(const std::vector<Conversation>& conversations,
                                     const std::string& text) {
    for (const auto& conversation : conversations) {
        if (conversation.id == text) {
            return conversation;
        }
    }
    const std::string wanted = Unicode::lowercased(Unicode::trimmed(text));
    std::vector<const Conversation*> found;
    for (const auto& conversation : conversations) {
        if (Unicode::lowercased(conversation.title) == wanted) {
            found.push_back(&conversation);
        }
    }
    if (found.size() == 1) {
        return *found.front();
    }
    std::vector<Conversation> sameTitle;
    for (const auto* conversation : found) {
        sameTitle.push_back(*conversation);
    }
    throw ConversationNotFound(text, std::move(sameTitle),
                               found.empty() ? likelyConversations(conversations, text)
                                             : std::vector<Conversation>{});
}

History::History(MessagesReader reader, NameBook names, Settings settings)
    : m_reader(std::move(reader)), m_names(std::move(names)), m_settings(std::move(settings)) {}

void History::addContacts(const std::vector<std::string>& paths) {
    if (paths.empty()) {
        return;
    }
    m_names.merge(ContactSources::load(paths, Sources::snapshotFolder()).names);
}

DatabaseAccess History::access() const {
    return m_reader.source->access();
}

void History::requireReadable() const {
    const std::string& path = m_reader.source->location();
    // O_NONBLOCK: a pipe given as the database must fail, not wait for a writer.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        const int error = errno;
        throw SQLiteError::open(std::string(std::strerror(error)) + " (" + path + ")");
    }
    struct stat status {};
    if (::fstat(file.get(), &status) == 0 && S_ISDIR(status.st_mode)) {
        throw SQLiteError::open(std::string(std::strerror(EISDIR)) + " (" + path + ")");
    }
}

std::vector<Chat> History::chats() const {
    requireReadable();
    return m_reader.chats();
}

std::vector<Message> History::messages(const std::vector<std::int64_t>& chatIDs) const {
    requireReadable();
    return m_reader.messages(chatIDs);
}

std::vector<Conversation> History::conversations(const std::optional<std::string>& search) const {
    requireReadable();
    auto conversations = Conversations::group(m_reader.chats(), m_names);
    if (search) {
        std::erase_if(conversations, [&](const Conversation& conversation) {
            return !Conversations::matches(conversation, *search);
        });
    }
    return conversations;
}

Transcript History::transcript(const std::string& name, const DayRange& days) const {
    requireReadable();
    Conversation conversation;
    std::vector<Message> messages;
    // One copy of the database for both reads; finding the conversation only needs to know
    // which chats have messages, not how many.
    m_reader.read([&](ChatDatabase& database) {
        const auto conversations =
            Conversations::group(database.chats(ChatDatabase::Counting::presence), m_names);
        conversation = findConversation(conversations, name);
        messages = database.messages(conversation.chatIDs);
    });
    const auto bounds = DayBounds::range(days.first, days.last, m_settings.timeZone);
    return Transcript::build(conversation.title, conversation.participants, messages, bounds.from,
                             bounds.to, m_settings.me, m_names);
}

ExportJob::Result History::exportDocument(ExportJob::Format format, const Transcript& transcript,
                                          const ExportOptions& options,
                                          const ExportStrings& strings,
                                          const ExportJob::Progress& progress,
                                          std::stop_token stop) const {
    if (format == ExportJob::Format::csv || !m_reader.folder) {
        return ExportJob::run(format, transcript, options, strings, progress, stop);
    }
    ExportJob::Result result;
    withPrivateFolder(*m_reader.folder, [&](const std::string& folder) {
        Transcript readable = transcript;
        for (auto& entry : readable.entries) {
            for (auto& attachment : entry.attachments) {
                if (attachment.path && !attachment.path->empty()) {
                    attachment.path = m_reader.source->readableCopy(*attachment.path, folder);
                }
            }
        }
        result = ExportJob::run(format, readable, options, strings, progress, stop);
    });
    return result;
}

ExportStrings History::exportStrings() const {
    ExportStrings strings;
    strings.me = m_settings.me;
    strings.sourceText =
        ExportStrings::englishSourceText(m_reader.source->description(), m_settings.locale);
    return strings;
}

ExportOptions History::exportOptions() const {
    ExportOptions options;
    options.timeZone = m_settings.timeZone;
    options.locale = m_settings.locale;
    return options;
}

} // namespace scrivly
