#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace scrivly {

// What a backup's manifest says of one stored file: the `file` column of Manifest.db (an
// NSKeyedArchiver archive of an MBFile) or one record of an older Manifest.mbdb. A plain value.
struct FileRecord {
    enum class Kind { file, folder, link, other };

    std::string relativePath;
    std::uint64_t size = 0; // the file's own length; the stored copy may be longer
    std::uint32_t mode = 0; // type and permission bits; 0 when the record has none
    std::uint32_t protectionClass = 0;
    // 4-byte little-endian protection class, then the 40-byte wrapped file key; empty for a file
    // stored in the clear.
    std::vector<std::uint8_t> encryptionKey;

    // The kind that mode's type bits give; nothing when mode has none.
    std::optional<Kind> kind() const;

    // Reads an archived MBFile. Nothing when the bytes are no binary property list, the archive's
    // $top/root, $objects or the references between them don't hold together, Size is missing
    // or any known key has the wrong type.
    static std::optional<FileRecord> decode(std::span<const std::uint8_t> archive);
    // The archived MBFile, as Manifest.db stores it.
    std::vector<std::uint8_t> encode() const;

    bool operator==(const FileRecord&) const = default;
};

} // namespace scrivly
