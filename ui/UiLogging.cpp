#include "UiLogging.h"

Q_LOGGING_CATEGORY(lcMainWindow, "startcenter.mainwindow", QtWarningMsg)
