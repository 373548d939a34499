// Reading a large INI file: cIniFile against QSettings in INI format, the
// cost of one GetString on a file that has not changed (it still looks at the
// file's time), and how often one start of the launcher opens each INI file
// of its installation (counted by strace; skipped without it).

#include "BenchUtil.h"

#include "IniFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>

#include <map>
#include <signal.h>

#include <cstdio>
#include <ctime>
#include <string>

#include <utime.h>

namespace {

constexpr int Sections = 2000;
constexpr int KeysPerSection = 20;

std::string generateIni()
{
    std::string text;
    char line[64];
    for (int s = 0; s < Sections; ++s) {
        std::snprintf(line, sizeof line, "[Section%04d]\r\n", s);
        text += line;
        for (int k = 0; k < KeysPerSection; ++k) {
            std::snprintf(line, sizeof line, "Key%02d=Value %04d/%02d text\r\n", k, s, k);
            text += line;
        }
        text += "\r\n";
    }
    return text;
}

#ifdef SC_LAUNCHER
// One start of the launcher with a home of its own, under strace, up to its
// shown window; then the opens of every INI file of the installation that
// succeeded, by file name.
void countStartupReads()
{
    const QString strace = QStandardPaths::findExecutable(QStringLiteral("strace"));
    QTemporaryDir home;
    if (strace.isEmpty() || !home.isValid()) {
        std::printf("ini_startup_reads skipped (no strace)\n");
        return;
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* folder : {"tmp", "runtime", ".config", ".cache", ".local/share", "Documents", "shared"})
        QDir().mkpath(home.filePath(QLatin1String(folder)));
    QFile::setPermissions(home.filePath(QStringLiteral("runtime")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const std::pair<const char*, const char*> variables[] = {
        {"HOME", ""}, {"TMPDIR", "/tmp"}, {"XDG_RUNTIME_DIR", "/runtime"}, {"XDG_CONFIG_HOME", "/.config"},
        {"XDG_CACHE_HOME", "/.cache"}, {"XDG_DATA_HOME", "/.local/share"}, {"XDG_DOCUMENTS_DIR", "/Documents"},
        {"SC_COMMON_APPDATA", "/shared"}};
    for (const auto& [name, folder] : variables)
        environment.insert(QLatin1String(name), home.path() + QLatin1String(folder));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("SC_BENCH_REPORT_SHOWN"), QStringLiteral("1"));

    const QString log = home.filePath(QStringLiteral("strace.log"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(strace, {QStringLiteral("-f"), QStringLiteral("-e"), QStringLiteral("trace=openat"),
                           QStringLiteral("-o"), log, QStringLiteral(SC_LAUNCHER)});
    QByteArray output;
    while (!output.contains("shown\n") && process.waitForReadyRead(30000))
        output += process.readAllStandardOutput();

    QFile file(log);
    const bool readable = file.open(QIODevice::ReadOnly);
    const QList<QByteArray> lines = readable ? file.readAll().split('\n') : QList<QByteArray>();
    // The launcher is the first process in the log; it ends on an interrupt.
    const pid_t launcher = pid_t(lines.value(0).split(' ').value(0).toInt());
    if (launcher > 0)
        ::kill(launcher, SIGINT);
    if (!process.waitForFinished(10000))
        process.kill();
    if (!output.contains("shown\n")) {
        std::printf("ini_startup_reads failed (the launcher did not start)\n");
        return;
    }

    std::map<QString, int> opens;
    const QDir resources(QFileInfo(QStringLiteral(SC_LAUNCHER)).dir().filePath(QStringLiteral("../Resources")));
    QDirIterator installed(resources.path(), {QStringLiteral("*.ini")}, QDir::Files, QDirIterator::Subdirectories);
    while (installed.hasNext())
        opens[QFileInfo(installed.next()).fileName()] = 0;
    static const QRegularExpression open(QStringLiteral("openat\\(AT_FDCWD, \"([^\"]*)\".*= \\d+$"));
    for (const QByteArray& line : lines) {
        const QRegularExpressionMatch match = open.match(QString::fromLocal8Bit(line));
        if (!match.hasMatch())
            continue;
        const auto found = opens.find(QFileInfo(match.captured(1)).fileName());
        if (found != opens.end())
            ++found->second;
    }
    std::printf("ini_startup_reads");
    for (const auto& [name, count] : opens)
        std::printf(" %s=%d", qPrintable(name), count);
    std::printf("\n");
}
#endif

} // namespace

int main()
{
    QTemporaryDir folder;
    if (!folder.isValid())
        return 1;
    const std::string path = folder.filePath(QStringLiteral("large.ini")).toStdString();
    const std::string content = generateIni();
    if (FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(content.data(), 1, content.size(), file);
        std::fclose(file);
    } else {
        return 1;
    }
    std::printf("ini_file bytes=%zu sections=%d keys=%d\n", content.size(), Sections,
                Sections * KeysPerSection);

    // QSettings keeps parsed files in a process-wide cache and re-reads one
    // only when its time or size changed: every run gets a newer time.
    time_t stamp = time(nullptr) - 100000;
    const auto touch = [&] {
        ++stamp;
        const utimbuf times{stamp, stamp};
        utime(path.c_str(), &times);
    };

    bench::compare(
        "ini_parse", 21, touch,
        [&] {
            cIniFile ini(path, false, false);
            bench::keep(ini.GetString("Section1000", "Key10", ""));
        },
        [&] {
            QSettings settings(QString::fromStdString(path), QSettings::IniFormat);
            bench::keep(settings.childGroups());
            settings.beginGroup(QStringLiteral("Section1000"));
            for (const QString& key : settings.childKeys())
                bench::keep(settings.value(key));
            settings.endGroup();
        });

    cIniFile ini(path, false, false);
    constexpr int Calls = 20000;
    const double batchMs = bench::medianMs(9, [&] {
        for (int i = 0; i < Calls; ++i)
            bench::keep(ini.GetString("Section1000", "Key10", ""));
    });
    std::printf("ini_getstring us=%.3f\n", batchMs * 1000.0 / Calls);
#ifdef SC_LAUNCHER
    countStartupReads();
#endif
    return 0;
}
