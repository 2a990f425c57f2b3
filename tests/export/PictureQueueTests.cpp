#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/export/PictureQueue.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

namespace scrivly {
namespace {

// Writes a small plain picture of the given width; its JPEG keeps that width.
std::string picture(const testing::TempDir& dir, const std::string& name, int width) {
    ImageConverter::Image image{width, 20, 3, {}};
    image.pixels.assign(static_cast<std::size_t>(width) * 20 * 3, 200);
    const auto path = dir.file(name);
    EXPECT_TRUE(ImageConverter::write(image, path, "png"));
    return path;
}

int widthOf(const PictureQueue::JPEG& jpeg) {
    const auto size = jpeg ? ImageConverter::jpegSize(*jpeg) : std::nullopt;
    return size ? size->first : 0;
}

TEST(PictureQueue, ConvertsEachPathOnceWhicheverOrderTheyAreTakenIn) {
    testing::TempDir dir;
    std::vector<std::string> paths;
    for (int index = 0; index < 30; ++index) {
        paths.push_back(picture(dir, "p" + std::to_string(index) + ".png", 10 + index));
    }
    const auto broken = dir.file("broken.jpg");
    std::ofstream(broken) << "not a picture";
    const auto heicLike = dir.file("fake.heic");
    std::ofstream(heicLike) << "\0\0\0\x18"
                               "ftypheic but no picture";
    // Nothing ever writes to it: opened the usual way, it would wait forever.
    const auto pipe = dir.file("pipe.heic");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    auto queued = paths;
    queued.insert(queued.begin() + 3, {broken, paths[0], heicLike, heicLike, pipe});

    for (const unsigned workers : {1U, 3U}) {
        SCOPED_TRACE(workers);
        PictureQueue queue(queued, {.maxPixelSize = 1600, .workers = workers, .ahead = 4}, {});
        // Out of order and past the window: the queue must still deliver.
        EXPECT_EQ(widthOf(queue.take(paths[20])), 30);
        const auto first = queue.take(paths[0]);
        EXPECT_EQ(widthOf(first), 10);
        EXPECT_EQ(queue.take(paths[0]), first) << "a repeated path is converted once";
        EXPECT_EQ(queue.take(broken), nullptr);
        EXPECT_EQ(queue.take(heicLike), nullptr);
        EXPECT_EQ(queue.take(pipe), nullptr);
        for (int index = 1; index < 30; ++index) {
            EXPECT_EQ(widthOf(queue.take(paths[index])), 10 + index);
        }
        // One that was never queued is converted on the spot.
        EXPECT_EQ(widthOf(queue.take(picture(dir, "late.png", 7))), 7);
    }
}

TEST(PictureQueue, StoppedExportGetsNothingAndEndsPromptly) {
    testing::TempDir dir;
    std::vector<std::string> paths;
    for (int index = 0; index < 40; ++index) {
        paths.push_back(picture(dir, "p" + std::to_string(index) + ".png", 50));
    }
    std::stop_source stop;
    PictureQueue queue(paths, {.workers = 2}, stop.get_token());
    EXPECT_NE(queue.take(paths[0]), nullptr);
    stop.request_stop();
    EXPECT_EQ(queue.take(paths[39]), nullptr);
}

} // namespace
} // namespace scrivly
