// Any bytes in the attributed-body column: the decoder must give text or nothing, never read
// outside the buffer, and whatever text it gives must survive being archived and decoded again.
#include "ScrivlyKit/text/TypedStream.h"

#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = scrivly::TypedStream::plainText(std::span(data, size));
    if (text) {
        const auto archived = scrivly::TypedStream::archive(*text);
        const auto again = scrivly::TypedStream::plainText(archived);
        if (!again || *again != *text) {
            std::abort();
        }
    }
    return 0;
}
