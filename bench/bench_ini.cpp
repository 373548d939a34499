// Reading a large INI file: cIniFile against QSettings in INI format, and the
// cost of one GetString on a file that has not changed (it still looks at the
// file's time).

#include "BenchUtil.h"

#include "IniFile.h"

#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>

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
    return 0;
}
