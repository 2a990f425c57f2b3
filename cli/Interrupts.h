#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace scrivly::cli {

// Turns Ctrl-C (and SIGTERM, SIGHUP) into a prompt, tidy end. During a cancellable task the first
// interrupt asks the task to stop through its stop token, and the program ends as usual once it
// has unwound. At any other time, at a second interrupt, or when the program has not ended
// kGrace after the first (a worker stuck in a long decode or on a slow disk cannot be stopped),
// the waiting thread itself removes what is registered for removal and ends the process at once.
// Either way the exit status is 128 + the signal's number.
//
// Make one, early in main and before any other thread starts: it blocks those signals in the
// calling thread (new threads inherit that) and waits for them on a thread of its own. Not
// copyable; the destructor stops its threads and unblocks the signals.
class Interrupts {
public:
    static constexpr std::chrono::milliseconds kGrace{1500};

    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    // A scope during which an interrupt requests a stop instead of ending the process.
    class Cancellable {
    public:
        explicit Cancellable(Interrupts& interrupts);
        ~Cancellable();
        Cancellable(const Cancellable&) = delete;
        Cancellable& operator=(const Cancellable&) = delete;

        std::stop_token token() const { return m_source.get_token(); }

    private:
        Interrupts& m_interrupts;
        std::stop_source m_source;
    };

    // The folder (and everything in it) or file is removed if an interrupt ends the process.
    void removeOnInterrupt(const std::filesystem::path& path);
    void forget(const std::filesystem::path& path);
    // The snapshot leases (see SnapshotLease) that this process holds in scratch are removed with
    // their subfolders if an interrupt ends the process; other runs' stay.
    void removeLeasesOnInterrupt(const std::filesystem::path& scratch);

    // The signal that asked the work to stop, once one did.
    std::optional<int> received() const;

private:
    void wait();
    void watch(const std::stop_token& stop, int signal);
    [[noreturn]] void end(int signal);

    mutable std::mutex m_mutex;
    std::condition_variable_any m_watchdogWakes;
    std::vector<std::filesystem::path> m_paths;
    std::vector<std::filesystem::path> m_scratchFolders;
    std::optional<std::stop_source> m_cancellable;
    std::optional<int> m_received;
    bool m_stopping = false;
    std::thread m_waiter;
    std::jthread m_watchdog; // started by the first interrupt of a cancellable task
};

} // namespace scrivly::cli
