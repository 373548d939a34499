#pragma once

#include <QString>
#include <QStringList>

// Removing the whole installation: the main bundle with the programs inside
// it and the per-user folders named after their bundle identifiers. The
// removal is one shell command that runs on after the launcher has ended.
//
// The command deletes recursively, so everything that goes into it is
// checked: identifiers that could name a whole standard folder are skipped,
// every path is quoted against the shell, and only a bundle folder is removed.
namespace Uninstall {

enum class Outcome {
    Blocked,     // an embedded program is running
    Cancelled,   // the user declined
    Failed,      // refused or could not be started; the launcher keeps running
    Started      // the removal runs; the launcher is to end now
};

// Refuses while an embedded program runs, asks for confirmation and starts
// the removal detached: directly when the bundle is writable, otherwise with
// administrator rights through pkexec. Every box is shown here.
Outcome run();

// The removal command for these identifiers and this bundle:
// "/bin/rm -rf " followed by each path quoted and followed by a blank.
QString commandLine(const QStringList& bundleIds, const QString& bundlePath);

// Not empty, not only blanks, not "." or "..", no "/" and no control
// character: a name that stays one folder below each per-user base folder.
bool isUsableBundleId(const QString& id);

// An absolute path ending in ".app" that is neither "/" nor the home folder
// nor a folder holding the home folder.
bool isRemovableBundle(const QString& bundlePath);

// $XDG_DATA_HOME, $XDG_CACHE_HOME, $XDG_CONFIG_HOME and $XDG_STATE_HOME (each
// with its usual default below the home folder) followed by "/" and the id.
QStringList userFolders(const QString& bundleId);

// The path in double quotes, with \ " $ and ` escaped, so that the shell
// neither ends the quoting early nor expands anything inside it.
QString shellQuoted(const QString& path);

// A process of this user, other than this one, whose executable lies inside
// one of the bundle's Contents/Resources/*.app; 0 when there is none.
qint64 runningComponent(const QString& bundlePath);

} // namespace Uninstall
