#include "PlatformLogging.h"

Q_LOGGING_CATEGORY(lcPlatform, "startcenter.platform", QtWarningMsg)
