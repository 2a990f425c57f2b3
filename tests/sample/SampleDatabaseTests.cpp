#include "ScrivlyKit/sample/SampleDatabase.h"

#include "ScrivlyKit/conversations/Conversation.h"
#include "ScrivlyKit/conversations/Transcript.h"
#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/records/AppleTime.h"
#include "ScrivlyKit/sample/SampleWriter.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace scrivly {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

// A fixed instant keeps the days of the sample the same on every run: 2024-05-15 12:00 UTC.
const Date kNow = Date::fromUnixSeconds(1715774400);

// Runs a query on a finished sample database and returns its rows, each column as text.
std::vector<std::vector<std::string>> rows(const std::string& database, const std::string& sql,
                                           int columns) {
    SQLiteConnection db(database, true, false);
    std::vector<std::vector<std::string>> result;
    db.query(sql, {}, [&](const SQLiteConnection::Row& row) {
        std::vector<std::string> values;
        for (int column = 0; column < columns; ++column) {
            values.push_back(row.text(column).value_or("NULL"));
        }
        result.push_back(std::move(values));
    });
    return result;
}

// The sample written once, read back through the reader and grouped, as the application does.
// Writing it takes seconds (the HEIC encoder is slow), so the tests of this suite share one copy
// and only read it.
class SampleHistory : public ::testing::Test {
protected:
    struct Shared {
        testing::TempDir temp;
        SampleDatabase::Info info;
        MessagesReader reader;
        std::vector<Chat> chats;
        std::vector<Conversation> conversations;
    };

    static void SetUpTestSuite() {
        shared = std::make_unique<Shared>();
        shared->info = SampleDatabase::create(shared->temp.file("sample"), kNow);
        shared->reader = MessagesReader::ofDatabase(shared->info.database, shared->info.home,
                                                    shared->temp.file("snapshots"));
        shared->chats = shared->reader.chats();
        shared->conversations = Conversations::group(shared->chats, SampleDatabase::nameBook());
    }
    static void TearDownTestSuite() { shared.reset(); }

    const Conversation& conversation(const std::string& title) const {
        const auto found = std::find_if(conversations.begin(), conversations.end(),
                                        [&](const Conversation& c) { return c.title == title; });
        if (found == conversations.end()) {
            throw std::runtime_error("no conversation titled " + title);
        }
        return *found;
    }

    Transcript transcript(const std::string& title) const {
        const Conversation& c = conversation(title);
        return Transcript::build(c.title, c.participants, reader.messages(c.chatIDs), std::nullopt,
                                 std::nullopt, "Me", names);
    }

    static const TranscriptEntry& entry(const Transcript& transcript, const std::string& text) {
        const auto found =
            std::find_if(transcript.entries.begin(), transcript.entries.end(),
                         [&](const TranscriptEntry& e) { return e.text.starts_with(text); });
        if (found == transcript.entries.end()) {
            throw std::runtime_error("no entry beginning " + text);
        }
        return *found;
    }

    static inline std::unique_ptr<Shared> shared;
    const NameBook names = SampleDatabase::nameBook();
    const SampleDatabase::Info& info = shared->info;
    const MessagesReader& reader = shared->reader;
    const std::vector<Chat>& chats = shared->chats;
    const std::vector<Conversation>& conversations = shared->conversations;
};

TEST_F(SampleHistory, GroupsIntoFiveConversationsNewestFirst) {
    EXPECT_EQ(chats.size(), 7U);
    std::vector<std::string> titles;
    for (const Conversation& c : conversations) {
        titles.push_back(c.title);
        ASSERT_TRUE(c.lastDate.has_value());
        EXPECT_LT(*c.lastDate, kNow);
        EXPECT_GT(*c.lastDate, kNow - 21 * 86400.0);
    }
    // The empty chat is left out; the newest message is the bike shop's from yesterday, and its
    // number has no name.
    EXPECT_THAT(titles, ElementsAre("+1 (555) 010-9988", "Maya Okafor", "Garden Club",
                                    "Theo Lindqvist", "Priya Raman"));
    // One person's iMessage and SMS chats are one conversation.
    EXPECT_THAT(conversation("Maya Okafor").services, ElementsAre("SMS", "iMessage"));
    EXPECT_EQ(conversation("Maya Okafor").messageCount, 18);
    // Members are named although their numbers are written differently from the name book's.
    EXPECT_THAT(conversation("Garden Club").participants,
                UnorderedElementsAre("Maya Okafor", "Theo Lindqvist", "Priya Raman"));
}

TEST_F(SampleHistory, StoresAsACurrentVersionAndShowsArchivedTextsAndReactions) {
    EXPECT_GE(std::stoi(rows(info.database,
                             "SELECT COUNT(*) FROM message WHERE text IS NULL AND attributedBody "
                             "IS NOT NULL",
                             1)[0][0]),
              2);
    // Dates are in nanoseconds, as a current Messages version stores them.
    const auto dates = rows(info.database, "SELECT date FROM message", 1);
    ASSERT_FALSE(dates.empty());
    for (const auto& date : dates) {
        EXPECT_GT(std::stoll(date[0]), AppleTime::kSecondsLimit) << "nanoseconds";
    }
    const Transcript garden = transcript("Garden Club");
    EXPECT_EQ(garden.entries.size(), 8U);
    EXPECT_EQ(entry(garden, "Compost tea").text, "Compost tea, twice a week. Works wonders.");
    EXPECT_THAT(
        entry(garden, "Good morning, gardeners!").reactions,
        ElementsAre(ShownReaction{"Me", ReactionKind::fixed(ReactionKind::Case::liked), true},
                    ShownReaction{"Theo Lindqvist", ReactionKind::emojiReaction("🌱"), false}));
}

TEST_F(SampleHistory, StoresPicturesUnderHomeAndLeavesThePDFMissing) {
    const Transcript maya = transcript("Maya Okafor");
    const Transcript garden = transcript("Garden Club");
    struct Case {
        std::string name;
        const TranscriptEntry& entry;
        std::string mimeType;
        std::pair<int, int> size;
    };
    const Case pictures[] = {
        {"IMG_4021.HEIC", entry(maya, "Sunrise from the dock"), "image/heic", {1600, 1200}},
        {"seedlings.png", entry(garden, "Good morning, gardeners!"), "image/png", {800, 600}},
    };
    for (const Case& c : pictures) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(c.entry.attachments.size(), 1U);
        const Attachment& picture = c.entry.attachments[0];
        EXPECT_EQ(picture.name, c.name);
        EXPECT_EQ(picture.mimeType, c.mimeType);
        ASSERT_TRUE(picture.path.has_value());
        EXPECT_TRUE(picture.path->starts_with(info.home + "/Library/Messages/Attachments/"));
        ASSERT_TRUE(fs::exists(*picture.path));
        EXPECT_EQ(picture.totalBytes, static_cast<std::int64_t>(fs::file_size(*picture.path)));
        // The file is a real picture, whether written as HEIC or as the PNG fallback.
        const auto jpeg = ImageConverter::jpegData(*picture.path, 1600, 0.82);
        ASSERT_TRUE(jpeg.has_value());
        EXPECT_EQ(ImageConverter::jpegSize(*jpeg), c.size);
    }

    const TranscriptEntry& schedule = entry(garden, "Here's the planting schedule");
    ASSERT_EQ(schedule.attachments.size(), 1U);
    const Attachment& pdf = schedule.attachments[0];
    EXPECT_EQ(pdf.name, "planting-schedule.pdf");
    EXPECT_EQ(pdf.mimeType, "application/pdf");
    EXPECT_EQ(pdf.totalBytes, SampleDatabase::Writer::kMissingFileBytes);
    ASSERT_TRUE(pdf.path.has_value());
    EXPECT_FALSE(fs::exists(*pdf.path));
}

TEST(SampleDatabase, WritingTwiceReplacesTheFolderWithTheSameHistory) {
    testing::TempDir temp;
    const std::string folder = temp.file("sample");
    const auto guids = [](const std::string& database) {
        return rows(database,
                    "SELECT guid FROM message UNION ALL SELECT guid FROM attachment ORDER BY 1", 1);
    };

    const auto first = SampleDatabase::create(folder, kNow);
    const auto firstGuids = guids(first.database);
    std::ofstream(folder + "/leftover.txt") << "from an earlier run";

    // A later day: the dates move, the GUIDs do not.
    const auto second = SampleDatabase::create(folder, kNow + 3 * 86400.0);
    EXPECT_EQ(second.database, first.database);
    EXPECT_EQ(second.home, first.home);
    EXPECT_EQ(guids(second.database), firstGuids);
    EXPECT_FALSE(fs::exists(folder + "/leftover.txt"));
    EXPECT_EQ(rows(second.database, "SELECT COUNT(*) FROM chat", 1)[0][0], "7");
}

TEST(SampleDatabase, ThrowsWhenTheFolderCannotBeMade) {
    testing::TempDir temp;
    std::ofstream(temp.file("file")) << "not a folder";
    EXPECT_THROW(SampleDatabase::create(temp.file("file") + "/sample", kNow), fs::filesystem_error);
}

} // namespace
} // namespace scrivly
