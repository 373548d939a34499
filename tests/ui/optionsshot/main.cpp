// Saves a picture of the options dialog on the sample installation, for the
// documentation:
//
//   optionsshot <file.png>
//
// Runs on any platform plug-in (offscreen, or xcb under Xvfb). The
// installation, home and settings are throw-away copies, so nothing of the
// real user's files is read or written.

#include "SharedHelpers.h"
#include "NvWinIni.h"
#include "OptionsDialog.h"
#include "SCAppStyle.h"
#include "TempInstallation.h"

#include <QApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QTest>
#include <QTranslator>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: optionsshot <file.png>\n");
        return 2;
    }

    TempInstallation install;
    QFile launcherInfo(QStringLiteral(SC_BUNDLE_DIR "/Contents/Info.plist"));
    if (!install.copyDemoResources() || !launcherInfo.open(QIODevice::ReadOnly)
        || !install.writeFile(QStringLiteral("Start-Center.app/Contents/Info.plist"), launcherInfo.readAll())) {
        std::fprintf(stderr, "optionsshot: cannot lay out the sample installation\n");
        return 1;
    }

    QTranslator translator;
    if (translator.load(QStringLiteral("qt_de"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translator);

    if (!openInstallationSettings()) {
        std::fprintf(stderr, "optionsshot: no configuration\n");
        return 1;
    }
    cNvWinIni::theInstance()->setModus(cszDefaultModus);

    SCAppStyle::installApplicationLook();

    OptionsDialog dialog(nullptr, {});
    dialog.show();
    if (!QTest::qWaitForWindowExposed(&dialog)) {
        std::fprintf(stderr, "optionsshot: the dialog did not appear\n");
        return 1;
    }
    if (!dialog.grab().save(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "optionsshot: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
