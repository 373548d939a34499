#pragma once

#include <QMetaObject>
#include <QMutex>
#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>

// Work for a widget that runs on the thread pool, where only the newest
// request counts: starting one overtakes the one before, whose worker stops
// at its next check and whose results are never delivered. The widget owns
// the object through a shared pointer that the workers share too, and calls
// detach() in its destructor, so that no worker posts to a widget being
// destroyed and none has to be waited for.
class LatestRequest
{
public:
    explicit LatestRequest(QObject* receiver)
        : m_receiver(receiver)
    {
    }

    static std::shared_ptr<LatestRequest> create(QObject* receiver)
    {
        return std::make_shared<LatestRequest>(receiver);
    }

    // Runs work(self, request) on the thread pool as the newest request;
    // the worker keeps self alive.
    template<class Work>
    static void start(const std::shared_ptr<LatestRequest>& self, Work work)
    {
        LatestRequest* shared = self.get();
        if (!shared)
            return;
        const quint64 request = shared->m_newest.fetch_add(1) + 1;
        QThreadPool::globalInstance()->start([self, shared, request, work = std::move(work)]() mutable {
            work(*shared, request);
        });
    }

    // Overtakes every running request without starting a new one.
    void cancelAll() { m_newest.fetch_add(1); }

    bool isCurrent(quint64 request) const;

    // Runs call() on the receiver's thread, unless the request has been
    // overtaken or the receiver is gone by then.
    template<class Call>
    void post(quint64 request, Call call)
    {
        const QMutexLocker lock(&m_mutex);
        if (!m_receiver || !isCurrent(request))
            return;
        QMetaObject::invokeMethod(
            m_receiver,
            [this_ = this, request, call = std::move(call)]() mutable {
                if (this_->isCurrent(request))
                    call();
            },
            Qt::QueuedConnection);
    }

    void detach();

private:
    QMutex m_mutex;
    QObject* m_receiver;
    std::atomic<quint64> m_newest{0};
};
