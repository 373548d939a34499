#pragma once

#include <QString>
#include <QStringList>

// Removing the installation in the way it was installed.
//
// A bundle that a Debian package installed belongs to the package manager:
// the user is told the command that removes the package and is offered to
// remove only their own files of the program. Any other bundle is removed
// together with those files by one shell command, run with administrator
// rights through pkexec when the bundle is not writable for the user.
//
// The user's own files are the folders the launcher's settings name for its
// settings and logs, and the data, cache, configuration and state folders
// named after the bundle identifiers. A folder that is, or holds, a folder
// of case files is never among them. The command deletes recursively, so
// everything that goes into it is checked and every path is quoted.
namespace Uninstall {

enum class Outcome {
    Blocked,     // an embedded program is running
    Cancelled,   // the user declined, or there was nothing to remove
    Failed,      // refused, cancelled at the password prompt or could not run; the launcher keeps running
    Removed      // the removal ran; the launcher is to end now
};

// Refuses while an embedded program runs, asks for confirmation listing what
// goes, runs the removal and waits for it. Every box is shown here.
Outcome run();

// The Debian packages that installed the bundle, as "dpkg-query -S" names
// its owners; empty when none did or dpkg is not there.
QStringList owningPackages(const QString& bundlePath);

// The user's own folders of the program that exist, in this order: the
// user settings folder, "<COMMONSETTINGS>", "<COMMONLOGFILES>", then for each
// usable identifier the folders of userFoldersOf(id). Folders that could hold
// case files or more than the program's own files are left out.
QStringList ownFolders(const QStringList& bundleIds);

// $XDG_DATA_HOME, $XDG_CACHE_HOME, $XDG_CONFIG_HOME and $XDG_STATE_HOME (each
// with its usual default below the home folder) followed by "/" and the id.
QStringList userFoldersOf(const QString& bundleId);

// Removes the bundle and the folders by commandLine(folders + bundle), with
// administrator rights through pkexec when asked to, and waits for it; the
// boxes of its failures are shown here.
Outcome removeInstallation(const QString& bundlePath, const QStringList& folders, bool asAdministrator);

// "/bin/rm -rf " followed by each path quoted and followed by a blank.
QString commandLine(const QStringList& paths);

// Not empty, not only blanks, not "." or "..", no "/" and no control
// character: a name that stays one folder below each per-user base folder.
bool isUsableBundleId(const QString& id);

// An absolute path ending in ".app" that is neither "/" nor the home folder
// nor a folder holding the home folder.
bool isRemovableBundle(const QString& bundlePath);

// The path in double quotes, with \ " $ and ` escaped, so that the shell
// neither ends the quoting early nor expands anything inside it.
QString shellQuoted(const QString& path);

// A process of this user, other than this one, whose executable lies inside
// one of the bundle's Contents/Resources/*.app; 0 when there is none.
qint64 runningComponent(const QString& bundlePath);

} // namespace Uninstall
