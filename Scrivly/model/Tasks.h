#pragma once

#include "Scrivly/model/WorkerPool.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>

namespace scrivly {

// What a background task hands back: its value, or the description of what it threw.
template <typename T> struct Outcome {
    std::optional<T> value;
    QString error;
};

// The model's background work: a few worker threads, and a way back to the thread this object
// lives on (the main thread) for what they produce. Work and its delivery must copy or move what
// they capture, so nothing is shared between the threads.
//
// Destroying it drops the work not yet started and the deliveries not yet made, and waits for the
// work under way; so whatever that work uses must outlive it.
class Tasks : public QObject {
    Q_OBJECT

public:
    explicit Tasks(std::size_t threads, QObject* parent = nullptr);

    // Runs work on a worker thread, urgent work ahead of what waits; what it returns, or what it
    // threw, comes back to deliver on this object's thread.
    template <typename Work, typename Deliver>
    void run(Work work, Deliver deliver, bool urgent = false) {
        m_workers.post(
            [this, work = std::move(work), deliver = std::move(deliver)]() mutable {
                deliverLater([deliver = std::move(deliver), outcome = attempt(work)]() mutable {
                    deliver(std::move(outcome));
                });
            },
            urgent);
    }

    // Any thread: has delivery run on this object's thread.
    void deliverLater(std::function<void()> delivery);

private slots:
    // Runs the oldest delivery in the inbox.
    void takeDelivery();

private:
    template <typename Work>
    static auto attempt(Work& work) -> Outcome<std::invoke_result_t<Work&>> {
        try {
            return {work(), {}};
        } catch (const std::exception& error) {
            return {std::nullopt, QString::fromUtf8(error.what())};
        }
    }

    // Deliveries pass through this lock rather than through Qt's event queue, whose lock lies
    // inside Qt where ThreadSanitizer cannot see it.
    std::mutex m_inboxMutex;
    std::deque<std::function<void()>> m_inbox;
    // Last, so that it is destroyed first: it waits for the work under way, which may still post
    // to the inbox.
    WorkerPool m_workers;
};

} // namespace scrivly
