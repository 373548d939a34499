// Writes the launcher's desktop entry at build time: the hand-written entry
// followed by one desktop action per mode of the installation, named by the
// mode file's "ModusEinstellungen"/"NeuAktion" and starting the launcher
// straight into that mode's new case (--new MODE). The modes come in the
// configured order ("Modes"/"ValidModes" of ORVKonf.ini); a mode without a
// text gets no action.
//
//   desktopentry <Resources folder> <entry template> <output>

#include "CrossPlatformApi.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <cstdio>

namespace {

QString iniText(const QString& path, const char* section, const char* key)
{
    const std::string value = CrossPlatformApi::getIniString(section, key, "", path.toLatin1().toStdString());
    return QString::fromLatin1(value.data(), qsizetype(value.size())).trimmed();
}

// The actions' part of the entry: the Actions key (which belongs to the
// main group, the template's last) and the action groups.
QString actions(const QString& resources)
{
    const QString configuration = resources + QStringLiteral("/ORVKonf.ini");
    QStringList names;
    QString groups;
    for (const QString& mode : iniText(configuration, "Modes", "ValidModes").split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString modeFile = iniText(configuration, "Modus", mode.trimmed().toLatin1().constData());
        const QString name = modeFile.isEmpty() ? QString() : iniText(resources + QLatin1Char('/') + modeFile,
                                                                      "ModusEinstellungen", "NeuAktion");
        if (name.isEmpty())
            continue;
        const QString id = QStringLiteral("new-") + mode.trimmed();
        names << id;
        groups += QStringLiteral("\n[Desktop Action %1]\nName=%2\nExec=startcenter --new %3\n")
                      .arg(id, name, mode.trimmed());
    }
    if (names.isEmpty())
        return QString();
    return QStringLiteral("Actions=%1;\n").arg(names.join(QLatin1Char(';'))) + groups;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fputs("usage: desktopentry <Resources folder> <entry template> <output>\n", stderr);
        return 2;
    }
    QFile templateFile(QFile::decodeName(argv[2]));
    if (!templateFile.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "desktopentry: cannot read %s\n", argv[2]);
        return 1;
    }
    QString entry = QString::fromUtf8(templateFile.readAll());
    if (!entry.endsWith(QLatin1Char('\n')))
        entry += QLatin1Char('\n');
    entry += actions(QFile::decodeName(argv[1]));

    QFile output(QFile::decodeName(argv[3]));
    if (!output.open(QIODevice::WriteOnly | QIODevice::Truncate) || output.write(entry.toUtf8()) < 0) {
        std::fprintf(stderr, "desktopentry: cannot write %s\n", argv[3]);
        return 1;
    }
    return 0;
}
