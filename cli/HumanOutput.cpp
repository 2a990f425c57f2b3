#include "cli/HumanOutput.h"

#include "cli/Table.h"
#include "cli/TerminalText.h"

#include "ScrivlyKit/export/Presentation.h"
#include "ScrivlyKit/export/ReactionSummary.h"
#include "ScrivlyKit/records/Reaction.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <unistd.h>

namespace scrivly::cli {

namespace {

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
    std::string result;
    for (const auto& part : parts) {
        if (!result.empty()) {
            result += separator;
        }
        result += part;
    }
    return result;
}

// A path the user can paste into a shell.
std::string shellQuoted(const std::string& path) {
    if (path.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                               "/._-+") == std::string::npos) {
        return path;
    }
    std::string quoted = "'";
    for (char c : path) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

// What a reaction row of the raw message list does: "liked", "removed liked", "😀".
std::string reactionDescription(const Message& message) {
    const auto kind = ReactionKind::fromType(message.reactionType, message.reactionEmoji);
    std::string name = kind ? (kind->isEmoji() ? kind->emoji : kind->caseName())
                            : "reaction " + std::to_string(message.reactionType);
    if (message.reactionType >= 3000) {
        name = "removed " + name;
    }
    return "↳ " + name + " on " + message.reactionTarget.value_or("?");
}

} // namespace

bool wantsStyle(int descriptor) {
    const char* noColor = std::getenv("NO_COLOR");
    const char* term = std::getenv("TERM");
    return ::isatty(descriptor) == 1 && (noColor == nullptr || *noColor == '\0') &&
           (term == nullptr || std::strcmp(term, "dumb") != 0);
}

HumanOutput::HumanOutput(std::ostream& out, const std::string& timeZone, const std::string& locale,
                         bool styled)
    : m_out(out), m_timeZone(timeZone), m_locale(locale), m_styled(styled),
      m_shortDate(Formatting::DateFormatter::Style::shortDate, timeZone, locale),
      m_time(Formatting::DateFormatter::Style::time, timeZone, locale),
      m_day(Formatting::DateFormatter::Style::day, timeZone, locale) {}

std::string HumanOutput::dateTime(Date date) const {
    return m_shortDate.format(date) + " " + m_time.format(date);
}

std::string HumanOutput::dateTime(const std::optional<Date>& date) const {
    return date ? dateTime(*date) : std::string("–");
}

std::string HumanOutput::bold(const std::string& text) const {
    return m_styled ? "\x1b[1m" + text + "\x1b[0m" : text;
}

std::string HumanOutput::dim(const std::string& text) const {
    return m_styled ? "\x1b[2m" + text + "\x1b[0m" : text;
}

void HumanOutput::chats(const std::vector<Chat>& chats) {
    if (chats.empty()) {
        m_out << "No chats.\n";
        return;
    }
    Table table({{"ID", Table::Align::right},
                 {"SERVICE"},
                 {"KIND"},
                 {"MESSAGES", Table::Align::right},
                 {"LAST MESSAGE"},
                 {"CHAT"},
                 {"MEMBERS"}});
    for (const auto& chat : chats) {
        std::vector<std::string> members;
        for (const auto& handle : chat.handles) {
            members.push_back(handle.address);
        }
        std::string name = chat.identifier;
        if (chat.displayName) {
            name = "“" + *chat.displayName + "” " + chat.identifier;
        }
        table.add({std::to_string(chat.id), chat.service, chat.isGroup ? "group" : "one-to-one",
                   Formatting::integer(chat.messageCount, m_locale), dateTime(chat.lastDate), name,
                   joined(members, ", ")});
    }
    table.print(m_out, m_styled);
}

void HumanOutput::messages(const std::vector<Message>& messages, const std::string& me) {
    if (messages.empty()) {
        m_out << "No messages.\n";
        return;
    }
    Table table({{"ID", Table::Align::right},
                 {"CHAT", Table::Align::right},
                 {"DATE"},
                 {"SENDER"},
                 {"SERVICE"},
                 {"TEXT"}});
    for (const auto& message : messages) {
        std::string text = message.isReaction() ? reactionDescription(message) : message.text;
        for (const auto& attachment : message.attachments) {
            text += (text.empty() ? "" : "  ") + std::string("📎 ") + attachment.name;
        }
        const std::string sender = message.isFromMe ? me : message.sender.value_or("?");
        table.add({std::to_string(message.id), std::to_string(message.chatID),
                   dateTime(message.date), sender, message.service, text});
    }
    table.print(m_out, m_styled);
}

void HumanOutput::conversations(const std::vector<Conversation>& conversations,
                                const std::optional<std::string>& search) {
    if (conversations.empty()) {
        if (search) {
            m_out << "No conversations match “" << TerminalText::cleaned(*search, false) << "”.\n";
        } else {
            m_out << "No conversations.\n";
        }
        return;
    }
    Table table(
        {{"TITLE"}, {"MESSAGES", Table::Align::right}, {"LAST MESSAGE"}, {"SERVICES"}, {"ID"}});
    for (const auto& conversation : conversations) {
        std::string title = conversation.title;
        if (conversation.detail) {
            title += " (" + *conversation.detail + ")";
        }
        table.add({title, Formatting::integer(conversation.messageCount, m_locale),
                   dateTime(conversation.lastDate), joined(conversation.services, ", "),
                   conversation.id});
    }
    table.print(m_out, m_styled);
}

void HumanOutput::transcript(const Transcript& transcript, const ExportStrings& strings) {
    const auto clean = [](const std::string& text) { return TerminalText::cleaned(text, false); };

    const auto dates = Presentation::dateRange(transcript, strings, m_shortDate);
    std::string range = dates.range;
    if (dates.included) {
        range += " (" + *dates.included + ")";
    }

    m_out << bold(clean(transcript.title)) << '\n';
    if (!transcript.participants.empty()) {
        m_out << strings.participants << ": " << clean(joined(transcript.participants, ", "))
              << '\n';
    }
    m_out << strings.dateRange << ": " << range << '\n';
    m_out << strings.messages << ": "
          << Formatting::integer(static_cast<std::int64_t>(transcript.entries.size()), m_locale)
          << " · " << strings.attachments << ": "
          << Formatting::integer(static_cast<std::int64_t>(transcript.attachmentCount()), m_locale)
          << " · " << strings.timeZone << " " << Formatting::timeZoneName(m_timeZone, m_locale)
          << '\n';

    if (transcript.entries.empty()) {
        m_out << "\nNo messages in these dates.\n";
        return;
    }

    // Each entry is put together in one reused buffer and written at once: a long conversation
    // has hundreds of thousands of them.
    std::string out;
    const auto styled = [this, &out](const char* style, std::string_view text) {
        if (m_styled) {
            out += style;
        }
        out += text;
        if (m_styled) {
            out += "\x1b[0m";
        }
    };
    const auto indented = [&out](std::string_view lines) {
        std::size_t start = 0;
        while (true) {
            const std::size_t end = lines.find('\n', start);
            out += "    ";
            out += lines.substr(start, end - start);
            out += '\n';
            if (end == std::string_view::npos) {
                return;
            }
            start = end + 1;
        }
    };
    std::string previousDay;
    for (const auto& entry : transcript.entries) {
        out.clear();
        std::string day = m_day.format(entry.date);
        if (day != previousDay) {
            out += '\n';
            styled("\x1b[1m", "── " + day + " ──");
            out += '\n';
            previousDay = std::move(day);
        }
        out += '\n';
        styled("\x1b[1m", clean(entry.sender));
        out += "   ";
        styled("\x1b[2m", m_time.format(entry.date));
        out += '\n';

        if (!entry.text.empty()) {
            indented(TerminalText::cleaned(entry.text, true));
        }
        for (const auto& attachment : entry.attachments) {
            const auto shown = Presentation::attachment(attachment);
            indented(clean(Presentation::attachmentLine(attachment, shown, strings, m_locale)));
        }
        if (!entry.reactions.empty()) {
            out += "    ";
            styled("\x1b[2m",
                   strings.reactions + ": " + clean(reactionSummary(entry.reactions, strings)));
            out += '\n';
        }
        m_out.write(out.data(), static_cast<std::streamsize>(out.size()));
    }
}

void HumanOutput::sample(const std::string& database, const std::string& home) {
    m_out << "Database: " << database << '\n';
    m_out << "Home:     " << home << '\n';
    m_out << dim("Read it with: scrivly-cli --database " + shellQuoted(database) + " --home " +
                 shellQuoted(home) + " conversations")
          << '\n';
}

void HumanOutput::sampleBackup(const std::string& folder,
                               const std::optional<std::string>& passwordFile) {
    m_out << "Backup: " << folder << '\n';
    m_out << dim("Read it with: scrivly-cli --backup " + shellQuoted(folder) +
                 (passwordFile ? " --password-file " + shellQuoted(*passwordFile) : "") +
                 " conversations")
          << '\n';
}

void HumanOutput::backups(const std::vector<BackupInfo>& backups) {
    if (backups.empty()) {
        m_out << "No backups.\n";
        return;
    }
    Table table(
        {{"DEVICE"}, {"MODEL"}, {"IOS"}, {"LAST BACKUP"}, {"ENCRYPTED"}, {"MESSAGES"}, {"PATH"}});
    for (const auto& backup : backups) {
        table.add({backup.deviceName, backup.productType, backup.productVersion,
                   dateTime(backup.lastBackupDate) + (backup.complete ? "" : " (unfinished)"),
                   backup.encrypted ? "yes" : "no", backup.hasMessages ? "yes" : "no",
                   backup.path});
    }
    table.print(m_out, m_styled);
}

} // namespace scrivly::cli
