#pragma once

#include <QString>

// The desktop's list of recently used files, shared by all programs of the
// user: recently-used.xbel in the user's data folder ($XDG_DATA_HOME), an
// XBEL document with the metadata of the freedesktop bookmark format.
namespace RecentFiles {

enum class Result {
    Added,
    Locked,       // another program held the list longer than we wait
    Unreadable,   // not a list we can read: left as it is, nothing lost
    NotWritten    // the folder or file cannot be written, or is not the user's own file
};

// The list's path.
QString listPath();

// Records that application (with its command line exec, "%f" standing for
// the file) opened file: a new entry, or the existing one's times and the
// application's count brought up to date. Every other entry stays as it was.
// The list is replaced atomically, under an advisory lock (flock) held for
// the read, change and write; a lock held by another program is waited for
// a second at most.
Result add(const QString& file, const QString& application, const QString& exec);

} // namespace RecentFiles
