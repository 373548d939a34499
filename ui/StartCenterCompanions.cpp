// The companion programs and links of the tool bar and the support menu; the
// work is done by the launch layer's Companions.

#include "StartCenter.h"

#include "Companions.h"

void StartCenter::openManual()
{
    Companions::openManual();
}

void StartCenter::openTaxbook()
{
    Companions::openTaxbook();
}

void StartCenter::showMarvendo()
{
    Companions::showMarvendo();
}

void StartCenter::openTaxFolder()
{
    Companions::openTaxFolder();
}

void StartCenter::openProgramFolder()
{
    Companions::openProgramFolder();
}

void StartCenter::startReportTool()
{
    Companions::startReportTool();
}

void StartCenter::startNetViewer()
{
    Companions::startNetViewer();
}

void StartCenter::openBerater()
{
    Companions::startMarvendoBusinessOnline(QString());
}

void StartCenter::openBeraterPlus()
{
    Companions::openBeraterPlus();
}

void StartCenter::openBeraterNebenk()
{
    Companions::openBeraterNebenk();
}

void StartCenter::openInfoManLink(const QString& link)
{
    Companions::openInfoManLink(link);
}

bool StartCenter::startInfoMan(const QString& params)
{
    return Companions::startInfoMan(params);
}

QString StartCenter::infoManPath() const
{
    return Companions::infoManPath();
}

bool StartCenter::isInfoManInstalled() const
{
    return Companions::isInfoManInstalled();
}
