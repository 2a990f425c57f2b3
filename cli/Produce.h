#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace scrivly::cli {

class Interrupts;
class Session;

// The produce command's arguments as typed.
struct ProduceArguments {
    std::string folder;
    std::vector<std::string> conversations;
    bool all = false;
    std::string batesPrefix;
    std::int64_t batesStart = 1;
    std::string from;
    std::string to;
    std::string maxSize;
    bool perDay = false;
    bool csv = false;
    bool natives = false;
    bool loadFile = false;
    std::string custodian;
    std::string header;
    std::string paper = "letter";
    bool noCover = false;
    bool noImages = false;
    bool progress = false;
};

// Adds the produce command to app, its options parsed into arguments.
CLI::App* addProduceCommand(CLI::App& app, ProduceArguments& arguments);

// Checks the form of what was parsed (days, size, prefix, conversations). Throws UsageError.
void checkProduceArguments(const ProduceArguments& arguments);

// Writes the production and prints one line per document and a line of totals. Throws
// UsageError for what can't work as asked, and the core's errors otherwise.
void produce(const ProduceArguments& arguments, const Session& session, Interrupts& interrupts);

} // namespace scrivly::cli
