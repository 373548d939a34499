#pragma once

#include "Handle.h"
#include "SingletonSlot.h"

#include <map>
#include <set>
#include <string>

// The settings front end of windows, dialogs and controllers. Reads and
// writes go through cNvWinIni; in addition every setting has one shared
// handle, so that all holders of it see the current value, and observers
// registered for a section hear of every change in it.
class cConfiguration
{
public:
    class Observer
    {
    public:
        virtual ~Observer();
        // Section and key arrive in upper case.
        virtual void ConfigurationChanged(const std::string& section, const std::string& key) = 0;
    };

    static cConfiguration* theInstance();
    // For tests: destroys the instance with all its handles and observers.
    static void resetInstance();

    virtual ~cConfiguration();

    // Refresh the setting's handle from the settings on every call.
    cReadHandle<std::string> GetHString(const char* section, const char* key, const char* defaultValue);
    std::string GetString(const char* section, const char* key, const char* defaultValue);
    cReadHandle<long> GetHInt(const char* section, const char* key, int defaultValue);
    int GetInt(const char* section, const char* key, int defaultValue);

    // Changes the handle only (no file); a changed value notifies the
    // section's observers. A null key drops all handles of the section.
    void Set(const char* section, const char* key, const char* value);
    void Set(const char* section, const char* key, int value);

    // Writes to the settings, and only when that succeeds sets the handle.
    bool Write(const char* section, const char* key, const char* value);
    bool Write(const char* section, const char* key, int value);

    void Register(Observer* observer, std::string section);
    void Unregister(Observer* observer, std::string section);
    void NotifyObservers(const std::string& section, const std::string& key);

private:
    friend class SingletonSlot<cConfiguration>;
    cConfiguration();

    template<class T>
    using HandleMap = std::map<std::string, std::map<std::string, cHandle<T>>>;

    template<class T>
    static cHandle<T>& findOrCreate(HandleMap<T>& handles, const char* section, const char* key);
    template<class T>
    void set(HandleMap<T>& handles, const char* section, const char* key, const T& value);

    // Keyed by the upper-case section; ordered by address.
    std::map<std::string, std::set<Observer*>> m_observers;
    // Keyed by section and key as the callers spell them.
    HandleMap<long> m_intHandles;
    HandleMap<std::string> m_stringHandles;
};
