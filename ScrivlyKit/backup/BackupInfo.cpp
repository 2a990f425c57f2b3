#include "ScrivlyKit/backup/BackupInfo.h"

#include "ScrivlyKit/backup/PropertyList.h"
#include "ScrivlyKit/backup/StoredFile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace scrivly {
namespace {

namespace fs = std::filesystem;
using Node = PropertyList::Node;

// Info.plist may carry the device's application list with icons: generous, but bounded.
constexpr std::size_t kMaxPlistSize = 256u << 20;

// The file name that sms.db has in every backup: SHA-1("HomeDomain-Library/SMS/sms.db").
constexpr std::string_view kMessagesFileID = "3d0d7e5fb2ce288813306e4d4636395e047a3d28";

std::string fileIn(const std::string& folder, const char* name) {
    return (fs::path(folder) / name).string();
}

[[noreturn]] void badShape(const std::string& path, const std::string& what) {
    throw BackupError(BackupError::Kind::damaged, path, what);
}

// The property list in folder/name, whose root must be a dictionary; nothing when missing.
std::optional<PropertyList> readDictionary(const std::string& folder, const char* name) {
    const auto path = fileIn(folder, name);
    const auto bytes = StoredFile::read(path, kMaxPlistSize);
    if (!bytes) {
        return std::nullopt;
    }
    auto list = PropertyList::parse(*bytes);
    if (!list) {
        badShape(path, std::string(name) + " is not a property list");
    }
    if (!list->root().isDictionary()) {
        badShape(path, std::string(name) + " does not hold a dictionary");
    }
    return list;
}

// A member that may be absent but, when there, must have the type that read answers for.
template <typename Read>
auto optionalMember(const Node& dictionary, const char* key, const std::string& path, Read read)
    -> decltype(read(Node())) {
    const auto node = dictionary.member(key);
    if (!node) {
        return std::nullopt;
    }
    auto value = read(node);
    if (!value) {
        badShape(path, std::string("its ") + key + " has the wrong type");
    }
    return value;
}

std::optional<std::string> text(const Node& dictionary, const char* key, const std::string& path) {
    return optionalMember(dictionary, key, path, [](const Node& node) { return node.string(); });
}

std::optional<bool> flag(const Node& dictionary, const char* key, const std::string& path) {
    return optionalMember(dictionary, key, path, [](const Node& node) { return node.boolean(); });
}

std::optional<Date> date(const Node& dictionary, const char* key, const std::string& path) {
    return optionalMember(dictionary, key, path, [](const Node& node) { return node.date(); });
}

std::optional<std::vector<std::uint8_t>> bytes(const Node& dictionary, const char* key,
                                               const std::string& path) {
    return optionalMember(dictionary, key, path, [](const Node& node) { return node.data(); });
}

std::string firstOf(std::initializer_list<std::optional<std::string>> candidates) {
    for (const auto& candidate : candidates) {
        if (candidate && !candidate->empty()) {
            return *candidate;
        }
    }
    return {};
}

bool isRegularFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

bool isDeviceFolder(const fs::path& folder) {
    return isRegularFile(folder / kInfoPlist) || isRegularFile(folder / kManifestPlist);
}

} // namespace

BackupInfo readBackupInfo(const std::string& deviceFolder) {
    const auto info = readDictionary(deviceFolder, kInfoPlist);
    const auto manifest = readDictionary(deviceFolder, kManifestPlist);
    if (!info && !manifest) {
        throw BackupError(BackupError::Kind::notBackup, deviceFolder);
    }
    if (!manifest) {
        badShape(fileIn(deviceFolder, kManifestPlist), "Manifest.plist is missing");
    }
    const auto status = readDictionary(deviceFolder, kStatusPlist);

    const auto infoPath = fileIn(deviceFolder, kInfoPlist);
    const auto manifestPath = fileIn(deviceFolder, kManifestPlist);
    const auto statusPath = fileIn(deviceFolder, kStatusPlist);
    const Node infoRoot = info ? info->root() : Node();
    const Node manifestRoot = manifest->root();
    const Node lockdown = manifestRoot.member("Lockdown");
    const Node statusRoot = status ? status->root() : Node();

    BackupInfo result;
    result.path = deviceFolder;
    result.id = firstOf({text(infoRoot, "Unique Identifier", infoPath),
                         text(lockdown, "UniqueDeviceID", manifestPath),
                         fs::path(deviceFolder).filename().string()});
    result.deviceName =
        firstOf({text(infoRoot, "Device Name", infoPath), text(infoRoot, "Display Name", infoPath),
                 text(lockdown, "DeviceName", manifestPath)});
    result.productType = firstOf(
        {text(infoRoot, "Product Type", infoPath), text(lockdown, "ProductType", manifestPath)});
    result.productVersion = firstOf({text(infoRoot, "Product Version", infoPath),
                                     text(lockdown, "ProductVersion", manifestPath)});
    result.lastBackupDate = date(infoRoot, "Last Backup Date", infoPath);
    if (!result.lastBackupDate) {
        result.lastBackupDate = date(statusRoot, "Date", statusPath);
    }
    if (!result.lastBackupDate) {
        result.lastBackupDate = date(manifestRoot, "Date", manifestPath);
    }
    result.encrypted = flag(manifestRoot, "IsEncrypted", manifestPath).value_or(false);
    result.complete = text(statusRoot, "SnapshotState", statusPath) == "finished";

    const fs::path folder(deviceFolder);
    result.hasMessages = isRegularFile(folder / kMessagesFileID.substr(0, 2) / kMessagesFileID) ||
                         isRegularFile(folder / kMessagesFileID);
    return result;
}

BackupKeys readBackupKeys(const std::string& deviceFolder) {
    const auto manifest = readDictionary(deviceFolder, kManifestPlist);
    const auto path = fileIn(deviceFolder, kManifestPlist);
    if (!manifest) {
        badShape(path, "Manifest.plist is missing");
    }
    const Node root = manifest->root();
    BackupKeys keys;
    keys.encrypted = flag(root, "IsEncrypted", path).value_or(false);
    if (!keys.encrypted) {
        return keys;
    }
    auto keybag = bytes(root, "BackupKeyBag", path);
    if (!keybag || keybag->empty()) {
        badShape(path, "it is encrypted but has no keybag");
    }
    keys.keybag = std::move(*keybag);
    keys.manifestKey = bytes(root, "ManifestKey", path).value_or(std::vector<std::uint8_t>());
    return keys;
}

BackupListing listBackups(const std::vector<std::string>& folders) {
    BackupListing listing;
    const auto add = [&listing](const fs::path& folder) {
        try {
            listing.backups.push_back(readBackupInfo(folder.string()));
        } catch (const BackupError& error) {
            listing.unreadable.push_back(error);
        }
    };
    for (const auto& folder : folders) {
        if (isDeviceFolder(folder)) {
            add(folder);
            continue;
        }
        std::vector<fs::path> devices;
        std::error_code error;
        for (fs::directory_iterator it(folder, error), end; !error && it != end;
             it.increment(error)) {
            std::error_code ignored;
            if (it->is_directory(ignored) && isDeviceFolder(it->path())) {
                devices.push_back(it->path());
            }
        }
        std::sort(devices.begin(), devices.end());
        for (const auto& device : devices) {
            add(device);
        }
    }
    return listing;
}

std::vector<std::string>
usualBackupFolders(OperatingSystem system,
                   const std::function<std::optional<std::string>(const char*)>& environment) {
    std::vector<std::string> folders;
    const auto under = [&](const char* variable, std::initializer_list<const char*> parts,
                           char separator) {
        const auto base = environment(variable);
        if (!base || base->empty()) {
            return;
        }
        std::string folder = *base;
        for (const char* part : parts) {
            folder += separator;
            folder += part;
        }
        folders.push_back(std::move(folder));
    };
    switch (system) {
    case OperatingSystem::macOS:
        under("HOME", {"Library", "Application Support", "MobileSync", "Backup"}, '/');
        break;
    case OperatingSystem::windows:
        under("APPDATA", {"Apple Computer", "MobileSync", "Backup"}, '\\');
        under("USERPROFILE", {"Apple", "MobileSync", "Backup"}, '\\');
        break;
    case OperatingSystem::other:
        break;
    }
    return folders;
}

std::vector<std::string> usualBackupFolders() {
#if defined(__APPLE__)
    constexpr auto system = OperatingSystem::macOS;
#elif defined(_WIN32)
    constexpr auto system = OperatingSystem::windows;
#else
    constexpr auto system = OperatingSystem::other;
#endif
    return usualBackupFolders(system, [](const char* name) -> std::optional<std::string> {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    });
}

} // namespace scrivly
