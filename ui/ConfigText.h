#pragma once

#include <QString>

// A value of the layered configuration as the windows show it: the Latin-1
// bytes of the settings files turned into text. defaultValue stands in for a
// value that is missing or empty.
QString configText(const char* section, const char* key, const char* defaultValue = "");
