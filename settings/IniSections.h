#pragma once

#include "IniKeyMap.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// The sections of one INI file in memory, in byte-wise order of their names,
// each with its keys. All names and values lie in one text block, so that a
// file of many sections and keys is held in a handful of allocations.
//
// A file is read in its own order with beginSection() and append(); a
// section listed twice gathers its keys in one place. Then finishReading()
// puts sections and keys in order once, the last of equal key names
// winning. Changes after that keep the order. Names arrive folded as the
// file's rules want them.
class IniSections
{
public:
    IniSections();
    IniSections(const IniSections& other);
    IniSections& operator=(const IniSections& other);
    ~IniSections();

    std::vector<std::string> names() const;
    // Null when there is no such section.
    const IniKeyMap* find(std::string_view section) const;
    std::optional<std::string_view> find(std::string_view section, std::string_view key) const;

    // The section that the keys read next belong to; an index for append().
    std::size_t beginSection(std::string_view name);
    void append(std::size_t section, std::string_view key, std::string_view value);
    void finishReading();

    void assign(std::string_view section, std::string_view key, std::string_view value);
    // Removes the section's keys; the section stays, empty.
    void clearSection(std::string_view section);
    void clear();

private:
    struct Section
    {
        std::string name;
        IniKeyMap keys;
    };

    std::size_t lowerBound(std::string_view name) const;
    IniKeyMap& sectionToChange(std::string_view name);
    IniKeyMap::Entry store(std::string_view name, std::string_view value);
    void setValue(IniKeyMap::Entry& entry, std::string_view value);
    void sortKeys(IniKeyMap& keys);
    void rebind();
    void compact();

    std::string m_text;
    std::vector<Section> m_sections;
    // While a file is read: where each section listed so far is.
    std::unordered_map<std::string, std::size_t> m_readIndex;
    // Bytes of the text that no entry refers to any more.
    std::size_t m_unused = 0;
    // False once a file listed a new section after one whose name comes later.
    bool m_sorted = true;
};
