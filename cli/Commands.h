#pragma once

#include "cli/CommandLine.h"

namespace scrivly::cli {

class Interrupts;

// Runs one parsed command, writing its output to standard output. Throws UsageError when the
// command line names something that doesn't exist, and the lower layers' errors on failure.
void runCommand(const Invocation& invocation, Interrupts& interrupts);

} // namespace scrivly::cli
