#pragma once

#include "ApplicationInfo.h"
#include "Configuration.h"
#include "CrossPlatformApi.h"
#include "DMFileName.h"
#include "FolderManager.h"
#include "NvWinIni.h"
#include "TempInstallation.h"

#include <QDateTime>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTest>

#include <string>

// Drops every singleton of the settings layer and the global folder symbols,
// so that the next use builds them for the current installation.
inline void resetSettingsSingletons()
{
    cConfiguration::resetInstance();
    cNvWinIni::resetInstance();
    FolderManager::resetInstance();
    DMFileName::resetGlobalFileEnvironment();
    cApplicationInfo::resetInstance();
}

// Answers every message box with OK and keeps "title|text" of each.
class MessageBoxRecorder
{
public:
    MessageBoxRecorder()
    {
        m_previous = CrossPlatformApi::setMessageBoxHandler([this](const MessageBoxRequest& request) {
            boxes << request.title + QLatin1Char('|') + request.text;
            MessageBoxAnswer answer;
            answer.button = this->answer;
            return answer;
        });
    }
    ~MessageBoxRecorder() { CrossPlatformApi::setMessageBoxHandler(m_previous); }
    MessageBoxRecorder(const MessageBoxRecorder&) = delete;
    MessageBoxRecorder& operator=(const MessageBoxRecorder&) = delete;

    QStringList boxes;
    QMessageBox::StandardButton answer = QMessageBox::Ok;

private:
    CrossPlatformApi::MessageBoxHandler m_previous;
};

// A throw-away installation for one test that records its message boxes;
// the settings singletons are dropped before and after, so that they see it.
struct SettingsSandbox : TempInstallation
{
    SettingsSandbox() { resetSettingsSingletons(); }
    ~SettingsSandbox() { resetSettingsSingletons(); }
    MessageBoxRecorder boxes;
};

// Files are re-read only when they are newer than at the last read, at a
// resolution of seconds: a test that changes a file behind the program's back
// moves its time forward.
inline bool moveModificationTimeForward(const QString& path, int seconds = 10)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite)
           && file.setFileTime(QDateTime::currentDateTime().addSecs(seconds),
                               QFileDevice::FileModificationTime);
}

inline QString fromLatin1(const std::string& text)
{
    return QString::fromLatin1(text.data(), int(text.size()));
}

namespace QTest {
// Lets QCOMPARE show std::string values when they differ.
template<>
inline char* toString(const std::string& text)
{
    return toPrettyCString(text.data(), qsizetype(text.size()));
}
} // namespace QTest
