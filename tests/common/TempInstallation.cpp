#include "TempInstallation.h"

#include "CrossPlatformApi.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#ifndef SC_SOURCE_DIR
#error "SC_SOURCE_DIR must name the source tree"
#endif

TempInstallation::TempInstallation()
{
    QDir root(m_dir.path());
    root.mkpath(QStringLiteral("home/tmp"));
    root.mkpath(QStringLiteral("home/.local/share"));
    root.mkpath(QStringLiteral("home/.config"));
    root.mkpath(QStringLiteral("home/.cache"));
    root.mkpath(QStringLiteral("home/.local/state"));
    root.mkpath(QStringLiteral("home/Documents"));
    root.mkpath(QStringLiteral("home/.run"));
    QFile::setPermissions(home() + QStringLiteral("/.run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    root.mkpath(QStringLiteral("shared"));
    root.mkpath(QStringLiteral("Start-Center.app/Contents/MacOS"));
    root.mkpath(QStringLiteral("Start-Center.app/Contents/Resources"));

    setEnv("HOME", home());
    setEnv("TMPDIR", home() + QStringLiteral("/tmp"));
    setEnv("XDG_DATA_HOME", home() + QStringLiteral("/.local/share"));
    setEnv("XDG_CONFIG_HOME", home() + QStringLiteral("/.config"));
    setEnv("XDG_CACHE_HOME", home() + QStringLiteral("/.cache"));
    setEnv("XDG_STATE_HOME", home() + QStringLiteral("/.local/state"));
    setEnv("XDG_DOCUMENTS_DIR", home() + QStringLiteral("/Documents"));
    setEnv("XDG_RUNTIME_DIR", home() + QStringLiteral("/.run"));
    setEnv("SC_COMMON_APPDATA", m_dir.path() + QStringLiteral("/shared"));

    CrossPlatformApi::overrideExecutablePath(executablePath().toLocal8Bit().toStdString());
}

TempInstallation::~TempInstallation()
{
    CrossPlatformApi::overrideExecutablePath(std::string());
    for (const auto& [name, value] : m_savedEnvironment) {
        if (m_hadEnvironment[name])
            qputenv(name.constData(), value);
        else
            qunsetenv(name.constData());
    }
}

void TempInstallation::setEnv(const char* name, const QString& value)
{
    if (!m_savedEnvironment.count(name)) {
        m_hadEnvironment[name] = qEnvironmentVariableIsSet(name);
        m_savedEnvironment[name] = qgetenv(name);
    }
    qputenv(name, value.toLocal8Bit());
}

bool TempInstallation::isValid() const { return m_dir.isValid(); }
QString TempInstallation::root() const { return m_dir.path(); }
QString TempInstallation::home() const { return m_dir.path() + QStringLiteral("/home"); }
QString TempInstallation::bundleDir() const { return m_dir.path() + QStringLiteral("/Start-Center.app"); }
QString TempInstallation::resourcesDir() const { return bundleDir() + QStringLiteral("/Contents/Resources/"); }
QString TempInstallation::executablePath() const
{
    return bundleDir() + QStringLiteral("/Contents/MacOS/Start-Center");
}

bool TempInstallation::writeFile(const QString& relativePath, const QByteArray& content) const
{
    const QString path = QDir(root()).filePath(relativePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

bool TempInstallation::addStandInProgram(const QString& name, const QByteArray& shellCommands)
{
    const QString folder = root() + QStringLiteral("/bin");
    const QString path = folder + QLatin1Char('/') + name;
    if (!writeFile(QStringLiteral("bin/") + name, "#!/bin/sh\n" + shellCommands + '\n')
        || !QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        return false;
    const QString searchPath = qEnvironmentVariable("PATH");
    if (!searchPath.startsWith(folder + QLatin1Char(':')))
        setEnv("PATH", folder + QLatin1Char(':') + searchPath);
    return true;
}

bool TempInstallation::writeResource(const QString& name, const QByteArray& content) const
{
    return writeFile(QStringLiteral("Start-Center.app/Contents/Resources/") + name, content);
}

QByteArray TempInstallation::readFile(const QString& path) const
{
    QFile file(QFileInfo(path).isAbsolute() ? path : QDir(root()).filePath(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TempInstallation::copyDemoResources() const
{
    const QDir source(QStringLiteral(SC_SOURCE_DIR "/demo/Resources"));
    bool ok = source.exists();
    QDirIterator it(source.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString from = it.next();
        const QString to = resourcesDir() + source.relativeFilePath(from);
        QDir().mkpath(QFileInfo(to).absolutePath());
        QFile::remove(to);
        ok = QFile::copy(from, to) && ok;
    }
    return ok;
}
