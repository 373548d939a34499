#pragma once

#include <cstddef>
#include <string>

// The descriptive values of a tax case file: the persons of the case and the
// user's comment. A case file carries each value as an element of its own,
// <Person>...</Person> and <Kommentar>...</Kommentar>, in Latin-1, within its
// first 64 KiB; only that much of a file is read.
class DMDataFileInfo
{
public:
    static constexpr const char* keyPerson = "Person";
    static constexpr const char* keyComment = "Kommentar";
    static constexpr std::size_t scannedSize = 64 * 1024;

    // Reads the values of the case file at path (Latin-1). False when the file
    // cannot be opened or holds neither value; the values of an earlier file
    // are gone in any case.
    bool readFile(const std::string& path);

    // The value of the element named key, "?" when the file does not hold it.
    std::string getStringValue(const std::string& key) const;

private:
    bool findValue(const std::string& key, std::string& value) const;

    std::string m_head;   // the first scannedSize bytes of the file
};
