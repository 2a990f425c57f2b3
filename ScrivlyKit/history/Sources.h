#pragma once

#include "ScrivlyKit/database/MessagesReader.h"
#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/records/Date.h"

#include <optional>
#include <string>

// Where a history is read from, as a user names it.
namespace scrivly::Sources {

// The user's home folder: $HOME, else the password database's entry.
std::string userHome();
// The folder above Library when the database lies at Library/Messages/chat.db, as it does in a
// home folder or a copied one.
std::optional<std::string> homeOfDatabase(const std::string& database);
// Where reads make their private copies: scrivly-snapshots in the per-user temporary folder.
std::string snapshotFolder();

// A Mac's Messages database: path (else the default under the user's home), with attachments
// under home (else the home the database lies in, else the user's). Read through private copies
// unless direct. Copies left by runs that were killed are removed first.
MessagesReader database(const std::optional<std::string>& path,
                        const std::optional<std::string>& home, bool direct);

// The demonstration history written into folder (replaced), with its people's names.
struct Sample {
    std::string database; // its chat.db
    std::string home;     // the folder its attachments' "~/" stands for
    MessagesReader reader;
    NameBook names;
};
Sample sample(const std::string& folder, Date now);

} // namespace scrivly::Sources
