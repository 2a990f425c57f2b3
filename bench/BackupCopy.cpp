// backup-copy: opens an iPhone backup and writes its Messages database (sms.db and its log,
// decrypted) into a folder, timing the copy on its own, for measuring decryption against
// `openssl enc`.
//
//   backup-copy DEVICE_FOLDER INTO_FOLDER [PASSWORD_FILE]
//
// Prints the bytes written, the seconds the copy took (opening the backup, key derivation
// included, is not counted) and the speed. INTO_FOLDER is made owner-only when missing; the
// copies stay there for the caller.

#include "ScrivlyKit/backup/IPhoneBackup.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string firstLine(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    std::string line;
    std::getline(file, line);
    return line;
}

void copyOut(const std::string& device, const std::string& into,
             const std::optional<std::string>& password) {
    scrivly::FileSystem::createPrivateFolders(into);
    const auto scratch = (fs::path(into) / "scratch").string();
    scrivly::FileSystem::createPrivateFolders(scratch);
    const scrivly::IPhoneBackup backup(device, scratch, password);

    const auto started = std::chrono::steady_clock::now();
    const auto files = backup.copyMessagesDatabase(into);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    std::uint64_t bytes = 0;
    for (const auto& file : files) {
        bytes += file.size;
    }
    std::cout << "copied " << files.size() << " files, " << bytes << " bytes in " << seconds
              << " s (" << static_cast<double>(bytes) / seconds / 1e6 << " MB/s)\n";
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::cerr << "usage: backup-copy DEVICE_FOLDER INTO_FOLDER [PASSWORD_FILE]\n";
        return 2;
    }
    try {
        std::optional<std::string> password;
        if (argc == 4) {
            password = firstLine(argv[3]);
        }
        copyOut(argv[1], argv[2], password);
    } catch (const std::exception& error) {
        std::cerr << "backup-copy: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
