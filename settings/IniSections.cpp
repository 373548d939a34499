#include "IniSections.h"

#include <algorithm>

namespace {

// Room made when the first key of a section is read, rather than growing
// one entry at a time.
constexpr std::size_t FirstEntries = 8;

} // namespace

IniSections::IniSections() = default;

IniSections::IniSections(const IniSections& other)
    : m_text(other.m_text)
    , m_sections(other.m_sections)
    , m_unused(other.m_unused)
    , m_sorted(other.m_sorted)
{
    rebind();
}

IniSections& IniSections::operator=(const IniSections& other)
{
    m_text = other.m_text;
    m_sections = other.m_sections;
    m_unused = other.m_unused;
    m_sorted = other.m_sorted;
    rebind();
    return *this;
}

IniSections::~IniSections() = default;

std::vector<std::string> IniSections::names() const
{
    std::vector<std::string> names;
    names.reserve(m_sections.size());
    for (const Section& section : m_sections)
        names.push_back(section.name);
    return names;
}

const IniKeyMap* IniSections::find(std::string_view section) const
{
    const std::size_t index = lowerBound(section);
    return index < m_sections.size() && m_sections[index].name == section ? &m_sections[index].keys : nullptr;
}

std::optional<std::string_view> IniSections::find(std::string_view section, std::string_view key) const
{
    const IniKeyMap* keys = find(section);
    return keys ? keys->find(key) : std::nullopt;
}

std::size_t IniSections::beginSection(std::string_view name)
{
    if (!m_sections.empty() && m_sections.back().name == name)
        return m_sections.size() - 1;
    // A section listed again gathers its keys where it was listed first, so
    // that memory grows with the sections, not with their headers.
    const auto [known, added] = m_readIndex.try_emplace(std::string(name), m_sections.size());
    if (added) {
        m_sorted = m_sorted && (m_sections.empty() || m_sections.back().name < name);
        m_sections.push_back({std::string(name), IniKeyMap(&m_text)});
    }
    return known->second;
}

void IniSections::append(std::size_t section, std::string_view key, std::string_view value)
{
    IniKeyMap& keys = m_sections[section].keys;
    if (keys.m_entries.empty()) {
        keys.m_entries.reserve(FirstEntries);
    } else if (keys.m_sorted) {
        // Files written by this program list their keys in order: the common
        // case stays sorted, and a repeated last key is replaced at once.
        const std::string_view last = keys.nameOf(keys.m_entries.back());
        if (key == last) {
            setValue(keys.m_entries.back(), value);
            return;
        }
        keys.m_sorted = last < key;
    }
    keys.m_entries.push_back(store(key, value));
}

void IniSections::finishReading()
{
    std::unordered_map<std::string, std::size_t>().swap(m_readIndex);
    if (!m_sorted) {
        std::sort(m_sections.begin(), m_sections.end(),
                  [](const Section& a, const Section& b) { return a.name < b.name; });
        m_sorted = true;
    }
    for (Section& section : m_sections)
        sortKeys(section.keys);
    compact();
}

void IniSections::assign(std::string_view section, std::string_view key, std::string_view value)
{
    IniKeyMap& keys = sectionToChange(section);
    const std::size_t index = keys.lowerBound(key);
    if (index < keys.m_entries.size() && keys.nameOf(keys.m_entries[index]) == key) {
        setValue(keys.m_entries[index], value);
        compact();
        return;
    }
    const IniKeyMap::Entry entry = store(key, value);
    keys.m_entries.insert(keys.m_entries.begin() + std::ptrdiff_t(index), entry);
}

void IniSections::clearSection(std::string_view section)
{
    IniKeyMap& keys = sectionToChange(section);
    for (const IniKeyMap::Entry& entry : keys.m_entries)
        m_unused += entry.nameLength + entry.valueLength;
    keys.m_entries.clear();
    compact();
}

void IniSections::clear()
{
    m_text.clear();
    m_sections.clear();
    m_readIndex.clear();
    m_unused = 0;
    m_sorted = true;
}

std::size_t IniSections::lowerBound(std::string_view name) const
{
    const auto it = std::lower_bound(m_sections.begin(), m_sections.end(), name,
                                     [](const Section& section, std::string_view wanted) {
                                         return std::string_view(section.name) < wanted;
                                     });
    return std::size_t(it - m_sections.begin());
}

IniKeyMap& IniSections::sectionToChange(std::string_view name)
{
    const std::size_t index = lowerBound(name);
    if (index < m_sections.size() && m_sections[index].name == name)
        return m_sections[index].keys;
    return m_sections.insert(m_sections.begin() + std::ptrdiff_t(index), {std::string(name), IniKeyMap(&m_text)})
        ->keys;
}

IniKeyMap::Entry IniSections::store(std::string_view name, std::string_view value)
{
    const auto nameOffset = std::uint32_t(m_text.size());
    m_text.append(name);
    const auto valueOffset = std::uint32_t(m_text.size());
    m_text.append(value);
    return {nameOffset, std::uint32_t(name.size()), valueOffset, std::uint32_t(value.size())};
}

void IniSections::setValue(IniKeyMap::Entry& entry, std::string_view value)
{
    if (value.size() <= entry.valueLength) {
        m_text.replace(entry.value, value.size(), value);
        m_unused += entry.valueLength - value.size();
    } else {
        m_unused += entry.valueLength;
        entry.value = std::uint32_t(m_text.size());
        m_text.append(value);
    }
    entry.valueLength = std::uint32_t(value.size());
}

void IniSections::sortKeys(IniKeyMap& keys)
{
    if (keys.m_sorted)
        return;
    // The last entry of each name wins. Those are picked first, so that a
    // section that repeats a few names many times sorts only the few.
    auto& entries = keys.m_entries;
    std::unordered_map<std::string_view, std::size_t> lastOfName;
    for (std::size_t i = 0; i < entries.size(); ++i)
        lastOfName[keys.nameOf(entries[i])] = i;
    std::vector<IniKeyMap::Entry> kept;
    kept.reserve(lastOfName.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (lastOfName.at(keys.nameOf(entries[i])) == i)
            kept.push_back(entries[i]);
        else
            m_unused += entries[i].nameLength + entries[i].valueLength;
    }
    std::sort(kept.begin(), kept.end(), [&keys](const IniKeyMap::Entry& a, const IniKeyMap::Entry& b) {
        return keys.nameOf(a) < keys.nameOf(b);
    });
    entries = std::move(kept);
    keys.m_sorted = true;
}

void IniSections::rebind()
{
    for (Section& section : m_sections)
        section.keys.m_text = &m_text;
}

// Rewrites the text without the parts no entry uses once they make up half
// of it, so that a file changed many times does not keep growing in memory.
void IniSections::compact()
{
    if (m_unused == 0 || m_unused < m_text.size() / 2)
        return;
    std::string text;
    text.reserve(m_text.size() - m_unused);
    for (Section& section : m_sections) {
        for (IniKeyMap::Entry& entry : section.keys.m_entries) {
            const auto name = std::uint32_t(text.size());
            text.append(section.keys.nameOf(entry));
            const auto value = std::uint32_t(text.size());
            text.append(section.keys.valueOf(entry));
            entry = {name, entry.nameLength, value, entry.valueLength};
        }
    }
    m_text = std::move(text);
    m_unused = 0;
}
