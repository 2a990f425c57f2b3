#pragma once

#include <string>
#include <string_view>

namespace scrivly::cli {

// Writes a finished document to its destination: "-" is standard output; any other path gets the
// whole content or nothing at all. The bytes go to a temporary file beside the destination,
// which is flushed to disk and then renamed into place, so that a failure or an interrupt never
// leaves a partial file. Where the system allows (Linux), the temporary file has no name until it
// is whole, so not even a process killed outright leaves one behind. Throws Failure with the
// reason.
void writeOutput(const std::string& destination, std::string_view bytes);

} // namespace scrivly::cli
