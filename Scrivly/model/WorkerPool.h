#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

namespace scrivly {

// A few threads that run work in the order it was handed in, urgent work first. A thread is
// started when work arrives and no thread is free, up to the limit; threads then stay until the
// pool goes. Work goes through a queue under a standard mutex, so whatever it captured is
// published to the thread that runs it, and ThreadSanitizer sees that hand-over.
//
// Destroying the pool drops the work that has not started and waits for the work under way, so
// the objects that work uses must outlive the pool. Work must not throw.
class WorkerPool {
public:
    explicit WorkerPool(std::size_t maxThreads) : m_maxThreads(maxThreads) {}
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;
    // The threads are asked to stop, then joined, while the queue they wait on still exists.
    ~WorkerPool() {
        for (std::jthread& thread : m_threads) {
            thread.request_stop();
        }
        m_threads.clear();
    }

    void post(std::function<void()> work, bool urgent = false) {
        {
            const std::lock_guard lock(m_mutex);
            if (urgent) {
                m_queue.push_front(std::move(work));
            } else {
                m_queue.push_back(std::move(work));
            }
            if (m_queue.size() > m_idle && m_threads.size() < m_maxThreads) {
                m_threads.emplace_back([this](std::stop_token stop) { serve(stop); });
            }
        }
        m_ready.notify_one();
    }

private:
    void serve(std::stop_token stop) {
        std::unique_lock lock(m_mutex);
        while (true) {
            ++m_idle;
            m_ready.wait(lock, stop, [this] { return !m_queue.empty(); });
            --m_idle;
            if (stop.stop_requested()) {
                return;
            }
            std::function<void()> work = std::move(m_queue.front());
            m_queue.pop_front();
            lock.unlock();
            work();
            work = nullptr; // its captures are destroyed outside the lock
            lock.lock();
        }
    }

    const std::size_t m_maxThreads;
    std::mutex m_mutex;
    std::condition_variable_any m_ready;
    std::deque<std::function<void()>> m_queue;
    std::size_t m_idle = 0; // threads waiting for work
    std::vector<std::jthread> m_threads;
};

} // namespace scrivly
