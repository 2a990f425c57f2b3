#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace scrivly {

// Converts the pictures an export will need to bounded JPEG data on worker threads, a little ahead
// of the one thread that takes them in order, so that decoding runs on every core while the
// pages are laid out. Each distinct path is converted once. At most one picture of a kind that is
// decoded whole (HEIC, HEIF, AVIF: a 12-megapixel photo needs over 100 MB while it is decoded) is
// converted at a time, so memory stays bounded whatever the number of cores.
class PictureQueue {
public:
    using JPEG = std::shared_ptr<const std::vector<std::uint8_t>>;

    struct Settings {
        int maxPixelSize = 1600;
        double quality = 0.82;
        unsigned workers = 0;   // 0: one per core, at most four
        std::size_t ahead = 12; // pictures converted beyond the last one taken
    };

    // paths in the order they will be taken; repeated ones are converted once.
    PictureQueue(const std::vector<std::string>& paths, Settings settings, std::stop_token stop);
    // Stops the workers and waits for them.
    ~PictureQueue();
    PictureQueue(const PictureQueue&) = delete;
    PictureQueue& operator=(const PictureQueue&) = delete;

    // The JPEG data of path, waiting for its conversion; null when it could not be converted or
    // the export was stopped. A path that was not queued is converted here and now.
    JPEG take(const std::string& path);

private:
    enum class State { waiting, converting, done };
    struct Item {
        std::string path;
        State state = State::waiting;
        std::optional<bool> decodedWhole; // found out by the first worker that looks at it
        JPEG jpeg;
    };

    void work(const std::stop_token& stop);
    // The index of the next item a worker may start, or nothing; called under the lock.
    std::optional<std::size_t> nextItem();
    JPEG convert(const std::string& path) const;

    Settings m_settings;
    std::stop_token m_exportStop;
    std::mutex m_lock;
    std::condition_variable_any m_changed;
    std::vector<Item> m_items;
    std::unordered_map<std::string, std::size_t> m_index;
    std::size_t m_taken = 0;        // items before this one were asked for
    std::size_t m_firstWaiting = 0; // no item before this one waits
    bool m_wholeDecodeRunning = false;
    std::vector<std::jthread> m_workers; // last: they stop and join before the rest goes
};

} // namespace scrivly
