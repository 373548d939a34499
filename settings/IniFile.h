#pragma once

#include "IniParseCache.h"
#include "IniSections.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The text of the error raised when an INI file that the program cannot do
// without is missing; "%0" is the file's path.
extern const char cszIniFileNotFound[];

// One INI file held in memory as sections of key/value pairs (Latin-1 byte
// strings). The file is re-read when it is newer on disk than at the last
// parse, and every change is written back at once.
//
// Names are kept in byte-wise order. A case-insensitive file stores and
// writes its section and key names in lower case. A written file loses its
// comments and original order, and every line ends in CR LF.
class cIniFile
{
public:
    using KeyMap = IniKeyMap;

    cIniFile();
    cIniFile(const std::string& path, bool caseSensitive, bool semicolonIsText);
    // A copy starts as never parsed and unmodified; an assignment keeps the
    // target's own parse time and modified flag.
    cIniFile(const cIniFile& other);
    cIniFile& operator=(const cIniFile& other);
    ~cIniFile();

    // Throws xNvMessageExc with cszIniFileNotFound when there is no file at path.
    static void requireExisting(const std::string& path);

    std::string GetPath() const;
    // Flushes to the old path, then reads the file at the new one.
    void SetPath(const std::string& path);
    // Re-reads the file when it is newer on disk than at the last parse.
    void MaybeParseIni();

    // An empty value counts as missing: the default (or "") is returned.
    std::string GetString(const char* section, const char* key, const char* defaultValue);
    // A value that is not a number is a programming error and aborts.
    int GetInt(const char* section, const char* key, int defaultValue);
    unsigned int GetUnsignedInt(const char* section, const char* key, unsigned int defaultValue);

    // Each write goes to disk at once, unless writes are held. A null key
    // empties the section but keeps it. Always returns true.
    bool WriteString(const char* section, const char* key, const char* value);
    bool WriteInt(const char* section, const char* key, int value);

    // Answers from memory, without looking at the file; true also for an empty value.
    bool Contains(const char* section, const char* key) const;

    std::vector<std::string> GetSections() const;
    // Exact lookup; null when there is no such section.
    const KeyMap* FindSection(const std::string& name) const;
    // Folds the names when case-insensitive; none when there is no such key.
    // The value stays valid until the next change of the file in memory.
    std::optional<std::string_view> FindKey(const std::string& section, const std::string& key) const;

    void Flush();
    // Between these two, writes only change the contents in memory; the end
    // of the outermost pair writes the file once. For callers that write
    // many keys at once.
    void HoldWrites();
    void ReleaseWrites();
    // Writes everything to path, which becomes the file's path; nothing is re-read.
    void SaveAs(const std::string& path);

private:
    struct ParseState;

    void ParseIni();
    void ParseStream(int descriptor, IniParseCache::KeyLines* keyLines);
    void StoreKeyLines(const IniParseCache::KeyLines& lines);
    void ParseLine(std::string_view line, ParseState& state, bool mayHoldZeroBytes);
    std::string_view RemoveCommentAndTrailingWhiteSpaces(std::string_view line) const;
    static bool ParseSection(std::string_view line, ParseState& state);
    void ParseKey(std::string_view line, ParseState& state);
    void AddToMap(const std::string& section, std::string_view key, std::string_view value);
    // A name as stored: in lower case when the file ignores case.
    std::string FoldedName(std::string_view name) const;
    // A key's name as stored: folded, without surrounding blanks.
    std::string KeyName(std::string_view key) const;
    std::string Serialize() const;

    std::string m_path;
    IniSections m_sections;
    std::int32_t m_timestamp = 0;
    bool m_modified = false;
    int m_writeHolds = 0;
    bool m_caseSensitive = false;
    bool m_semicolonIsText = false;
};
