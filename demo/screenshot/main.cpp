// Saves a picture of the whole X screen, or of the top-level window whose
// title contains a given text, to a PNG file. Used by the demo script to show
// what the launcher looks like on a machine without a display (under Xvfb).
//
//   demoscreenshot <file.png> [window title text] [timeout seconds]
//
// With a title it waits until such a window is on screen.

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QThread>
#include <QWindow>

#include <cstdio>

namespace {

// The X window id of the first top-level window whose name contains the text,
// found through xwininfo's tree listing; 0 when there is none.
WId findWindow(const QString& titlePart)
{
    QProcess tree;
    tree.start(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")});
    if (!tree.waitForFinished(5000))
        return 0;
    const QStringList lines = QString::fromLocal8Bit(tree.readAllStandardOutput()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QString trimmed = line.trimmed();
        if (!trimmed.startsWith(QLatin1String("0x")) || !trimmed.contains(titlePart))
            continue;
        bool ok = false;
        const WId id = trimmed.section(QLatin1Char(' '), 0, 0).toULongLong(&ok, 16);
        if (ok)
            return id;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: demoscreenshot <file.png> [window title text] [timeout seconds]\n");
        return 2;
    }
    const QString file = args.at(1);
    const QString title = args.value(2);
    const int timeoutSeconds = args.value(3, QStringLiteral("20")).toInt();

    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) {
        std::fprintf(stderr, "demoscreenshot: no screen\n");
        return 1;
    }

    WId window = 0;
    if (!title.isEmpty()) {
        const QDeadlineTimer deadline(timeoutSeconds * 1000);
        while (!(window = findWindow(title)) && !deadline.hasExpired())
            QThread::msleep(200);
        if (!window) {
            std::fprintf(stderr, "demoscreenshot: no window titled \"%s\" appeared\n", qPrintable(title));
            return 1;
        }
        QThread::msleep(1500);   // let the page animation and the first paint finish
    }

    const QPixmap picture = screen->grabWindow(window);
    if (picture.isNull() || !picture.save(file, "PNG")) {
        std::fprintf(stderr, "demoscreenshot: cannot write %s\n", qPrintable(file));
        return 1;
    }
    return 0;
}
