// Any bytes as an older backup's Manifest.mbdb: the reader must give records or a BackupError,
// never read outside the buffer; the records it gives must survive being written and read again.
#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/backup/ManifestMbdb.h"

#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto records = scrivly::ManifestMbdb::parse(std::span(data, size));
        if (scrivly::ManifestMbdb::parse(scrivly::ManifestMbdb::encode(records)) != records) {
            std::abort();
        }
    } catch (const scrivly::BackupError&) {
        // The expected answer to a damaged index.
    }
    return 0;
}
