#pragma once

#include "ScrivlyKit/backup/BackupInfo.h"
#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/records/Message.h"

#include <string>
#include <vector>

// The machine-readable forms of what the tool reads, as JSON documents indented by two spaces
// and ended by a line break. Dates are ISO 8601 in UTC with milliseconds; absent values are null;
// text is repaired to valid UTF-8.
namespace scrivly::cli::JsonOutput {

std::string chats(const std::vector<Chat>& chats);
std::string messages(const std::vector<Message>& messages);
std::string conversations(const std::vector<Conversation>& conversations);
std::string transcript(const Transcript& transcript);

// [{id, path, deviceName, productType, productVersion, lastBackupDate, encrypted, complete,
// hasMessages}]
std::string backups(const std::vector<BackupInfo>& backups);

} // namespace scrivly::cli::JsonOutput
