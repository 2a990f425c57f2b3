#include "ScrivlyKit/database/MessagesReader.h"

#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/MessagesSource.h"
#include "ScrivlyKit/database/PrivateCopy.h"

#include <string_view>

namespace scrivly {
namespace {

AttachmentResolver resolver(const std::shared_ptr<const MessagesSource>& source) {
    return [source](const std::optional<std::string>& stored) {
        return source->attachmentPath(stored);
    };
}

// Runs operation on the database of one read: the source's file itself when there is no scratch
// folder, else a fresh private copy in a subfolder of its own that is gone when this returns or
// throws.
void withDatabase(const MessagesReader& reader,
                  const std::function<void(ChatDatabase&)>& operation) {
    if (!reader.folder) {
        ChatDatabase database(reader.source->location(), resolver(reader.source),
                              /*immutable=*/false);
        operation(database);
        return;
    }
    withPrivateFolder(*reader.folder, [&](const std::string& folder) {
        ChatDatabase database(reader.source->copyInto(folder), resolver(reader.source),
                              /*immutable=*/true);
        operation(database);
    });
}

} // namespace

MessagesReader MessagesReader::ofDatabase(const std::string& path, const std::string& home,
                                          std::optional<std::string> folder,
                                          SourceDescription::Kind kind,
                                          std::optional<std::string> attachments) {
    return MessagesReader{std::make_shared<DatabaseFile>(path, home, kind, std::move(attachments)),
                          std::move(folder)};
}

std::vector<Chat> MessagesReader::chats() const {
    std::vector<Chat> chats;
    withDatabase(*this, [&](ChatDatabase& database) { chats = database.chats(); });
    return chats;
}

std::vector<Message> MessagesReader::messages(const std::vector<std::int64_t>& chatIDs) const {
    std::vector<Message> messages;
    withDatabase(*this, [&](ChatDatabase& database) { messages = database.messages(chatIDs); });
    return messages;
}

void MessagesReader::check() const {
    withDatabase(*this, [](ChatDatabase&) {});
}

void MessagesReader::read(const std::function<void(ChatDatabase&)>& operation) const {
    withDatabase(*this, operation);
}

std::string defaultDatabasePath(const std::string& home) {
    return home + "/Library/Messages/chat.db";
}

DatabaseFile::DatabaseFile(std::string path, std::string home, SourceDescription::Kind kind,
                           std::optional<std::string> attachments)
    : m_path(std::move(path)), m_home(std::move(home)), m_kind(kind),
      m_attachments(std::move(attachments)) {}

SourceDescription DatabaseFile::description() const {
    SourceDescription description;
    description.kind = m_kind;
    description.path = m_path;
    return description;
}

DatabaseAccess DatabaseFile::access() const {
    return scrivly::access(m_path);
}

std::string DatabaseFile::copyInto(const std::string& into) const {
    return copyDatabase(m_path, into, "chat.db");
}

std::optional<std::string>
DatabaseFile::attachmentPath(const std::optional<std::string>& stored) const {
    // The trailing slash keeps a sibling such as "Attachments2" out.
    static constexpr std::string_view kStoredFolder = "~/Library/Messages/Attachments/";
    if (m_attachments && stored && stored->starts_with(kStoredFolder)) {
        return *m_attachments + '/' + stored->substr(kStoredFolder.size());
    }
    return Attachment::expandedPath(stored, m_home);
}

} // namespace scrivly
