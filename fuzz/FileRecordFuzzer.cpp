// Any bytes as the archived file record of a Manifest.db row: decoding must give a record or
// nothing, never crash; a record with a plain ASCII path must survive being archived again.
#include "ScrivlyKit/backup/FileRecord.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto record = scrivly::FileRecord::decode(std::span(data, size));
    if (!record) {
        return 0;
    }
    (void)record->kind();
    const bool plainPath = std::all_of(record->relativePath.begin(), record->relativePath.end(),
                                       [](char c) { return c > 0 && c < 0x7F; });
    if (plainPath && scrivly::FileRecord::decode(record->encode()) != record) {
        std::abort();
    }
    return 0;
}
