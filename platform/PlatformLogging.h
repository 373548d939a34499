#pragma once

#include <QLoggingCategory>

// The logging category of the platform services: the debug strings of the
// suite's programs (outputDebugString).
Q_DECLARE_LOGGING_CATEGORY(lcPlatform)   // startcenter.platform
