#pragma once

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

// Which program mode opens a case file that comes from outside the launcher
// (command line, another start, drag and drop): the first mode, in the
// configured order ("Modes"/"ValidModes", else the order of the mode
// buttons), whose "FileExtensions"/"Open" patterns match the file's name.
// Names match as in the mode's file list, whatever their case.
class CaseFileModes
{
public:
    // Reads the patterns of every mode the installation configures; the
    // layered settings are back in their mode afterwards.
    CaseFileModes();

    // The mode number (Ui_MainWindow::Mode) of the file, -1 when no mode
    // claims its name.
    int modeOf(const QString& path) const;

private:
    std::vector<std::pair<int, QStringList>> m_patterns;
};
