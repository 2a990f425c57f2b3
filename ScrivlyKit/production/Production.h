#pragma once

#include "ScrivlyKit/conversations/DayBounds.h"
#include "ScrivlyKit/export/PaperSize.h"
#include "ScrivlyKit/history/History.h"
#include "ScrivlyKit/production/SourceSnapshot.h"
#include "ScrivlyKit/records/Date.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace scrivly {

// What the user chose for a production: many conversations made into documents at once, each
// as one export is made, with Bates numbers running on from one document to the next.
struct Production {
    std::vector<std::string> conversations; // ids or titles (see findConversation), in this order
    bool all = false;                       // instead: every conversation, in the list's order
    DayRange days;
    std::string batesPrefix; // required: labels and every file name come from it
    std::int64_t batesStart = 1;
    std::int64_t batesDigits = 6;
    std::optional<std::uint64_t> maxBytes; // no PDF larger, unless one page alone is
    bool perDay = false;                   // one document per conversation and calendar day
    bool csv = false;                      // a CSV with a Bates column beside each PDF
    bool natives = false;                  // attachment files copied into natives/
    bool loadFile = false;                 // loadfile.dat
    std::optional<std::string> custodian;  // the load file's; the user's own name when absent
    std::string header;
    PaperSize paper = PaperSize::letter;
    bool coverPage = true;
    bool includeImages = true;
};

// A production that can't be made; what() is the user's text. badRequest: what was asked can't
// work (a folder that holds files, a conversation named twice, a size below one page); failed:
// the system or the data failed.
class ProductionError : public std::runtime_error {
public:
    enum class Kind { badRequest, failed };
    ProductionError(Kind kind, const std::string& text);
    Kind kind;
};

// One file of a production.
struct ProducedFile {
    enum class Kind { pdf, csv, native, certificate, loadFile, manifest };
    Kind kind = Kind::pdf;
    std::string path; // inside the production's folder, "/" between folders
    std::string beginBates;
    std::string endBates;
    std::optional<std::int64_t> pages;
    std::optional<std::int64_t> messages;
    std::optional<Date> firstMessage;
    std::optional<Date> lastMessage;
    std::uint64_t bytes = 0;
    std::string sha256; // lower-case hexadecimal
};

// One PDF of a production (a part, when a document was split) and what goes with it.
struct ProducedDocument {
    std::string conversation; // title
    std::string conversationID;
    std::vector<std::string> participants;
    std::optional<DayBounds::Day> day; // the calendar day, one document per day
    int part = 1;
    int parts = 1;
    ProducedFile pdf;
    std::optional<ProducedFile> csv;
    std::vector<ProducedFile> natives; // in the order the document lists them
};

// An attachment whose file could not be produced as a native.
struct MissingAttachment {
    std::string conversation;
    std::string conversationID;
    Date date; // of its message
    std::string name;
    std::string reason;
};

// What a production wrote, and from what.
struct ProductionReport {
    std::string folder; // the production's folder
    Date made;
    SourceDescription source;
    std::vector<SourceFile> sourceFiles;                            // the database first
    std::vector<std::pair<std::string, std::string>> conversations; // title and id, as named
    std::vector<std::string> emptyConversations; // ids of those with no message in the days
    std::vector<ProducedDocument> documents;     // in Bates order
    std::vector<MissingAttachment> missing;
    std::optional<ProducedFile> loadFile;
    ProducedFile certificate;
    ProducedFile manifest; // its hash and size are not listed in itself

    std::int64_t pages() const;    // of the documents
    std::int64_t messages() const; // of the documents
    std::size_t nativeCount() const;
};

struct ProductionHooks {
    // Fraction from 0 to 1 of the whole production; called from any thread, one call at a time.
    std::function<void(double fraction)> progress;
    // Called with the hidden folder the production is written into, as soon as it exists, so that
    // a caller that may be ended abruptly can remove it then.
    std::function<void(const std::string& hidden)> started;
    std::stop_token stop;
};

// Writes the production into folder, which must not exist or be empty: everything goes into a
// hidden folder beside it, renamed into place at the end, so after a failure or a stop nothing
// is left. Reads one private copy of the history's database, hashing its files as they are read.
// Throws ProductionError, ConversationNotFound, PDFExport::Cancelled when stopped, and the
// history's errors (SQLiteError, BackupError…).
ProductionReport writeProduction(const History& history, const Production& production,
                                 const std::string& folder, const ProductionHooks& hooks = {});

} // namespace scrivly
