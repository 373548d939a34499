// guard_handover: the time from starting a second instance until the running
// primary reports it (instanceStarted), against the time the same helper
// program needs to start and end without a guard. The primary looks at the
// register every 250 ms, so about half an interval is expected on top.

#include "BenchUtil.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>

#include <vector>

#ifndef GUARDPROBE_PATH
#error "GUARDPROBE_PATH must name the guard probe program"
#endif

namespace {

constexpr int Runs = 21;
constexpr int Timeout = 30000;

QProcess* startProbe(const QStringList& arguments, QObject* parent)
{
    auto* process = new QProcess(parent);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(QStringLiteral(GUARDPROBE_PATH), arguments);
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

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // The register's key files go to a folder of our own.
    QTemporaryDir temporary;
    qputenv("TMPDIR", temporary.path().toLocal8Bit());
    const QString key = QStringLiteral("bench-guard-%1").arg(QCoreApplication::applicationPid());

    QProcess* primary = startProbe({key}, &app);
    if (!waitForLine(*primary, "primary")) {
        std::fprintf(stderr, "bench_guard: the first probe did not become primary\n");
        return 1;
    }

    std::vector<double> handover;
    std::vector<double> reference;
    for (int i = 0; i < Runs; ++i) {
        // Each run ends right after one of the primary's looks; without a
        // random pause every start would fall at the same point of its interval.
        QThread::msleep(QRandomGenerator::global()->bounded(250));
        QElapsedTimer timer;
        timer.start();
        QProcess* second = startProbe({key, QStringLiteral("--exit-after=0")}, &app);
        second->waitForStarted(Timeout);
        const QByteArray started = "started " + QByteArray::number(second->processId());
        if (!waitForLine(*primary, started)) {
            std::fprintf(stderr, "bench_guard: the primary did not report the second start\n");
            return 1;
        }
        handover.push_back(timer.nsecsElapsed() / 1e6);
        second->waitForFinished(Timeout);
        delete second;

        timer.restart();
        QProcess* plain = startProbe({key, QStringLiteral("--no-guard")}, &app);
        plain->waitForFinished(Timeout);
        reference.push_back(timer.nsecsElapsed() / 1e6);
        delete plain;
    }
    bench::printResult("guard_handover", bench::median(handover), bench::median(reference));

    primary->write("quit\n");
    primary->waitForBytesWritten(Timeout);
    primary->waitForFinished(Timeout);
    return 0;
}
