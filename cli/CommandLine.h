#pragma once

#include "cli/Produce.h"

#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/export/PaperSize.h"
#include "ScrivlyKit/history/History.h"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace scrivly::cli {

// Options that every command accepts, before or after the command's name.
struct GlobalOptions {
    std::optional<std::string> database; // the Messages database; the default location if absent
    std::optional<std::string> home;     // the folder a stored "~/" stands for
    bool sample = false;                 // read a fresh demonstration history
    std::string me = "Me";               // the name of the user's own messages
    std::optional<std::string> timeZone; // IANA zone; the system's when absent
    std::optional<std::string> locale;   // ICU locale; the system's when absent
    bool direct = false;                 // read the file itself, without a private copy
    std::vector<std::string> contacts;   // vCard files or address-book folders, earlier ones win
    std::optional<std::string> backup;   // an iPhone backup's folder, read instead of a database
    std::optional<std::string> passwordFile; // the backup password, up to its first line break
};

enum class Command {
    access,
    chats,
    messages,
    conversations,
    transcript,
    exportFile,
    sample,
    backups,
    produce
};

enum class ExportFormat { pdf, csv, json };

// Everything the command line asked for, checked for form (not yet against the database).
struct Invocation {
    GlobalOptions global;
    Command command = Command::access;
    bool json = false;                 // chats, messages, conversations, transcript
    std::vector<std::int64_t> chatIDs; // messages
    std::optional<std::string> search; // conversations
    std::string conversation;          // transcript, export: an id or a title
    std::optional<DayBounds::Day> from;
    std::optional<DayBounds::Day> to;
    ExportFormat format = ExportFormat::pdf;
    std::string output; // export destination; "-" is standard output
    std::string title;
    std::string header;
    std::string batesPrefix;
    std::int64_t batesStart = 1;
    PaperSize paper = PaperSize::letter;
    bool coverPage = true;
    bool includeImages = true;
    bool progress = false;    // show the progress bar even when standard error isn't a terminal
    std::string sampleFolder; // sample
    bool asBackup = false;    // sample: written as an iPhone backup
    bool fastKeys = false;    // sample --as-backup: small key-derivation counts
    std::vector<std::string> backupFolders; // backups
    ProduceArguments produce;               // produce
};

// The days of --from and --to (either may be empty): calendar days, the first not after the
// last. Throws UsageError naming the option.
DayRange dayRange(const std::string& from, const std::string& to);

// Parses the arguments (argv[0] is the program). Returns nothing after printing the help text to
// out when help was asked for. Throws UsageError with a one-line reason.
std::optional<Invocation> parse(int argc, const char* const* argv, std::ostream& out);

} // namespace scrivly::cli
