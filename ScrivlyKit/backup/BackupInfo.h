#pragma once

#include "ScrivlyKit/backup/BackupError.h"
#include "ScrivlyKit/records/Date.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivly {

// What the plain property lists of a device folder say about its backup; readable whether the
// backup is encrypted or not.
struct BackupInfo {
    std::string id;   // the device's identifier (Info.plist), else the folder's name
    std::string path; // the device folder
    std::string deviceName;
    std::string productType;    // such as "iPhone15,2"
    std::string productVersion; // the iOS version, such as "17.5"
    std::optional<Date> lastBackupDate;
    bool encrypted = false;
    bool complete = false;    // Status.plist's SnapshotState is "finished"
    bool hasMessages = false; // sms.db is stored

    bool operator==(const BackupInfo&) const = default;
};

// What Manifest.plist holds for reading an encrypted backup; empty bytes when not encrypted.
struct BackupKeys {
    bool encrypted = false;
    std::vector<std::uint8_t> keybag;      // BackupKeyBag
    std::vector<std::uint8_t> manifestKey; // ManifestKey; absent from backups of iOS 9 and before
};

// The file names a backup's manifest and property lists have in the device folder.
inline constexpr const char* kInfoPlist = "Info.plist";
inline constexpr const char* kManifestPlist = "Manifest.plist";
inline constexpr const char* kStatusPlist = "Status.plist";
inline constexpr const char* kManifestDatabase = "Manifest.db";
inline constexpr const char* kManifestMbdb = "Manifest.mbdb";

// Reads Info.plist, Manifest.plist and Status.plist of deviceFolder (a missing Status.plist
// means not complete). Throws BackupError: notBackup when the folder has neither Info.plist nor
// Manifest.plist, damaged when one is not a property list of the expected shape or a known key
// has the wrong type, unreadable when a file can't be read.
BackupInfo readBackupInfo(const std::string& deviceFolder);

// Reads what Manifest.plist holds about encryption. Throws BackupError as readBackupInfo does,
// damaged also when an encrypted backup's BackupKeyBag is missing.
BackupKeys readBackupKeys(const std::string& deviceFolder);

// The backups found in folders: a folder that is a device folder gives itself, any other gives
// the device folders directly inside it, in name order. Missing folders give nothing.
struct BackupListing {
    std::vector<BackupInfo> backups;
    std::vector<BackupError> unreadable; // device folders that could not be read, and why
};
BackupListing listBackups(const std::vector<std::string>& folders);

// Where the usual backup programs put backups: on macOS the Finder's (and iTunes')
// ~/Library/Application Support/MobileSync/Backup; on Windows both iTunes' and the Apple Devices
// application's. environment looks up an environment variable. Nothing for other systems.
enum class OperatingSystem { macOS, windows, other };
std::vector<std::string>
usualBackupFolders(OperatingSystem system,
                   const std::function<std::optional<std::string>(const char*)>& environment);
// The same for this computer's system and environment.
std::vector<std::string> usualBackupFolders();

} // namespace scrivly
