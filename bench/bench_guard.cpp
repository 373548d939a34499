// guard_handover: the time from starting a second instance until the running
// primary reports it (instanceStarted), against the plain Qt way of the same
// job: a primary with a QLocalServer in the same kind of private folder, and
// a second process that connects, sends its arguments and ends. Both are
// measured alternately in one run.
// guard_register: what constructing the guard costs a later start: it
// takes a slot in the running primary's register and wakes it.

#include "BenchUtil.h"
#include "KDSingleApplicationGuard.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>

#include <memory>
#include <vector>

#ifndef GUARDPROBE_PATH
#error "GUARDPROBE_PATH must name the guard probe program"
#endif
#ifndef LOCALHANDOVER_PATH
#error "LOCALHANDOVER_PATH must name the plain hand-over program"
#endif

namespace {

constexpr int Runs = 41;
constexpr int Timeout = 30000;

QProcess* startProcess(const QString& program, const QStringList& arguments, QObject* parent)
{
    auto* process = new QProcess(parent);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(program, arguments);
    return process;
}

// Reads lines until one starts with the prefix; false on timeout or end.
bool waitForLine(QProcess& process, const QByteArray& prefix)
{
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < Timeout) {
        while (process.canReadLine()) {
            if (process.readLine().startsWith(prefix))
                return true;
        }
        if (!process.waitForReadyRead(Timeout))
            return false;
    }
    return false;
}

// Milliseconds from starting the second process until the first reports it.
double handOver(QProcess& first, const QString& program, const QStringList& arguments, QObject* parent)
{
    QElapsedTimer timer;
    timer.start();
    std::unique_ptr<QProcess> second(startProcess(program, arguments, parent));
    second->waitForStarted(Timeout);
    if (!waitForLine(first, "started " + QByteArray::number(second->processId()))) {
        std::fprintf(stderr, "bench_guard: %s was not reported\n", qPrintable(program));
        std::exit(1);
    }
    const double elapsed = timer.nsecsElapsed() / 1e6;
    second->waitForFinished(Timeout);
    return elapsed;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir runtime; // mode 0700, as a private runtime folder is
    qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    const QString key = QStringLiteral("bench-guard-%1").arg(QCoreApplication::applicationPid());
    const QString socket = runtime.filePath(QStringLiteral("handover.socket"));

    QProcess* primary = startProcess(QStringLiteral(GUARDPROBE_PATH), {key}, &app);
    QProcess* server = startProcess(QStringLiteral(LOCALHANDOVER_PATH), {QStringLiteral("serve"), socket}, &app);
    if (!waitForLine(*primary, "primary") || !waitForLine(*server, "listening")) {
        std::fprintf(stderr, "bench_guard: the first instances did not come up\n");
        return 1;
    }

    std::vector<double> guard;
    std::vector<double> reference;
    for (int i = 0; i < Runs; ++i) {
        // Starts spread over the primary's poll interval, so that a
        // hand-over that waits for the poll shows as such.
        QThread::msleep(QRandomGenerator::global()->bounded(250));
        guard.push_back(handOver(*primary, QStringLiteral(GUARDPROBE_PATH), {key, QStringLiteral("--exit-after=0")}, &app));
        reference.push_back(handOver(*server, QStringLiteral(LOCALHANDOVER_PATH), {QStringLiteral("send"), socket}, &app));
    }
    bench::printResult("guard_handover", bench::median(guard), bench::median(reference));

    QCoreApplication::setApplicationName(key);
    const double registration = bench::medianMs(Runs, [] {
        KDSingleApplicationGuard later(QStringList{QStringLiteral("bench")});
        if (!later.isOperational() || later.isPrimaryInstance())
            std::exit(1);
    });
    // Leaving is timed with it; it is about as cheap.
    std::printf("guard_register ms=%.3f\n", registration);

    for (QProcess* first : {primary, server}) {
        first->write("quit\n");
        first->waitForBytesWritten(Timeout);
        first->waitForFinished(Timeout);
    }
    return 0;
}
