#pragma once

#include <QLoggingCategory>

// The logging categories of the application shell. Warnings are shown by
// default, debug output when switched on, for example with
// QT_LOGGING_RULES="startcenter.*.debug=true".
Q_DECLARE_LOGGING_CATEGORY(lcStartUp)   // startcenter.startup
