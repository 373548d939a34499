// Removing the installation from the support menu.

#include "StartCenter.h"

#include "Uninstall.h"

#include <QCoreApplication>

void StartCenter::startUninstall()
{
    // Once the program or the user's files of it are gone, the launcher ends.
    if (Uninstall::run() == Uninstall::Outcome::Removed)
        QCoreApplication::exit(0);
}
