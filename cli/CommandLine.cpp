#include "cli/CommandLine.h"

#include "cli/Errors.h"

#include "ScrivlyKit/text/Unicode.h"

#include <CLI/CLI.hpp>

#include <ostream>
#include <tuple>
#include <unistd.h>

namespace scrivly::cli {

namespace {

std::optional<DayBounds::Day> day(const std::string& text, const std::string& option) {
    if (text.empty()) {
        return std::nullopt;
    }
    auto parsed = DayBounds::parseDay(text);
    if (!parsed) {
        throw UsageError(option + " “" + text + "” isn’t a calendar day; write it as YYYY-MM-DD.");
    }
    return parsed;
}

void addDayOptions(CLI::App& command, std::string& from, std::string& to) {
    command.add_option("--from", from, "First day to include, YYYY-MM-DD (whole days)")
        ->type_name("DAY");
    command.add_option("--to", to, "Last day to include, YYYY-MM-DD (whole days)")
        ->type_name("DAY");
}

} // namespace

DayRange dayRange(const std::string& from, const std::string& to) {
    DayRange days{day(from, "--from"), day(to, "--to")};
    if (days.first && days.last &&
        std::tie(days.first->year, days.first->month, days.first->day) >
            std::tie(days.last->year, days.last->month, days.last->day)) {
        throw UsageError("The first day (--from) comes after the last day (--to).");
    }
    return days;
}

std::optional<Invocation> parse(int argc, const char* const* argv, std::ostream& out) {
    Invocation invocation;
    GlobalOptions& global = invocation.global;

    CLI::App app{"Reads a Messages history and shows or exports its conversations.", "scrivly-cli"};
    // Global options may follow the command's name as well as precede it.
    app.fallthrough();
    app.require_subcommand(1);
    app.set_help_all_flag("--help-all", "Show the help of every command");

    std::string database;
    std::string home;
    std::vector<std::string> contacts;
    std::string timeZone;
    std::string locale;
    auto* databaseOption = app.add_option(
        "--database", database, "The Messages database (default ~/Library/Messages/chat.db)");
    auto* homeOption =
        app.add_option("--home", home, "The folder a stored ~/ stands for in attachment paths")
            ->type_name("PATH");
    auto* sampleOption =
        app.add_flag("--sample", global.sample, "Read a fresh demonstration history instead");
    sampleOption->excludes(databaseOption)->excludes(homeOption);
    app.add_option("--contacts", contacts,
                   "Names from a vCard file or an address-book folder (repeatable)")
        ->type_name("PATH");
    app.add_option("--me", global.me, "The name shown for your own messages (default Me)")
        ->type_name("NAME");
    app.add_option("--time-zone", timeZone,
                   "IANA time zone for day bounds and dates (default the system's)")
        ->type_name("ZONE");
    app.add_option("--locale", locale, "Locale of dates, times and numbers (default the system's)")
        ->type_name("LOCALE");
    auto* directOption = app.add_flag("--direct", global.direct,
                                      "Read the database file itself instead of a private copy");
    std::string backup;
    std::string passwordFile;
    app.add_option("--backup", backup,
                   "Read the Messages history of an iPhone backup (its folder, or a folder of "
                   "backups)")
        ->type_name("PATH")
        ->excludes(databaseOption)
        ->excludes(homeOption)
        ->excludes(sampleOption)
        ->excludes(directOption);
    app.add_option("--password-file", passwordFile,
                   "The password of an encrypted backup, from the file's first line")
        ->type_name("FILE");

    auto* access = app.add_subcommand(
        "access", "Tell whether the database can be read: granted, denied or noHistory");

    auto* chats = app.add_subcommand("chats", "List the chats as stored");
    chats->add_flag("--json", invocation.json, "Write JSON");

    auto* messages = app.add_subcommand("messages", "List the messages of chats as stored");
    messages->add_option("--chats", invocation.chatIDs, "Chat ids, separated by commas")
        ->type_name("ID,ID,...")
        ->delimiter(',')
        ->required();
    messages->add_flag("--json", invocation.json, "Write JSON");

    auto* conversations =
        app.add_subcommand("conversations", "List the conversations, newest first");
    std::string search;
    auto* searchOption =
        conversations->add_option("--search", search, "Show only conversations matching QUERY")
            ->type_name("QUERY");
    conversations->add_flag("--json", invocation.json, "Write JSON");

    std::string from;
    std::string to;
    auto* transcript =
        app.add_subcommand("transcript", "Show a conversation's messages for whole days");
    transcript->add_option("CONVERSATION", invocation.conversation, "A conversation's id or title")
        ->required();
    addDayOptions(*transcript, from, to);
    transcript->add_flag("--json", invocation.json, "Write JSON");

    auto* exportCommand =
        app.add_subcommand("export", "Export a conversation as a PDF, CSV or JSON file");
    exportCommand
        ->add_option("CONVERSATION", invocation.conversation, "A conversation's id or title")
        ->required();
    std::string pdf;
    std::string csv;
    std::string json;
    auto* pdfOption = exportCommand->add_option("--pdf", pdf, "Write a PDF to FILE (- for stdout)")
                          ->type_name("FILE");
    auto* csvOption = exportCommand->add_option("--csv", csv, "Write a CSV to FILE (- for stdout)")
                          ->type_name("FILE");
    auto* jsonOption =
        exportCommand->add_option("--json", json, "Write JSON to FILE (- for stdout)")
            ->type_name("FILE");
    addDayOptions(*exportCommand, from, to);
    exportCommand->add_option("--title", invocation.title, "Document title")->type_name("TEXT");
    exportCommand->add_option("--header", invocation.header, "Line at the top of every page")
        ->type_name("TEXT");
    exportCommand
        ->add_option("--bates-prefix", invocation.batesPrefix,
                     "Prefix of Bates numbers (none without it)")
        ->type_name("TEXT");
    exportCommand
        ->add_option("--bates-start", invocation.batesStart,
                     "Number of the first page's Bates label (default 1; below 0 counts as 0)")
        ->type_name("N");
    std::string paper = "letter";
    exportCommand->add_option("--paper", paper, "Paper size: letter or a4")
        ->type_name("SIZE")
        ->transform(CLI::IsMember({"letter", "a4"}, CLI::ignore_case));
    bool noCover = false;
    bool noImages = false;
    exportCommand->add_flag("--no-cover", noCover, "Leave out the cover page");
    exportCommand->add_flag("--no-images", noImages, "List photos by name instead of drawing them");
    exportCommand->add_flag("--progress", invocation.progress,
                            "Show progress even when standard error isn't a terminal");

    auto* sample = app.add_subcommand("sample", "Write the demonstration history into FOLDER");
    sample->add_option("FOLDER", invocation.sampleFolder, "A new or empty folder")->required();
    sample->add_flag("--as-backup", invocation.asBackup,
                     "Write it as an iPhone backup (encrypted with --password-file)");
    sample->add_flag("--fast-keys", invocation.fastKeys,
                     "With --as-backup: small key-derivation counts, for tests");

    auto* backups =
        app.add_subcommand("backups", "List the iPhone backups in FOLDERs, or in the usual places");
    backups->add_option("FOLDER", invocation.backupFolders, "Folders that hold backups");
    backups->add_flag("--json", invocation.json, "Write JSON");

    auto* produce = addProduceCommand(app, invocation.produce);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        out << app.help();
        return std::nullopt;
    } catch (const CLI::CallForAllHelp&) {
        out << app.help("", CLI::AppFormatMode::All);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        // A mistyped command is left over unparsed; name it rather than ask for a command.
        if (app.get_subcommands().empty() && !app.remaining().empty()) {
            throw UsageError("Unknown command “" + app.remaining().front() +
                             "”; the commands are access, chats, messages, conversations, "
                             "transcript, export, produce, sample and backups.");
        }
        throw UsageError(error.what());
    }

    global.contacts = contacts;
    if (!backup.empty()) {
        global.backup = backup;
    }
    if (!passwordFile.empty()) {
        global.passwordFile = passwordFile;
    }
    if (!database.empty()) {
        global.database = database;
    }
    if (!home.empty()) {
        global.home = home;
    }
    if (!timeZone.empty()) {
        global.timeZone = timeZone;
    }
    if (!locale.empty()) {
        global.locale = locale;
    }
    global.me = Unicode::trimmed(global.me);
    if (global.me.empty()) {
        global.me = "Me";
    }

    if (access->parsed()) {
        invocation.command = Command::access;
    } else if (chats->parsed()) {
        invocation.command = Command::chats;
    } else if (messages->parsed()) {
        invocation.command = Command::messages;
    } else if (conversations->parsed()) {
        invocation.command = Command::conversations;
        if (searchOption->count() > 0) {
            invocation.search = search;
        }
    } else if (transcript->parsed() || exportCommand->parsed()) {
        invocation.command = transcript->parsed() ? Command::transcript : Command::exportFile;
        const auto days = dayRange(from, to);
        invocation.from = days.first;
        invocation.to = days.last;
    } else if (backups->parsed()) {
        invocation.command = Command::backups;
    } else if (produce->parsed()) {
        invocation.command = Command::produce;
        checkProduceArguments(invocation.produce);
    } else {
        invocation.command = Command::sample;
        if (invocation.fastKeys && !invocation.asBackup) {
            throw UsageError("--fast-keys goes with --as-backup.");
        }
    }

    if (invocation.command == Command::exportFile) {
        const std::size_t outputs = pdfOption->count() + csvOption->count() + jsonOption->count();
        if (outputs != 1) {
            throw UsageError("Choose one output: --pdf FILE, --csv FILE or --json FILE.");
        }
        if (pdfOption->count() > 0) {
            invocation.format = ExportFormat::pdf;
            invocation.output = pdf;
        } else if (csvOption->count() > 0) {
            invocation.format = ExportFormat::csv;
            invocation.output = csv;
        } else {
            invocation.format = ExportFormat::json;
            invocation.output = json;
        }
        if (invocation.output.empty()) {
            throw UsageError("The output file name is empty.");
        }
        // A PDF on a terminal is only noise, and can upset it; compressors refuse the same way.
        if (invocation.format == ExportFormat::pdf && invocation.output == "-" &&
            ::isatty(STDOUT_FILENO) == 1) {
            throw UsageError("Not writing a PDF: standard output is a terminal; give a file name "
                             "or redirect the output.");
        }
        invocation.title = Unicode::trimmed(invocation.title);
        invocation.header = Unicode::trimmed(invocation.header);
        invocation.batesPrefix = Unicode::trimmed(invocation.batesPrefix);
        invocation.paper = Paper::fromRawValue(paper).value_or(PaperSize::letter);
        invocation.coverPage = !noCover;
        invocation.includeImages = !noImages;
    }
    return invocation;
}

} // namespace scrivly::cli
