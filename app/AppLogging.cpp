#include "AppLogging.h"

Q_LOGGING_CATEGORY(lcStartUp, "startcenter.startup", QtWarningMsg)
