#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace scrivly {

class ChatDatabase;
class History;

// A file a production read its history from.
struct SourceFile {
    std::string name; // what it is: "chat.db", "chat.db-wal", "sms.db (decrypted)"…
    std::string path; // where it lies; empty for what exists only as read (a decrypted copy)
    std::uint64_t bytes = 0;
    std::string sha256; // lower-case hexadecimal
};

// Runs operation on one private copy of the history's database, opened, with the SHA-256 of each
// file it was made from, taken from the bytes as they were copied: a Mac's database and its log;
// for an iPhone backup the files as stored and the database decrypted. folder is the copy's
// private folder, where the operation may keep scratch files; it is removed afterwards whatever
// happens. Throws as the history's reads do.
void withHashedSnapshot(
    const History& history,
    const std::function<void(ChatDatabase& database, const std::vector<SourceFile>& files,
                             const std::string& folder)>& operation);

} // namespace scrivly
