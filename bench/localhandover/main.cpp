// The plain Qt way of handing a second start over to a first one, the
// reference for guard_handover:
//
//   localhandover serve <socket>        listens; prints "started <pid> <arguments joined by |>"
//                                       for every start that connects; ends on "quit" from stdin
//   localhandover send <socket> [args]  connects, sends its process id and arguments, ends

#include <QCoreApplication>
#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSocketNotifier>

#include <cstdio>

namespace {

int serve(const QString& socketPath)
{
    QLocalServer server;
    QLocalServer::removeServer(socketPath);
    server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!server.listen(socketPath)) {
        std::fprintf(stderr, "localhandover: cannot listen on %s\n", qPrintable(socketPath));
        return 1;
    }
    QObject::connect(&server, &QLocalServer::newConnection, &server, [&server] {
        while (QLocalSocket* socket = server.nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, [socket] {
                QDataStream in(socket->readAll());
                qint64 pid = 0;
                QStringList arguments;
                in >> pid >> arguments;
                std::printf("started %lld %s\n", qlonglong(pid), qPrintable(arguments.join(QLatin1Char('|'))));
                std::fflush(stdout);
                socket->deleteLater();
            });
        }
    });
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &server, [] { QCoreApplication::quit(); });
    std::puts("listening");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

int send(const QString& socketPath, const QStringList& arguments)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(5000))
        return 1;
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out << QCoreApplication::applicationPid() << arguments;
    socket.write(message);
    socket.waitForBytesWritten(5000);
    socket.disconnectFromServer();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 3) {
        std::fputs("usage: localhandover serve|send <socket> [arguments]\n", stderr);
        return 2;
    }
    if (arguments.at(1) == QLatin1String("serve"))
        return serve(arguments.at(2));
    return send(arguments.at(2), arguments);
}
