// A stand-in for the suite's update manager, so that the launcher's online
// update can be tried and tested without one: each run is appended to a log
// and answered with the exit code that the program's own settings file names
// for the kind of run.
//
//   Online Update.app/Contents/Resources/answers.ini
//     [Answers]
//     check=2          ; a newer version is available
//     config=0
//     offlinecheck=107 ; offline data 7 days old
//     update=80        ; update carried out
//     delay=0          ; milliseconds to take before answering
//
// The environment variables SC_ONLINEUPDATE_ANSWERS and SC_ONLINEUPDATE_LOG
// name another settings file or log. The log lies by default in the program's
// per-user state folder, $XDG_STATE_HOME/de.marvendo.onlineupdate/runs.log.

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QThread>

namespace {

QString answersPath()
{
    const QString path = qEnvironmentVariable("SC_ONLINEUPDATE_ANSWERS");
    if (!path.isEmpty())
        return path;
    return QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/answers.ini");
}

QString logPath()
{
    QString path = qEnvironmentVariable("SC_ONLINEUPDATE_LOG");
    if (!path.isEmpty())
        return path;
    path = qEnvironmentVariable("XDG_STATE_HOME");
    if (path.isEmpty())
        path = QDir::homePath() + QStringLiteral("/.local/state");
    return path + QStringLiteral("/de.marvendo.onlineupdate/runs.log");
}

// One line per run: the arguments.
void logRun(const QStringList& arguments)
{
    const QString path = logPath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile log(path);
    if (!log.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return;
    log.write((arguments.join(QLatin1Char(' ')) + QLatin1Char('\n')).toUtf8());
}

// The kind of run: the first option after "-self" without its dash
// ("check", "config", "offlinecheck", "update").
QString kindOfRun(const QStringList& arguments)
{
    for (const QString& argument : arguments) {
        if (argument.startsWith(QLatin1Char('-')) && argument != QLatin1String("-self"))
            return argument.mid(1);
    }
    return QString();
}

// Without a settings file: no newer version, configuration and offline data
// fine, update carried out.
int defaultAnswer(const QString& kind)
{
    if (kind == QLatin1String("update"))
        return 80;
    if (kind == QLatin1String("check") || kind == QLatin1String("config") || kind == QLatin1String("offlinecheck"))
        return 0;
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    logRun(arguments);

    QSettings answers(answersPath(), QSettings::IniFormat);
    answers.beginGroup(QStringLiteral("Answers"));
    const int delay = answers.value(QStringLiteral("delay"), 0).toInt();
    if (delay > 0)
        QThread::msleep(static_cast<unsigned long>(delay));
    const QString kind = kindOfRun(arguments);
    return answers.value(kind, defaultAnswer(kind)).toInt();
}
