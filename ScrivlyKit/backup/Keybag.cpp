#include "ScrivlyKit/backup/Keybag.h"

#include "ScrivlyKit/backup/BackupError.h"

#include <algorithm>
#include <array>

namespace scrivly {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Tag = std::array<char, 4>;

constexpr std::size_t kSaltSize = 20;
constexpr std::size_t kUUIDSize = 16;
constexpr std::size_t kWrappedKeySize = 40;
// Real keybags are a few kilobytes; this bounds what a damaged length field can ask for.
constexpr std::size_t kMaxKeybagSize = 1 << 20;

[[noreturn]] void damaged(const std::string& path, const std::string& what) {
    throw BackupError(BackupError::Kind::damaged, path, "its keybag " + what);
}

std::uint32_t bigEndian32(std::span<const std::uint8_t> bytes) {
    return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
           (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
}

void appendBigEndian32(Bytes& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void appendRecord(Bytes& out, const char* tag, std::span<const std::uint8_t> value) {
    out.insert(out.end(), tag, tag + 4);
    appendBigEndian32(out, static_cast<std::uint32_t>(value.size()));
    out.insert(out.end(), value.begin(), value.end());
}

void appendRecord(Bytes& out, const char* tag, std::uint32_t value) {
    Bytes bytes;
    appendBigEndian32(bytes, value);
    appendRecord(out, tag, bytes);
}

bool is(const Tag& tag, const char* name) {
    return std::equal(tag.begin(), tag.end(), name);
}

std::string tagName(const Tag& tag) {
    std::string name;
    for (const char c : tag) {
        name += (c >= 0x20 && c < 0x7F) ? c : '?';
    }
    return name;
}

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void checkStop(const std::stop_token& stop) {
    if (stop.stop_requested()) {
        throw BackupError(BackupError::Kind::cancelled, {});
    }
}

void checkIterations(const std::string& path, const char* tag, std::uint32_t count) {
    if (count == 0) {
        damaged(path, std::string("asks for zero rounds of key derivation (") + tag + ")");
    }
    if (count > Keybag::kMaxIterations) {
        damaged(path, "asks for an absurd number of key-derivation rounds (" + std::string(tag) +
                          " " + std::to_string(count) + ")");
    }
}

} // namespace

Keybag Keybag::parse(std::span<const std::uint8_t> bytes, const std::string& sourcePath) {
    if (bytes.size() > kMaxKeybagSize) {
        damaged(sourcePath, "is far too large");
    }
    Keybag keybag;
    bool seenUUID = false;
    bool seenIterations = false;
    ClassKey* current = nullptr;
    std::size_t at = 0;
    while (at < bytes.size()) {
        if (bytes.size() - at < 8) {
            damaged(sourcePath, "is cut short");
        }
        Tag tag{};
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), 4, tag.begin());
        const std::uint32_t length = bigEndian32(bytes.subspan(at + 4, 4));
        at += 8;
        if (length > bytes.size() - at) {
            damaged(sourcePath, "is cut short");
        }
        const auto value = bytes.subspan(at, length);
        at += length;

        const auto integer = [&]() {
            if (value.size() != 4) {
                damaged(sourcePath, "has a " + tagName(tag) + " of the wrong length");
            }
            return bigEndian32(value);
        };
        const auto sized = [&](std::size_t size) {
            if (value.size() != size) {
                damaged(sourcePath, "has a " + tagName(tag) + " of the wrong length");
            }
            return Bytes(value.begin(), value.end());
        };

        if (is(tag, "UUID")) {
            // The first UUID is the keybag's own; each later one starts a class.
            if (!seenUUID) {
                keybag.uuid = sized(kUUIDSize);
                seenUUID = true;
            } else {
                current = &keybag.classes.emplace_back();
                current->uuid = sized(kUUIDSize);
            }
        } else if (is(tag, "WRAP")) {
            (current ? current->wrap : keybag.wrap) = integer();
        } else if (current) {
            if (is(tag, "CLAS")) {
                current->protectionClass = integer();
            } else if (is(tag, "KTYP")) {
                current->keyType = integer();
            } else if (is(tag, "WPKY")) {
                current->wrappedKey = sized(kWrappedKeySize);
            } else if (is(tag, "SALT") || is(tag, "ITER") || is(tag, "DPSL") || is(tag, "DPIC")) {
                damaged(sourcePath, "has " + tagName(tag) + " inside a class entry");
            }
        } else if (is(tag, "VERS")) {
            keybag.version = integer();
        } else if (is(tag, "TYPE")) {
            keybag.type = integer();
        } else if (is(tag, "HMCK")) {
            keybag.hmck = Bytes(value.begin(), value.end());
        } else if (is(tag, "SALT")) {
            keybag.salt = sized(kSaltSize);
        } else if (is(tag, "ITER")) {
            keybag.iterations = integer();
            seenIterations = true;
        } else if (is(tag, "DPWT")) {
            keybag.passwordWrapType = integer();
        } else if (is(tag, "DPIC")) {
            keybag.passwordIterations = integer();
        } else if (is(tag, "DPSL")) {
            keybag.passwordSalt = sized(kSaltSize);
        } else if (is(tag, "CLAS") || is(tag, "WPKY")) {
            damaged(sourcePath, "has " + tagName(tag) + " outside a class entry");
        }
    }

    if (keybag.salt.empty()) {
        damaged(sourcePath, "has no SALT");
    }
    if (!seenIterations) {
        damaged(sourcePath, "has no ITER");
    }
    checkIterations(sourcePath, "ITER", keybag.iterations);
    if (keybag.passwordIterations.has_value() != !keybag.passwordSalt.empty()) {
        damaged(sourcePath, "has only one of DPIC and DPSL");
    }
    if (keybag.passwordIterations) {
        checkIterations(sourcePath, "DPIC", *keybag.passwordIterations);
    }
    bool anyPasswordClass = false;
    for (const auto& entry : keybag.classes) {
        if ((entry.wrap & kWrappedByPassword) == 0) {
            continue;
        }
        if (entry.wrappedKey.empty()) {
            damaged(sourcePath, "has no WPKY for class " + std::to_string(entry.protectionClass));
        }
        anyPasswordClass = true;
    }
    if (!anyPasswordClass) {
        damaged(sourcePath, "has no class key that a password opens");
    }
    return keybag;
}

std::vector<std::uint8_t> Keybag::encode() const {
    Bytes out;
    appendRecord(out, "VERS", version);
    appendRecord(out, "TYPE", type);
    appendRecord(out, "UUID", uuid);
    if (!hmck.empty()) {
        appendRecord(out, "HMCK", hmck);
    }
    appendRecord(out, "WRAP", wrap);
    if (!salt.empty()) {
        appendRecord(out, "SALT", salt);
    }
    appendRecord(out, "ITER", iterations);
    if (passwordWrapType) {
        appendRecord(out, "DPWT", *passwordWrapType);
    }
    if (passwordIterations) {
        appendRecord(out, "DPIC", *passwordIterations);
    }
    if (!passwordSalt.empty()) {
        appendRecord(out, "DPSL", passwordSalt);
    }
    for (const auto& entry : classes) {
        appendRecord(out, "UUID", entry.uuid);
        appendRecord(out, "CLAS", entry.protectionClass);
        appendRecord(out, "WRAP", entry.wrap);
        appendRecord(out, "KTYP", entry.keyType);
        if (!entry.wrappedKey.empty()) {
            appendRecord(out, "WPKY", entry.wrappedKey);
        }
    }
    return out;
}

Crypto::SecretKey Keybag::keyEncryptionKey(std::string_view password, std::stop_token stop) const {
    checkStop(stop);
    if (!passwordIterations) {
        auto key = Crypto::pbkdf2(Crypto::Hash::sha1, asBytes(password), salt, iterations);
        checkStop(stop);
        return key;
    }
    const auto first =
        Crypto::pbkdf2(Crypto::Hash::sha256, asBytes(password), passwordSalt, *passwordIterations);
    checkStop(stop);
    auto key = Crypto::pbkdf2(Crypto::Hash::sha1, first.bytes(), salt, iterations);
    checkStop(stop);
    return key;
}

ClassKeys Keybag::unlock(std::string_view password, std::stop_token stop,
                         const std::string& sourcePath) const {
    const auto kek = keyEncryptionKey(password, stop);
    ClassKeys keys;
    for (const auto& entry : classes) {
        if ((entry.wrap & kWrappedByPassword) == 0 || keys.contains(entry.protectionClass)) {
            continue;
        }
        if (auto key = Crypto::unwrapKey(kek, entry.wrappedKey)) {
            keys.emplace(entry.protectionClass, *key);
        }
    }
    if (keys.empty()) {
        throw BackupError(BackupError::Kind::wrongPassword, sourcePath);
    }
    return keys;
}

} // namespace scrivly
