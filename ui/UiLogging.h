#pragma once

#include <QLoggingCategory>

// The logging categories of the main window and its pages.
Q_DECLARE_LOGGING_CATEGORY(lcMainWindow)   // startcenter.mainwindow
Q_DECLARE_LOGGING_CATEGORY(lcSound)        // startcenter.sound
