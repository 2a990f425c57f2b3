#pragma once

#include <stdexcept>
#include <string>

namespace scrivly::cli {

// The command line asked for something that can't work (an unknown option, a bad day, a
// conversation that doesn't exist). Exits with status 2; what() is the reason shown.
class UsageError : public std::runtime_error {
public:
    explicit UsageError(const std::string& reason) : std::runtime_error(reason) {}
};

// A failure of the tool itself, such as a file that can't be written. Exits with status 1.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& description) : std::runtime_error(description) {}
};

// Exit statuses of the tool.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

} // namespace scrivly::cli
