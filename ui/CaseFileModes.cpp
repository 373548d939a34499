#include "CaseFileModes.h"

#include "CaseFiles.h"
#include "ConfigText.h"
#include "Exceptions.h"
#include "NvWinIni.h"
#include "Ui_MainWindow.h"

#include <QDir>
#include <QFileInfo>

namespace {

int modeNumber(const QString& name)
{
    for (int mode = 0; mode < Ui_MainWindow::ModeCount; ++mode)
        if (name == QLatin1String(Ui_MainWindow::modeName(mode)))
            return mode;
    return -1;
}

std::vector<int> configuredModes()
{
    std::vector<int> modes;
    for (const QString& name : configText("Modes", "ValidModes").split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const int mode = modeNumber(name.trimmed());
        if (mode >= 0)
            modes.push_back(mode);
    }
    if (modes.empty())
        for (int mode = 0; mode < Ui_MainWindow::ModeCount; ++mode)
            modes.push_back(mode);
    return modes;
}

} // namespace

CaseFileModes::CaseFileModes()
{
    cNvWinIni* settings = cNvWinIni::theInstance();
    const std::string current = settings->getModus();
    for (const int mode : configuredModes()) {
        try {
            settings->setModus(Ui_MainWindow::modeName(mode));
        } catch (const xNvException&) {
            continue;   // a mode without a settings file opens nothing
        }
        m_patterns.emplace_back(mode, CaseFiles::nameFilters());
    }
    try {
        if (!current.empty())
            settings->setModus(current);
    } catch (const xNvException&) {
        // The mode's file went away meanwhile: the next mode switch reports it.
    }
}

int CaseFileModes::modeOf(const QString& path) const
{
    const QString name = QFileInfo(path).fileName();
    for (const auto& [mode, patterns] : m_patterns)
        if (QDir::match(patterns, name))
            return mode;
    return -1;
}
