#pragma once

#include "cli/CommandLine.h"

#include <optional>
#include <string>

namespace scrivly::cli {

// The password of an encrypted backup: the file's text up to its first line break
// (--password-file), else $SCRIVLY_BACKUP_PASSWORD, else typed at a prompt that does not echo
// when standard input is a terminal. Nothing when none of these gives one. Throws Failure when
// the file can't be read.
std::optional<std::string> backupPassword(const GlobalOptions& options,
                                          const std::string& deviceName);

// The password file's text up to its first line break. Throws Failure.
std::string passwordFromFile(const std::string& path);

} // namespace scrivly::cli
