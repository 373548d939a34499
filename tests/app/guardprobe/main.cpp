// Test helper: one process with a single-instance guard that reports what it
// sees on stdout, one line per event, and follows commands read from stdin.
//
//   guardprobe <application name> [--exit-after=MS] [--autokill] [more arguments...]
//
// Output: "primary <pid>", "secondary <pid>" or "non-operational <pid>" at
// start, then "started <pid> <truncated 0|1> <arguments joined by |>",
// "exited <pid>", "became-primary", "raise-requested", "policy <value>",
// "instances <pid> <pid>...". Commands: "quit", "raise <pid>",
// "shutdown-others", "kill-others", "autokill", "instances".

#include "KDSingleApplicationGuard.h"

#include <QCoreApplication>
#include <QHash>
#include <QSocketNotifier>
#include <QTimer>

#include <cstdio>

#include <unistd.h>

namespace {

void say(const QString& line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

QString pidText(qint64 pid)
{
    return QString::number(pid);
}

class Probe : public QObject
{
public:
    explicit Probe(KDSingleApplicationGuard& guard)
        : m_guard(guard)
        , m_commands(0, QSocketNotifier::Read)
    {
        connect(&m_guard, &KDSingleApplicationGuard::instanceStarted, this, [this](const auto& instance) {
            m_known.insert(instance.pid(), instance);
            say(QStringLiteral("started %1 %2 %3")
                    .arg(pidText(instance.pid()))
                    .arg(instance.areArgumentsTruncated() ? 1 : 0)
                    .arg(instance.arguments().join(QLatin1Char('|'))));
        });
        connect(&m_guard, &KDSingleApplicationGuard::instanceExited, this,
                [](const auto& instance) { say(QStringLiteral("exited ") + pidText(instance.pid())); });
        connect(&m_guard, &KDSingleApplicationGuard::becamePrimaryInstance, this,
                [] { say(QStringLiteral("became-primary")); });
        connect(&m_guard, &KDSingleApplicationGuard::raiseRequested, this,
                [] { say(QStringLiteral("raise-requested")); });
        connect(&m_guard, &KDSingleApplicationGuard::policyChanged, this,
                [](KDSingleApplicationGuard::Policy policy) { say(QStringLiteral("policy %1").arg(int(policy))); });
        connect(&m_commands, &QSocketNotifier::activated, this, &Probe::readCommands);
    }

private:
    // Reads stdin without buffering of its own, so that no command waits in
    // a buffer while the notifier sees an empty pipe.
    void readCommands()
    {
        char chunk[512];
        const ssize_t got = ::read(0, chunk, sizeof chunk);
        if (got <= 0) {
            m_commands.setEnabled(false);
            return;
        }
        m_pending.append(chunk, got);
        for (qsizetype end = m_pending.indexOf('\n'); end >= 0; end = m_pending.indexOf('\n')) {
            run(m_pending.left(end).trimmed());
            m_pending.remove(0, end + 1);
        }
    }

    void run(const QByteArray& line)
    {
        const QList<QByteArray> words = line.split(' ');
        const QByteArray& command = words.first();
        if (command == "quit") {
            QCoreApplication::quit();
        } else if (command == "raise" && words.size() == 2) {
            m_known.value(words.at(1).toLongLong()).raise();
        } else if (command == "shutdown-others") {
            m_guard.shutdownOtherInstances();
        } else if (command == "kill-others") {
            m_guard.killOtherInstances();
        } else if (command == "autokill") {
            m_guard.setPolicy(KDSingleApplicationGuard::AutoKillOtherInstances);
        } else if (command == "instances") {
            QStringList pids;
            for (const auto& instance : m_guard.instances())
                pids << pidText(instance.pid());
            say(QStringLiteral("instances ") + pids.join(QLatin1Char(' ')));
        }
    }

    KDSingleApplicationGuard& m_guard;
    QSocketNotifier m_commands;
    QByteArray m_pending;
    QHash<qint64, KDSingleApplicationGuard::Instance> m_known;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 2) {
        std::fputs("usage: guardprobe <application name> [options] [arguments]\n", stderr);
        return 2;
    }
    QCoreApplication::setApplicationName(arguments.at(1));

    const auto policy = arguments.contains(QStringLiteral("--autokill")) ? KDSingleApplicationGuard::AutoKillOtherInstances
                                                                           : KDSingleApplicationGuard::NoPolicy;
    KDSingleApplicationGuard guard(policy);
    const QString role = !guard.isOperational() ? QStringLiteral("non-operational")
                       : guard.isPrimaryInstance() ? QStringLiteral("primary")
                                                   : QStringLiteral("secondary");
    say(role + QLatin1Char(' ') + pidText(QCoreApplication::applicationPid()));

    for (const QString& argument : arguments) {
        if (argument.startsWith(QLatin1String("--exit-after=")))
            QTimer::singleShot(argument.mid(13).toInt(), &app, &QCoreApplication::quit);
    }
    Probe probe(guard);
    return app.exec();
}
