#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace scrivly {

// One file attached to a message.
struct Attachment {
    std::int64_t rowID = 0;
    std::optional<std::string> path; // stored file name with a leading "~/" expanded
    std::string name;                // the name to show
    std::optional<std::string> mimeType;
    std::optional<std::string> uti;
    std::int64_t totalBytes = 0;

    // The stored file name with a leading "~/" turned into home + "/"; other texts unchanged.
    static std::optional<std::string> expandedPath(const std::optional<std::string>& stored,
                                                   const std::string& home);
    // The transfer name when not empty, else the last path component of the stored file name,
    // else "Attachment".
    static std::string displayName(const std::optional<std::string>& transferName,
                                   const std::optional<std::string>& storedFileName);

    bool operator==(const Attachment&) const = default;
};

} // namespace scrivly

template <> struct std::hash<scrivly::Attachment> {
    std::size_t operator()(const scrivly::Attachment& attachment) const noexcept;
};
