#include "ScrivlyKit/export/PictureQueue.h"

#include "ScrivlyKit/export/ImageConverter.h"
#include "ScrivlyKit/export/PictureFile.h"
#include "ScrivlyKit/platform/Memory.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace scrivly {

namespace {

// HEIC, HEIF and AVIF files are ISO media files: a box of type "ftyp" opens them. libheif
// decodes them whole, whatever size is asked for.
bool isDecodedWhole(const std::string& path) {
    std::array<std::uint8_t, 12> head{};
    const auto file = PictureFile::open(path);
    return file && PictureFile::readStart(*file, head) == head.size() &&
           std::memcmp(head.data() + 4, "ftyp", 4) == 0;
}

unsigned workerCount(unsigned wanted) {
    if (wanted > 0) {
        return wanted;
    }
    return std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
}

} // namespace

PictureQueue::PictureQueue(const std::vector<std::string>& paths, Settings settings,
                           std::stop_token stop)
    : m_settings(settings), m_exportStop(std::move(stop)) {
    for (const auto& path : paths) {
        if (m_index.emplace(path, m_items.size()).second) {
            m_items.push_back(Item{path, State::waiting, std::nullopt, nullptr});
        }
    }
    const unsigned count = std::min<std::size_t>(workerCount(m_settings.workers), m_items.size());
    for (unsigned worker = 0; worker < count; ++worker) {
        m_workers.emplace_back([this](const std::stop_token& workerStop) { work(workerStop); });
    }
}

PictureQueue::~PictureQueue() {
    for (auto& worker : m_workers) {
        worker.request_stop();
    }
    m_changed.notify_all();
    m_workers.clear();
}

std::optional<std::size_t> PictureQueue::nextItem() {
    while (m_firstWaiting < m_items.size() && m_items[m_firstWaiting].state != State::waiting) {
        ++m_firstWaiting;
    }
    // Only a few items lie between the first waiting one and the end of the window, so picking
    // stays cheap however many pictures there are.
    const std::size_t end = std::min(m_items.size(), m_taken + m_settings.ahead);
    for (std::size_t index = m_firstWaiting; index < end; ++index) {
        const Item& item = m_items[index];
        if (item.state == State::waiting &&
            !(m_wholeDecodeRunning && item.decodedWhole.value_or(false))) {
            return index;
        }
    }
    return std::nullopt;
}

void PictureQueue::work(const std::stop_token& stop) {
    std::unique_lock lock(m_lock);
    while (!stop.stop_requested() && !m_exportStop.stop_requested()) {
        std::optional<std::size_t> next;
        m_changed.wait(lock, stop, [&] { return (next = nextItem()).has_value(); });
        if (!next || m_exportStop.stop_requested()) {
            return;
        }
        Item& item = m_items[*next];
        if (!item.decodedWhole) {
            const std::string path = item.path;
            item.state = State::converting; // nobody else looks at it meanwhile
            lock.unlock();
            const bool whole = isDecodedWhole(path);
            lock.lock();
            item.decodedWhole = whole;
            item.state = State::waiting;
            m_firstWaiting = std::min(m_firstWaiting, *next);
            if (whole && m_wholeDecodeRunning) {
                continue; // another worker decodes one already; pick something else
            }
        }
        item.state = State::converting;
        const bool whole = *item.decodedWhole;
        m_wholeDecodeRunning = m_wholeDecodeRunning || whole;
        const std::string path = item.path;
        lock.unlock();
        JPEG jpeg = convert(path);
        lock.lock();
        item.jpeg = std::move(jpeg);
        item.state = State::done;
        if (whole) {
            m_wholeDecodeRunning = false;
        }
        m_changed.notify_all();
    }
}

PictureQueue::JPEG PictureQueue::convert(const std::string& path) const {
    auto jpeg = ImageConverter::jpegData(path, m_settings.maxPixelSize, m_settings.quality);
    // Decoding leaves large freed blocks in the worker's arena; without this the resident size
    // would keep the high-water mark of every worker for the rest of the export.
    Memory::releaseFreePages();
    return jpeg ? std::make_shared<const std::vector<std::uint8_t>>(std::move(*jpeg)) : nullptr;
}

PictureQueue::JPEG PictureQueue::take(const std::string& path) {
    std::unique_lock lock(m_lock);
    const auto found = m_index.find(path);
    if (found == m_index.end()) {
        lock.unlock();
        return convert(path);
    }
    const std::size_t index = found->second;
    if (index + 1 > m_taken) {
        m_taken = index + 1;
        m_changed.notify_all();
    }
    m_changed.wait(lock, m_exportStop, [&] { return m_items[index].state == State::done; });
    if (m_items[index].state != State::done) {
        return nullptr; // stopped
    }
    return m_items[index].jpeg;
}

} // namespace scrivly
