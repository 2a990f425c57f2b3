#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace scrivly {

// The kind of a tapback. The emoji case carries its emoji text.
struct ReactionKind {
    enum class Case { emoji, loved, liked, disliked, laughed, emphasized, questioned };

    Case kind = Case::loved;
    std::string emoji; // only for Case::emoji

    static ReactionKind emojiReaction(std::string text) { return {Case::emoji, std::move(text)}; }
    static ReactionKind fixed(Case kind) { return {kind, {}}; }

    bool isEmoji() const { return kind == Case::emoji; }

    // The kind of a stored reaction type (its value modulo 1000); nothing for an unknown code or
    // for the emoji code without an emoji text.
    static std::optional<ReactionKind> fromType(std::int64_t reactionType,
                                                const std::optional<std::string>& emoji);

    // Lower-case English name of the case ("loved", ..., "emoji") for machine-readable output.
    std::string caseName() const;

    bool operator==(const ReactionKind&) const = default;
};

// One reaction as shown: its kind and who reacted (absent when it was me).
struct Reaction {
    ReactionKind kind;
    std::optional<std::string> sender;

    bool operator==(const Reaction&) const = default;
};

} // namespace scrivly

template <> struct std::hash<scrivly::ReactionKind> {
    std::size_t operator()(const scrivly::ReactionKind& kind) const noexcept;
};
template <> struct std::hash<scrivly::Reaction> {
    std::size_t operator()(const scrivly::Reaction& reaction) const noexcept;
};
