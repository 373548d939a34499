#pragma once

#include <QString>

// The suite's companion material around the launcher: the manual, the
// tax-compass help, the vendor's and the advisors' web pages, the tax-case
// and program folders, the support tools and the information database.
//
// Each action reads its target from the settings, hands it to the platform
// and reports a failure in a message box without parent; it returns whether
// the target was opened or started. The main window's slots call these.
namespace Companions {

// --- Actions -----------------------------------------------------------------
bool openManual();
bool openTaxbook();
bool showMarvendo();
bool openTaxFolder();
// Selects the bundle in the desktop's file manager, or opens the folder it
// lies in where no file manager answers on the session bus. The file
// manager's answer is not waited for: true means the request is under way.
bool openProgramFolder();
bool startReportTool();
bool startNetViewer();

// The online advisor: the address "Online"/"Business" of "berater.ini" in the
// application folder, with the topic and user filled in.
bool startMarvendoBusinessOnline(const QString& topic);
// The information database with the tax advisor's parameters when it is
// installed, otherwise the vendor's web site.
bool openBeraterPlus();
// The information database with the landlord advisor's parameters when it is
// installed, otherwise the landlord-law web page.
bool openBeraterNebenk();
// A link into the information database: its text is the database's start
// parameters.
bool openInfoManLink(const QString& link);
// Starts the information database with params; an information box when it
// is not installed.
bool startInfoMan(const QString& params);

// --- Targets -----------------------------------------------------------------
// "Addons"/"Handbuch" made absolute against the application folder.
QString manualPath();
// The tax-compass page "help/KURSEL.htm" of the executable's bundle.
QString taxbookPage();
// "Files"/"LastWorkDir", by default "Settings"/"HomeDataDir", with its
// folder symbols expanded.
QString taxFolder();
// The online advisor's address: "<TOPIC>" is replaced by the topic and
// "<USER>" by "Online"/"User" of "berater.ini", both percent-encoded.
QString advisorAddress(const QString& topic);
// The information database's program, as its reference file
// "<COMMON_APPDATA>/<COMPANY>/Lumidex2/LumidexRef.ini" names it under
// "Lumidex"/"Path"; empty when the database is not installed.
QString infoManPath();
bool isInfoManInstalled();

} // namespace Companions
