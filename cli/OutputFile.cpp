#include "cli/OutputFile.h"

#include "cli/Errors.h"

#include "ScrivlyKit/platform/FileSystem.h"

#include <filesystem>
#include <unistd.h>

namespace scrivly::cli {

void writeOutput(const std::string& destination, std::string_view bytes) {
    try {
        if (destination == "-") {
            FileSystem::writeAll(STDOUT_FILENO, bytes);
        } else {
            FileSystem::writeFileAtomically(destination, bytes);
        }
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure("The export couldn’t be saved: " +
                      (destination == "-" ? std::string("standard output") : destination) + ": " +
                      error.code().message());
    }
}

} // namespace scrivly::cli
