#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct evp_cipher_ctx_st;
struct evp_md_ctx_st;

// The few cryptographic operations of an iPhone backup, all done by OpenSSL's libcrypto: key
// derivation, AES key wrap, AES-256-CBC and the SHA digests.
namespace scrivly::Crypto {

// libcrypto failed at something that can't fail for good input (out of memory, as a rule).
class CryptoError : public std::runtime_error {
public:
    explicit CryptoError(const std::string& operation);
};

// A 256-bit key, wiped from memory when it goes (copies wipe their own bytes).
class SecretKey {
public:
    static constexpr std::size_t kSize = 32;

    SecretKey() = default;
    // Throws std::invalid_argument unless bytes holds exactly kSize bytes.
    explicit SecretKey(std::span<const std::uint8_t> bytes);
    SecretKey(const SecretKey&) = default;
    SecretKey& operator=(const SecretKey&) = default;
    ~SecretKey();

    std::span<const std::uint8_t, kSize> bytes() const { return m_bytes; }
    std::span<std::uint8_t, kSize> bytes() { return m_bytes; }

    // Fresh random bytes from the system's generator.
    static SecretKey random();

private:
    std::array<std::uint8_t, kSize> m_bytes{};
};

enum class Hash { sha1, sha256 };

// PBKDF2 with HMAC over the given hash, giving a 32-byte key. iterations must be at least 1.
SecretKey pbkdf2(Hash hash, std::span<const std::uint8_t> password,
                 std::span<const std::uint8_t> salt, std::uint32_t iterations);

// AES key wrap (RFC 3394) of a 32-byte key under a 32-byte key: 40 bytes.
std::vector<std::uint8_t> wrapKey(const SecretKey& keyEncryptionKey, const SecretKey& key);
// The reverse; nothing when wrapped is not 40 bytes or fails the wrap's integrity check (the
// wrong key-encryption key, or damaged bytes).
std::optional<SecretKey> unwrapKey(const SecretKey& keyEncryptionKey,
                                   std::span<const std::uint8_t> wrapped);

// AES-256-CBC with a zero initialisation vector, fed piece by piece so that memory stays
// bounded. Decryption leaves padding alone (the caller knows the length); encryption adds PKCS#7
// padding, so the output is always a whole number of blocks.
class CBCCipher {
public:
    enum class Direction { encrypt, decrypt };
    static constexpr std::size_t kBlockSize = 16;

    CBCCipher(const SecretKey& key, Direction direction);

    // Appends the output of input to out: for decryption exactly input.size() bytes once input
    // so far is a whole number of blocks; at most input.size() + kBlockSize for encryption.
    void update(std::span<const std::uint8_t> input, std::vector<std::uint8_t>& out);
    // Appends the end of the output (the padding block, when encrypting). Throws CryptoError
    // when decrypting a length that is not a whole number of blocks.
    void finish(std::vector<std::uint8_t>& out);

private:
    struct FreeContext {
        void operator()(evp_cipher_ctx_st* context) const noexcept;
    };
    std::unique_ptr<evp_cipher_ctx_st, FreeContext> m_context;
};

// A running SHA-1 or SHA-256 digest.
class Digest {
public:
    explicit Digest(Hash hash);
    void update(std::span<const std::uint8_t> bytes);
    void update(std::string_view text);
    // The digest in lower-case hexadecimal; the object is spent afterwards.
    std::string hex();

private:
    struct FreeContext {
        void operator()(evp_md_ctx_st* context) const noexcept;
    };
    std::unique_ptr<evp_md_ctx_st, FreeContext> m_context;
};

// The lower-case hexadecimal SHA-1 of text.
std::string sha1Hex(std::string_view text);

// count random bytes from the system's generator.
std::vector<std::uint8_t> randomBytes(std::size_t count);

} // namespace scrivly::Crypto
