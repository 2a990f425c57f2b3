#pragma once

#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/records/Date.h"

#include <string>
#include <utility>
#include <vector>

// A small made-up Messages history laid out like a real one, for demonstrations and tests.
namespace scrivly::SampleDatabase {

struct Info {
    std::string database; // folder + "/chat.db"
    std::string home;     // folder + "/home"; stored "~/" attachment paths resolve against it
};

// Writes the sample history into folder (replacing what is there), with dates around now.
// Throws SQLiteError or std::filesystem::filesystem_error.
Info create(const std::string& folder, Date now);

// The statements that create the empty tables of a Messages database, as one batch.
const char* schema();

// The fixed people list: (address as a person would write it, made-up name).
std::vector<std::pair<std::string, std::string>> people();

// The name book made from the people list.
NameBook nameBook();

} // namespace scrivly::SampleDatabase
