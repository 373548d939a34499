#pragma once

#include "Buffer.h"
#include "Compress.h"

#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

// A container file of named entries, each stored as is or bzip2-compressed.
//
// The file is the entries one after another, without header or directory;
// per entry, integers as unsigned 32 bit little-endian:
//   method, name length N (with the zero byte), N name bytes (lower case,
//   zero-terminated), uncompressed size, stored size S, S data bytes.
//
// A reader scans the file lazily: a request reads entries only up to the one
// it wants and remembers every entry it passed in an index, so the next
// request resumes there. Names are compared in lower case. Missing files,
// missing entries and corrupt data all give the empty buffer; a corrupt
// entry ends the scan as the end of the file would.
//
// An archive object is either a reader or a writer (which appends entries).
class cArchive
{
public:
    struct CacheItem
    {
        compression::compressName method = compression::stored;
        std::string name;
        std::streamoff position = -1;   // of the entry's first byte; -1 if unknown
        cBuffer data;                   // empty unless loaded
        unsigned int uncompressedSize = 0;
        unsigned int storedSize = 0;
    };

    // Opens a container for reading; nothing is read yet. With keepData
    // false, the index keeps only where an entry lies, and every request
    // reads the entry from the file again.
    cArchive(std::string fileName, bool keepData);
    // Opens a container for writing; entries are appended to an existing
    // file. Relative source paths given to AddFile are taken from
    // sourceFolder (which ends in "/"; empty: as given).
    cArchive(std::string fileName, std::string sourceFolder);

    // Points the archive at another file: the index starts afresh (and a
    // writer appends to the new file).
    void SetArchiveFileName(std::string fileName);

    // The entry's uncompressed bytes, or the empty buffer.
    cBuffer GetFile(std::string name);
    // Scans the whole file into the index (with the data when they are kept).
    void readAll();
    // The names in the index, in byte order. With completeScan the rest of
    // the file is scanned first, so that every entry is listed; otherwise
    // only the entries passed by the requests so far.
    std::vector<std::string> GetFilenames(bool completeScan);

    // Appends the file at sourcePath as entry name. With allowStored, data
    // that the method does not make smaller are stored as they are. False if
    // this is a reader, the source cannot be read, or compression or writing
    // fails.
    bool AddFile(const std::string& sourcePath, const std::string& name,
                 compression::compressName method, bool allowStored);

    // Reads the entry at the stream's position. Its data are loaded when its
    // name is wanted or wanted is "*". A corrupt entry puts the stream in a
    // failed state.
    CacheItem getCacheItem(std::ifstream& in, const std::string& wanted);

private:
    using WantsData = std::function<bool(const std::string& name)>;

    bool openForReading(std::ifstream& in) const;
    CacheItem readEntry(std::ifstream& in, const WantsData& wantsData);
    // Records a scanned entry in the index; the first entry of a name stays.
    void remember(CacheItem item);
    // Reads entries from position from into the index up to the end of the
    // file (which ends the scan for good), or with stopAtData up to the
    // first entry that came with data, whose data are returned.
    cBuffer scan(std::streamoff from, const WantsData& wantsData, bool stopAtData);

    std::string m_fileName;
    std::map<std::string, CacheItem> m_index;
    std::streamoff m_resumePosition = 0;   // -1 once the whole file was scanned
    bool m_keepData = true;
    bool m_fileExists = false;
    std::string m_sourceFolder;
    std::ofstream m_output;
};
