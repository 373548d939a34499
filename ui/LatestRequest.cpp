#include "LatestRequest.h"

bool LatestRequest::isCurrent(quint64 request) const
{
    return m_newest.load() == request;
}

void LatestRequest::detach()
{
    const QMutexLocker lock(&m_mutex);
    m_receiver = nullptr;
    m_newest.fetch_add(1);
}
