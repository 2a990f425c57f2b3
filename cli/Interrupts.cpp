#include "cli/Interrupts.h"

#include <csignal>
#include <cstdlib>
#include <pthread.h>
#include <system_error>
#include <unistd.h>

namespace scrivly::cli {

namespace {

// Sent by the destructor to wake the waiting thread so that it can end.
constexpr int kWakeSignal = SIGUSR1;

sigset_t waitedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    sigaddset(&signals, kWakeSignal);
    return signals;
}

} // namespace

Interrupts::Interrupts() {
    const sigset_t signals = waitedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_waiter = std::thread([this] { wait(); });
}

Interrupts::~Interrupts() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    pthread_kill(m_waiter.native_handle(), kWakeSignal);
    m_waiter.join();
    const sigset_t signals = waitedSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void Interrupts::removeOnInterrupt(const std::filesystem::path& folder) {
    std::lock_guard lock(m_mutex);
    m_folders.push_back(folder);
}

void Interrupts::forget(const std::filesystem::path& folder) {
    std::lock_guard lock(m_mutex);
    std::erase(m_folders, folder);
}

void Interrupts::wait() {
    const sigset_t signals = waitedSignals();
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0) {
            continue;
        }
        std::vector<std::filesystem::path> folders;
        {
            std::lock_guard lock(m_mutex);
            if (signal == kWakeSignal) {
                if (m_stopping) {
                    return;
                }
                continue;
            }
            // The first interrupt during a cancellable task asks it to stop; a second one, or one
            // at any other time, ends the process at once.
            if (m_cancellable && !m_cancellable->stop_requested()) {
                m_cancellable->request_stop();
                continue;
            }
            folders = m_folders;
        }
        for (const auto& folder : folders) {
            std::error_code ignored;
            std::filesystem::remove_all(folder, ignored);
        }
        // Ends a progress bar's line, so the shell prompt starts on a line of its own.
        [[maybe_unused]] auto written = ::write(STDERR_FILENO, "\n", 1);
        std::_Exit(128 + signal);
    }
}

Interrupts::Cancellable::Cancellable(Interrupts& interrupts) : m_interrupts(interrupts) {
    std::lock_guard lock(m_interrupts.m_mutex);
    m_interrupts.m_cancellable = m_source;
}

Interrupts::Cancellable::~Cancellable() {
    std::lock_guard lock(m_interrupts.m_mutex);
    m_interrupts.m_cancellable.reset();
}

} // namespace scrivly::cli
