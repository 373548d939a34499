#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <map>

// A throw-away installation for one test: a bundle folder
//   <root>/Start-Center.app/Contents/{MacOS,Resources}
// and a private home with its own TMPDIR and XDG folders and a private folder
// shared by all users (SC_COMMON_APPDATA = <root>/shared), so that nothing a
// test does reaches the real user's files. The process's executable path is
// pointed at <bundle>/Contents/MacOS/Start-Center, so the application folder
// is the bundle's Resources folder.
//
// Singletons that already cached paths must be reset by the test itself
// (each layer offers a resetInstance() for that).
class TempInstallation
{
public:
    TempInstallation();
    ~TempInstallation();
    TempInstallation(const TempInstallation&) = delete;
    TempInstallation& operator=(const TempInstallation&) = delete;

    bool isValid() const;
    QString root() const;             // the temporary folder holding everything
    QString home() const;             // $HOME
    QString bundleDir() const;        // .../Start-Center.app
    QString resourcesDir() const;     // .../Start-Center.app/Contents/Resources/  (trailing slash)
    QString executablePath() const;   // .../Start-Center.app/Contents/MacOS/Start-Center

    // Writes a file below the root (relative path), creating its folders.
    // Content is taken as raw bytes (use Latin-1 for INI files).
    bool writeFile(const QString& relativePath, const QByteArray& content) const;
    bool writeResource(const QString& name, const QByteArray& content) const;
    QByteArray readFile(const QString& path) const;

    // A program that tests put in place of a system one: <root>/bin/name
    // running the shell commands given, that folder first in PATH.
    bool addStandInProgram(const QString& name, const QByteArray& shellCommands);

    // Copies the sample installation of the source tree (demo/Resources) into
    // the bundle's Resources folder.
    bool copyDemoResources() const;

private:
    QTemporaryDir m_dir;
    std::map<QByteArray, QByteArray> m_savedEnvironment;
    std::map<QByteArray, bool> m_hadEnvironment;
    void setEnv(const char* name, const QString& value);
};
