#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace scrivly::cli {

// Turns Ctrl-C (and SIGTERM, SIGHUP) into something the tool can act on. While a cancellable
// task runs, an interrupt asks it to stop through its stop token; at any other time the folders
// registered for removal are removed and the process ends with 128 + the signal's number.
//
// Make one, early in main and before any other thread starts: it blocks those signals in the
// calling thread (new threads inherit that) and waits for them on a thread of its own. Not
// copyable; the destructor stops the waiting thread and unblocks the signals.
class Interrupts {
public:
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

    // The folder (and everything in it) is removed if an interrupt ends the process.
    void removeOnInterrupt(const std::filesystem::path& folder);
    void forget(const std::filesystem::path& folder);

private:
    void wait();

    std::mutex m_mutex;
    std::vector<std::filesystem::path> m_folders;
    std::optional<std::stop_source> m_cancellable;
    bool m_stopping = false;
    std::thread m_waiter;
};

} // namespace scrivly::cli
