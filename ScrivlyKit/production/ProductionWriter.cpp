#include "ScrivlyKit/production/Production.h"

#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/MessagesSource.h"
#include "ScrivlyKit/export/CSVExport.h"
#include "ScrivlyKit/pdf/LaidOutDocument.h"
#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/platform/Memory.h"
#include "ScrivlyKit/platform/UUID.h"
#include "ScrivlyKit/production/Certificate.h"
#include "ScrivlyKit/production/HashedFiles.h"
#include "ScrivlyKit/production/ProductionFiles.h"
#include "ScrivlyKit/production/ProductionRules.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#ifndef SCRIVLY_VERSION
#define SCRIVLY_VERSION "unknown"
#endif

namespace scrivly {

namespace fs = std::filesystem;

namespace {

using Kind = ProductionError::Kind;
using PDFExport::CoverRow;
using PDFExport::LaidOutDocument;

// The smallest --max-size that holds a page: one page of text with its fonts takes about 30 KB.
constexpr std::uint64_t kSmallestMaxBytes = 50'000;
// Documents laid out and drawn at once: with two cores, one is drawn while the next is laid out.
constexpr int kWorkers = 2;
// Each document in flight keeps at most this much of shaped text for drawing (see TextSetter),
// so that two long conversations at once stay well within the memory of one export.
constexpr std::size_t kKeptShapeBytes = std::size_t{64} << 20;
constexpr unsigned kPictureWorkers = 2;
// A split is planned from a whole drawing's page sizes; this share of the limit is left for
// what a planned part adds (a cover, other fonts).
constexpr double kSplitMargin = 0.97;
// Rounds of renaming natives and splitting before a document gives up on settling.
constexpr int kSettleRounds = 64;

// Texts of a production's covers.
constexpr const char* kBatesRangeLabel = "Bates range";
constexpr const char* kSourceHashLabel = "Source SHA-256";
constexpr const char* kPartLabel = "Part";

[[noreturn]] void failWrite(const std::string& path, int error) {
    throw ProductionError(Kind::failed, "The production couldn’t be written: " + path + ": " +
                                            std::strerror(error));
}

// The output folder as the user named it: absent, or an empty folder.
void checkOutputFolder(const fs::path& folder) {
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            failWrite(folder.string(), errno);
        }
        const fs::path parent = folder.parent_path();
        if (::stat(parent.c_str(), &status) != 0) {
            failWrite(parent.string(), errno);
        }
        if (!S_ISDIR(status.st_mode)) {
            failWrite(parent.string(), ENOTDIR);
        }
        return;
    }
    if (!S_ISDIR(status.st_mode)) {
        throw ProductionError(Kind::badRequest,
                              folder.string() + " exists and isn’t a folder; name a new folder.");
    }
    std::error_code error;
    if (!fs::is_empty(folder, error) || error) {
        throw ProductionError(Kind::badRequest,
                              folder.string() + " isn’t empty; name a new or empty folder.");
    }
}

// The folder a production is written into, beside its destination, removed with everything in
// it unless it was moved into place.
class HiddenFolder {
public:
    explicit HiddenFolder(const fs::path& destination)
        : m_destination(destination),
          m_path(destination.parent_path() /
                 ("." + destination.filename().string() + ".scrivly-" + randomUUID())) {
        if (::mkdir(m_path.c_str(), 0700) != 0) {
            failWrite(destination.parent_path().string(), errno);
        }
    }
    ~HiddenFolder() {
        if (!m_placed) {
            std::error_code ignored;
            fs::remove_all(m_path, ignored);
        }
    }
    HiddenFolder(const HiddenFolder&) = delete;
    HiddenFolder& operator=(const HiddenFolder&) = delete;

    const fs::path& path() const { return m_path; }

    // Flushes every file to disk, gives the folder the permissions a new folder gets, and
    // renames it into place (over an empty folder, if one is there).
    void place() {
        const FileDescriptor folder(::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!folder || ::syncfs(folder.get()) != 0) {
            failWrite(m_destination.string(), errno);
        }
        const mode_t mask = ::umask(0);
        ::umask(mask);
        if (::chmod(m_path.c_str(), 0777 & ~mask) != 0 ||
            ::rename(m_path.c_str(), m_destination.c_str()) != 0) {
            failWrite(m_destination.string(), errno);
        }
        m_placed = true;
        const FileDescriptor parent(
            ::open(m_destination.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (parent) {
            ::fsync(parent.get());
        }
    }

private:
    fs::path m_destination;
    fs::path m_path;
    bool m_placed = false;
};

std::string shortHash(const std::string& sha256) {
    return sha256.substr(0, 16) + "\u2026";
}

// One document to make: a conversation's transcript, or one day of it.
struct Job {
    std::size_t index = 0; // in Bates order
    const Conversation* conversation = nullptr;
    Transcript transcript;
    std::optional<DayBounds::Day> day;
    double weight = 0; // its share of the whole production's progress
};

// An attachment copied into natives/ under a name of its own until its page is known.
struct StagedNative {
    std::size_t entry = 0;
    std::size_t attachment = 0;
    std::string staging;
    HashedFiles::Hashed hashed;
    std::string name; // the attachment's own
};

// How a document is cut into files: the first page and the count of pages without covers.
struct Part {
    std::size_t first = 0;
    std::size_t count = 0;
};

// Where each page of a document lands once it is cut into parts with their covers.
struct Numbering {
    std::vector<std::int64_t> partStart; // number of each part's first page
    std::vector<std::size_t> coverPages; // of each part
    std::vector<std::vector<CoverRow>> covers;
    std::int64_t next = 0; // the number after the document's last page
};

class Writer {
public:
    Writer(const History& history, const Production& production, ChatDatabase& database,
           const std::vector<Conversation>& conversations, std::vector<double> weights,
           const fs::path& hidden, const std::string& scratch, const std::string& sourceHash,
           const ProductionHooks& hooks)
        : m_history(history), m_production(production), m_database(database),
          m_conversations(conversations), m_weights(std::move(weights)), m_hidden(hidden),
          m_scratch(scratch), m_sourceHash(sourceHash), m_hooks(hooks),
          m_strings(history.exportStrings()), m_options(history.exportOptions()) {
        m_nextNumber = std::max<std::int64_t>(production.batesStart, 0);
        m_options.paper = production.paper;
        m_options.header = production.header;
        m_options.batesPrefix = production.batesPrefix;
        m_options.batesStart = production.batesStart;
        m_options.batesDigits = production.batesDigits;
        m_options.coverPage = production.coverPage;
        m_options.includeImages = production.includeImages;
        m_stopForwarding.emplace(hooks.stop, [this] { m_stop.request_stop(); });
    }

    // Makes every document in order; answers what was written.
    void run(ProductionReport& report) {
        if (m_production.natives && ::mkdir((m_hidden / "natives").c_str(), 0777) != 0) {
            failWrite("natives", errno);
        }
        {
            std::vector<std::jthread> workers;
            for (int worker = 0; worker < kWorkers; ++worker) {
                workers.emplace_back([this] { work(); });
            }
        }
        if (m_error) {
            std::rethrow_exception(m_error);
        }
        if (m_hooks.stop.stop_requested()) {
            throw PDFExport::Cancelled();
        }
        report.documents = std::move(m_documents);
        report.missing = std::move(m_missing);
        report.emptyConversations = std::move(m_empty);
    }

    std::int64_t nextNumber() const { return m_nextNumber; }
    const ExportOptions& options() const { return m_options; }
    const ExportStrings& strings() const { return m_strings; }

private:
    void work() {
        try {
            PDFExport::FontCache fonts;
            while (auto job = nextJob()) {
                make(std::move(*job), fonts);
            }
        } catch (...) {
            std::lock_guard lock(m_lock);
            if (!m_error && !m_hooks.stop.stop_requested()) {
                m_error = std::current_exception();
            }
            m_stop.request_stop();
            m_turnChanged.notify_all();
        }
    }

    // The next document in Bates order, reading the next conversation when the last one's are
    // all taken. Nothing when all are taken or the production stops.
    std::optional<Job> nextJob() {
        std::lock_guard lock(m_jobLock);
        while (m_pending.empty() && m_nextConversation < m_conversations.size()) {
            if (m_stop.stop_requested()) {
                return std::nullopt;
            }
            queueConversation(m_nextConversation++);
        }
        if (m_pending.empty() || m_stop.stop_requested()) {
            return std::nullopt;
        }
        Job job = std::move(m_pending.front());
        m_pending.pop_front();
        job.index = m_jobCount++;
        return job;
    }

    void queueConversation(std::size_t index) {
        const Conversation& conversation = m_conversations[index];
        const auto bounds =
            DayBounds::range(m_production.days.first, m_production.days.last, m_options.timeZone);
        Transcript transcript =
            Transcript::build(conversation.title, conversation.participants,
                              m_database.messages(conversation.chatIDs), bounds.from, bounds.to,
                              m_history.settings().me, m_history.names());
        if (transcript.entries.empty()) {
            {
                std::lock_guard lock(m_lock);
                m_empty.push_back(conversation.id);
            }
            addProgress(m_weights[index]);
            return;
        }
        const double perEntry = m_weights[index] / static_cast<double>(transcript.entries.size());
        if (!m_production.perDay) {
            const double weight = m_weights[index];
            m_pending.push_back(Job{0, &conversation, std::move(transcript), std::nullopt, weight});
            return;
        }
        // One document per calendar day that has messages, each covering that whole day.
        Job current;
        for (auto& entry : transcript.entries) {
            const auto day = DayBounds::dayOf(entry.date, m_options.timeZone);
            if (!current.day || !(*current.day == day)) {
                if (current.day) {
                    m_pending.push_back(std::move(current));
                }
                current = Job{};
                current.conversation = &conversation;
                current.day = day;
                current.transcript.title = transcript.title;
                current.transcript.participants = transcript.participants;
                current.transcript.from = DayBounds::startOfDay(day, m_options.timeZone);
                current.transcript.to = DayBounds::endOfDay(day, m_options.timeZone);
            }
            current.transcript.entries.push_back(std::move(entry));
            current.transcript.totalInRange += 1;
            current.weight += perEntry;
        }
        m_pending.push_back(std::move(current));
    }

    // Progress -----------------------------------------------------------------------------

    void addProgress(double amount) {
        std::lock_guard lock(m_progressLock);
        m_done += amount;
        reportProgress();
    }

    void setCurrent(std::size_t job, double amount) {
        std::lock_guard lock(m_progressLock);
        m_current[job] = amount;
        reportProgress();
    }

    void finishCurrent(std::size_t job, double weight) {
        std::lock_guard lock(m_progressLock);
        m_current.erase(job);
        m_done += weight;
        reportProgress();
    }

    void reportProgress() {
        if (!m_hooks.progress) {
            return;
        }
        double total = m_done;
        for (const auto& [job, amount] : m_current) {
            total += amount;
        }
        m_hooks.progress(std::clamp(total, 0.0, 1.0));
    }

    // One document ---------------------------------------------------------------------------

    void make(Job job, PDFExport::FontCache& fonts) {
        const std::string jobScratch = m_scratch + "/document-" + std::to_string(job.index);
        struct Cleanup {
            std::string path;
            ~Cleanup() {
                std::error_code ignored;
                fs::remove_all(path, ignored);
            }
        } cleanup{jobScratch};
        FileSystem::createPrivateFolders(jobScratch);

        std::vector<MissingAttachment> missing;
        std::vector<StagedNative> natives = stageAttachments(job, jobScratch, missing);
        std::map<std::pair<std::size_t, std::size_t>, std::string> names;
        const std::string placeholder = *m_options.batesLabel(1);
        for (const auto& native : natives) {
            names[{native.entry, native.attachment}] =
                ProductionRules::nativeFileName(placeholder, 1, native.name);
        }

        const double weight = job.weight;
        const std::size_t index = job.index;
        auto layOut = [&] {
            return std::make_unique<LaidOutDocument>(
                job.transcript, m_options, m_strings,
                LaidOutDocument::Extras{
                    [&names](std::size_t entry,
                             std::size_t attachment) -> std::optional<std::string> {
                        const auto found = names.find({entry, attachment});
                        return found == names.end() ? std::nullopt : std::optional(found->second);
                    },
                    kKeptShapeBytes, kPictureWorkers, &fonts},
                [this, index, weight](double fraction) {
                    setCurrent(index, fraction * 0.5 * weight);
                },
                m_stop.get_token());
        };
        auto document = layOut();

        // Numbered from where the documents before it are expected to end, so that it can be
        // drawn while they are; checked again when its turn to be written comes.
        std::int64_t start = waitForPrediction(index);
        std::vector<Part> parts{Part{0, document->pageCount()}};
        std::vector<LaidOutDocument::Drawn> drawn;
        Numbering numbering;
        std::vector<LaidOutDocument::NativeLine> lines;
        int rounds = 0;
        const auto settle = [&] {
            for (;;) {
                if (++rounds > kSettleRounds) {
                    throw ProductionError(Kind::failed,
                                          "The documents of “" + job.conversation->title +
                                              "” couldn’t be numbered: their pages kept changing.");
                }
                numbering = number(*document, parts, start, *job.conversation);
                lines = document->nativeLines();
                if (!lines.empty()) {
                    auto finalNames = nativeNames(lines, natives, parts, numbering);
                    const bool renamed =
                        document->renameNatives([&](std::size_t entry, std::size_t attachment) {
                            return finalNames.at({entry, attachment});
                        });
                    names = std::move(finalNames);
                    if (!renamed) {
                        // A name of another width moved a line: lay out again with the names
                        // as they now stand, and cut the new pages afresh.
                        document.reset();
                        document = layOut();
                        parts = {Part{0, document->pageCount()}};
                        continue;
                    }
                }
                predict(index, numbering.next);
                drawn.clear();
                bool resplit = false;
                for (std::size_t part = 0; part < parts.size() && !resplit; ++part) {
                    drawn.push_back(drawPart(*document, parts, part, numbering, index, weight));
                    if (m_production.maxBytes &&
                        drawn.back().data.size() > *m_production.maxBytes &&
                        parts[part].count > 1) {
                        parts = split(parts, part, drawn.back(), *m_production.maxBytes);
                        resplit = true;
                    }
                }
                if (!resplit) {
                    return;
                }
            }
        };
        settle();
        waitForTurn(index);
        if (m_nextNumber != start) {
            // A document before it came out longer or shorter than expected.
            start = m_nextNumber;
            settle();
        }
        write(job, *document, parts, numbering, drawn, lines, natives, names, std::move(missing));
        document.reset();
        drawn.clear();
        Memory::releaseFreePages();
        finishCurrent(index, weight);
    }

    // Copies the document's attachments into natives/ (when asked for) and points the
    // transcript at files that can be read: the copies, or decrypted ones for a backup.
    std::vector<StagedNative> stageAttachments(Job& job, const std::string& scratch,
                                               std::vector<MissingAttachment>& missing) {
        std::vector<StagedNative> staged;
        const auto& source = *m_history.reader().source;
        for (std::size_t entry = 0; entry < job.transcript.entries.size(); ++entry) {
            auto& message = job.transcript.entries[entry];
            for (std::size_t index = 0; index < message.attachments.size(); ++index) {
                if (m_stop.stop_requested()) {
                    throw PDFExport::Cancelled();
                }
                Attachment& attachment = message.attachments[index];
                const auto note = [&](const std::string& reason) {
                    missing.push_back(MissingAttachment{job.conversation->title,
                                                        job.conversation->id, message.date,
                                                        attachment.name, reason});
                };
                if (!attachment.path || attachment.path->empty()) {
                    if (m_production.natives) {
                        note("no file recorded");
                    }
                    continue;
                }
                const auto readable = source.readableCopy(*attachment.path, scratch);
                if (!readable) {
                    if (m_production.natives) {
                        note("not in the backup");
                    }
                    attachment.path = std::nullopt;
                    continue;
                }
                attachment.path = readable;
                if (!m_production.natives) {
                    continue;
                }
                const std::string staging = (m_hidden / "natives" /
                                             (".staging-" + std::to_string(job.index) + "-" +
                                              std::to_string(staged.size())))
                                                .string();
                std::string reason;
                const auto hashed = HashedFiles::copy(*readable, staging, reason);
                if (!hashed) {
                    note(reason);
                    continue;
                }
                staged.push_back(StagedNative{entry, index, staging, *hashed, attachment.name});
                // The document shows the very bytes that were produced.
                attachment.path = staging;
            }
        }
        return staged;
    }

    // Where the document is expected to begin: after the expected end of the one before it.
    std::int64_t waitForPrediction(std::size_t index) {
        std::unique_lock lock(m_lock);
        // Woken by a stop as well, so that a waiting worker never outlives an interrupt.
        m_turnChanged.wait(lock, m_stop.get_token(),
                           [&] { return index == 0 || m_predictions.contains(index - 1); });
        if (m_stop.stop_requested()) {
            throw PDFExport::Cancelled();
        }
        return index == 0 ? m_nextNumber : m_predictions[index - 1];
    }

    void predict(std::size_t index, std::int64_t next) {
        std::lock_guard lock(m_lock);
        m_predictions[index] = next;
        m_turnChanged.notify_all();
    }

    void waitForTurn(std::size_t index) {
        std::unique_lock lock(m_lock);
        m_turnChanged.wait(lock, m_stop.get_token(), [&] { return m_turn == index; });
        if (m_stop.stop_requested()) {
            throw PDFExport::Cancelled();
        }
    }

    // The covers' rows and numbers of each part. A cover's own length can move the numbers it
    // shows, so its page count is checked with the final rows.
    Numbering number(LaidOutDocument& document, const std::vector<Part>& parts, std::int64_t start,
                     const Conversation& conversation) {
        Numbering numbering;
        std::vector<std::size_t> coverPages(parts.size(), m_production.coverPage ? 1 : 0);
        for (int attempt = 0; attempt < 4; ++attempt) {
            numbering = Numbering{};
            std::int64_t next = start;
            for (std::size_t part = 0; part < parts.size(); ++part) {
                numbering.partStart.push_back(next);
                numbering.coverPages.push_back(coverPages[part]);
                const auto pages = static_cast<std::int64_t>(coverPages[part] + parts[part].count);
                std::vector<CoverRow> rows;
                if (m_production.coverPage) {
                    rows.push_back(CoverRow{
                        kBatesRangeLabel,
                        ProductionRules::batesRange(label(next), label(next + pages - 1))});
                    rows.push_back(CoverRow{kSourceHashLabel, shortHash(m_sourceHash)});
                    if (parts.size() > 1) {
                        rows.push_back(CoverRow{kPartLabel, std::to_string(part + 1) + " of " +
                                                                std::to_string(parts.size())});
                    }
                }
                numbering.covers.push_back(std::move(rows));
                next += pages;
            }
            numbering.next = next;
            bool settled = true;
            for (std::size_t part = 0; part < parts.size() && m_production.coverPage; ++part) {
                const std::size_t count = document.coverPageCount(numbering.covers[part]);
                if (count != coverPages[part]) {
                    coverPages[part] = count;
                    settled = false;
                }
            }
            if (settled) {
                return numbering;
            }
        }
        throw ProductionError(Kind::failed,
                              "The cover of “" + conversation.title +
                                  "” couldn’t be numbered: its length kept changing.");
    }

    // The label that carries number.
    std::string label(std::int64_t number) const {
        return *m_options.batesLabel(number - std::max<std::int64_t>(m_options.batesStart, 0) + 1);
    }

    // The label of a page (0-based, without covers) of the document.
    std::string pageLabel(std::size_t page, const std::vector<Part>& parts,
                          const Numbering& numbering) const {
        for (std::size_t part = 0; part < parts.size(); ++part) {
            if (page < parts[part].first + parts[part].count) {
                return label(numbering.partStart[part] +
                             static_cast<std::int64_t>(numbering.coverPages[part] + page -
                                                       parts[part].first));
            }
        }
        return label(numbering.next - 1);
    }

    std::map<std::pair<std::size_t, std::size_t>, std::string>
    nativeNames(const std::vector<LaidOutDocument::NativeLine>& lines,
                const std::vector<StagedNative>& natives, const std::vector<Part>& parts,
                const Numbering& numbering) const {
        std::map<std::pair<std::size_t, std::size_t>, std::string> ownNames;
        for (const auto& native : natives) {
            ownNames[{native.entry, native.attachment}] = native.name;
        }
        std::map<std::pair<std::size_t, std::size_t>, std::string> names;
        std::size_t page = SIZE_MAX;
        int counter = 0;
        for (const auto& line : lines) {
            counter = line.page == page ? counter + 1 : 1;
            page = line.page;
            names[{line.entry, line.attachment}] =
                ProductionRules::nativeFileName(pageLabel(line.page, parts, numbering), counter,
                                                ownNames.at({line.entry, line.attachment}));
        }
        return names;
    }

    LaidOutDocument::Drawn drawPart(LaidOutDocument& document, const std::vector<Part>& parts,
                                    std::size_t part, const Numbering& numbering, std::size_t index,
                                    double weight) {
        LaidOutDocument::Piece piece;
        piece.firstPage = parts[part].first;
        piece.pageCount = parts[part].count;
        if (m_production.coverPage) {
            piece.cover = numbering.covers[part];
        }
        piece.batesStart = numbering.partStart[part];
        const double total = static_cast<double>(document.pageCount());
        const double before = static_cast<double>(parts[part].first);
        return document.draw(piece, [&](double fraction) {
            const double drawnPages = before + fraction * static_cast<double>(parts[part].count);
            setCurrent(index, (0.5 + 0.5 * drawnPages / total) * weight);
        });
    }

    // Cuts the part that came out too large into parts that fit, from the sizes its pages
    // took: each new part gets what the drawn one carried besides its pages (fonts, tables) and
    // its cover.
    static std::vector<Part> split(const std::vector<Part>& parts, std::size_t index,
                                   const LaidOutDocument::Drawn& drawn, std::uint64_t maxBytes) {
        const auto& ends = drawn.pageEnds;
        const std::size_t covers = static_cast<std::size_t>(drawn.coverPages);
        const double shared = static_cast<double>(drawn.data.size() - ends.back()) +
                              static_cast<double>(covers > 0 ? ends[covers - 1] : 0);
        const double limit = static_cast<double>(maxBytes) * kSplitMargin;
        std::vector<Part> result(parts.begin(), parts.begin() + static_cast<long>(index));
        const Part& whole = parts[index];
        Part current{whole.first, 0};
        double size = shared;
        for (std::size_t page = 0; page < whole.count; ++page) {
            const std::size_t at = covers + page;
            const double pageSize = static_cast<double>(ends[at] - (at == 0 ? 0 : ends[at - 1]));
            if (current.count > 0 && size + pageSize > limit) {
                result.push_back(current);
                current = Part{whole.first + page, 0};
                size = shared;
            }
            current.count += 1;
            size += pageSize;
        }
        // A part that still came out too large is cut again, from its own drawing.
        if (result.size() == index) {
            const std::size_t half = std::max<std::size_t>(1, whole.count / 2);
            result.push_back(Part{whole.first, half});
            current = Part{whole.first + half, whole.count - half};
        }
        result.push_back(current);
        result.insert(result.end(), parts.begin() + static_cast<long>(index) + 1, parts.end());
        return result;
    }

    void write(const Job& job, const LaidOutDocument& document, const std::vector<Part>& parts,
               const Numbering& numbering, const std::vector<LaidOutDocument::Drawn>& drawn,
               const std::vector<LaidOutDocument::NativeLine>& lines,
               const std::vector<StagedNative>& natives,
               const std::map<std::pair<std::size_t, std::size_t>, std::string>& names,
               std::vector<MissingAttachment> missing) {
        const Transcript& transcript = document.transcript();
        const auto& entryPages = document.entryPages();
        std::map<std::pair<std::size_t, std::size_t>, const StagedNative*> staged;
        for (const auto& native : natives) {
            staged[{native.entry, native.attachment}] = &native;
        }
        std::vector<ProducedDocument> produced;
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const auto& piece = drawn[part];
            const std::int64_t first = numbering.partStart[part];
            const std::int64_t last = first + piece.pageCount - 1;
            ProducedDocument result;
            result.conversation = job.conversation->title;
            result.conversationID = job.conversation->id;
            result.participants = transcript.participants;
            result.day = job.day;
            result.part = static_cast<int>(part + 1);
            result.parts = static_cast<int>(parts.size());

            // The messages that begin in this part.
            Transcript messages;
            messages.title = transcript.title;
            messages.participants = transcript.participants;
            messages.from = transcript.from;
            messages.to = transcript.to;
            std::vector<std::string> bates;
            for (std::size_t entry = 0; entry < transcript.entries.size(); ++entry) {
                const std::size_t page = entryPages[entry];
                if (page >= parts[part].first && page < parts[part].first + parts[part].count) {
                    messages.entries.push_back(transcript.entries[entry]);
                    bates.push_back(pageLabel(page, parts, numbering));
                }
            }

            ProducedFile pdf;
            pdf.kind = ProducedFile::Kind::pdf;
            pdf.path = label(first) + ".pdf";
            pdf.beginBates = label(first);
            pdf.endBates = label(last);
            pdf.pages = piece.pageCount;
            pdf.messages = static_cast<std::int64_t>(messages.entries.size());
            pdf.firstMessage = messages.firstDate();
            pdf.lastMessage = messages.lastDate();
            const auto hashed = writeFile(
                pdf.path, {reinterpret_cast<const char*>(piece.data.data()), piece.data.size()});
            pdf.bytes = hashed.bytes;
            pdf.sha256 = hashed.sha256;
            result.pdf = pdf;

            if (m_production.csv) {
                ProducedFile csv = pdf;
                csv.kind = ProducedFile::Kind::csv;
                csv.path = label(first) + ".csv";
                csv.pages = std::nullopt;
                const auto text = CSVExport::render(messages, m_options, m_strings,
                                                    CSVExport::Column{"Bates", std::move(bates)});
                const auto csvHash = writeFile(csv.path, text);
                csv.bytes = csvHash.bytes;
                csv.sha256 = csvHash.sha256;
                result.csv = csv;
            }

            for (const auto& line : lines) {
                if (line.page < parts[part].first ||
                    line.page >= parts[part].first + parts[part].count) {
                    continue;
                }
                const StagedNative& native = *staged.at({line.entry, line.attachment});
                const std::string& name = names.at({line.entry, line.attachment});
                ProducedFile file;
                file.kind = ProducedFile::Kind::native;
                file.path = "natives/" + name;
                // The native's own identifier: the label and counter its name begins with.
                file.beginBates = name.substr(0, name.find(' '));
                file.endBates = file.beginBates;
                file.firstMessage = transcript.entries[line.entry].date;
                file.lastMessage = file.firstMessage;
                file.bytes = native.hashed.bytes;
                file.sha256 = native.hashed.sha256;
                if (::rename(native.staging.c_str(), (m_hidden / file.path).c_str()) != 0) {
                    failWrite(file.path, errno);
                }
                result.natives.push_back(std::move(file));
            }
            produced.push_back(std::move(result));
        }
        // A native whose line no page shows (never expected) is not produced.
        for (const auto& native : natives) {
            std::error_code ignored;
            fs::remove(native.staging, ignored);
        }
        std::lock_guard lock(m_lock);
        for (auto& document : produced) {
            m_documents.push_back(std::move(document));
        }
        for (auto& attachment : missing) {
            m_missing.push_back(std::move(attachment));
        }
        m_nextNumber = numbering.next;
        // The next document may still be about to read where this one ends.
        m_predictions[m_turn] = numbering.next;
        if (m_turn > 0) {
            m_predictions.erase(m_turn - 1);
        }
        ++m_turn;
        m_turnChanged.notify_all();
    }

    HashedFiles::Hashed writeFile(const std::string& name, std::string_view bytes) {
        try {
            return HashedFiles::write((m_hidden / name).string(), bytes);
        } catch (const fs::filesystem_error& error) {
            failWrite(name, error.code().value());
        }
    }

    const History& m_history;
    const Production& m_production;
    ChatDatabase& m_database;
    const std::vector<Conversation>& m_conversations;
    std::vector<double> m_weights;
    fs::path m_hidden;
    std::string m_scratch;
    std::string m_sourceHash;
    const ProductionHooks& m_hooks;
    ExportStrings m_strings;
    ExportOptions m_options;

    std::stop_source m_stop;
    std::optional<std::stop_callback<std::function<void()>>> m_stopForwarding;

    // Taking documents in order.
    std::mutex m_jobLock;
    std::size_t m_nextConversation = 0;
    std::deque<Job> m_pending;
    std::size_t m_jobCount = 0;

    // Numbering and results, in Bates order.
    std::mutex m_lock;
    std::condition_variable_any m_turnChanged;
    std::size_t m_turn = 0;
    std::map<std::size_t, std::int64_t> m_predictions; // the number after each document, expected
    std::int64_t m_nextNumber = 0;
    std::exception_ptr m_error;
    std::vector<ProducedDocument> m_documents;
    std::vector<MissingAttachment> m_missing;
    std::vector<std::string> m_empty;

    std::mutex m_progressLock;
    double m_done = 0;
    std::map<std::size_t, double> m_current;
};

// The conversations a production names, in its order; checked before anything is written.
std::vector<Conversation> chosenConversations(const std::vector<Conversation>& all,
                                              const Production& production) {
    if (production.all) {
        if (all.empty()) {
            throw ProductionError(Kind::badRequest,
                                  "This history has no conversations to produce.");
        }
        return all;
    }
    std::vector<Conversation> chosen;
    std::set<std::string> seen;
    for (const auto& name : production.conversations) {
        const Conversation& conversation = findConversation(all, name);
        if (!seen.insert(conversation.id).second) {
            throw ProductionError(Kind::badRequest, "“" + name + "” names " + conversation.title +
                                                        " (" + conversation.id +
                                                        ") a second time.");
        }
        chosen.push_back(conversation);
    }
    return chosen;
}

void checkProduction(const Production& production) {
    if (auto problem = ProductionRules::prefixProblem(production.batesPrefix)) {
        throw ProductionError(Kind::badRequest, *problem);
    }
    if (production.all == !production.conversations.empty()) {
        throw ProductionError(Kind::badRequest,
                              production.all
                                  ? "Name conversations or choose all of them, not both."
                                  : "Name the conversations to produce, or all of them.");
    }
    if (production.maxBytes && *production.maxBytes < kSmallestMaxBytes) {
        throw ProductionError(Kind::badRequest,
                              "The largest file size is below one page; give at least " +
                                  std::to_string(kSmallestMaxBytes / 1000) + "KB.");
    }
}

ProducedFile writeListing(const fs::path& hidden, const std::string& name, ProducedFile::Kind kind,
                          std::string_view bytes) {
    ProducedFile file;
    file.kind = kind;
    file.path = name;
    try {
        const auto hashed = HashedFiles::write((hidden / name).string(), bytes);
        file.bytes = hashed.bytes;
        file.sha256 = hashed.sha256;
    } catch (const fs::filesystem_error& error) {
        failWrite(name, error.code().value());
    }
    return file;
}

} // namespace

ProductionError::ProductionError(Kind kind, const std::string& text)
    : std::runtime_error(text), kind(kind) {}

std::int64_t ProductionReport::pages() const {
    std::int64_t total = 0;
    for (const auto& document : documents) {
        total += document.pdf.pages.value_or(0);
    }
    return total;
}

std::int64_t ProductionReport::messages() const {
    std::int64_t total = 0;
    for (const auto& document : documents) {
        total += document.pdf.messages.value_or(0);
    }
    return total;
}

std::size_t ProductionReport::nativeCount() const {
    std::size_t total = 0;
    for (const auto& document : documents) {
        total += document.natives.size();
    }
    return total;
}

ProductionReport writeProduction(const History& history, const Production& production,
                                 const std::string& folder, const ProductionHooks& hooks) {
    checkProduction(production);
    const fs::path destination = fs::absolute(folder).lexically_normal();
    const fs::path target = destination.has_filename() ? destination : destination.parent_path();
    checkOutputFolder(target);

    ProductionReport report;
    report.folder = target.string();
    report.made = Date::now();
    report.source = history.reader().source->description();
    withHashedSnapshot(history, [&](ChatDatabase& database, const std::vector<SourceFile>& files,
                                    const std::string& scratch) {
        report.sourceFiles = files;
        const auto conversations = chosenConversations(
            Conversations::group(database.chats(), history.names()), production);
        double total = 0;
        for (const auto& conversation : conversations) {
            total += static_cast<double>(std::max<std::int64_t>(conversation.messageCount, 1));
            report.conversations.emplace_back(conversation.title, conversation.id);
        }
        std::vector<double> weights;
        for (const auto& conversation : conversations) {
            weights.push_back(
                static_cast<double>(std::max<std::int64_t>(conversation.messageCount, 1)) / total);
        }

        HiddenFolder hidden(target);
        if (hooks.started) {
            hooks.started(hidden.path().string());
        }
        Writer writer(history, production, database, conversations, std::move(weights),
                      hidden.path(), scratch, files.front().sha256, hooks);
        writer.run(report);

        const std::string custodian = production.custodian.value_or(history.settings().me);
        if (production.loadFile) {
            report.loadFile = writeListing(
                hidden.path(), "loadfile.dat", ProducedFile::Kind::loadFile,
                ProductionFiles::loadFile(report, custodian, history.settings().timeZone));
        }

        ExportOptions options = writer.options();
        options.batesStart = writer.nextNumber();
        const auto certificate = PDFExport::renderParagraphs(
            Certificate::paragraphs(report, production,
                                    Certificate::Settings{SCRIVLY_VERSION,
                                                          history.settings().timeZone,
                                                          history.settings().locale}),
            options, writer.strings(), hooks.stop);
        report.certificate = writeListing(
            hidden.path(), "certificate.pdf", ProducedFile::Kind::certificate,
            {reinterpret_cast<const char*>(certificate.data.data()), certificate.data.size()});
        report.certificate.pages = certificate.pageCount;
        report.certificate.beginBates = *options.batesLabel(1);
        report.certificate.endBates = *options.batesLabel(certificate.pageCount);

        report.manifest =
            writeListing(hidden.path(), "manifest.csv", ProducedFile::Kind::manifest,
                         ProductionFiles::manifest(report, history.settings().timeZone));
        if (hooks.stop.stop_requested()) {
            throw PDFExport::Cancelled();
        }
        hidden.place();
    });
    return report;
}

} // namespace scrivly
