// scrivly-cli: reads a Messages history and shows or exports its conversations.

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/Interrupts.h"

#include "ScrivlyKit/history/Sources.h"
#include "ScrivlyKit/platform/Memory.h"

#include <cerrno>
#include <csignal>
#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    using namespace scrivly::cli;
    scrivly::Memory::useReturnableHeap();
    // Only the C++ streams write to the terminal, so they need not stay in step with C's.
    std::ios::sync_with_stdio(false);

    // A closed pipe (scrivly-cli conversations | head) becomes a write error, not a kill that
    // would skip removing the temporary sample.
    std::signal(SIGPIPE, SIG_IGN);
    Interrupts interrupts;
    // Every read works on a private copy there; an interrupt that ends the process removes this
    // run's.
    interrupts.removeLeasesOnInterrupt(scrivly::Sources::snapshotFolder());
    // Work stopped by an interrupt ends with the status the shell expects of one.
    const auto status = [&interrupts](int otherwise) {
        const auto signal = interrupts.received();
        return signal ? 128 + *signal : otherwise;
    };

    try {
        const auto invocation = parse(argc, argv, std::cout);
        if (invocation) {
            runCommand(*invocation, interrupts);
        }
        std::cout.flush();
        if (!std::cout) {
            if (errno != EPIPE) {
                std::cerr << "The output couldn’t be written.\n";
            }
            return status(kExitFailure);
        }
        return status(kExitSuccess);
    } catch (const UsageError& error) {
        std::cerr << error.what() << '\n';
        return status(kExitUsage);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return status(kExitFailure);
    }
}
