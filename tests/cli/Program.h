#pragma once

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
};

struct RunOptions {
    // Variables set (a value) or removed (nothing) in the program's environment.
    std::map<std::string, std::optional<std::string>> environment;
    // Called with standard error so far after each read; when it first returns true, the
    // program gets SIGINT.
    std::function<bool(const std::string& err)> interruptWhen;
};

// Runs scrivly-cli with the arguments, standard input from /dev/null, and collects its output.
Outcome runProgram(const std::vector<std::string>& arguments, const RunOptions& options = {});

} // namespace scrivly::testing
