#include "cli/JsonOutput.h"

#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/text/Unicode.h"

#include <nlohmann/json.hpp>

namespace scrivly::cli::JsonOutput {

namespace {

// Keeps the fields in the documented order, which is easier to read than sorted keys.
using Json = nlohmann::ordered_json;

Json text(const std::string& value) {
    return Unicode::repairedUTF8(value);
}

Json text(const std::optional<std::string>& value) {
    return value ? text(*value) : Json(nullptr);
}

Json texts(const std::vector<std::string>& values) {
    Json array = Json::array();
    for (const auto& value : values) {
        array.push_back(text(value));
    }
    return array;
}

Json date(const Date& value) {
    return Formatting::iso8601UTCMillis(value);
}

Json date(const std::optional<Date>& value) {
    return value ? date(*value) : Json(nullptr);
}

Json attachments(const std::vector<Attachment>& attachments) {
    Json array = Json::array();
    for (const auto& attachment : attachments) {
        array.push_back({
            {"rowID", attachment.rowID},
            {"path", text(attachment.path)},
            {"name", text(attachment.name)},
            {"mimeType", text(attachment.mimeType)},
            {"uti", text(attachment.uti)},
            {"totalBytes", attachment.totalBytes},
        });
    }
    return array;
}

std::string dumped(const Json& document) {
    return document.dump(2) + "\n";
}

} // namespace

std::string chats(const std::vector<Chat>& chats) {
    Json array = Json::array();
    for (const auto& chat : chats) {
        Json handles = Json::array();
        for (const auto& handle : chat.handles) {
            handles.push_back({
                {"rowID", handle.rowID},
                {"address", text(handle.address)},
                {"service", text(handle.service)},
            });
        }
        array.push_back({
            {"id", chat.id},
            {"guid", text(chat.guid)},
            {"identifier", text(chat.identifier)},
            {"displayName", text(chat.displayName)},
            {"service", text(chat.service)},
            {"isGroup", chat.isGroup},
            {"handles", std::move(handles)},
            {"messageCount", chat.messageCount},
            {"lastDate", date(chat.lastDate)},
        });
    }
    return dumped(array);
}

std::string messages(const std::vector<Message>& messages) {
    Json array = Json::array();
    for (const auto& message : messages) {
        array.push_back({
            {"id", message.id},
            {"guid", text(message.guid)},
            {"chatID", message.chatID},
            {"date", date(message.date)},
            {"isFromMe", message.isFromMe},
            {"sender", text(message.sender)},
            {"text", text(message.text)},
            {"attachments", attachments(message.attachments)},
            {"service", text(message.service)},
            {"reactionTarget", text(message.reactionTarget)},
            {"reactionType", message.reactionType},
            {"reactionEmoji", text(message.reactionEmoji)},
        });
    }
    return dumped(array);
}

std::string conversations(const std::vector<Conversation>& conversations) {
    Json array = Json::array();
    for (const auto& conversation : conversations) {
        array.push_back({
            {"id", text(conversation.id)},
            {"chatIDs", conversation.chatIDs},
            {"title", text(conversation.title)},
            {"isGroup", conversation.isGroup},
            {"participants", texts(conversation.participants)},
            {"addresses", texts(conversation.addresses)},
            {"messageCount", conversation.messageCount},
            {"lastDate", date(conversation.lastDate)},
            {"services", texts(conversation.services)},
            {"detail", text(conversation.detail)},
        });
    }
    return dumped(array);
}

std::string transcript(const Transcript& transcript) {
    Json entries = Json::array();
    for (const auto& entry : transcript.entries) {
        Json reactions = Json::array();
        for (const auto& reaction : entry.reactions) {
            reactions.push_back({
                {"who", text(reaction.who)},
                {"kind", reaction.kind.caseName()},
                {"emoji", reaction.kind.isEmoji() ? text(reaction.kind.emoji) : Json(nullptr)},
                {"isFromMe", reaction.isFromMe},
            });
        }
        entries.push_back({
            {"id", entry.id},
            {"date", date(entry.date)},
            {"sender", text(entry.sender)},
            {"isFromMe", entry.isFromMe},
            {"text", text(entry.text)},
            {"attachments", attachments(entry.attachments)},
            {"reactions", std::move(reactions)},
            {"service", text(entry.service)},
        });
    }
    const Json document = {
        {"title", text(transcript.title)},
        {"participants", texts(transcript.participants)},
        {"from", date(transcript.from)},
        {"to", date(transcript.to)},
        {"totalInRange", transcript.totalInRange},
        {"rangeFirstDate", date(transcript.rangeFirstDate)},
        {"rangeLastDate", date(transcript.rangeLastDate)},
        {"entries", std::move(entries)},
    };
    return dumped(document);
}

std::string backups(const std::vector<BackupInfo>& backups) {
    Json array = Json::array();
    for (const auto& backup : backups) {
        array.push_back({
            {"id", text(backup.id)},
            {"path", text(backup.path)},
            {"deviceName", text(backup.deviceName)},
            {"productType", text(backup.productType)},
            {"productVersion", text(backup.productVersion)},
            {"lastBackupDate", date(backup.lastBackupDate)},
            {"encrypted", backup.encrypted},
            {"complete", backup.complete},
            {"hasMessages", backup.hasMessages},
        });
    }
    return dumped(array);
}

} // namespace scrivly::cli::JsonOutput
