// Saves pictures of the income-tax action page in its three states, on the
// sample installation, for the documentation:
//
//   pageshots <folder>
//
// writes actionpage-state-a.png (the last case file is offered),
// actionpage-state-b.png (last year's case file is offered for the data
// takeover), actionpage-state-c.png (a new case file is offered) and
// mainwindow-toolbar-focus.png (the main window after Tab has taken the
// keyboard focus to the tool bar's manual button). Runs on
// any platform plug-in (offscreen, or xcb under Xvfb). Installation, home and
// settings are throw-away copies.

#include "Configuration.h"
#include "SharedHelpers.h"
#include "ModePages.h"
#include "NvWinIni.h"
#include "SCAppStyle.h"
#include "SCColors.h"
#include "StartCenter.h"
#include "TempInstallation.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QTest>
#include <QToolButton>

#include <cstdio>

namespace {

bool copyFolder(const QString& from, const QString& to)
{
    bool ok = QDir(from).exists();
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = to + QLatin1Char('/') + QDir(from).relativeFilePath(source);
        QDir().mkpath(QFileInfo(target).absolutePath());
        QFile::remove(target);
        ok = QFile::copy(source, target) && ok;
    }
    return ok;
}

bool writeText(const QString& path, const QByteArray& latin1)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(latin1) == latin1.size();
}

bool shoot(QWidget& window, ActionPage& page, ActionPage::ModeAction expected, const QString& path)
{
    page.updateUI();
    QTest::qWait(50);   // moved buttons are shown by the event loop
    if (page.recommendedAction() != expected) {
        std::fprintf(stderr, "pageshots: %s shows the wrong state\n", qPrintable(path));
        return false;
    }
    if (!window.grab().save(path)) {
        std::fprintf(stderr, "pageshots: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

// The main window with the focus frame on the tool bar button of action,
// reached with Tab from the mode column.
bool shootToolBarFocus(const QString& action, const QString& path)
{
    StartCenter window;
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window)) {
        std::fprintf(stderr, "pageshots: the main window is not active\n");
        return false;
    }
    QTest::qWait(800);   // the page slides in
    const auto onAction = [&window, &action] {
        const auto* button = qobject_cast<const QToolButton*>(window.focusWidget());
        return button && button->defaultAction() && button->defaultAction()->objectName() == action;
    };
    for (int step = 0; step < 40 && !onAction(); ++step)
        QTest::keyClick(&window, Qt::Key_Tab);
    if (!onAction()) {
        std::fprintf(stderr, "pageshots: Tab does not reach %s\n", qPrintable(action));
        return false;
    }
    QTest::qWait(50);
    if (!window.grab().save(path)) {
        std::fprintf(stderr, "pageshots: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: pageshots <folder>\n");
        return 2;
    }
    const QString output = QDir(QString::fromLocal8Bit(argv[1])).absolutePath() + QLatin1Char('/');
    QDir().mkpath(output);

    TempInstallation install;
    if (!install.copyDemoResources()
        || !copyFolder(QStringLiteral(SC_BUNDLE_DIR "/Contents/Resources/media"),
                       install.resourcesDir() + QStringLiteral("media"))) {
        std::fprintf(stderr, "pageshots: cannot lay out the sample installation\n");
        return 1;
    }

    if (!openInstallationSettings()) {
        std::fprintf(stderr, "pageshots: no configuration\n");
        return 1;
    }
    cNvWinIni::theInstance()->setModus(cszDefaultModus);
    const QString homeData = QString::fromLatin1(cNvWinIni::theInstance()->getHomeDataPath().c_str());
    if (!copyFolder(QStringLiteral(SC_SOURCE_DIR "/demo/HomeData"), homeData)) {
        std::fprintf(stderr, "pageshots: cannot copy the sample case files\n");
        return 1;
    }

    SCAppStyle::installApplicationLook();

    // The page on a stand-in for the main window's page stack.
    QFrame stack;
    const int width = stack.style()->pixelMetric(QStyle::PixelMetric(SCAppStyle::PM_PageWidth));
    const int height = stack.style()->pixelMetric(QStyle::PixelMetric(SCAppStyle::PM_PageHeight));
    stack.setFixedSize(width, height);
    QPalette stackPalette = stack.palette();
    stackPalette.setColor(QPalette::WindowText, SCColors::getDesignDarkBlue());
    stackPalette.setColor(QPalette::Window, SCColors::getColor(SCColors::keyDefaultBkg, QColor(239, 242, 243)));
    stack.setPalette(stackPalette);
    stack.setAutoFillBackground(true);
    ModePageNormal page(&stack);
    page.setGeometry(0, 0, width, height);
    stack.show();
    stack.activateWindow();
    if (!QTest::qWaitForWindowExposed(&stack)) {
        std::fprintf(stderr, "pageshots: the page did not appear\n");
        return 1;
    }
    // Active, so that the action buttons show their dark-blue captions.
    if (!QTest::qWaitForWindowActive(&stack, 1000))
        std::fprintf(stderr, "pageshots: the page is not the active window\n");

    if (!shoot(stack, page, ActionPage::ActionNew, output + QStringLiteral("actionpage-state-c.png")))
        return 1;

    const QString lastYearSettings =
        QString::fromLatin1(cNvWinIni::theInstance()->getUserModusIniPath().c_str())
            .replace(QLatin1String(ActionPage::currentVersion), QLatin1String(ActionPage::lastVersion));
    if (!writeText(lastYearSettings,
                   "[MRUFiles]\r\n0=<HomeDataDir>/Mustermann, Erika und Hans 2010.est10\r\n")
        || !shoot(stack, page, ActionPage::ActionConvert, output + QStringLiteral("actionpage-state-b.png")))
        return 1;

    cConfiguration::theInstance()->Write("MRUFiles", "0",
                                         "<HomeDataDir>/Mustermann, Erika und Hans 2011.est11");
    if (!shoot(stack, page, ActionPage::ActionLast, output + QStringLiteral("actionpage-state-a.png")))
        return 1;
    stack.hide();
    if (!shootToolBarFocus(QStringLiteral("actionHandbuch"), output + QStringLiteral("mainwindow-toolbar-focus.png")))
        return 1;
    return 0;
}
