#include "CommandLine.h"

#include "BundleInfo.h"

#include <QDir>
#include <QFile>

#include <cstdio>

namespace {

const QString newOption = QStringLiteral("--new");
const QString endOfOptions = QStringLiteral("--");

void print(std::FILE* stream, const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

QString versionText()
{
    const BundleInfo bundle = BundleInfo::mainBundle();
    const auto text = [&](const char* key) { return QString::fromLatin1(bundle.value(key).c_str()); };
    return QStringLiteral("%1 %2 (Version %3)\n")
        .arg(text("CFBundleName"), text("CFBundleShortVersionString"), text("CFBundleVersion"));
}

} // namespace

CommandLine CommandLine::parse(const QStringList& arguments, const QStringList& modes, bool incomplete)
{
    CommandLine line;
    line.m_program = arguments.value(0);
    line.m_modes = modes;
    line.m_incomplete = incomplete;
    const auto refuse = [&](const QString& error) {
        line.m_request = Invalid;
        line.m_error = error;
        line.m_files.clear();
        return line;
    };

    bool optionsEnded = false;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        // "-" alone is a file name, as in most programs.
        if (optionsEnded || !argument.startsWith(QLatin1Char('-')) || argument.size() == 1) {
            line.m_files << QDir::current().absoluteFilePath(argument);
        } else if (argument == endOfOptions) {
            optionsEnded = true;
        } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            line.m_request = Help;
            return line;
        } else if (argument == QLatin1String("--version")) {
            line.m_request = Version;
            return line;
        } else if (argument == newOption || argument.startsWith(newOption + QLatin1Char('='))) {
            QString mode = argument.mid(newOption.size() + 1);
            if (argument == newOption) {
                if (++i == arguments.size())
                    return refuse(QStringLiteral("--new braucht einen Modus (%1)").arg(modes.join(QStringLiteral(", "))));
                mode = arguments.at(i);
            }
            if (!modes.contains(mode))
                return refuse(QStringLiteral("unbekannter Modus »%1« für --new (%2)")
                                  .arg(mode, modes.join(QStringLiteral(", "))));
            line.m_newMode = mode;
        } else {
            return refuse(QStringLiteral("unbekannte Option »%1«; Hilfe mit »startcenter --help«").arg(argument));
        }
    }
    return line;
}

QStringList CommandLine::fromArgv(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QFile::decodeName(argv[i]);
    return arguments;
}

int CommandLine::answer() const
{
    switch (m_request) {
    case Help:
        print(stdout, helpText());
        return 0;
    case Version:
        print(stdout, versionText());
        return 0;
    case Invalid:
        // One line, whatever the offending argument holds.
        print(stderr, QStringLiteral("startcenter: %1\n").arg(QString(m_error).replace(QLatin1Char('\n'), QLatin1Char(' '))));
        return 2;
    case Start:
        break;
    }
    return -1;
}

QStringList CommandLine::handOverArguments() const
{
    QStringList arguments{m_program};
    if (!m_newMode.isEmpty())
        arguments << newOption << m_newMode;
    if (!m_files.isEmpty())
        arguments << endOfOptions << m_files;
    return arguments;
}

QString CommandLine::helpText() const
{
    return QStringLiteral(
               "Aufruf: startcenter [--new MODUS] [DATEI...]\n"
               "Das Start-Center der Orvane-Erklärung: Steuerfälle anlegen und öffnen.\n"
               "\n"
               "  DATEI...        die Steuerfälle mit der Orvane-Erklärung öffnen; welcher\n"
               "                  Modus sie öffnet, ergibt sich aus dem Dateinamen\n"
               "  --new MODUS     gleich einen neuen Steuerfall des Modus anlegen\n"
               "                  (%1)\n"
               "  --help          diese Hilfe zeigen\n"
               "  --version       die Version zeigen\n"
               "  --              alles Weitere sind Dateien, auch wenn sie mit - beginnen\n"
               "\n"
               "Läuft das Start-Center schon, übernimmt es die Dateien und den Auftrag.\n")
        .arg(m_modes.join(QStringLiteral(", ")));
}
