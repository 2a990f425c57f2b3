#include "cli/Commands.h"

#include "cli/Errors.h"
#include "cli/HumanOutput.h"
#include "cli/Interrupts.h"
#include "cli/JsonOutput.h"
#include "cli/OutputFile.h"
#include "cli/Password.h"
#include "cli/Produce.h"
#include "cli/ProgressBar.h"
#include "cli/Session.h"

#include "ScrivlyKit/export/Formatting.h"
#include "ScrivlyKit/history/ExportJob.h"
#include "ScrivlyKit/history/History.h"
#include "ScrivlyKit/history/Sources.h"

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
    const auto chats = session.history().chats();
    if (invocation.json) {
        std::cout << JsonOutput::chats(chats);
    } else {
        humanOutput(session).chats(chats);
    }
}

void listMessages(const Invocation& invocation, const Session& session) {
    const auto messages = session.history().messages(invocation.chatIDs);
    if (invocation.json) {
        std::cout << JsonOutput::messages(messages);
    } else {
        humanOutput(session).messages(messages, session.history().settings().me);
    }
}

void listConversations(const Invocation& invocation, const Session& session) {
    const auto conversations = session.history().conversations(invocation.search);
    if (invocation.json) {
        std::cout << JsonOutput::conversations(conversations);
    } else {
        humanOutput(session).conversations(conversations, invocation.search);
    }
}

void showTranscript(const Invocation& invocation, const Session& session) {
    const auto transcript = transcriptOf(session, invocation);
    if (invocation.json) {
        std::cout << JsonOutput::transcript(transcript);
    } else {
        humanOutput(session).transcript(transcript, session.history().exportStrings());
    }
}

ExportJob::Result renderPDF(const History& history, const Transcript& transcript,
                            const ExportOptions& options, const ExportStrings& strings,
                            bool showProgress, Interrupts& interrupts) {
    const bool terminal = ::isatty(STDERR_FILENO) == 1;
    ProgressBar bar(std::cerr, terminal, "Making the PDF");
    ExportJob::Progress progress;
    if (showProgress || terminal) {
        progress = [&bar](double fraction) { bar.update(fraction); };
    }
    // Ctrl-C now cancels the rendering through its stop token instead of ending the process.
    Interrupts::Cancellable cancellable(interrupts);
    try {
        auto result = history.exportDocument(ExportJob::Format::pdf, transcript, options, strings,
                                             progress, cancellable.token());
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
    const auto& history = session.history();
    const auto transcript = transcriptOf(session, invocation);
    const auto strings = history.exportStrings();
    ExportOptions options = history.exportOptions();
    options.paper = invocation.paper;
    options.documentTitle = invocation.title;
    options.header = invocation.header;
    options.batesPrefix = invocation.batesPrefix;
    options.batesStart = invocation.batesStart;
    options.coverPage = invocation.coverPage;
    options.includeImages = invocation.includeImages;

    std::string json;
    ExportJob::Result document; // written from where it was made: it can be tens of megabytes
    std::string_view bytes;
    std::string summary;
    switch (invocation.format) {
    case ExportFormat::pdf:
        document =
            renderPDF(history, transcript, options, strings, invocation.progress, interrupts);
        summary = Formatting::integer(document.pageCount, session.locale()) +
                  (document.pageCount == 1 ? " page" : " pages");
        break;
    case ExportFormat::csv:
        document = history.exportDocument(ExportJob::Format::csv, transcript, options, strings);
        break;
    case ExportFormat::json:
        json = JsonOutput::transcript(transcript);
        break;
    }
    bytes = invocation.format == ExportFormat::json
                ? std::string_view(json)
                : std::string_view(reinterpret_cast<const char*>(document.data.data()),
                                   document.data.size());
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
    const std::set<std::string> sampleEntries{"chat.db",     "chat.db-wal",
                                              "chat.db-shm", "chat.db-journal",
                                              "home",        Sources::sampleBackupName()};
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (!sampleEntries.contains(entry.path().filename().string())) {
            throw UsageError(folder.string() +
                             " isn’t empty; choose a new or empty folder for the sample.");
        }
    }
}

void writeSample(const Invocation& invocation) {
    const fs::path folder = fs::absolute(invocation.sampleFolder).lexically_normal();
    checkSampleFolder(folder);
    HumanOutput output(std::cout, checkedTimeZone(invocation.global.timeZone),
                       checkedLocale(invocation.global.locale), wantsStyle(STDOUT_FILENO));
    if (invocation.asBackup) {
        const auto password = invocation.global.passwordFile
                                  ? std::optional(passwordFromFile(*invocation.global.passwordFile))
                                  : std::nullopt;
        output.sampleBackup(
            Sources::sampleBackup(folder.string(), Date::now(), password, invocation.fastKeys),
            invocation.global.passwordFile);
        return;
    }
    const auto sample = Sources::sample(folder.string(), Date::now());
    output.sample(sample.database, sample.home);
}

void listBackups(const Invocation& invocation) {
    std::vector<std::string> folders;
    for (const auto& folder : invocation.backupFolders) {
        folders.push_back(fs::absolute(folder).lexically_normal().string());
    }
    if (folders.empty()) {
        folders = Sources::usualBackupFolders();
    }
    const auto backups = folders.empty() ? std::vector<BackupInfo>() : Sources::backups(folders);
    if (invocation.json) {
        std::cout << JsonOutput::backups(backups);
        return;
    }
    HumanOutput output(std::cout, checkedTimeZone(invocation.global.timeZone),
                       checkedLocale(invocation.global.locale), wantsStyle(STDOUT_FILENO));
    if (folders.empty()) {
        std::cout << "This system has no usual place for iPhone backups; name the folder that "
                     "holds them: scrivly-cli backups FOLDER\n";
        return;
    }
    output.backups(backups);
}

} // namespace

void runCommand(const Invocation& invocation, Interrupts& interrupts) {
    if (invocation.command == Command::sample) {
        writeSample(invocation);
        return;
    }
    if (invocation.command == Command::backups) {
        listBackups(invocation);
        return;
    }
    const Session session(invocation.global, interrupts);
    switch (invocation.command) {
    case Command::access:
        std::cout << toString(session.history().access()) << '\n';
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
    case Command::produce:
        produce(invocation.produce, session, interrupts);
        break;
    case Command::sample:
    case Command::backups:
        break;
    }
}

} // namespace scrivly::cli
