#pragma once

#include "SingletonSlot.h"

#include <string>

// Fills the process-wide table of folder symbols ("<NAME>" inside paths) with
// the system's standard folders and the symbols of the main configuration
// file, and makes sure that a symbolic folder exists on disk. The table and
// the expansion belong to the global DMFileName environment; this class only
// writes into it.
class FolderManager
{
public:
    static FolderManager* theInstance();
    // For tests: destroys the instance; the next theInstance() sets the base
    // folder and the system symbols again. Symbols already in the global
    // file environment stay there.
    static void resetInstance();

    virtual ~FolderManager();

    // The folder against which relative paths are taken: the application folder.
    std::string getBaseFolder() const;

    void setSymbol(const std::string& name, const std::string& value);
    // Defines a symbol for every key of section (names are case-sensitive).
    // A missing file or section defines nothing.
    void parseSection(const std::string& iniPath, const std::string& section);
    // Expands the path and creates the folder if needed. Reports an undefined
    // symbol or a folder that cannot be created in a message box.
    bool ensureFolderExists(const std::string& symbolicPath);

private:
    friend class SingletonSlot<FolderManager>;
    FolderManager();
};
