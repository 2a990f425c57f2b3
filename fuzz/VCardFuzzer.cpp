// Any bytes as a .vcf file: the reader must return cards or an error, never crash or hang.
#include "ScrivlyKit/contacts/VCard.h"

#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        (void)scrivly::VCard::parse(std::string_view(reinterpret_cast<const char*>(data), size),
                                    "fuzz.vcf");
    } catch (const std::exception&) {
        // A typed error is a fine answer to a broken file.
    }
    return 0;
}
