#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

// The file index of backups from iOS 9 and before, Manifest.mbdb: "mbdb\5\0", then one record
// per file of 16-bit-length-prefixed strings and big-endian numbers.
namespace scrivly::ManifestMbdb {

struct Record {
    std::string domain;
    std::string path;
    std::optional<std::string> linkTarget;
    std::vector<std::uint8_t> digest;
    // 4-byte little-endian protection class, then the wrapped file key; empty when in the clear.
    std::vector<std::uint8_t> encryptionKey;
    std::uint16_t mode = 0;
    std::uint64_t inode = 0;
    std::uint32_t userID = 0;
    std::uint32_t groupID = 0;
    std::uint32_t modified = 0;
    std::uint32_t accessed = 0;
    std::uint32_t changed = 0;
    std::uint64_t size = 0;
    std::uint8_t protectionClass = 0;
    std::vector<std::pair<std::string, std::string>> properties;

    // The stored file's name: the SHA-1 of "<domain>-<path>".
    std::string fileID() const;

    bool operator==(const Record&) const = default;
};

// The records in file order. Throws BackupError (damaged, naming sourcePath) when the signature
// is wrong or a record is cut short.
std::vector<Record> parse(std::span<const std::uint8_t> bytes, const std::string& sourcePath = {});

// The file's bytes, for writing a backup. Strings longer than 65,534 bytes are cut.
std::vector<std::uint8_t> encode(const std::vector<Record>& records);

} // namespace scrivly::ManifestMbdb
