#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>

class ValidatedBuffer;

// A file bound to one path (Latin-1; converted to the file-system encoding
// for every access). Failures are results (false, 0), never exceptions.
class cFile
{
public:
    cFile() = default;
    explicit cFile(const std::string& path);
    virtual ~cFile() = default;

    const std::string& GetPath() const { return m_path; }

    bool Exists() const;
    int GetFilelength() const;               // 0 when it cannot be opened
    int GetModificationTimestamp() const;    // seconds; 0 when it cannot be opened
    bool Remove() const;

    // Replace the file's contents.
    bool WriteFromString(const std::string& text) const;
    bool writeFromBuffer(const ValidatedBuffer& buffer) const;   // the whole usable size

    // Reads the whole file; the text ends at the first zero byte. An empty
    // or unreadable file leaves text unchanged, and so does anything that is
    // no regular file or is larger than any file the program reads whole.
    // Returns the file length.
    int ReadIntoString(std::string& text) const;
    // Resizes the buffer to the file length and reads the file into it.
    int readIntoBuffer(ValidatedBuffer& buffer) const;

    static void copyStreams(std::istream& in, std::ostream& out);

    // Cuts a log-like file down to its last keepSize bytes once it has
    // reached maxSize (keepSize 0 or above maxSize: maxSize). With markCut the
    // kept part starts at a whole line, below a line "[...]".
    void truncateFileBeginning(int maxSize, int keepSize, bool markCut) const;

private:
    bool writeBytes(const char* data, std::size_t size) const;
    std::optional<std::string> readWhole() const;

    std::string m_path;
};
