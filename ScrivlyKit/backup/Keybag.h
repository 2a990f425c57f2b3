#pragma once

#include "ScrivlyKit/backup/Crypto.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace scrivly {

// The class keys that a backup password opened, by protection class.
using ClassKeys = std::map<std::uint32_t, Crypto::SecretKey>;

// The keybag of an encrypted backup (Manifest.plist's BackupKeyBag): the salts and iteration
// counts that turn the password into the key-encryption key, and the wrapped key of each
// protection class. A plain value.
struct Keybag {
    // Above this many rounds of either derivation stage a keybag is taken for damaged: a real
    // one uses 10,000,000 and 10,000, and a count near 2^32 would hold a reader for hours.
    static constexpr std::uint32_t kMaxIterations = 50'000'000;
    // A class whose WRAP value has this bit set is wrapped by the backup password.
    static constexpr std::uint32_t kWrappedByPassword = 2;

    struct ClassKey {
        std::vector<std::uint8_t> uuid;
        std::uint32_t protectionClass = 0;
        std::uint32_t wrap = 0;
        std::uint32_t keyType = 0;
        std::vector<std::uint8_t> wrappedKey; // WPKY: 40 bytes, or empty when absent

        bool operator==(const ClassKey&) const = default;
    };

    std::uint32_t version = 0;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> uuid;
    std::vector<std::uint8_t> hmck;
    std::uint32_t wrap = 0;
    std::vector<std::uint8_t> salt; // SALT, 20 bytes
    std::uint32_t iterations = 0;   // ITER
    // The first derivation stage of newer backups (DPWT, DPIC, DPSL); absent in older ones.
    std::optional<std::uint32_t> passwordWrapType;
    std::optional<std::uint32_t> passwordIterations;
    std::vector<std::uint8_t> passwordSalt;
    std::vector<ClassKey> classes;

    // Reads the run of tag/length/value records. Throws BackupError (damaged, naming
    // sourcePath) when the bytes are cut short, a value has the wrong length, SALT, ITER or a
    // password-wrapped class's WPKY is missing, an iteration count is zero or above
    // kMaxIterations, one of DPIC and DPSL comes without the other, or no class is wrapped by
    // the password. Unknown tags are skipped.
    static Keybag parse(std::span<const std::uint8_t> bytes, const std::string& sourcePath = {});
    // The records, header first, for writing a backup.
    std::vector<std::uint8_t> encode() const;

    // The key-encryption key for password (its UTF-8 bytes): PBKDF2-HMAC-SHA256 over DPSL and
    // DPIC, then PBKDF2-HMAC-SHA1 over SALT and ITER; the SHA-1 stage alone for older keybags.
    // Throws BackupError (cancelled) when stop is requested before or between the stages.
    Crypto::SecretKey keyEncryptionKey(std::string_view password, std::stop_token stop) const;

    // The class keys that the password opens. Throws BackupError: wrongPassword when it opens
    // none, cancelled as keyEncryptionKey does.
    ClassKeys unlock(std::string_view password, std::stop_token stop,
                     const std::string& sourcePath = {}) const;

    bool operator==(const Keybag&) const = default;
};

} // namespace scrivly
