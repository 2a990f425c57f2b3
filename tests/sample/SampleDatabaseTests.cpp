#include "ScrivlyKit/sample/SampleDatabase.h"

#include "ScrivlyKit/database/SQLiteConnection.h"
#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/records/AppleTime.h"
#include "ScrivlyKit/records/Attachment.h"
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

// What the command line shows of the sample (grouping, titles, texts, reactions, attachments)
// is kept whole in the golden files; here, what those outputs can't show.
TEST(SampleDatabase, StoresNanosecondDatesArchivedTextsAndRealPictures) {
    testing::TempDir temp;
    const auto info = SampleDatabase::create(temp.file("sample"), kNow);
    EXPECT_GE(std::stoi(rows(info.database,
                             "SELECT COUNT(*) FROM message WHERE text IS NULL AND attributedBody "
                             "IS NOT NULL",
                             1)[0][0]),
              2);
    // Dates are in nanoseconds, as a current Messages version stores them.
    for (const auto& date : rows(info.database, "SELECT date FROM message", 1)) {
        EXPECT_GT(std::stoll(date[0]), AppleTime::kSecondsLimit) << "nanoseconds";
    }
    // The pictures are real, whether written as HEIC or as the PNG fallback.
    const struct {
        const char* name;
        std::pair<int, int> size;
    } pictures[] = {{"IMG_4021.HEIC", {1600, 1200}}, {"seedlings.png", {800, 600}}};
    for (const auto& picture : pictures) {
        SCOPED_TRACE(picture.name);
        const auto found =
            rows(info.database,
                 std::string("SELECT filename FROM attachment WHERE transfer_name = '") +
                     picture.name + "'",
                 1);
        ASSERT_EQ(found.size(), 1U);
        const auto path = Attachment::expandedPath(found[0][0], info.home);
        const auto jpeg = ImageConverter::jpegData(*path, 1600, 0.82);
        ASSERT_TRUE(jpeg.has_value());
        EXPECT_EQ(ImageConverter::jpegSize(*jpeg), picture.size);
    }
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
