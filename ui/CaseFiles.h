#pragma once

#include "CaseFolder.h"

#include <QString>
#include <QStringList>

class QWidget;

// The case files of the current program mode as the mode pages see them: the
// working folder, the most recently used file and the file types of the mode.
// Every function reads the settings afresh, so the pages follow what the tax
// program wrote while it ran. Paths are returned absolute.
namespace CaseFiles {

// The glob patterns of a file-type string of alternating descriptions and
// patterns, "Steuerfälle|*.a;*.b|Alle|*.*" giving *.a, *.b and *.*. A string
// without "|" holds no pattern and gives a single empty one, which matches no
// file (an empty list would let every file through).
QStringList parseNameFilters(const QString& fileTypes);

// The mode's file-type string, "FileExtensions"/"Open" ("*.*" when unset).
QString fileTypes();
QStringList nameFilters();
// The filter list of a file dialog for a file-type string:
// "Steuerfälle|*.a;*.b|Alle|*.*" gives "Steuerfälle (*.a *.b);;Alle (*.*)".
// A last part without its pattern is passed on as it is, so a bare pattern
// such as the default "*.*" still filters.
QString dialogFilter(const QString& fileTypes);

// The working folder, ending in "/": "Files"/"LastWorkDir", by default the
// home data folder ("Settings"/"HomeDataDir", or the application folder when
// that is empty). A folder that does not exist gives the home data folder.
QString workFolder();
// Remembers folder as the working folder, written as "<HomeDataDir>/..." when
// it lies in the home data folder, so that the setting survives a move of
// that folder.
bool storeWorkFolder(const QString& folder);
// Makes the configured home data folder the working folder again; false when
// no home data folder is configured.
bool resetWorkFolderToHome();

// The most recently used case file, "MRUFiles"/"0"; empty when none is
// recorded.
QString lastFile();
// lastFile() when that file still exists, otherwise empty.
QString existingLastFile();

// A path as the pages show it: native separators, no trailing separator.
QString displayedPath(const QString& path);

// The path under which the tax program can open a listed file of folder;
// empty when there is nothing to open (the file has gone, or the user keeps
// a name the tax program cannot open). A name that is not valid UTF-8 is
// renamed to the same name in UTF-8 first, when the user agrees in a box.
QString openablePath(const QString& folder, const CaseFolder::Entry& entry, QWidget* parent);

// Writes the overview document of the case files names (in folder) and
// opens it.
void showOverview(const QString& folder, const QStringList& names, const QString& caption);

} // namespace CaseFiles
