#include "Configuration.h"

#include "NvWinIni.h"
#include "StringFunctions.h"

namespace {
std::string upperCase(std::string text)
{
    StringFunctions::toUpper(text);
    return text;
}

std::string orEmpty(const char* text)
{
    return text ? text : "";
}
} // namespace

cConfiguration::Observer::~Observer() = default;

cConfiguration* cConfiguration::theInstance()
{
    return SingletonSlot<cConfiguration>::instance();
}

void cConfiguration::resetInstance()
{
    SingletonSlot<cConfiguration>::reset();
}

cConfiguration::cConfiguration() = default;

cConfiguration::~cConfiguration() = default;

template<class T>
cHandle<T>& cConfiguration::findOrCreate(HandleMap<T>& handles, const char* section, const char* key)
{
    return handles[orEmpty(section)][orEmpty(key)];
}

cReadHandle<std::string> cConfiguration::GetHString(const char* section, const char* key,
                                                    const char* defaultValue)
{
    cHandle<std::string>& handle = findOrCreate(m_stringHandles, section, key);
    handle = cNvWinIni::theInstance()->GetString(section, key, defaultValue);
    return handle;
}

std::string cConfiguration::GetString(const char* section, const char* key, const char* defaultValue)
{
    return GetHString(section, key, defaultValue).Value();
}

cReadHandle<long> cConfiguration::GetHInt(const char* section, const char* key, int defaultValue)
{
    cHandle<long>& handle = findOrCreate(m_intHandles, section, key);
    handle = cNvWinIni::theInstance()->GetInt(section, key, defaultValue);
    return handle;
}

int cConfiguration::GetInt(const char* section, const char* key, int defaultValue)
{
    return int(GetHInt(section, key, defaultValue).Value());
}

template<class T>
void cConfiguration::set(HandleMap<T>& handles, const char* section, const char* key, const T& value)
{
    if (!section)
        return;
    if (!key) {
        // Handles given out keep their bodies and last values.
        handles[section].clear();
        return;
    }
    cHandle<T>& handle = findOrCreate(handles, section, key);
    if (handle.Value() == value)
        return;
    handle = value;
    NotifyObservers(section, key);
}

void cConfiguration::Set(const char* section, const char* key, const char* value)
{
    set(m_stringHandles, section, key, orEmpty(value));
}

void cConfiguration::Set(const char* section, const char* key, int value)
{
    set(m_intHandles, section, key, long(value));
}

bool cConfiguration::Write(const char* section, const char* key, const char* value)
{
    const bool written = cNvWinIni::theInstance()->WriteString(section, key, value);
    if (written)
        Set(section, key, value);
    return written;
}

bool cConfiguration::Write(const char* section, const char* key, int value)
{
    const bool written = cNvWinIni::theInstance()->WriteInt(section, key, value);
    if (written)
        Set(section, key, value);
    return written;
}

void cConfiguration::Register(Observer* observer, std::string section)
{
    m_observers[upperCase(std::move(section))].insert(observer);
}

void cConfiguration::Unregister(Observer* observer, std::string section)
{
    const auto entry = m_observers.find(upperCase(std::move(section)));
    if (entry == m_observers.end())
        return;
    entry->second.erase(observer);
    if (entry->second.empty())
        m_observers.erase(entry);
}

void cConfiguration::NotifyObservers(const std::string& section, const std::string& key)
{
    const std::string upperSection = upperCase(section);
    const auto entry = m_observers.find(upperSection);
    if (entry == m_observers.end())
        return;
    const std::string upperKey = upperCase(key);
    // A copy, so that an observer may register or unregister while notified.
    const std::set<Observer*> observers = entry->second;
    for (Observer* observer : observers)
        observer->ConfigurationChanged(upperSection, upperKey);
}
