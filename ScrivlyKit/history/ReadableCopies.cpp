#include "ScrivlyKit/history/ReadableCopies.h"

#include "ScrivlyKit/platform/FileSystem.h"

#include <exception>
#include <system_error>

namespace scrivly {

namespace {

const std::string& made(const std::string& scratch) {
    std::error_code ignored;
    FileSystem::createPrivateFolders(scratch, ignored);
    FileSystem::requireOwnerOnlyFolder(scratch);
    return scratch;
}

} // namespace

ReadableCopies::ReadableCopies(std::shared_ptr<const MessagesSource> source,
                               const std::string& scratch)
    : m_source(std::move(source)), m_lease(made(scratch)) {
    FileSystem::createPrivateFolders(m_lease.path());
}

void ReadableCopies::apply(std::vector<Message>& messages) const {
    for (auto& message : messages) {
        for (auto& attachment : message.attachments) {
            if (attachment.path && !attachment.path->empty()) {
                // One damaged file shows as missing rather than hiding the conversation.
                try {
                    attachment.path = m_source->readableCopy(*attachment.path, m_lease.path());
                } catch (const std::exception&) {
                    attachment.path.reset();
                }
            }
        }
    }
}

} // namespace scrivly
