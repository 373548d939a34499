#include "OptionsDialog.h"
#include "TestMain.h"
#include "UiSettings.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QTest>
#include <QVBoxLayout>

#include <memory>
#include <utility>

namespace {

template<class Button>
Button* button(const QWidget& dialog, const QString& text)
{
    for (Button* candidate : dialog.findChildren<Button*>())
        if (candidate->text() == text)
            return candidate;
    return nullptr;
}

QCheckBox* playSound(const QWidget& dialog)
{
    return button<QCheckBox>(dialog, QStringLiteral("Sound abspielen"));
}
QCheckBox* lastMode(const QWidget& dialog)
{
    return button<QCheckBox>(dialog, QStringLiteral("zuletzt aktiven Modus auswählen"));
}
QCheckBox* versionCheck(const QWidget& dialog)
{
    return button<QCheckBox>(dialog, QStringLiteral("Versionsprüfung durchführen"));
}
QRadioButton* minimize(const QWidget& dialog)
{
    return button<QRadioButton>(dialog, QStringLiteral("Start-Center verbergen"));
}
QRadioButton* terminate(const QWidget& dialog)
{
    return button<QRadioButton>(dialog, QStringLiteral("Start-Center beenden"));
}
QRadioButton* noChange(const QWidget& dialog)
{
    return button<QRadioButton>(dialog, QStringLiteral("Start-Center nicht verändern"));
}

std::string stored(const char* section, const char* key)
{
    return cNvWinIni::theInstance()->GetString(section, key, "(none)");
}

QByteArray infoPlist(const char* version)
{
    return QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                      "<key>CFBundleName</key><string>X</string>"
                      "<key>CFBundleVersion</key><string>")
           + version + "</string></dict></plist>\n";
}

} // namespace

// The options dialog: what it shows for the stored settings and what it writes.
class TestOptionsDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void missingSettingsShowDefaultsWithoutWriting();
    void unusualValuesAndAccept();
    void changesAreWrittenAtOnceEvenWhenCancelled();
    void versionTextFromTaxProgramVersionFileAndBundle();

private:
    std::unique_ptr<TempInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
};

void TestOptionsDialog::init()
{
    m_install = std::make_unique<TempInstallation>();
    m_boxes = std::make_unique<MessageBoxRecorder>();
}

void TestOptionsDialog::cleanup()
{
    resetSettingsSingletons();
    QVERIFY2(m_boxes->boxes.isEmpty(), qPrintable(m_boxes->boxes.join(QLatin1Char('\n'))));
    m_boxes.reset();
    m_install.reset();
}

void TestOptionsDialog::missingSettingsShowDefaultsWithoutWriting()
{
    QVERIFY(openUiSettings(*m_install));
    OptionsDialog dialog(nullptr, {});
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Optionen"));
    QVERIFY(dialog.findChild<QVBoxLayout*>(QStringLiteral("m_pMainLayout")));
    QVERIFY(playSound(dialog) && lastMode(dialog) && versionCheck(dialog));
    QVERIFY(playSound(dialog)->isChecked());
    QVERIFY(lastMode(dialog)->isChecked());
    QVERIFY(versionCheck(dialog)->isChecked());
    QVERIFY(minimize(dialog) && terminate(dialog) && noChange(dialog));
    QVERIFY(minimize(dialog)->isChecked());
    QVERIFY(!terminate(dialog)->isChecked());
    QVERIFY(!noChange(dialog)->isChecked());

    // Loading again shows changed installed values, and showing values is
    // no reason to store them.
    QVERIFY(openUiSettings(*m_install, "[Sounds]\nStartJingle=0\n[StartCenter]\nOnORVStart=Terminate\n"));
    dialog.loadValues();
    QVERIFY(!playSound(dialog)->isChecked());
    QVERIFY(terminate(dialog)->isChecked());
    QVERIFY(!minimize(dialog)->isChecked());
    QVERIFY(reopenUiSettings());
    for (const auto& [section, key] : {std::pair{"Sounds", "StartJingle"}, {"StartCenter", "RestoreModus"},
                                       {"Start", "VersionCheckEvery"}, {"StartCenter", "OnORVStart"}}) {
        QVERIFY2(!cNvWinIni::theInstance()->IsInUserGlobalIni(section, key)
                     && !cNvWinIni::theInstance()->IsInUserModusIni(section, key),
                 key);
    }
}

void TestOptionsDialog::unusualValuesAndAccept()
{
    QVERIFY(openUiSettings(*m_install, "[Sounds]\nStartJingle=0\n"
                                       "[StartCenter]\nRestoreModus=2\nOnORVStart=Schliessen\n"
                                       "[Start]\nVersionCheckEvery=7\n"));
    OptionsDialog dialog(nullptr, {});
    QVERIFY(!playSound(dialog)->isChecked());
    QVERIFY(!lastMode(dialog)->isChecked());     // only 1 restores the mode
    QVERIFY(versionCheck(dialog)->isChecked());  // any number but 0 checks
    QVERIFY(!minimize(dialog)->isChecked());
    QVERIFY(!terminate(dialog)->isChecked());
    QVERIFY(!noChange(dialog)->isChecked());

    dialog.accept();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(reopenUiSettings());
    QCOMPARE(stored("Sounds", "StartJingle"), "0");
    QCOMPARE(stored("StartCenter", "RestoreModus"), "0");
    QCOMPARE(stored("Start", "VersionCheckEvery"), "1");
    QCOMPARE(stored("StartCenter", "OnORVStart"), "NoChange");
}

void TestOptionsDialog::changesAreWrittenAtOnceEvenWhenCancelled()
{
    QVERIFY(openUiSettings(*m_install, "[StartCenter]\nOnORVStart=Terminate\n"));
    OptionsDialog dialog(nullptr, {});
    QVERIFY(terminate(dialog)->isChecked());

    playSound(dialog)->click();
    QCOMPARE(stored("Sounds", "StartJingle"), "0");
    versionCheck(dialog)->click();
    QCOMPARE(stored("Start", "VersionCheckEvery"), "0");
    versionCheck(dialog)->click();
    QCOMPARE(stored("Start", "VersionCheckEvery"), "1");
    minimize(dialog)->click();
    QCOMPARE(stored("StartCenter", "OnORVStart"), "Minimize");
    noChange(dialog)->click();
    QCOMPARE(stored("StartCenter", "OnORVStart"), "NoChange");

    dialog.reject();
    QVERIFY(reopenUiSettings());
    QCOMPARE(stored("Sounds", "StartJingle"), "0");
    QCOMPARE(stored("Start", "VersionCheckEvery"), "1");
    QCOMPARE(stored("StartCenter", "OnORVStart"), "NoChange");
    QCOMPARE(stored("StartCenter", "RestoreModus"), "(none)");
}

void TestOptionsDialog::versionTextFromTaxProgramVersionFileAndBundle()
{
    const QString fallbackBuild = QStringLiteral("Start-Center Build-17065");
    QVERIFY(openUiSettings(*m_install, "[StartCenter]\nORVExecutable=ORV.app/Contents/MacOS/ORV\n"));

    // No version information anywhere.
    QCOMPARE(OptionsDialog(nullptr, {}).getVersionString(), fallbackBuild);

    QVERIFY(m_install->writeResource("orv.vif", "[Version]\nVersion=17.0.65\n"));
    {
        OptionsDialog dialog(nullptr, {});
        const QString expected = QStringLiteral("ORV Version 17.0.65\n") + fallbackBuild;
        QCOMPARE(dialog.getVersionString(), expected);
        QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("VersionText"))->text(), expected);
    }

    // The launcher's bundle gives its build; a tax program without a bundle
    // of its own must not take over the launcher's version.
    QVERIFY(m_install->writeFile(QStringLiteral("Start-Center.app/Contents/Info.plist"),
                                 infoPlist("17.0.70.1")));
    QVERIFY(m_install->writeResource("ORV.app/Contents/MacOS/ORV", "#!/bin/sh\n"));
    QCOMPARE(OptionsDialog(nullptr, {}).getVersionString(),
             QStringLiteral("ORV Version 17.0.65\nStart-Center Build-70"));

    // The tax program's own version information comes before the version file.
    QVERIFY(m_install->writeResource("ORV.app/Contents/Info.plist", infoPlist("18.2.31.0")));
    QCOMPARE(OptionsDialog(nullptr, {}).getVersionString(),
             QStringLiteral("ORV Version Build-31\nStart-Center Build-70"));
}

SC_TEST(TestOptionsDialog)
#include "tst_options.moc"
