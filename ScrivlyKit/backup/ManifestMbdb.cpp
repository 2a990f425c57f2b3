#include "ScrivlyKit/backup/ManifestMbdb.h"

#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/backup/Crypto.h"

#include <algorithm>

namespace scrivly::ManifestMbdb {
namespace {

constexpr std::uint8_t kSignature[] = {'m', 'b', 'd', 'b', 5, 0};
constexpr std::uint16_t kNone = 0xFFFF;

// A bounds-checked reader over the file's bytes.
class Reader {
public:
    Reader(std::span<const std::uint8_t> bytes, const std::string& path)
        : m_bytes(bytes), m_path(path) {}

    bool atEnd() const { return m_at == m_bytes.size(); }

    std::span<const std::uint8_t> take(std::size_t count) {
        if (count > m_bytes.size() - m_at) {
            throw BackupError(BackupError::Kind::damaged, m_path, "Manifest.mbdb is cut short");
        }
        const auto part = m_bytes.subspan(m_at, count);
        m_at += count;
        return part;
    }

    template <typename T> T number() {
        T value = 0;
        for (const auto byte : take(sizeof(T))) {
            value = static_cast<T>((value << 8) | byte);
        }
        return value;
    }

    std::optional<std::vector<std::uint8_t>> bytes() {
        const auto length = number<std::uint16_t>();
        if (length == kNone) {
            return std::nullopt;
        }
        const auto part = take(length);
        return std::vector<std::uint8_t>(part.begin(), part.end());
    }

    std::optional<std::string> text() {
        const auto value = bytes();
        if (!value) {
            return std::nullopt;
        }
        return std::string(value->begin(), value->end());
    }

private:
    std::span<const std::uint8_t> m_bytes;
    const std::string& m_path;
    std::size_t m_at = 0;
};

template <typename T> void appendNumber(std::vector<std::uint8_t>& out, T value) {
    for (int shift = static_cast<int>(sizeof(T) * 8) - 8; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void appendBytes(std::vector<std::uint8_t>& out, const std::uint8_t* data, std::size_t size) {
    const auto length = static_cast<std::uint16_t>(std::min<std::size_t>(size, kNone - 1));
    appendNumber(out, length);
    out.insert(out.end(), data, data + length);
}

void appendText(std::vector<std::uint8_t>& out, const std::optional<std::string>& text) {
    if (!text) {
        appendNumber(out, kNone);
        return;
    }
    appendBytes(out, reinterpret_cast<const std::uint8_t*>(text->data()), text->size());
}

void appendData(std::vector<std::uint8_t>& out, const std::vector<std::uint8_t>& data) {
    if (data.empty()) {
        appendNumber(out, kNone);
        return;
    }
    appendBytes(out, data.data(), data.size());
}

} // namespace

std::string Record::fileID() const {
    return Crypto::sha1Hex(domain + "-" + path);
}

std::vector<Record> parse(std::span<const std::uint8_t> bytes, const std::string& sourcePath) {
    if (bytes.size() < sizeof kSignature ||
        !std::equal(std::begin(kSignature), std::end(kSignature), bytes.begin())) {
        throw BackupError(BackupError::Kind::damaged, sourcePath,
                          "Manifest.mbdb does not start with its signature");
    }
    Reader reader(bytes.subspan(sizeof kSignature), sourcePath);
    std::vector<Record> records;
    while (!reader.atEnd()) {
        Record record;
        record.domain = reader.text().value_or("");
        record.path = reader.text().value_or("");
        record.linkTarget = reader.text();
        record.digest = reader.bytes().value_or(std::vector<std::uint8_t>());
        record.encryptionKey = reader.bytes().value_or(std::vector<std::uint8_t>());
        record.mode = reader.number<std::uint16_t>();
        record.inode = reader.number<std::uint64_t>();
        record.userID = reader.number<std::uint32_t>();
        record.groupID = reader.number<std::uint32_t>();
        record.modified = reader.number<std::uint32_t>();
        record.accessed = reader.number<std::uint32_t>();
        record.changed = reader.number<std::uint32_t>();
        record.size = reader.number<std::uint64_t>();
        record.protectionClass = reader.number<std::uint8_t>();
        const auto count = reader.number<std::uint8_t>();
        for (unsigned i = 0; i < count; ++i) {
            auto name = reader.text().value_or("");
            auto value = reader.text().value_or("");
            record.properties.emplace_back(std::move(name), std::move(value));
        }
        records.push_back(std::move(record));
    }
    return records;
}

std::vector<std::uint8_t> encode(const std::vector<Record>& records) {
    std::vector<std::uint8_t> out(std::begin(kSignature), std::end(kSignature));
    for (const auto& record : records) {
        appendText(out, record.domain);
        appendText(out, record.path);
        appendText(out, record.linkTarget);
        appendData(out, record.digest);
        appendData(out, record.encryptionKey);
        appendNumber(out, record.mode);
        appendNumber(out, record.inode);
        appendNumber(out, record.userID);
        appendNumber(out, record.groupID);
        appendNumber(out, record.modified);
        appendNumber(out, record.accessed);
        appendNumber(out, record.changed);
        appendNumber(out, record.size);
        appendNumber(out, record.protectionClass);
        const auto count =
            static_cast<std::uint8_t>(std::min<std::size_t>(record.properties.size(), 255));
        appendNumber(out, count);
        for (std::size_t i = 0; i < count; ++i) {
            appendText(out, record.properties[i].first);
            appendText(out, record.properties[i].second);
        }
    }
    return out;
}

} // namespace scrivly::ManifestMbdb
