#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <ctime>
#include <functional>

// Reading a folder of case files with the system's own calls, meant to run
// off the UI thread. Qt's listing skips names that are not valid in the
// file-system encoding (archives copied from older systems carry Latin-1
// names); here every name is kept, and each file costs one stat.
namespace CaseFolder {

// One file found in the folder.
struct Entry
{
    QString name;          // as shown: decoded, or read as Latin-1 when it is not valid UTF-8
    QByteArray localName;  // the name's bytes on disk
    std::time_t changeTime = 0;
    bool latin1Name = false;

    // The name without its last extension, as the list shows it.
    QString completeBaseName() const;
};

enum class Access {
    Any,               // every file (the folder chooser's count)
    ReadAndWrite       // only files the tax program can read and save
};

// Stops a read early; true when the caller no longer wants the result.
using Cancelled = std::function<bool()>;

// The files of folder that match one of the patterns (wildcards, case
// ignored), without hidden files and folders, sorted by name with case
// ignored. They are handed to deliver in order, in batches that start at
// firstBatch entries and double up to largestBatch: the first rows come
// quickly, and a large folder takes few deliveries. A folder that cannot be
// read delivers nothing; files that vanish during the read are left out.
void read(const QString& folder, const QStringList& nameFilters, Access access, int firstBatch,
          int largestBatch, const Cancelled& cancelled, const std::function<void(QList<Entry>&&)>& deliver);

// The number of files read() would list with Access::Any; stat is called only
// for names the folder entry does not already tell to be plain files.
int count(const QString& folder, const QStringList& nameFilters, const Cancelled& cancelled);

// The local time as "dd.MM.yyyy hh:mm"; empty when it cannot be converted.
QString changeTimeText(std::time_t time);

// Renames a Latin-1 file name of folder to the same name in the file-system
// encoding, never over an existing file. Returns the new path, or empty.
QString renameToLocalEncoding(const QString& folder, const Entry& entry);

} // namespace CaseFolder
