// Removing the installation from the support menu.

#include "StartCenter.h"

#include "Uninstall.h"

#include <QCoreApplication>

void StartCenter::startUninstall()
{
    // The removal runs on after the launcher has ended.
    if (Uninstall::run() == Uninstall::Outcome::Started)
        QCoreApplication::exit(0);
}
