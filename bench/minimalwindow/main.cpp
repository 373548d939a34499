// The floor of the start-up benchmark: a Qt Widgets program that shows an
// empty main window and, like the launcher under the benchmark, prints
// "shown" once the window is up and the event loop has nothing left to do.

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QMainWindow>

#include <cstdio>
#include <memory>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.show();

    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                                   [connection] {
                                       QObject::disconnect(*connection);
                                       std::fputs("shown\n", stdout);
                                       std::fflush(stdout);
                                   });
    return QApplication::exec();
}
