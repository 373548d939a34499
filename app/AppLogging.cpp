#include "AppLogging.h"

Q_LOGGING_CATEGORY(lcStartUp, "startcenter.startup", QtWarningMsg)
Q_LOGGING_CATEGORY(lcGuard, "startcenter.guard", QtWarningMsg)
