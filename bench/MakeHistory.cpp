// make-history: writes a large made-up Messages history for measuring Scrivly at scale.
//
//   make-history --messages N --folder DIR [--main M] [--photos P] [--photo-size PIXELS]
//                [--seed S] [--backup BACKUPS [--password P] [--fast-keys]]
//   make-history --folder DIR --backup BACKUPS [--password P] [--fast-keys]
//
// DIR/chat.db holds N message rows: about 2% reactions, 3% of ordinary messages with an
// attachment, 30% of texts kept only in the archived body, dates over five years in nanoseconds.
// A few hundred handles share chats of very different sizes: the conversation c:p:5550102233
// (an iMessage and an SMS chat) holds M ordinary messages (30% by default), c:p:5550104455 a tenth
// of them, and a long tail shares the rest. The database ends in WAL mode with its newest 1% of
// rows still in chat.db-wal, as a live one does. With --photos, P real photos (large HEIC, JPEG
// and PNG) lie under DIR/home and are attached to evenly spaced messages of the main conversation.
// Everything is made up and the same seed writes the same history.
//
// With --backup, the history is also written as an iPhone backup into BACKUPS (its device folder
// replaced), encrypted with --password P, with the phone's key-derivation counts unless
// --fast-keys; its sms.db-wal holds the newest 1% of messages. Without --messages, only the
// backup is written, of the history already in DIR.

#include "ScrivlyKit/backup/BackupWriter.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/sample/SampleDatabase.h"
#include "ScrivlyKit/sample/SamplePictures.h"
#include "ScrivlyKit/sample/SampleWriter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace scrivly::bench {
namespace {

namespace fs = std::filesystem;
using SampleDatabase::FileType;
using SampleDatabase::Writer;
using Value = SQLiteConnection::Value;

constexpr std::int64_t kOneToOne = 45;
constexpr int kHandles = 300;
constexpr int kGroups = 40;
constexpr double kReactionShare = 0.02;
constexpr double kAttachmentShare = 0.03;
constexpr double kBodyOnlyShare = 0.30;
constexpr double kWalShare = 0.01;
constexpr double kYears = 5;
constexpr const char* kMainAddress = "+15550102233";
constexpr const char* kSecondAddress = "+15550104455";
// Dates are anchored to a fixed day so that the same seed gives the same file.
const Date kNow = Date::fromUnixSeconds(1735689600.0); // 2025-01-01 00:00 UTC

// The indexes a Messages database carries on the tables the reader touches.
constexpr const char* kIndexes = R"sql(
CREATE INDEX message_idx_date ON message(date);
CREATE INDEX message_idx_handle ON message(handle_id, date);
CREATE INDEX message_idx_is_read ON message(is_read, is_from_me, is_finished);
CREATE INDEX message_idx_associated_message ON message(associated_message_guid);
CREATE INDEX message_idx_cache_has_attachments ON message(cache_has_attachments);
CREATE INDEX chat_message_join_idx_message_id_only ON chat_message_join(message_id);
CREATE INDEX chat_message_join_idx_message_date_id_chat_id ON chat_message_join(chat_id, message_date, message_id);
CREATE INDEX chat_handle_join_idx_handle_id ON chat_handle_join(handle_id);
CREATE INDEX message_attachment_join_idx_message_id ON message_attachment_join(message_id);
CREATE INDEX message_attachment_join_idx_attachment_id ON message_attachment_join(attachment_id);
CREATE INDEX attachment_idx_purged_attachments ON attachment(hide_attachment, transfer_state);
)sql";

struct Options {
    std::int64_t messages = 0;
    std::string folder;
    std::int64_t main = -1;
    int photos = 0;
    int photoSize = 4032; // longer side of the photos, as a phone takes them
    std::uint64_t seed = 1;
    std::string backup; // where to write the history as an iPhone backup too
    std::optional<std::string> password;
    bool fastKeys = false;
};

[[noreturn]] void usage(const std::string& problem) {
    std::cerr << "make-history: " << problem
              << "\nusage: make-history --messages N --folder DIR [--main M] [--photos P] "
                 "[--photo-size PIXELS] [--seed S]\n"
                 "             [--backup BACKUPS [--password P] [--fast-keys]]\n"
                 "       make-history --folder DIR --backup BACKUPS [--password P] "
                 "[--fast-keys]\n";
    std::exit(2);
}

Options parse(int argc, char** argv) {
    Options options;
    for (int index = 1; index < argc; ++index) {
        const std::string flag = argv[index];
        if (flag == "--fast-keys") {
            options.fastKeys = true;
            continue;
        }
        if (index + 1 >= argc) {
            usage("missing value after " + flag);
        }
        const std::string value = argv[++index];
        try {
            if (flag == "--messages") {
                options.messages = std::stoll(value);
            } else if (flag == "--folder") {
                options.folder = value;
            } else if (flag == "--main") {
                options.main = std::stoll(value);
            } else if (flag == "--photos") {
                options.photos = std::stoi(value);
            } else if (flag == "--photo-size") {
                options.photoSize = std::stoi(value);
            } else if (flag == "--seed") {
                options.seed = std::stoull(value);
            } else if (flag == "--backup") {
                options.backup = value;
            } else if (flag == "--password") {
                options.password = value;
            } else {
                usage("unknown option " + flag);
            }
        } catch (const std::logic_error&) {
            usage("not a number: " + value);
        }
    }
    if (options.folder.empty()) {
        usage("--folder is required");
    }
    if ((options.password || options.fastKeys) && options.backup.empty()) {
        usage("--password and --fast-keys go with --backup");
    }
    if (options.messages == 0 && !options.backup.empty()) {
        return options; // a backup of the history already in the folder
    }
    if (options.messages < 1) {
        usage("--messages is required unless only a backup is written");
    }
    const auto ordinary =
        options.messages - static_cast<std::int64_t>(options.messages * kReactionShare);
    if (options.main < 0) {
        options.main = ordinary * 3 / 10;
    }
    if (options.main > ordinary || options.photos < 0 || options.photos > options.main ||
        options.photoSize < 64) {
        usage("--main must not exceed the ordinary messages, nor --photos --main");
    }
    return options;
}

// Everyday texts of 5 to 300 characters, mostly short, some with emoji or several lines.
class TextMaker {
public:
    explicit TextMaker(std::mt19937_64& random) : m_random(random) {}

    std::string next() {
        static constexpr std::array<const char*, 48> kWords = {
            "yes",     "no",     "maybe",   "tonight", "tomorrow", "the",   "a",       "lake",
            "cabin",   "dinner", "running", "late",    "call",     "me",    "when",    "you",
            "get",     "this",   "kids",    "school",  "pickup",   "at",    "five",    "groceries",
            "milk",    "bread",  "and",     "coffee",  "meeting",  "moved", "to",      "Thursday",
            "sounds",  "great",  "thanks",  "love",    "it",       "photo", "weekend", "train",
            "delayed", "again",  "café",    "naïve",   "über",     "Zoë",   "ok",      "sure"};
        static constexpr std::array<const char*, 10> kEmoji = {
            "😀", "😂", "❤️", "👍", "🎉", "🙏", "😅", "🌅", "👨‍👩‍👧", "🇫🇷"};
        // Most texts are short; a long tail runs to 300 characters.
        std::uniform_real_distribution<double> unit(0, 1);
        const double u = unit(m_random);
        const std::size_t target = 5 + static_cast<std::size_t>(295 * u * u * u);
        std::string text;
        while (text.size() < target) {
            if (!text.empty()) {
                text += pick(10) == 0 ? "\n" : " ";
            }
            text += kWords[pick(kWords.size())];
            if (pick(12) == 0) {
                text += " ";
                text += kEmoji[pick(kEmoji.size())];
            }
        }
        if (text.size() > 300) {
            // Cut at a word boundary so that no UTF-8 sequence is split.
            text.resize(text.rfind(' ', 290));
        }
        return text;
    }

private:
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }
    std::mt19937_64& m_random;
};

struct ChatInfo {
    std::int64_t rowID = 0;
    std::vector<std::int64_t> handles; // senders other than me
    std::string service;
    std::int64_t ordinary = 0;       // ordinary messages it gets
    std::vector<std::string> recent; // GUIDs of its latest messages, for reactions
};

struct Slot {
    int chat = 0;
    bool reaction = false;
};

// Large photos as a phone takes them, with grain so that they compress like real ones. Only a few
// distinct pictures are encoded (HEIC encoding is slow); the rest are copies under new names, each
// decoded on its own by an export.
std::vector<std::pair<std::string, FileType>> writePhotoOriginals(const fs::path& folder,
                                                                  int longSide) {
    struct Kind {
        const char* name;
        FileType type;
        int width;
        int height;
    };
    const std::array<Kind, 3> kinds = {{
        {"a.heic", FileType::heic(), 4032, 3024},
        {"b.jpeg", {"public.jpeg", "jpeg"}, 4032, 3024},
        {"c.png", FileType::png(), 3024, 4032},
    }};
    fs::create_directories(folder);
    std::vector<std::pair<std::string, FileType>> written;
    std::mt19937 grain(7);
    for (const auto& kind : kinds) {
        auto image =
            SamplePictures::sunrise(kind.width * longSide / 4032, kind.height * longSide / 4032);
        for (std::size_t index = 0; index < image.pixels.size(); ++index) {
            if (image.channels == 4 && index % 4 == 3) {
                continue;
            }
            const int noisy = image.pixels[index] + static_cast<int>(grain() % 17) - 8;
            image.pixels[index] = static_cast<std::uint8_t>(std::clamp(noisy, 0, 255));
        }
        const std::string path = (folder / kind.name).string();
        if (!ImageConverter::write(image, path, kind.type.encoding)) {
            throw std::runtime_error("could not write " + path);
        }
        written.emplace_back(path, kind.type);
    }
    return written;
}

std::string mimeOf(const FileType& type) {
    if (type.encoding == "heic") {
        return "image/heic";
    }
    return type.encoding == "png" ? "image/png" : "image/jpeg";
}

std::string extensionOf(const FileType& type) {
    if (type.encoding == "heic") {
        return "HEIC";
    }
    return type.encoding == "png" ? "PNG" : "JPG";
}

// Writes the history in options.folder as an iPhone backup, its newest 1% of messages in the
// log as makeHistory leaves them in chat.db-wal.
void writeBackup(const Options& options) {
    const auto started = std::chrono::steady_clock::now();
    const fs::path database = fs::path(options.folder) / "chat.db";
    if (!fs::is_regular_file(database)) {
        throw std::runtime_error(database.string() + " does not exist: write the history first");
    }
    std::int64_t messages = 0;
    {
        SQLiteConnection db(database.string(), /*readOnly=*/true, /*immutable=*/false);
        db.query("SELECT COUNT(*) FROM message", {},
                 [&](const SQLiteConnection::Row& row) { messages = row.integer(0); });
    }
    BackupWriter::Options backup;
    backup.password = options.password;
    backup.fastKeys = options.fastKeys;
    backup.newestInLog = static_cast<std::size_t>(static_cast<double>(messages) * kWalShare);
    backup.deviceName = "Bench iPhone";
    backup.date = kNow;
    const auto written = BackupWriter::write(
        options.backup, {database.string(), (fs::path(options.folder) / "home").string(), {}},
        backup);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::cout << "Wrote backup " << written << " ("
              << (options.password ? options.fastKeys ? "encrypted, fast keys" : "encrypted"
                                   : "not encrypted")
              << ", " << backup.newestInLog << " messages in sms.db-wal), " << seconds << " s\n";
}

void makeHistory(const Options& options) {
    const auto started = std::chrono::steady_clock::now();
    std::mt19937_64 random(options.seed);
    std::uniform_real_distribution<double> unit(0, 1);

    std::error_code ignored;
    fs::remove_all(options.folder, ignored);
    const fs::path home = fs::path(options.folder) / "home";
    const fs::path attachments = home / "Library/Messages/Attachments";
    fs::create_directories(attachments);

    std::vector<std::pair<std::string, FileType>> originals;
    if (options.photos > 0) {
        originals = writePhotoOriginals(fs::path(options.folder) / "originals", options.photoSize);
    }

    const std::string database = (fs::path(options.folder) / "chat.db").string();
    SQLiteConnection db(database, /*readOnly=*/false, /*immutable=*/false);
    db.execute(SampleDatabase::schema());
    // Building the file needs no safety: it is thrown away if this program fails.
    db.execute("PRAGMA synchronous=OFF; PRAGMA journal_mode=MEMORY; PRAGMA cache_size=-262144;");
    db.execute("BEGIN");

    const Date now = kNow;
    Writer writer(db, now, attachments.string(), "UTC");

    // Handles: the main person over iMessage and SMS, the second person, and a crowd.
    std::vector<std::int64_t> people;
    const auto mainIMessage = writer.handle(kMainAddress, "iMessage");
    const auto mainSMS = writer.handle(kMainAddress, "SMS");
    people.push_back(writer.handle(kSecondAddress, "iMessage"));
    for (int index = 3; index < kHandles; ++index) {
        char address[48];
        if (index % 7 == 0) {
            std::snprintf(address, sizeof address, "friend%03d@example.com", index);
        } else {
            std::snprintf(address, sizeof address, "+1555%07d", 200000 + index * 37);
        }
        people.push_back(writer.handle(address, index % 5 == 0 ? "SMS" : "iMessage"));
    }

    std::vector<ChatInfo> chats;
    const auto oneToOne = [&](const std::string& identifier, std::int64_t handle,
                              const std::string& service) {
        chats.push_back({writer.chat(kOneToOne, identifier, service, std::nullopt, {handle}),
                         {handle},
                         service,
                         0,
                         {}});
    };
    oneToOne(kMainAddress, mainIMessage, "iMessage");
    oneToOne(kMainAddress, mainSMS, "SMS");
    for (std::size_t index = 0; index < people.size(); ++index) {
        char identifier[32];
        std::snprintf(identifier, sizeof identifier, "person%03zu", index);
        oneToOne(index == 0 ? kSecondAddress : identifier, people[index], "iMessage");
    }
    for (int group = 0; group < kGroups; ++group) {
        std::vector<std::int64_t> members;
        const int size = 3 + group % 6;
        for (int member = 0; member < size; ++member) {
            members.push_back(people[(group * 11 + member * 17) % people.size()]);
        }
        char identifier[32];
        std::snprintf(identifier, sizeof identifier, "chat%09d", 100000000 + group);
        const std::optional<std::string> name =
            group % 3 == 0 ? std::optional<std::string>("Group " + std::to_string(group))
                           : std::nullopt;
        chats.push_back({writer.chat(Chat::kGroupStyle, identifier, "iMessage", name, members),
                         members,
                         "iMessage",
                         0,
                         {}});
    }
    // A few chats without messages, which every history has.
    for (int empty = 0; empty < 5; ++empty) {
        writer.chat(kOneToOne, "+1555999000" + std::to_string(empty), "iMessage", std::nullopt, {});
    }

    // Message counts: the main conversation, a second of a tenth of everything, a Zipf tail.
    const std::int64_t reactions = static_cast<std::int64_t>(options.messages * kReactionShare);
    const std::int64_t ordinary = options.messages - reactions;
    chats[0].ordinary = options.main - options.main * 15 / 100;
    chats[1].ordinary = options.main * 15 / 100;
    std::int64_t rest = ordinary - options.main;
    chats[2].ordinary = std::min(rest, ordinary / 10);
    rest -= chats[2].ordinary;
    double weights = 0;
    for (std::size_t index = 3; index < chats.size(); ++index) {
        weights += 1.0 / static_cast<double>(index - 2);
    }
    std::int64_t given = 0;
    for (std::size_t index = 3; index < chats.size(); ++index) {
        chats[index].ordinary =
            static_cast<std::int64_t>(rest * (1.0 / static_cast<double>(index - 2)) / weights);
        given += chats[index].ordinary;
    }
    chats[3].ordinary += rest - given;

    std::vector<Slot> slots;
    slots.reserve(static_cast<std::size_t>(options.messages));
    for (std::size_t index = 0; index < chats.size(); ++index) {
        slots.insert(slots.end(), static_cast<std::size_t>(chats[index].ordinary),
                     Slot{static_cast<int>(index), false});
    }
    // Reactions fall on chats in proportion to their messages.
    for (std::int64_t index = 0; index < reactions; ++index) {
        const auto& donor = slots[random() % static_cast<std::size_t>(ordinary)];
        slots.push_back(Slot{donor.chat, true});
    }
    std::shuffle(slots.begin(), slots.end(), random);

    // Sorted random dates over five years before now, in whole nanoseconds.
    const double span = kYears * 365.25 * Writer::kDay;
    std::vector<double> offsets(slots.size());
    for (auto& offset : offsets) {
        offset = unit(random) * span;
    }
    std::sort(offsets.begin(), offsets.end(), std::greater<>());

    // Photos go to evenly spaced messages of the main conversation (either of its chats).
    const std::int64_t photoEvery = options.photos > 0 ? options.main / options.photos : 0;
    std::int64_t mainSeen = 0;
    int photosWritten = 0;

    TextMaker texts(random);
    const auto walFrom = static_cast<std::size_t>(slots.size() * (1 - kWalShare));
    std::int64_t attachmentCount = 0;
    for (std::size_t index = 0; index < slots.size(); ++index) {
        if (index == walFrom) {
            // The newest rows stay in the log, as in a database the messaging service is using.
            db.execute("COMMIT");
            db.execute(kIndexes);
            db.execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
            db.execute("BEGIN");
        }
        if (index % 100000 == 0 && index > 0) {
            std::cerr << "  " << index << " messages\n";
        }
        auto& chat = chats[static_cast<std::size_t>(slots[index].chat)];
        const Date date = now - offsets[index];
        const bool fromMe = unit(random) < 0.45;
        const std::int64_t sender = chat.handles[random() % chat.handles.size()];
        if (slots[index].reaction) {
            const std::string target = chat.recent.empty()
                                           ? std::string("00000000-0000-4000-8000-000000000000")
                                           : chat.recent[random() % chat.recent.size()];
            const auto roll = random() % 100;
            std::int64_t type = 2000 + static_cast<std::int64_t>(roll % 6);
            std::optional<std::string> emoji;
            if (roll >= 90) {
                type = 2006;
                emoji = roll % 2 == 0 ? "🔥" : "🙌";
            } else if (roll >= 85) {
                type += 1000; // takes an earlier one back
            }
            writer.reaction(chat.rowID, sender, fromMe, target, type, emoji, date);
            continue;
        }
        const bool bodyOnly = unit(random) < kBodyOnlyShare;
        const std::string guid =
            writer.message(chat.rowID, sender, fromMe, texts.next(), bodyOnly, date, chat.service);
        if (chat.recent.size() < 16) {
            chat.recent.push_back(guid);
        } else {
            chat.recent[random() % chat.recent.size()] = guid;
        }

        const bool inMain = slots[index].chat < 2;
        if (inMain && photoEvery > 0 && photosWritten < options.photos &&
            mainSeen++ % photoEvery == 0) {
            const auto& [original, type] =
                originals[static_cast<std::size_t>(photosWritten) % originals.size()];
            char name[32];
            std::snprintf(name, sizeof name, "IMG_%05d.%s", photosWritten + 1,
                          extensionOf(type).c_str());
            char subfolder[8];
            std::snprintf(subfolder, sizeof subfolder, "%02lld",
                          static_cast<long long>(writer.guidCounter() % 100));
            writer.attach(guid, name, type, mimeOf(type), std::nullopt);
            const fs::path file = attachments / subfolder / name;
            fs::copy_file(original, file, fs::copy_options::overwrite_existing);
            db.run("UPDATE attachment SET total_bytes = ? WHERE ROWID = (SELECT MAX(ROWID) FROM "
                   "attachment)",
                   {Value::integer(static_cast<std::int64_t>(fs::file_size(file)))});
            ++photosWritten;
            ++attachmentCount;
        } else if (unit(random) < kAttachmentShare) {
            // Attachments whose files were offloaded: listed by name, never drawn.
            char name[32];
            std::snprintf(name, sizeof name, "IMG_%06lld.HEIC",
                          static_cast<long long>(attachmentCount++));
            writer.attach(guid, name, FileType::heic(), "image/heic", std::nullopt);
        }
    }
    db.execute("COMMIT");
    if (slots.size() <= walFrom) {
        db.execute(kIndexes);
        db.execute("PRAGMA journal_mode=WAL;");
    }
    fs::remove_all(fs::path(options.folder) / "originals", ignored);

    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::cout << "Wrote " << database << ": " << slots.size() << " messages (" << reactions
              << " reactions, " << attachmentCount << " attachments, " << photosWritten
              << " photos) in " << chats.size() + 5 << " chats, " << seconds << " s\n"
              << "home " << home.string() << "\nmain conversation c:p:5550102233 (" << options.main
              << " messages), second c:p:5550104455 (" << chats[2].ordinary << ")\n";
    if (!options.backup.empty()) {
        writeBackup(options);
    }
    std::cout.flush();
    // Ending without closing the connection leaves chat.db-wal holding the newest rows, exactly
    // as a reader finds the database of a running messaging service; closing would fold them in.
    std::_Exit(0);
}

} // namespace
} // namespace scrivly::bench

int main(int argc, char** argv) {
    try {
        const auto options = scrivly::bench::parse(argc, argv);
        if (options.messages == 0) {
            scrivly::bench::writeBackup(options);
        } else {
            scrivly::bench::makeHistory(options);
        }
    } catch (const std::exception& error) {
        std::cerr << "make-history: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
