#include "CheckVersionBackgroundThread.h"

#include "OnlineUpdate.h"

CheckVersionBackgroundThread::CheckVersionBackgroundThread(const QString& updateProgram, QObject* parent)
    : QThread(parent), m_updateProgram(updateProgram)
{
}

void CheckVersionBackgroundThread::run()
{
    m_result = OnlineUpdate::runUpdateProgram(m_updateProgram, QStringLiteral("-check -auto -h"));
}
