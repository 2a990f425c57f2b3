#include "Scrivly/model/Tasks.h"

namespace scrivly {

Tasks::Tasks(std::size_t threads, QObject* parent) : QObject(parent), m_workers(threads) {}

void Tasks::deliverLater(std::function<void()> delivery) {
    {
        const std::lock_guard lock(m_inboxMutex);
        m_inbox.push_back(std::move(delivery));
    }
    // Only a wake-up, by name, so that no data of ours travels through the event queue. One per
    // delivery: the wake-ups still queued go with this object, so none runs after it.
    QMetaObject::invokeMethod(this, "takeDelivery", Qt::QueuedConnection);
}

void Tasks::takeDelivery() {
    std::function<void()> delivery;
    {
        const std::lock_guard lock(m_inboxMutex);
        delivery = std::move(m_inbox.front());
        m_inbox.pop_front();
    }
    delivery();
}

} // namespace scrivly
