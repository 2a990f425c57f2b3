#include "ScrivlyKit/platform/FileSystem.h"
#include "ScrivlyKit/platform/UUID.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

namespace scrivly {
namespace {

namespace fs = std::filesystem;

TEST(Platform, RandomUUIDsAreVersion4AndDistinct) {
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const auto uuid = randomUUID();
        ASSERT_TRUE(std::regex_match(uuid, form)) << uuid;
        seen.insert(uuid);
    }
    EXPECT_EQ(seen.size(), 1000U);
}

TEST(Platform, CopyFileReplacesWithAnExactCopy) {
    testing::TempDir dir;
    const auto to = dir.file("copy");
    std::ofstream(to) << std::string(300000, 'z'); // a longer file must be cut, not overlaid
    for (const std::size_t size : {0U, 1U, 200001U}) {
        SCOPED_TRACE(size);
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            content[i] = static_cast<char>(i * 31 % 251);
        }
        const auto from = dir.file("source");
        std::ofstream(from, std::ios::binary) << content;
        FileSystem::copyFile(from, to);
        EXPECT_EQ(testing::readFile(to), content);
    }
    EXPECT_THROW(FileSystem::copyFile(dir.file("missing"), to), fs::filesystem_error);
    EXPECT_THROW(FileSystem::copyFile(dir.file("source"), dir.file("no/folder")),
                 fs::filesystem_error);
}

} // namespace
} // namespace scrivly
