#include "ScrivlyKit/backup/PropertyList.h"

#include <plist/plist.h>

#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>

namespace scrivly {
namespace {

plist_type typeOf(void* node) {
    return node ? plist_get_node_type(node) : PLIST_NONE;
}

// Frees the buffer that plist_to_bin and plist_to_xml hand out.
struct FreeBinary {
    void operator()(char* bytes) const noexcept { plist_to_bin_free(bytes); }
};
struct FreeXML {
    void operator()(char* text) const noexcept { plist_to_xml_free(text); }
};

} // namespace

void PropertyList::FreeNode::operator()(void* node) const noexcept {
    plist_free(node);
}

PropertyList::PropertyList(void* node) : m_root(node) {
    if (!node) {
        throw std::bad_alloc();
    }
}

bool PropertyList::Node::isDictionary() const {
    return typeOf(m_node) == PLIST_DICT;
}

bool PropertyList::Node::isArray() const {
    return typeOf(m_node) == PLIST_ARRAY;
}

PropertyList::Node PropertyList::Node::member(const std::string& key) const {
    return Node(isDictionary() ? plist_dict_get_item(m_node, key.c_str()) : nullptr);
}

std::size_t PropertyList::Node::count() const {
    return isArray() ? plist_array_get_size(m_node) : 0;
}

PropertyList::Node PropertyList::Node::item(std::size_t index) const {
    if (index >= count()) {
        return Node();
    }
    return Node(plist_array_get_item(m_node, static_cast<std::uint32_t>(index)));
}

std::optional<std::string> PropertyList::Node::string() const {
    if (typeOf(m_node) != PLIST_STRING) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(m_node, &length);
    return text ? std::string(text, length) : std::string();
}

std::optional<std::uint64_t> PropertyList::Node::integer() const {
    if (typeOf(m_node) != PLIST_UINT) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    plist_get_uint_val(m_node, &value);
    return value;
}

std::optional<bool> PropertyList::Node::boolean() const {
    if (typeOf(m_node) != PLIST_BOOLEAN) {
        return std::nullopt;
    }
    std::uint8_t value = 0;
    plist_get_bool_val(m_node, &value);
    return value != 0;
}

std::optional<std::vector<std::uint8_t>> PropertyList::Node::data() const {
    if (typeOf(m_node) != PLIST_DATA) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(m_node, &length);
    if (!bytes) {
        return std::vector<std::uint8_t>();
    }
    const auto* first = reinterpret_cast<const std::uint8_t*>(bytes);
    return std::vector<std::uint8_t>(first, first + length);
}

std::optional<std::uint64_t> PropertyList::Node::uid() const {
    if (typeOf(m_node) != PLIST_UID) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    plist_get_uid_val(m_node, &value);
    return value;
}

std::optional<Date> PropertyList::Node::date() const {
    if (typeOf(m_node) != PLIST_DATE) {
        return std::nullopt;
    }
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(m_node, &seconds, &microseconds);
    return Date{static_cast<double>(seconds) + static_cast<double>(microseconds) / 1e6};
}

std::optional<PropertyList> PropertyList::parse(std::span<const std::uint8_t> bytes) {
    if (bytes.empty() || bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    plist_t node = nullptr;
    plist_from_memory(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::uint32_t>(bytes.size()), &node);
    if (!node) {
        return std::nullopt;
    }
    return PropertyList(node);
}

PropertyList PropertyList::dictionary() {
    return PropertyList(plist_new_dict());
}

PropertyList PropertyList::array() {
    return PropertyList(plist_new_array());
}

PropertyList PropertyList::string(std::string_view value) {
    return PropertyList(plist_new_string(std::string(value).c_str()));
}

PropertyList PropertyList::integer(std::uint64_t value) {
    return PropertyList(plist_new_uint(value));
}

PropertyList PropertyList::boolean(bool value) {
    return PropertyList(plist_new_bool(value ? 1 : 0));
}

PropertyList PropertyList::data(std::span<const std::uint8_t> value) {
    return PropertyList(plist_new_data(reinterpret_cast<const char*>(value.data()), value.size()));
}

PropertyList PropertyList::date(Date value) {
    const double whole = std::floor(value.seconds);
    const auto microseconds = static_cast<std::int32_t>(std::lround((value.seconds - whole) * 1e6));
    return PropertyList(plist_new_date(static_cast<std::int32_t>(whole), microseconds));
}

PropertyList PropertyList::uid(std::uint64_t value) {
    return PropertyList(plist_new_uid(value));
}

PropertyList& PropertyList::set(const std::string& key, PropertyList value) {
    if (!root().isDictionary()) {
        throw std::logic_error("PropertyList::set needs a dictionary");
    }
    plist_dict_set_item(m_root.get(), key.c_str(), value.m_root.release());
    return *this;
}

PropertyList& PropertyList::append(PropertyList value) {
    if (!root().isArray()) {
        throw std::logic_error("PropertyList::append needs an array");
    }
    plist_array_append_item(m_root.get(), value.m_root.release());
    return *this;
}

std::vector<std::uint8_t> PropertyList::binary() const {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(m_root.get(), &bytes, &length);
    const std::unique_ptr<char, FreeBinary> owner(bytes);
    if (!bytes) {
        throw std::bad_alloc();
    }
    const auto* first = reinterpret_cast<const std::uint8_t*>(bytes);
    return std::vector<std::uint8_t>(first, first + length);
}

std::string PropertyList::xml() const {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(m_root.get(), &text, &length);
    const std::unique_ptr<char, FreeXML> owner(text);
    if (!text) {
        throw std::bad_alloc();
    }
    return std::string(text, length);
}

} // namespace scrivly
