#include "cli/Commands.h"

#include "cli/Errors.h"
#include "cli/HumanOutput.h"
#include "cli/Interrupts.h"
#include "cli/JsonOutput.h"
#include "cli/OutputFile.h"
#include "cli/ProgressBar.h"
#include "cli/Session.h"

#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/DatabaseAccess.h"
#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/export/ExportStrings.h"
#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/pdf/PDFExport.h"
#include "ScrivlyKit/sample/SampleDatabase.h"
#include "ScrivlyKit/text/Unicode.h"

#include <filesystem>
#include <iostream>
#include <set>
#include <unistd.h>

namespace scrivly::cli {

namespace {

namespace fs = std::filesystem;

HumanOutput humanOutput(const Session& session) {
    return HumanOutput(std::cout, session.timeZone(), session.locale(), wantsStyle(STDOUT_FILENO));
}

void listChats(const Invocation& invocation, const Session& session) {
    session.requireReadable();
    const auto chats = session.reader().chats();
    if (invocation.json) {
        std::cout << JsonOutput::chats(chats);
    } else {
        humanOutput(session).chats(chats);
    }
}

void listMessages(const Invocation& invocation, const Session& session) {
    session.requireReadable();
    const auto messages = session.reader().messages(invocation.chatIDs);
    if (invocation.json) {
        std::cout << JsonOutput::messages(messages);
    } else {
        humanOutput(session).messages(messages, session.me());
    }
}

void listConversations(const Invocation& invocation, const Session& session) {
    auto conversations = session.conversations();
    if (invocation.search) {
        std::erase_if(conversations, [&](const Conversation& conversation) {
            return !Conversations::matches(conversation, *invocation.search);
        });
    }
    if (invocation.json) {
        std::cout << JsonOutput::conversations(conversations);
    } else {
        humanOutput(session).conversations(conversations, invocation.search);
    }
}

Transcript buildTranscript(const Invocation& invocation, const Session& session) {
    session.requireReadable();
    Conversation conversation;
    std::vector<Message> messages;
    // One copy of the database for both reads; finding the conversation only needs to know
    // which chats have messages, not how many.
    session.reader().read([&](ChatDatabase& database) {
        const auto conversations =
            Conversations::group(database.chats(ChatDatabase::Counting::presence), session.names());
        conversation = findConversation(conversations, invocation.conversation);
        messages = database.messages(conversation.chatIDs);
    });
    const auto bounds = DayBounds::range(invocation.from, invocation.to, session.timeZone());
    return Transcript::build(conversation.title, conversation.participants, messages, bounds.from,
                             bounds.to, session.me(), session.names());
}

ExportStrings exportStrings(const Session& session) {
    ExportStrings strings;
    strings.me = session.me();
    return strings;
}

void showTranscript(const Invocation& invocation, const Session& session) {
    const auto transcript = buildTranscript(invocation, session);
    if (invocation.json) {
        std::cout << JsonOutput::transcript(transcript);
    } else {
        humanOutput(session).transcript(transcript, exportStrings(session));
    }
}

PDFExport::Result renderPDF(const Transcript& transcript, const ExportOptions& options,
                            const ExportStrings& strings, bool showProgress,
                            Interrupts& interrupts) {
    const bool terminal = ::isatty(STDERR_FILENO) == 1;
    ProgressBar bar(std::cerr, terminal, "Making the PDF");
    PDFExport::Progress progress;
    if (showProgress || terminal) {
        progress = [&bar](double fraction) { bar.update(fraction); };
    }
    // Ctrl-C now cancels the rendering through its stop token instead of ending the process.
    Interrupts::Cancellable cancellable(interrupts);
    try {
        auto result =
            PDFExport::render(transcript, options, strings, progress, cancellable.token());
        if (cancellable.token().stop_requested()) {
            throw PDFExport::Cancelled();
        }
        if (progress) {
            bar.finish();
        }
        return result;
    } catch (...) {
        bar.abandon();
        throw;
    }
}

void exportConversation(const Invocation& invocation, const Session& session,
                        Interrupts& interrupts) {
    const auto transcript = buildTranscript(invocation, session);
    const auto strings = exportStrings(session);
    ExportOptions options;
    options.paper = invocation.paper;
    options.documentTitle = invocation.title;
    options.header = invocation.header;
    options.batesPrefix = invocation.batesPrefix;
    options.batesStart = invocation.batesStart;
    options.coverPage = invocation.coverPage;
    options.includeImages = invocation.includeImages;
    options.timeZone = session.timeZone();
    options.locale = session.locale();

    std::string text;      // CSV and JSON
    PDFExport::Result pdf; // written from where it was made: it can be tens of megabytes
    std::string_view bytes;
    std::string summary;
    switch (invocation.format) {
    case ExportFormat::pdf:
        pdf = renderPDF(transcript, options, strings, invocation.progress, interrupts);
        bytes = {reinterpret_cast<const char*>(pdf.data.data()), pdf.data.size()};
        summary = Formatting::integer(pdf.pageCount, session.locale()) +
                  (pdf.pageCount == 1 ? " page" : " pages");
        break;
    case ExportFormat::csv:
        text = CSVExport::render(transcript, options, strings);
        bytes = text;
        break;
    case ExportFormat::json:
        text = JsonOutput::transcript(transcript);
        bytes = text;
        break;
    }
    if (summary.empty()) {
        const auto count = static_cast<std::int64_t>(transcript.entries.size());
        summary =
            Formatting::integer(count, session.locale()) + (count == 1 ? " message" : " messages");
    }

    writeOutput(invocation.output, bytes);
    if (invocation.output != "-") {
        std::cout << "Wrote " << invocation.output << " (" << summary << ", "
                  << Formatting::byteCount(static_cast<std::int64_t>(bytes.size()),
                                           session.locale())
                  << ")\n";
    }
}

// Writing the sample replaces its folder, so only a new or empty folder, or one that holds an
// earlier sample, is accepted: a mistyped path must never wipe somebody's files.
void checkSampleFolder(const fs::path& folder) {
    std::error_code error;
    if (!fs::exists(folder, error)) {
        return;
    }
    if (!fs::is_directory(folder, error)) {
        throw UsageError(folder.string() + " isn’t a folder.");
    }
    static const std::set<std::string> kSampleEntries{"chat.db", "chat.db-wal", "chat.db-shm",
                                                      "chat.db-journal", "home"};
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (!kSampleEntries.contains(entry.path().filename().string())) {
            throw UsageError(folder.string() +
                             " isn’t empty; choose a new or empty folder for the sample.");
        }
    }
}

void writeSample(const Invocation& invocation) {
    const fs::path folder = fs::absolute(invocation.sampleFolder).lexically_normal();
    checkSampleFolder(folder);
    const auto info = SampleDatabase::create(folder.string(), Date::now());
    HumanOutput(std::cout, DayBounds::systemTimeZone(), systemLocale(), wantsStyle(STDOUT_FILENO))
        .sample(info.database, info.home);
}

} // namespace

void runCommand(const Invocation& invocation, Interrupts& interrupts) {
    if (invocation.command == Command::sample) {
        writeSample(invocation);
        return;
    }
    const Session session(invocation.global, interrupts);
    switch (invocation.command) {
    case Command::access:
        std::cout << toString(access(session.databasePath())) << '\n';
        break;
    case Command::chats:
        listChats(invocation, session);
        break;
    case Command::messages:
        listMessages(invocation, session);
        break;
    case Command::conversations:
        listConversations(invocation, session);
        break;
    case Command::transcript:
        showTranscript(invocation, session);
        break;
    case Command::exportFile:
        exportConversation(invocation, session, interrupts);
        break;
    case Command::sample:
        break;
    }
}

} // namespace scrivly::cli
