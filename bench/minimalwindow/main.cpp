// The floor of the start-up benchmark: a Qt Widgets program that shows an
// empty main window and, like the launcher under the benchmark, prints
// "shown" once the window's first frame is painted.

#include "FirstPaint.h"

#include <QApplication>
#include <QMainWindow>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.show();
    runAfterFirstPaint(&window, [] {
        std::fputs("shown\n", stdout);
        std::fflush(stdout);
    });
    return QApplication::exec();
}
