#pragma once

#include <QStringList>

namespace SharedHelpers {
// Takes organisation domain and application name from the main bundle's
// identifier "tld.maker.app" (domain "maker.tld", name "app"). Returns false,
// leaving both unset, for a null name or an identifier without exactly three
// labels. name only appears in the diagnostic text.
bool SetOrganizationDomainAndApplicationName(const char* name);
}

// Opens the settings of the installation in the application folder as
// start-up does: the folder symbols of the main configuration file first,
// then the layered settings on that file, uncached, so that every read sees
// what another program of the suite wrote. False when the main configuration
// file is missing.
bool openInstallationSettings();

// Hides every visible top-level window of the application (true), or shows
// the windows hidden that way again, raised and activated (false).
void hideApplication(bool hide);

// The bundle identifiers of the programs inside the main bundle's
// Contents/Resources/*.app, preceded by the main bundle's own when
// includeMain is set.
QStringList collectBundleIds(bool includeMain);
