#include "StartCenter.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcMainWindow, "startcenter.mainwindow", QtWarningMsg)

StartCenter::StartCenter(QWidget* parent, Qt::WindowFlags flags)
    : QMainWindow(parent, flags)
{
    setWindowTitle(QStringLiteral("Start-Center 2012"));
}

void StartCenter::activateMainWindow()
{
    if (isMinimized())
        showNormal();
    raise();
    activateWindow();
    qCDebug(lcMainWindow) << "main window activated";
}
