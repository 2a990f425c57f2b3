// Mutated small Messages databases: opening, the schema check and both queries must end in
// records or an SQLiteError, never a crash. The bytes go to a private file that SQLite opens
// read-only and immutable, as a snapshot copy is.
#include "ScrivlyKit/database/ChatDatabase.h"
#include "ScrivlyKit/database/SQLiteError.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path =
        "/tmp/scrivly-fuzz-database-" + std::to_string(::getpid()) + ".db";
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    try {
        scrivly::ChatDatabase database(path, "/home/fuzz", /*immutable=*/true);
        std::vector<std::int64_t> ids;
        for (const auto& chat : database.chats()) {
            ids.push_back(chat.id);
        }
        ids.push_back(1);
        (void)database.messages(ids);
    } catch (const scrivly::SQLiteError&) {
        // The expected answer to a damaged file.
    }
    return 0;
}
