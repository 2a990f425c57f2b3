#include "ScrivlyKit/contacts/ContactSources.h"

#include "ScrivlyKit/contacts/AddressBookDatabase.h"
#include "ScrivlyKit/contacts/ContactsError.h"
#include "ScrivlyKit/contacts/VCard.h"
#include "ScrivlyKit/platform/FileSystem.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace scrivly::ContactSources {
namespace {

namespace fs = std::filesystem;

bool hasVCardExtension(const fs::path& path) {
    auto extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".vcf" || extension == ".vcard";
}

// Whether the file starts with SQLite's header. A file that cannot be opened is left to the
// vCard reader, which reports why.
bool isSQLiteFile(const std::string& path) {
    static constexpr char kHeader[] = "SQLite format 3";
    try {
        const auto file = FileSystem::openRegularFile(path);
        char start[sizeof kHeader] = {};
        return ::pread(file.get(), start, sizeof start, 0) == sizeof start &&
               std::equal(start, start + sizeof start, kHeader);
    } catch (const std::filesystem::filesystem_error&) {
        return false;
    }
}

// The files a folder stands for, in the order they are read.
std::vector<std::string> filesIn(const std::string& folder) {
    auto files = AddressBookDatabase::find(folder);
    std::vector<std::string> vcards;
    std::error_code listing;
    std::error_code ignored;
    for (fs::directory_iterator it(folder, listing), end; !listing && it != end;
         it.increment(listing)) {
        if (hasVCardExtension(it->path()) && it->is_regular_file(ignored)) {
            vcards.push_back(it->path().string());
        }
    }
    if (listing) {
        throw ContactsError(folder, listing.message());
    }
    std::sort(vcards.begin(), vcards.end());
    files.insert(files.end(), vcards.begin(), vcards.end());
    return files;
}

void loadFile(const std::string& path, const std::string& scratchFolder, Result& result) {
    std::vector<ContactCard> cards;
    if (isSQLiteFile(path)) {
        cards = AddressBookDatabase::read(path, scratchFolder);
    } else {
        auto parsed = VCard::readFile(path);
        cards = std::move(parsed.cards);
        result.skipped += parsed.skipped;
    }
    result.cards += cards.size();
    result.sources.push_back(path);
    addCards(result.names, cards);
}

} // namespace

void addCards(NameBook& names, const std::vector<ContactCard>& cards) {
    for (const auto& card : cards) {
        const auto name = card.name();
        if (name.empty()) {
            continue;
        }
        for (const auto& number : card.phoneNumbers) {
            names.add(number, name, card.identifier);
        }
        for (const auto& address : card.emailAddresses) {
            names.add(address, name, card.identifier);
        }
    }
}

Result load(const std::vector<std::string>& paths, const std::string& scratchFolder) {
    Result result;
    for (const auto& path : paths) {
        std::error_code error;
        const auto status = fs::status(path, error);
        if (fs::is_directory(status)) {
            for (const auto& file : filesIn(path)) {
                loadFile(file, scratchFolder, result);
            }
        } else {
            loadFile(path, scratchFolder, result);
        }
    }
    return result;
}

} // namespace scrivly::ContactSources
