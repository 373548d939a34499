#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The keys of one INI section with their values, in byte-wise order of the
// names. Names and values lie in the text block of the whole file (see
// IniSections, which builds and changes these maps); each entry holds their
// offsets there, so reading a file costs no allocation per key, and a lookup
// is a binary search. Views handed out stay valid until the next change of
// the file in memory.
class IniKeyMap
{
public:
    using value_type = std::pair<std::string_view, std::string_view>;

    class const_iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = IniKeyMap::value_type;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = value_type;

        value_type operator*() const { return m_map->entryAt(m_index); }
        const_iterator& operator++()
        {
            ++m_index;
            return *this;
        }
        bool operator==(const const_iterator& other) const { return m_index == other.m_index; }
        bool operator!=(const const_iterator& other) const { return m_index != other.m_index; }

    private:
        friend class IniKeyMap;
        const_iterator(const IniKeyMap* map, std::size_t index) : m_map(map), m_index(index) {}

        const IniKeyMap* m_map;
        std::size_t m_index;
    };

    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, m_entries.size()}; }
    std::size_t size() const { return m_entries.size(); }
    bool empty() const { return m_entries.empty(); }

    // The value of the key of that name; none when there is no such key.
    std::optional<std::string_view> find(std::string_view name) const;

    bool operator==(const IniKeyMap& other) const;
    bool operator!=(const IniKeyMap& other) const { return !(*this == other); }

private:
    friend class IniSections;

    // Where a name and its value lie in the text.
    struct Entry
    {
        std::uint32_t name;
        std::uint32_t nameLength;
        std::uint32_t value;
        std::uint32_t valueLength;
    };

    explicit IniKeyMap(const std::string* text) : m_text(text) {}

    value_type entryAt(std::size_t index) const;
    std::string_view nameOf(const Entry& entry) const;
    std::string_view valueOf(const Entry& entry) const;
    // The index of the first entry whose name is not before name.
    std::size_t lowerBound(std::string_view name) const;

    const std::string* m_text;
    std::vector<Entry> m_entries;
    // False once a file listed a key before one it had already listed.
    bool m_sorted = true;
};
