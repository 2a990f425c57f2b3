#pragma once

#include "ScrivlyKit/export/ExportOptions.h"
#include "ScrivlyKit/names/NameBook.h"
#include "ScrivlyKit/records/Date.h"

#include <cstdint>
#include <optional>
#include <string>

namespace scrivly {

// Everything a rendered PDF depends on: a finished PDF is reused only for an equal key.
struct RenderKey {
    std::optional<std::string> conversation; // the selected conversation's id
    std::int64_t messages = 0;               // entries in the transcript
    std::optional<Date> from;                // the bounds in force
    std::optional<Date> to;
    std::string me; // the name of the user's own messages
    NameBook names;
    ExportOptions options;

    bool operator==(const RenderKey&) const = default;
};

} // namespace scrivly
