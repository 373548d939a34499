#include "IniKeyMap.h"

#include <algorithm>

std::optional<std::string_view> IniKeyMap::find(std::string_view name) const
{
    const std::size_t index = lowerBound(name);
    if (index == m_entries.size() || nameOf(m_entries[index]) != name)
        return std::nullopt;
    return valueOf(m_entries[index]);
}

bool IniKeyMap::operator==(const IniKeyMap& other) const
{
    return std::equal(begin(), end(), other.begin(), other.end());
}

IniKeyMap::value_type IniKeyMap::entryAt(std::size_t index) const
{
    return {nameOf(m_entries[index]), valueOf(m_entries[index])};
}

// Entries are made from the text they point into; sorting compares names
// millions of times, so the offsets are taken as they are.
std::string_view IniKeyMap::nameOf(const Entry& entry) const
{
    return std::string_view(m_text->data() + entry.name, entry.nameLength);
}

std::string_view IniKeyMap::valueOf(const Entry& entry) const
{
    return std::string_view(m_text->data() + entry.value, entry.valueLength);
}

std::size_t IniKeyMap::lowerBound(std::string_view name) const
{
    const auto it = std::lower_bound(m_entries.begin(), m_entries.end(), name,
                                     [this](const Entry& entry, std::string_view wanted) {
                                         return nameOf(entry) < wanted;
                                     });
    return std::size_t(it - m_entries.begin());
}
