#include "ScrivlyKit/backup/Crypto.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <climits>

namespace scrivly::Crypto {
namespace {

constexpr std::size_t kWrappedSize = SecretKey::kSize + 8;

const EVP_MD* digestOf(Hash hash) {
    return hash == Hash::sha1 ? EVP_sha1() : EVP_sha256();
}

int intSize(std::size_t size, const char* operation) {
    if (size > static_cast<std::size_t>(INT_MAX)) {
        throw CryptoError(operation);
    }
    return static_cast<int>(size);
}

struct FreeCipherContext {
    void operator()(EVP_CIPHER_CTX* context) const noexcept { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, FreeCipherContext>;

// A context for AES key wrap: the wrap modes must be allowed explicitly.
CipherContext wrapContext(const SecretKey& keyEncryptionKey, bool wrap) {
    CipherContext context(EVP_CIPHER_CTX_new());
    if (!context) {
        throw CryptoError("key wrap");
    }
    EVP_CIPHER_CTX_set_flags(context.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
    if (EVP_CipherInit_ex(context.get(), EVP_aes_256_wrap(), nullptr,
                          keyEncryptionKey.bytes().data(), nullptr, wrap ? 1 : 0) != 1) {
        throw CryptoError("key wrap");
    }
    return context;
}

} // namespace

CryptoError::CryptoError(const std::string& operation)
    : std::runtime_error("The encryption library failed (" + operation + ").") {}

SecretKey::SecretKey(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != kSize) {
        throw std::invalid_argument("a key has 32 bytes");
    }
    std::copy(bytes.begin(), bytes.end(), m_bytes.begin());
}

SecretKey::~SecretKey() {
    OPENSSL_cleanse(m_bytes.data(), m_bytes.size());
}

SecretKey SecretKey::random() {
    SecretKey key;
    if (RAND_bytes(key.m_bytes.data(), static_cast<int>(kSize)) != 1) {
        throw CryptoError("random key");
    }
    return key;
}

SecretKey pbkdf2(Hash hash, std::span<const std::uint8_t> password,
                 std::span<const std::uint8_t> salt, std::uint32_t iterations) {
    if (iterations == 0 || iterations > static_cast<std::uint32_t>(INT_MAX)) {
        throw std::invalid_argument("PBKDF2 needs 1 to INT_MAX iterations");
    }
    SecretKey key;
    if (PKCS5_PBKDF2_HMAC(reinterpret_cast<const char*>(password.data()),
                          intSize(password.size(), "key derivation"), salt.data(),
                          intSize(salt.size(), "key derivation"), static_cast<int>(iterations),
                          digestOf(hash), static_cast<int>(SecretKey::kSize),
                          key.bytes().data()) != 1) {
        throw CryptoError("key derivation");
    }
    return key;
}

std::vector<std::uint8_t> wrapKey(const SecretKey& keyEncryptionKey, const SecretKey& key) {
    auto context = wrapContext(keyEncryptionKey, true);
    std::vector<std::uint8_t> wrapped(kWrappedSize + EVP_MAX_BLOCK_LENGTH);
    int length = 0;
    if (EVP_CipherUpdate(context.get(), wrapped.data(), &length, key.bytes().data(),
                         static_cast<int>(SecretKey::kSize)) != 1 ||
        static_cast<std::size_t>(length) != kWrappedSize) {
        throw CryptoError("key wrap");
    }
    wrapped.resize(kWrappedSize);
    return wrapped;
}

std::optional<SecretKey> unwrapKey(const SecretKey& keyEncryptionKey,
                                   std::span<const std::uint8_t> wrapped) {
    if (wrapped.size() != kWrappedSize) {
        return std::nullopt;
    }
    auto context = wrapContext(keyEncryptionKey, false);
    SecretKey key;
    // The unwrap writes the key before checking it; on a failed check those bytes are wiped
    // along with key.
    std::array<std::uint8_t, kWrappedSize + EVP_MAX_BLOCK_LENGTH> out{};
    int length = 0;
    const bool opened = EVP_CipherUpdate(context.get(), out.data(), &length, wrapped.data(),
                                         static_cast<int>(wrapped.size())) == 1 &&
                        static_cast<std::size_t>(length) == SecretKey::kSize;
    if (opened) {
        std::copy_n(out.begin(), SecretKey::kSize, key.bytes().begin());
    }
    OPENSSL_cleanse(out.data(), out.size());
    if (!opened) {
        return std::nullopt;
    }
    return key;
}

void CBCCipher::FreeContext::operator()(evp_cipher_ctx_st* context) const noexcept {
    EVP_CIPHER_CTX_free(context);
}

CBCCipher::CBCCipher(const SecretKey& key, Direction direction) : m_context(EVP_CIPHER_CTX_new()) {
    const std::array<std::uint8_t, kBlockSize> zeroIV{};
    const bool encrypt = direction == Direction::encrypt;
    if (!m_context || EVP_CipherInit_ex(m_context.get(), EVP_aes_256_cbc(), nullptr,
                                        key.bytes().data(), zeroIV.data(), encrypt ? 1 : 0) != 1) {
        throw CryptoError("AES-256-CBC");
    }
    EVP_CIPHER_CTX_set_padding(m_context.get(), encrypt ? 1 : 0);
}

void CBCCipher::update(std::span<const std::uint8_t> input, std::vector<std::uint8_t>& out) {
    const std::size_t start = out.size();
    out.resize(start + input.size() + kBlockSize);
    int length = 0;
    if (EVP_CipherUpdate(m_context.get(), out.data() + start, &length, input.data(),
                         intSize(input.size(), "AES-256-CBC")) != 1) {
        throw CryptoError("AES-256-CBC");
    }
    out.resize(start + static_cast<std::size_t>(length));
}

void CBCCipher::finish(std::vector<std::uint8_t>& out) {
    const std::size_t start = out.size();
    out.resize(start + kBlockSize);
    int length = 0;
    if (EVP_CipherFinal_ex(m_context.get(), out.data() + start, &length) != 1) {
        out.resize(start);
        throw CryptoError("AES-256-CBC: not a whole number of blocks");
    }
    out.resize(start + static_cast<std::size_t>(length));
}

void Digest::FreeContext::operator()(evp_md_ctx_st* context) const noexcept {
    EVP_MD_CTX_free(context);
}

Digest::Digest(Hash hash) : m_context(EVP_MD_CTX_new()) {
    if (!m_context || EVP_DigestInit_ex(m_context.get(), digestOf(hash), nullptr) != 1) {
        throw CryptoError("digest");
    }
}

void Digest::update(std::span<const std::uint8_t> bytes) {
    if (EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()) != 1) {
        throw CryptoError("digest");
    }
}

void Digest::update(std::string_view text) {
    update(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::string Digest::hex() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_DigestFinal_ex(m_context.get(), digest.data(), &length) != 1) {
        throw CryptoError("digest");
    }
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        text += kDigits[digest[i] >> 4];
        text += kDigits[digest[i] & 0xF];
    }
    return text;
}

std::string sha1Hex(std::string_view text) {
    Digest digest(Hash::sha1);
    digest.update(text);
    return digest.hex();
}

std::vector<std::uint8_t> randomBytes(std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    if (count > 0 && RAND_bytes(bytes.data(), intSize(count, "random bytes")) != 1) {
        throw CryptoError("random bytes");
    }
    return bytes;
}

} // namespace scrivly::Crypto
