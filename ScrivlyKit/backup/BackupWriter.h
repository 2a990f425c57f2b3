#pragma once

#include "ScrivlyKit/records/Date.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Writes an iPhone backup of a Messages history, laid out as the phone's backups are, for
// demonstrations and tests: any Messages database becomes the backup's sms.db.
namespace scrivly::BackupWriter {

struct Contents {
    std::string database; // a Messages database; read through a private copy, never changed
    // The folder its stored "~/Library/Messages/Attachments/..." names are under; those files
    // go into MediaDomain, and the names become the phone's "~/Library/SMS/Attachments/...".
    std::string home;
    // (address, name) pairs for the phone's address book; none gives no address book.
    std::vector<std::pair<std::string, std::string>> people;
};

struct Options {
    std::optional<std::string> password; // encrypted when given
    // Key derivation of 1 and 1 rounds instead of the phone's 10,000,000 and 10,000 (about
    // five seconds to open), for tests.
    bool fastKeys = false;
    // Manifest.mbdb and a flat folder, as before iOS 10, instead of Manifest.db.
    bool legacyLayout = false;
    // This many of the newest messages (by date) are kept only in sms.db-wal, as on a phone
    // whose database was not checkpointed.
    std::size_t newestInLog = 0;
    std::string deviceName = "Scrivly Sample iPhone";
    std::string deviceID = "00008030-001A2B3C4D5E802E";
    Date date; // the backup's date
};

// Writes the backup into folder/<deviceID> (replacing one there; folder is made when missing)
// and answers that path. Work files go to a hidden subfolder of folder that is removed
// afterwards. Throws SQLiteError for a database that can't be read,
// std::filesystem::filesystem_error for a file that can't be written.
std::string write(const std::string& folder, const Contents& contents, const Options& options);

} // namespace scrivly::BackupWriter
