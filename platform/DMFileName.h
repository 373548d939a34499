#pragma once

#include <map>
#include <string>

// The folder symbols of the process and the folder that relative paths are
// taken against. A symbol name is byte-exact and case-sensitive; its value is
// a folder path that may itself contain symbols.
class DMFileEnvironment
{
public:
    void setSymbol(const std::string& name, const std::string& value);
    std::string getSymbol(const std::string& name) const;   // "" when not defined
    bool hasSymbol(const std::string& name) const;

    void setBaseDir(const std::string& folder);
    std::string getBaseDir() const;

private:
    std::map<std::string, std::string> m_symbols;
    std::string m_baseDir;
};

// A path written with folder symbols, "<NAME>" standing for the value of the
// symbol NAME in the global file environment, e.g. "<COMMONSETTINGS>/x.ini".
// Texts are Latin-1 byte strings; backslashes count as "/". A "<" without a
// closing ">" is ordinary text.
class DMFileName
{
public:
    DMFileName() = default;
    explicit DMFileName(const std::string& path);

    // The environment every DMFileName expands its symbols from.
    static DMFileEnvironment& getGlobalFileEnvironment();
    // Empties the global environment (symbols and base folder); for tests.
    static void resetGlobalFileEnvironment();

    void setFullPath(const std::string& path);

    // The path with every symbol expanded (values that hold symbols are
    // expanded as well), made absolute against the base folder and
    // normalised. Empty when a symbol is undefined, when symbols nest more
    // than 16 deep (a symbol that refers to itself) or when the path is empty.
    // A path that starts with an environment variable ("%HOME%/x") is left to
    // the caller's variable expansion and not put below the base folder.
    std::string compose() const;

    // Makes the path absolute against the base folder and normalises it; with
    // expandSymbols it becomes compose(), otherwise a path that starts with a
    // symbol is kept as it is. False when the result is empty.
    bool makeAbsPath(bool expandSymbols);

    // Rewrites an absolute path that lies in the folder of `symbol`, or below
    // it, as "<symbol>" followed by the rest of the path, so that it stays
    // valid when the symbol's folder moves; compose() gives the folder back.
    // A path outside that folder becomes absolute (compose()) and false is
    // returned. Only the named symbol is considered, so the stored form never
    // depends on which other symbols happen to be defined.
    bool makeRelPath(const std::string& symbol = "HomeDataDir");

    // The path as held, with "/" separators: the symbolic form after
    // makeRelPath.
    std::string asParmeterisedString() const;

    // The path as held with "/" separators, doubled separators, "." and ".."
    // folded; a trailing "/" is kept. Symbols are not expanded.
    std::string normalizedString() const;

    // Whether the expanded path names an existing file or folder.
    bool exists() const;

private:
    std::string m_path;
};
