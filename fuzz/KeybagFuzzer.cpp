// Any bytes as an encrypted backup's keybag: the parser must give a keybag or a BackupError,
// never read outside the buffer; a keybag it gives must survive being written and read again.
#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/backup/Keybag.h"

#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto keybag = scrivly::Keybag::parse(std::span(data, size));
        // A parsed keybag has its own UUID only when the input had one; the writer needs it.
        if (keybag.uuid.size() == 16 && scrivly::Keybag::parse(keybag.encode()) != keybag) {
            std::abort();
        }
    } catch (const scrivly::BackupError&) {
        // The expected answer to a damaged keybag.
    }
    return 0;
}
