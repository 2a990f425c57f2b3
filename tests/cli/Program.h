#pragma once

#include <chrono>
#include <csignal>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace scrivly::testing {

// What a finished run of the built scrivly-cli gave.
struct Outcome {
    int status = -1; // exit status, or 128 + the signal that ended it
    std::string out;
    std::string err;
    // How long the program ran on after it was sent the interrupt, when it was.
    std::optional<std::chrono::milliseconds> afterInterrupt;
};

struct RunOptions {
    // Variables set (a value) or removed (nothing) in the program's environment.
    std::map<std::string, std::optional<std::string>> environment;
    // Called with standard error so far after each read; when it first returns true, the
    // program gets interruptSignal.
    std::function<bool(const std::string& err)> interruptWhen;
    // Else, when set, the program gets interruptSignal this long after it started.
    std::optional<std::chrono::milliseconds> interruptAfter;
    int interruptSignal = SIGINT;
};

// Runs scrivly-cli with the arguments, standard input from /dev/null, and collects its output.
Outcome runProgram(const std::vector<std::string>& arguments, const RunOptions& options = {});

} // namespace scrivly::testing
