// The online-update slots of the main window.

#include "StartCenter.h"

#include "OnlineUpdate.h"
#include "ProceedUpdateDlg.h"

#include <QCoreApplication>

void StartCenter::startOnlineUpdate()
{
    OnlineUpdate* onlineUpdate = OnlineUpdate::theInstance();
    if (onlineUpdate->isExecutable())
        onlineUpdate->update(false);
}

bool StartCenter::showOnlineConfiguration()
{
    OnlineUpdate* onlineUpdate = OnlineUpdate::theInstance();
    return onlineUpdate->isExecutable() && onlineUpdate->config();
}

void StartCenter::checkUpdateResult()
{
    const int result = OnlineUpdate::theInstance()->getLastBackgroundCheckResult();
    if (result != OnlineUpdate::CheckRunning)
        m_updateTimer.stop();
    if (result == OnlineUpdate::NewVersionAvailable)
        askStartOnlineUpdate();
}

void StartCenter::askStartOnlineUpdate()
{
    ProceedUpdateDlg dialog(this, ProceedUpdateDlg::updateAvailableMessage(), true);
    if (dialog.exec() != 1)
        return;
    // The update program has done its work when startOnlineUpdate() returns;
    // the launcher ends from its event loop with exit status 0, so that the
    // window is torn down normally and the settings are saved.
    startOnlineUpdate();
    QCoreApplication::exit(0);
}
