#pragma once

#include "cli/CommandLine.h"

#include "ScrivlyKit/history/History.h"

#include <memory>
#include <optional>
#include <string>

namespace scrivly::cli {

class Interrupts;
class TemporaryFolder;

// The history every command reads, resolved from the global options. With --sample it owns a
// private temporary folder holding a fresh demonstration history, removed when the session ends
// (or by an interrupt).
class Session {
public:
    // Throws UsageError for an unknown time zone or locale; creating the sample may throw.
    Session(const GlobalOptions& options, Interrupts& interrupts);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const History& history() const { return *m_history; }
    const std::string& timeZone() const { return m_history->settings().timeZone; }
    const std::string& locale() const { return m_history->settings().locale; }

private:
    std::unique_ptr<TemporaryFolder> m_sample; // only with --sample
    std::optional<History> m_history;
};

// The conversation a command line names, with errors as usage errors that list the candidates
// and say how to list them with the global options given.
Transcript transcriptOf(const Session& session, const Invocation& invocation);

// The zone and locale to write dates in when there is no history to read: the given ones,
// checked, else the system's. Throws UsageError.
std::string checkedTimeZone(const std::optional<std::string>& zone);
std::string checkedLocale(const std::optional<std::string>& locale);

} // namespace scrivly::cli
