#include "CaseFiles.h"

#include "ApplicationInfo.h"
#include "ConfigText.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "OverviewPage.h"
#include "StringFunctions.h"

#include <QDir>
#include <QFileInfo>

#include <string>

namespace {

std::string toLatin1(const QString& text)
{
    return text.toLatin1().toStdString();
}

// A configured path with its folder symbols and environment variables
// expanded, made absolute against the application folder.
QString absolutePath(const QString& configured)
{
    DMFileName name;
    name.setFullPath(toLatin1(configured));
    name.makeAbsPath(true);
    std::string path = name.compose();
    for (int expansions = 0; expansions < 16 && StringFunctions::replaceEnvironmenVariable(path);
         ++expansions) {
    }
    return QString::fromLatin1(path.data(), qsizetype(path.size()));
}

QString withTrailingSlash(QString folder)
{
    if (!folder.isEmpty() && !folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

} // namespace

namespace CaseFiles {

QStringList parseNameFilters(const QString& fileTypes)
{
    const QStringList parts = fileTypes.split(QLatin1Char('|'));
    QStringList patterns;
    for (qsizetype i = 1; i < parts.size(); i += 2)
        patterns << parts.at(i);
    return patterns.join(QLatin1Char(';')).split(QLatin1Char(';'));
}

QString fileTypes()
{
    return configText("FileExtensions", "Open", "*.*");
}

QStringList nameFilters()
{
    return parseNameFilters(fileTypes());
}

QString dialogFilter(const QString& fileTypes)
{
    const QStringList parts = fileTypes.split(QLatin1Char('|'));
    QStringList entries;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString patterns = parts.at(i + 1).split(QLatin1Char(';'), Qt::SkipEmptyParts).join(QLatin1Char(' '));
        const QString description = parts.at(i).trimmed();
        entries << (description.isEmpty() ? patterns : description + QLatin1String(" (") + patterns + QLatin1Char(')'));
    }
    if (parts.size() % 2 == 1 && !parts.constLast().isEmpty())
        entries << parts.constLast();
    return entries.join(QLatin1String(";;"));
}

QString workFolder()
{
    QString home = configText("Settings", "HomeDataDir");
    if (home.isEmpty())
        home = QString::fromLatin1(cApplicationInfo::theInstance()->getAppDir().c_str());

    const QString configured = configText("Files", "LastWorkDir", toLatin1(home).c_str());
    QString folder = absolutePath(configured);
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = absolutePath(home);
    return withTrailingSlash(folder);
}

bool storeWorkFolder(const QString& folder)
{
    DMFileName name;
    name.setFullPath(toLatin1(folder));
    name.makeRelPath("HomeDataDir");
    return cConfiguration::theInstance()->Write("Files", "LastWorkDir",
                                                name.asParmeterisedString().c_str());
}

bool resetWorkFolderToHome()
{
    const QString home = configText("Settings", "HomeDataDir");
    return !home.isEmpty()
           && cConfiguration::theInstance()->Write("Files", "LastWorkDir", toLatin1(home).c_str());
}

QString lastFile()
{
    const QString recorded = configText("MRUFiles", "0");
    return recorded.isEmpty() ? QString() : absolutePath(recorded);
}

QString existingLastFile()
{
    const QString path = lastFile();
    return !path.isEmpty() && QFileInfo(path).isFile() ? path : QString();
}

QString displayedPath(const QString& path)
{
    return QDir::toNativeSeparators(QDir::cleanPath(path));
}

QString openablePath(const QString& folder, const CaseFolder::Entry& entry, QWidget* parent)
{
    if (!entry.latin1Name) {
        const QString path = folder + entry.name;
        return QFileInfo(path).isFile() ? path : QString();
    }

    MessageBoxRequest question;
    question.icon = QMessageBox::Question;
    question.parent = parent;
    question.title = QStringLiteral("Dateiname umwandeln");
    question.text = QStringLiteral("Der Name der Datei »") + entry.name
                    + QStringLiteral("« stammt von einem älteren System und kann so nicht geöffnet "
                                     "werden.\n\nSoll die Datei in »")
                    + entry.name + QStringLiteral("« umbenannt und dann geöffnet werden?");
    question.buttons = QMessageBox::Yes | QMessageBox::No;
    question.defaultButton = QMessageBox::Yes;
    if (CrossPlatformApi::showMessageBox(question).button != QMessageBox::Yes)
        return QString();

    const QString path = CaseFolder::renameToLocalEncoding(folder, entry);
    if (path.isEmpty()) {
        MessageBoxRequest failure;
        failure.icon = QMessageBox::Critical;
        failure.parent = parent;
        failure.title = question.title;
        failure.text = QStringLiteral("Die Datei »") + entry.name
                       + QStringLiteral("« konnte nicht umbenannt werden.\nEine Datei dieses Namens "
                                        "gibt es bereits, oder das Verzeichnis ist schreibgeschützt.");
        CrossPlatformApi::showMessageBox(failure);
    }
    return path;
}

void showOverview(const QString& folder, const QStringList& names, const QString& caption)
{
    OverviewPage overview;
    overview.setTaxFiles(folder, names);
    overview.setCaption(caption);
    overview.show();
}

} // namespace CaseFiles
