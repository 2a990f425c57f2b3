#include "ScrivlyKit/sample/SampleDatabase.h"

#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/records/Chat.h"
#include "ScrivlyKit/sample/SamplePictures.h"
#include "ScrivlyKit/sample/SampleWriter.h"

#include <filesystem>
#include <system_error>

namespace scrivly::SampleDatabase {

namespace {

// The tables and columns of a real Messages database that the reader touches, plus enough of
// their neighbours that the file looks like one.
constexpr const char* kSchema =
    R"sql(CREATE TABLE handle (ROWID INTEGER PRIMARY KEY AUTOINCREMENT UNIQUE, id TEXT NOT NULL, country TEXT,
    service TEXT NOT NULL, uncanonicalized_id TEXT, person_centric_id TEXT, UNIQUE (id, service));
CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, text TEXT, replace INTEGER DEFAULT 0,
    service_center TEXT, handle_id INTEGER DEFAULT 0, subject TEXT, country TEXT, attributedBody BLOB,
    version INTEGER DEFAULT 0, type INTEGER DEFAULT 0, service TEXT, account TEXT, account_guid TEXT,
    error INTEGER DEFAULT 0, date INTEGER, date_read INTEGER, date_delivered INTEGER,
    is_delivered INTEGER DEFAULT 0, is_finished INTEGER DEFAULT 0, is_emote INTEGER DEFAULT 0, is_from_me INTEGER DEFAULT 0,
    is_empty INTEGER DEFAULT 0, is_read INTEGER DEFAULT 0, cache_has_attachments INTEGER DEFAULT 0, item_type INTEGER DEFAULT 0,
    other_handle INTEGER DEFAULT 0, group_title TEXT, group_action_type INTEGER DEFAULT 0, associated_message_guid TEXT,
    associated_message_type INTEGER DEFAULT 0, balloon_bundle_id TEXT, payload_data BLOB, expressive_send_style_id TEXT,
    associated_message_range_location INTEGER DEFAULT 0, associated_message_range_length INTEGER DEFAULT 0, thread_originator_guid TEXT, date_edited INTEGER DEFAULT 0,
    date_retracted INTEGER DEFAULT 0, message_summary_info BLOB, associated_message_emoji TEXT, part_count INTEGER);
CREATE TABLE chat (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, style INTEGER, state INTEGER, account_id TEXT,
    properties BLOB, chat_identifier TEXT, service_name TEXT, room_name TEXT, account_login TEXT, is_archived INTEGER DEFAULT 0,
    last_addressed_handle TEXT, display_name TEXT, group_id TEXT, is_filtered INTEGER DEFAULT 0, successful_query INTEGER, last_read_message_timestamp INTEGER DEFAULT 0);
CREATE TABLE attachment (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, created_date INTEGER DEFAULT 0, start_date INTEGER DEFAULT 0, filename TEXT,
    uti TEXT, mime_type TEXT, transfer_state INTEGER DEFAULT 0, is_outgoing INTEGER DEFAULT 0, user_info BLOB,
    transfer_name TEXT, total_bytes INTEGER DEFAULT 0, is_sticker INTEGER DEFAULT 0, hide_attachment INTEGER DEFAULT 0);
CREATE TABLE chat_handle_join (chat_id INTEGER REFERENCES chat (ROWID) ON DELETE CASCADE,
    handle_id INTEGER REFERENCES handle (ROWID) ON DELETE CASCADE, UNIQUE(chat_id, handle_id));
CREATE TABLE chat_message_join (chat_id INTEGER REFERENCES chat (ROWID) ON DELETE CASCADE,
    message_id INTEGER REFERENCES message (ROWID) ON DELETE CASCADE, message_date INTEGER DEFAULT 0,
    PRIMARY KEY (chat_id, message_id));
CREATE TABLE message_attachment_join (message_id INTEGER REFERENCES message (ROWID) ON DELETE CASCADE,
    attachment_id INTEGER REFERENCES attachment (ROWID) ON DELETE CASCADE, UNIQUE(message_id, attachment_id));)sql";

constexpr std::int64_t kOneToOne = 45;

// Reaction types that add a tapback.
constexpr std::int64_t kLoved = 2000;
constexpr std::int64_t kLiked = 2001;
constexpr std::int64_t kEmphasized = 2004;
constexpr std::int64_t kEmoji = 2006;

// The sample people's addresses as the handles store them.
constexpr const char* kMaya = "+15550102233";
constexpr const char* kTheo = "theo.lindqvist@example.com";
constexpr const char* kPriya = "+15550104455";
constexpr const char* kBikeShop = "+15550109988";

void writeHistory(Writer& w) {
    const std::string iMessage = "iMessage";
    const std::string sms = "SMS";

    const std::int64_t maya = w.handle(kMaya, iMessage);
    const std::int64_t mayaSMS = w.handle(kMaya, sms);
    const std::int64_t theo = w.handle(kTheo, iMessage);
    const std::int64_t priya = w.handle(kPriya, iMessage);
    const std::int64_t bikeShop = w.handle(kBikeShop, sms);

    const std::int64_t trip = w.chat(kOneToOne, kMaya, iMessage, std::nullopt, {maya});
    const std::int64_t mayaText = w.chat(kOneToOne, kMaya, sms, std::nullopt, {mayaSMS});
    const std::int64_t garden =
        w.chat(Chat::kGroupStyle, "chat408812345", iMessage, "Garden Club", {maya, theo, priya});
    const std::int64_t theoChat = w.chat(kOneToOne, kTheo, iMessage, std::nullopt, {theo});
    const std::int64_t priyaChat = w.chat(kOneToOne, kPriya, iMessage, std::nullopt, {priya});
    const std::int64_t bikeChat = w.chat(kOneToOne, kBikeShop, sms, std::nullopt, {bikeShop});
    // A chat that never got a message: real histories have them, and the list must skip it.
    w.chat(kOneToOne, "+15550100000", iMessage, std::nullopt, {});

    constexpr std::int64_t me = 0;
    // Writes one ordinary message; onlyInBody leaves the plain text column empty, as newer
    // Messages versions often do.
    const auto say = [&w](std::int64_t chat, std::int64_t from, const std::string& service,
                          Date date, const std::string& text, bool onlyInBody = false) {
        return w.message(chat, from, from == me, text, onlyInBody, date, service);
    };

    // Planning a weekend at the lake, the weekend itself, and the thanks afterwards.
    say(trip, maya, iMessage, w.date(6, 18, 4), "Are we still on for the lake cabin this weekend?");
    say(trip, me, iMessage, w.date(6, 18, 6), "Absolutely! I already packed the board games 🎲");
    say(trip, maya, iMessage, w.date(6, 18, 9), "Yay! Dad dropped off the keys this morning 🔑");
    say(trip, me, iMessage, w.date(6, 18, 11), "Should I bring the kayak?", true);
    say(trip, maya, iMessage, w.date(6, 18, 14),
        "Yes please. Could you also grab groceries on the way? I’ll send you a list.");
    say(trip, me, iMessage, w.date(6, 18, 17), "Sure thing. What time are we leaving?");
    say(trip, maya, iMessage, w.date(6, 18, 20),
        "Let’s aim for 9 on Saturday so we beat the traffic.");
    say(trip, me, iMessage, w.date(6, 18, 22),
        "9 is early for a Saturday… I'll be there by 9:30 with donuts.");

    say(trip, maya, iMessage, w.date(4, 7, 42), "Are you up? The lake is completely still.");
    say(trip, me, iMessage, w.date(4, 7, 45), "Up and on the porch with coffee ☕");
    const std::string sunrise =
        say(trip, maya, iMessage, w.date(4, 7, 51), "Sunrise from the dock this morning");
    w.attach(sunrise, "IMG_4021.HEIC", FileType::heic(), "image/heic", SamplePictures::sunrise());
    say(trip, me, iMessage, w.date(4, 7, 54), "Wow, that’s gorgeous. You should frame it!");
    say(trip, maya, iMessage, w.date(4, 8, 2), "Pancakes in ten minutes if you want some 🥞",
        true);
    say(trip, me, iMessage, w.date(4, 8, 6), "On my way down!");

    const std::string thanks = say(trip, me, iMessage, w.date(2, 20, 30),
                                   "Thanks again for a lovely weekend. Same time next year?");
    say(trip, maya, iMessage, w.date(2, 20, 41), "Already marked in my calendar 😊");
    w.reaction(trip, maya, false, thanks, kLoved, std::nullopt, w.date(2, 20, 42));

    // The same person over SMS: the list shows it together with the iMessage chat.
    say(mayaText, mayaSMS, sms, w.date(9, 12, 15),
        "My phone is on SMS only today, battery saver. Call if it's urgent.");
    say(mayaText, me, sms, w.date(9, 12, 17),
        "Nothing urgent! Just wanted to say the apple pie was amazing 🥧");

    const std::string ready = say(garden, priya, iMessage, w.date(5, 9, 0),
                                  "Good morning, gardeners! The seedlings are ready to go out 🌱");
    w.attach(ready, "seedlings.png", FileType::png(), "image/png", SamplePictures::seedlings());
    say(garden, me, iMessage, w.date(5, 9, 2),
        "They look so healthy! What have you been feeding "
        "them?");
    w.reaction(garden, me, true, ready, kLiked, std::nullopt, w.date(5, 9, 10));
    w.reaction(garden, theo, false, ready, kEmoji, "🌱", w.date(5, 9, 11));
    say(garden, theo, iMessage, w.date(5, 9, 14), "Compost tea, twice a week. Works wonders.",
        true);
    say(garden, maya, iMessage, w.date(5, 9, 20),
        "Can we plant on Saturday morning? Rain is forecast for Sunday.");
    say(garden, me, iMessage, w.date(5, 10, 2),
        "Saturday works for me. I’ll bring gloves and the spare trowels.");

    const std::string schedule = say(garden, theo, iMessage, w.date(3, 17, 45),
                                     "Here's the planting schedule for the community plot.");
    w.attach(schedule, "planting-schedule.pdf", FileType::pdf(), "application/pdf", std::nullopt);
    w.reaction(garden, maya, false, schedule, kEmphasized, std::nullopt, w.date(3, 17, 50));
    w.reaction(garden, priya, false, schedule, kLiked, std::nullopt, w.date(3, 17, 52));
    say(garden, me, iMessage, w.date(3, 17, 53), "Thanks, Theo! I signed up for the tomato beds 🍅");
    say(garden, priya, iMessage, w.date(3, 18, 1),
        "I’ll take the herbs. See everyone Saturday at 8!", true);

    say(theoChat, theo, iMessage, w.date(12, 15, 30),
        "Do you still want my old tomato cages? I’m clearing out the shed this weekend.");
    say(theoChat, me, iMessage, w.date(12, 15, 44),
        "Yes please! I can swing by Saturday afternoon.");
    say(theoChat, theo, iMessage, w.date(10, 11, 5),
        "Left them by the side gate for you, with a few basil cuttings 🌿", true);

    say(priyaChat, priya, iMessage, w.date(20, 19, 0),
        "Book club moved to Thursday at my place. I’m making lasagna!");
    say(priyaChat, me, iMessage, w.date(20, 19, 6), "Count me in. I’ll bring a salad 🥗");

    say(bikeChat, bikeShop, sms, w.date(1, 16, 20),
        "Your bike tune-up is done. Pick up any time before 6.");
}

} // namespace

const char* schema() {
    return kSchema;
}

Info create(const std::string& folder, Date now) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    fs::remove_all(folder, ignored);

    const fs::path root(folder);
    const fs::path home = root / "home";
    const fs::path attachments = home / "Library" / "Messages" / "Attachments";
    fs::create_directories(attachments);

    const fs::path database = root / "chat.db";
    {
        // Closed at the end of this block, also when a statement throws; an unfinished
        // transaction is then simply not kept.
        SQLiteConnection db(database.string(), false, false);
        db.execute(kSchema);
        db.execute("BEGIN");
        Writer writer(db, now, attachments.string());
        writeHistory(writer);
        db.execute("COMMIT");
    }
    return Info{database.string(), home.string()};
}

std::vector<std::pair<std::string, std::string>> people() {
    // Written the way a person would type them, unlike the compact numbers in the handles.
    return {
        {"+1 (555) 010-2233", "Maya Okafor"},
        {kTheo, "Theo Lindqvist"},
        {"+1 555 010 4455", "Priya Raman"},
    };
}

NameBook nameBook() {
    return NameBook(people());
}

} // namespace scrivly::SampleDatabase
