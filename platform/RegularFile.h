#pragma once

#include <cstddef>
#include <optional>
#include <string>

// Reading files that another user or a broken installation may have replaced
// with something hostile: a FIFO that never delivers, a device that never
// ends (/dev/zero), a folder, or a file far larger than any real one. Every
// read here is bounded and only regular files are read; paths are native
// (already in the file-system encoding).
namespace RegularFile {

// Opens the file for reading when it is a regular file (a link to one is
// fine); -1 for anything else or when it cannot be opened. Never blocks,
// also not on a FIFO.
int openForReading(const std::string& nativePath);

// Reads up to limit bytes from the start of the file (the whole of a
// shorter file); nothing when it is no regular file or cannot be read.
std::optional<std::string> readHead(const std::string& nativePath, std::size_t limit);

// Reads the whole file when it holds at most limit bytes; nothing when it
// is larger, no regular file or cannot be read.
std::optional<std::string> readWhole(const std::string& nativePath, std::size_t limit);

// Reads up to size bytes into data, retrying interrupted reads; the number
// of bytes read (less than size only at the end of the file), -1 on error.
long readFully(int descriptor, char* data, std::size_t size);

} // namespace RegularFile
