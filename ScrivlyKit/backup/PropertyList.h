#pragma once

#include "ScrivlyKit/records/Date.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace scrivly {

// One property list (Apple's binary or XML form), read and written through libplist. Input is
// untrusted: every accessor checks the node's type and answers nothing when it differs, so the
// caller decides what a wrong type means. Copying is not offered; moving is.
class PropertyList {
public:
    // A view of one node of a tree, valid while the PropertyList that owns the tree lives and is
    // not changed. An empty view answers nothing to every question.
    class Node {
    public:
        Node() = default;
        explicit operator bool() const { return m_node != nullptr; }

        bool isDictionary() const;
        bool isArray() const;
        // A dictionary's member; empty when this is no dictionary or has no such key.
        Node member(const std::string& key) const;
        // An array's length (0 for anything else) and its items.
        std::size_t count() const;
        Node item(std::size_t index) const;

        std::optional<std::string> string() const;
        std::optional<std::uint64_t> integer() const;
        std::optional<bool> boolean() const;
        std::optional<std::vector<std::uint8_t>> data() const;
        // The index that an NSKeyedArchiver reference (a UID node) points at.
        std::optional<std::uint64_t> uid() const;
        std::optional<Date> date() const;

    private:
        friend class PropertyList;
        explicit Node(void* node) : m_node(node) {}
        void* m_node = nullptr;
    };

    // Reads a binary or XML property list; nothing when the bytes are neither.
    static std::optional<PropertyList> parse(std::span<const std::uint8_t> bytes);

    static PropertyList dictionary();
    static PropertyList array();
    static PropertyList string(std::string_view value);
    static PropertyList integer(std::uint64_t value);
    static PropertyList boolean(bool value);
    static PropertyList data(std::span<const std::uint8_t> value);
    static PropertyList date(Date value);
    static PropertyList uid(std::uint64_t value);

    Node root() const { return Node(m_root.get()); }

    // Sets the root dictionary's member key (replacing one there), or appends to the root array;
    // value's whole tree moves into this one. Throws std::logic_error when the root is not of
    // that kind.
    PropertyList& set(const std::string& key, PropertyList value);
    PropertyList& append(PropertyList value);

    std::vector<std::uint8_t> binary() const;
    std::string xml() const;

private:
    struct FreeNode {
        void operator()(void* node) const noexcept;
    };
    explicit PropertyList(void* node);

    std::unique_ptr<void, FreeNode> m_root;
};

} // namespace scrivly
