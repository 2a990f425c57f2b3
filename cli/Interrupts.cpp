#include "cli/Interrupts.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <pthread.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace scrivly::cli {

namespace fs = std::filesystem;

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

using FileIdentity = std::pair<dev_t, ino_t>;

// The files this process has open, as listed in /dev/fd (Linux, macOS and the BSDs have it).
std::set<FileIdentity> openFiles() {
    std::set<FileIdentity> files;
    std::error_code error;
    for (fs::directory_iterator it("/dev/fd", error), end; !error && it != end;
         it.increment(error)) {
        const std::string name = it->path().filename().string();
        int descriptor = -1;
        struct stat status {};
        if (std::from_chars(name.data(), name.data() + name.size(), descriptor).ec == std::errc() &&
            ::fstat(descriptor, &status) == 0) {
            files.emplace(status.st_dev, status.st_ino);
        }
    }
    return files;
}

// A lease is a lock file "NAME.lock", held open by its run, beside its subfolder "NAME".
void removeOwnLeases(const fs::path& scratch, const std::set<FileIdentity>& held) {
    constexpr std::string_view kLockSuffix = ".lock";
    std::error_code error;
    for (fs::directory_iterator it(scratch, error), end; !error && it != end; it.increment(error)) {
        const fs::path lock = it->path();
        const std::string name = lock.filename().string();
        struct stat status {};
        if (!name.ends_with(kLockSuffix) || ::lstat(lock.c_str(), &status) != 0 ||
            !held.contains({status.st_dev, status.st_ino})) {
            continue;
        }
        std::error_code ignored;
        fs::remove_all(scratch / name.substr(0, name.size() - kLockSuffix.size()), ignored);
        fs::remove(lock, ignored);
    }
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
    if (m_watchdog.joinable()) {
        m_watchdog.request_stop();
        m_watchdog.join();
    }
    const sigset_t signals = waitedSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void Interrupts::removeOnInterrupt(const fs::path& path) {
    std::lock_guard lock(m_mutex);
    m_paths.push_back(path);
}

void Interrupts::forget(const fs::path& path) {
    std::lock_guard lock(m_mutex);
    std::erase(m_paths, path);
}

void Interrupts::removeLeasesOnInterrupt(const fs::path& scratch) {
    std::lock_guard lock(m_mutex);
    m_scratchFolders.push_back(scratch);
}

std::optional<int> Interrupts::received() const {
    std::lock_guard lock(m_mutex);
    return m_received;
}

void Interrupts::wait() {
    const sigset_t signals = waitedSignals();
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0) {
            continue;
        }
        {
            std::lock_guard lock(m_mutex);
            if (signal == kWakeSignal) {
                if (m_stopping) {
                    return;
                }
                continue;
            }
            if (!m_received && m_cancellable && !m_cancellable->stop_requested()) {
                m_received = signal;
                m_cancellable->request_stop();
                m_watchdog = std::jthread(
                    [this, signal](const std::stop_token& stop) { watch(stop, signal); });
                continue;
            }
        }
        end(signal);
    }
}

void Interrupts::watch(const std::stop_token& stop, int signal) {
    {
        std::unique_lock lock(m_mutex);
        m_watchdogWakes.wait_for(lock, stop, kGrace, [] { return false; });
    }
    if (!stop.stop_requested()) {
        end(signal);
    }
}

void Interrupts::end(int signal) {
    std::vector<fs::path> paths;
    std::vector<fs::path> scratchFolders;
    {
        std::lock_guard lock(m_mutex);
        paths = m_paths;
        scratchFolders = m_scratchFolders;
    }
    // The work goes on meanwhile and may still add files to a folder being removed, hence a few
    // tries.
    for (const auto& path : paths) {
        for (int attempt = 0; attempt < 3; ++attempt) {
            std::error_code error;
            fs::remove_all(path, error);
            if (!error) {
                break;
            }
        }
    }
    const auto held = openFiles();
    for (const auto& scratch : scratchFolders) {
        removeOwnLeases(scratch, held);
    }
    // Ends a progress bar's line, so the shell prompt starts on a line of its own.
    [[maybe_unused]] auto written = ::write(STDERR_FILENO, "\n", 1);
    std::_Exit(128 + signal);
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
