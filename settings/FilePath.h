#pragma once

#include "ValidatedBuffer.h"

#include <string>

// A file or folder path (Latin-1) with "/" separators; backslashes are turned
// into "/" whenever a text is stored. The path splits into drive (always empty
// here; kept so that the class is the same on every platform), directory
// (ending in "/"), name prefix and suffix. The components are a cache: every
// reading accessor splits the current path again, every setter splits,
// changes one component and rebuilds the path. A path naming an existing
// folder counts as a folder even without a trailing "/".
class FilePath
{
public:
    FilePath();
    FilePath(const char* path);
    FilePath(const std::string& path);
    FilePath(const FilePath& other);
    FilePath& operator=(const char* path);
    FilePath& operator=(const std::string& path);
    FilePath& operator=(const FilePath& other);
    virtual ~FilePath();

    // --- The path as text --------------------------------------------------
    std::string asString() const;
    std::string normalizedString() const;
    std::string getShortPath() const;
    const char* c_str() const;
    bool empty() const;
    bool isAbsolute() const;
    bool isUNC() const;
    // At most maxLen characters: "..." and the end of a longer path.
    std::string getDisplayString(unsigned int maxLen) const;
    // Equal texts, ignoring case.
    bool operator==(const FilePath& other) const;

    // --- Components --------------------------------------------------------
    char getDrive() const;
    std::string getDirectory() const;   // with trailing "/"
    std::string getPath() const;        // drive and directory: the folder part
    std::string getPrefix() const;      // the name without its suffix
    std::string getSuffix() const;      // without the dot
    std::string getName() const;        // prefix and suffix
    // The folder above the folder part; empty for the topmost folders
    // (a last "/" at position 3 or earlier), which are never to be touched.
    FilePath getParentPath() const;

    void setDrive(char drive);
    void setDirectory(const char* directory);
    void setPrefix(const char* prefix);
    void setPrefix(const std::string& prefix);
    void setSuffix(const char* suffix);
    // Splits at the last dot into prefix and suffix; null changes nothing.
    void setName(const char* name);
    // Appends a sub folder (or name) to the directory.
    void addPath(const char* path);

    // --- File system -------------------------------------------------------
    bool exists() const;
    bool isDirectory() const;
    // Creates the folder part with all missing parents.
    bool makeDir() const;
    // A relative path is put below base's folder. Always true.
    bool makeRelativeTo(const FilePath& base);
    // The path itself if it does not exist, else the first free
    // <prefix>_<n> (n = 1 ... 31999) in the same folder; empty if none is free.
    FilePath getUnique() const;
    // Creates the sub folder prefix + a new UUID below the folder part and
    // makes it this path. name receives the sub folder's name either way.
    bool makeUniqueDir(const char* prefix, std::string& name);
    // Removes the folder part with everything in it; refuses folders of
    // three characters or fewer.
    bool deleteTree() const;

    // This path becomes the process's current folder, and the other way round.
    void getCWD();
    bool setCWD() const;

private:
    void splitPath() const;
    void buildPath();

    std::string m_path;
    mutable ValidatedBuffer m_drive{10};
    mutable ValidatedBuffer m_directory{256};
    mutable ValidatedBuffer m_prefix{256};
    mutable ValidatedBuffer m_suffix{10};
};
