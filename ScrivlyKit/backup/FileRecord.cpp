#include "ScrivlyKit/backup/FileRecord.h"

#include "ScrivlyKit/backup/PropertyList.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace scrivly {
namespace {

using Node = PropertyList::Node;

// A record's archive is a few hundred bytes; this bounds what a damaged row hands the parser.
constexpr std::size_t kMaxArchiveSize = 1 << 20;

constexpr std::uint32_t kTypeMask = 0170000;
constexpr std::uint32_t kRegular = 0100000;
constexpr std::uint32_t kFolder = 0040000;
constexpr std::uint32_t kLink = 0120000;

// Follows one archive reference: a UID stands for the object at that index of $objects; any
// other node stands for itself. An index out of range gives an empty node.
Node resolve(const Node& objects, const Node& value) {
    if (const auto index = value.uid()) {
        return *index < objects.count() ? objects.item(static_cast<std::size_t>(*index)) : Node();
    }
    return value;
}

// An optional 32-bit integer member: true when absent or fitting, false for a wrong type.
bool readSmall(const Node& objects, const Node& object, const char* key, std::uint32_t& out) {
    const auto node = object.member(key);
    if (!node) {
        return true;
    }
    const auto value = resolve(objects, node).integer();
    if (!value || *value > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    out = static_cast<std::uint32_t>(*value);
    return true;
}

PropertyList classObject(const char* name, std::initializer_list<const char*> classes) {
    auto list = PropertyList::array();
    for (const char* entry : classes) {
        list.append(PropertyList::string(entry));
    }
    auto object = PropertyList::dictionary();
    object.set("$classname", PropertyList::string(name));
    object.set("$classes", std::move(list));
    return object;
}

} // namespace

std::optional<FileRecord::Kind> FileRecord::kind() const {
    switch (mode & kTypeMask) {
    case 0:
        return std::nullopt;
    case kRegular:
        return Kind::file;
    case kFolder:
        return Kind::folder;
    case kLink:
        return Kind::link;
    default:
        return Kind::other;
    }
}

std::optional<FileRecord> FileRecord::decode(std::span<const std::uint8_t> archive) {
    // Manifest.db holds binary archives only; XML is not handed to the parser at all.
    static constexpr std::string_view kBinary = "bplist00";
    if (archive.size() > kMaxArchiveSize || archive.size() < kBinary.size() ||
        !std::equal(kBinary.begin(), kBinary.end(), archive.begin())) {
        return std::nullopt;
    }
    const auto list = PropertyList::parse(archive);
    if (!list) {
        return std::nullopt;
    }
    const auto objects = list->root().member("$objects");
    const auto root = list->root().member("$top").member("root");
    if (!objects.isArray() || !root.uid()) {
        return std::nullopt;
    }
    const auto object = resolve(objects, root);
    if (!object.isDictionary()) {
        return std::nullopt;
    }

    FileRecord record;
    const auto size = resolve(objects, object.member("Size")).integer();
    if (!size) {
        return std::nullopt;
    }
    record.size = *size;
    if (!readSmall(objects, object, "Mode", record.mode) ||
        !readSmall(objects, object, "ProtectionClass", record.protectionClass)) {
        return std::nullopt;
    }
    if (const auto path = object.member("RelativePath")) {
        const auto text = resolve(objects, path).string();
        if (!text) {
            return std::nullopt;
        }
        record.relativePath = *text;
    }
    if (const auto key = object.member("EncryptionKey")) {
        // An NSMutableData object keeps its bytes under NS.data; a bare data node is accepted too.
        const auto holder = resolve(objects, key);
        const auto bytes = holder.isDictionary() ? resolve(objects, holder.member("NS.data")).data()
                                                 : holder.data();
        if (!bytes) {
            return std::nullopt;
        }
        record.encryptionKey = *bytes;
    }
    return record;
}

std::vector<std::uint8_t> FileRecord::encode() const {
    // $objects: 0 "$null", 1 the MBFile, 2 its path, 3 the MBFile class, then for an encrypted
    // file 4 the NSMutableData with the key and 5 its class.
    auto file = PropertyList::dictionary();
    file.set("$class", PropertyList::uid(3));
    file.set("RelativePath", PropertyList::uid(2));
    file.set("Size", PropertyList::integer(size));
    file.set("Mode", PropertyList::integer(mode));
    file.set("ProtectionClass", PropertyList::integer(protectionClass));
    file.set("UserID", PropertyList::integer(501));
    file.set("GroupID", PropertyList::integer(501));
    file.set("Flags", PropertyList::integer(0));
    if (!encryptionKey.empty()) {
        file.set("EncryptionKey", PropertyList::uid(4));
    }

    auto objects = PropertyList::array();
    objects.append(PropertyList::string("$null"));
    objects.append(std::move(file));
    objects.append(PropertyList::string(relativePath));
    objects.append(classObject("MBFile", {"MBFile", "NSObject"}));
    if (!encryptionKey.empty()) {
        auto data = PropertyList::dictionary();
        data.set("NS.data", PropertyList::data(encryptionKey));
        data.set("$class", PropertyList::uid(5));
        objects.append(std::move(data));
        objects.append(classObject("NSMutableData", {"NSMutableData", "NSData", "NSObject"}));
    }

    auto top = PropertyList::dictionary();
    top.set("root", PropertyList::uid(1));
    auto archive = PropertyList::dictionary();
    archive.set("$version", PropertyList::integer(100000));
    archive.set("$archiver", PropertyList::string("NSKeyedArchiver"));
    archive.set("$top", std::move(top));
    archive.set("$objects", std::move(objects));
    return archive.binary();
}

} // namespace scrivly
