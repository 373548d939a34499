#include "UiLogging.h"

Q_LOGGING_CATEGORY(lcMainWindow, "startcenter.mainwindow", QtWarningMsg)
Q_LOGGING_CATEGORY(lcSound, "startcenter.sound", QtWarningMsg)
