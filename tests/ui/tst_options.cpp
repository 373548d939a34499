#include "OptionsDialog.h"
#include "TestMain.h"
#include "UiSettings.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTest>

#include <memory>
#include <utility>

namespace {

// The texts of the checked boxes and radio buttons, in the dialog's order.
QStringList checkedTexts(const QWidget& dialog)
{
    QStringList texts;
    for (const QAbstractButton* button : dialog.findChildren<QAbstractButton*>())
        if (button->isCheckable() && button->isChecked())
            texts << button->text();
    return texts;
}

void click(const QWidget& dialog, const QString& text)
{
    for (QAbstractButton* button : dialog.findChildren<QAbstractButton*>())
        if (button->text() == text)
            return button->click();
    QFAIL(qPrintable(text));
}

std::string stored(const char* section, const char* key)
{
    return cNvWinIni::theInstance()->GetString(section, key, "(none)");
}

QByteArray infoPlist(const char* version)
{
    return QByteArray("<plist version=\"1.0\"><dict><key>CFBundleVersion</key><string>") + version
           + "</string></dict></plist>\n";
}

const QString sound = QStringLiteral("Sound abspielen");
const QString lastMode = QStringLiteral("zuletzt aktiven Modus auswählen");
const QString versionCheck = QStringLiteral("Versionsprüfung durchführen");
const QString minimize = QStringLiteral("Start-Center verbergen");
const QString terminate = QStringLiteral("Start-Center beenden");
const QString noChange = QStringLiteral("Start-Center nicht verändern");

} // namespace

// The options dialog: what it shows for the stored settings and what it writes.
class TestOptionsDialog : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TempInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;

private slots:
    void init()
    {
        m_install = std::make_unique<TempInstallation>();
        m_boxes = std::make_unique<MessageBoxRecorder>();
    }

    void cleanup()
    {
        resetSettingsSingletons();
        QVERIFY2(m_boxes->boxes.isEmpty(), qPrintable(m_boxes->boxes.join(QLatin1Char('\n'))));
        m_boxes.reset();
        m_install.reset();
    }

    void missingSettingsShowDefaultsWithoutWriting()
    {
        QVERIFY(openUiSettings(*m_install));
        OptionsDialog dialog(nullptr, {});
        QCOMPARE(checkedTexts(dialog), (QStringList{sound, lastMode, versionCheck, minimize}));

        // Loading again shows changed installed values; showing values is no
        // reason to store them.
        QVERIFY(openUiSettings(*m_install, "[Sounds]\nStartJingle=0\n[StartCenter]\nOnORVStart=Terminate\n"));
        dialog.loadValues();
        QCOMPARE(checkedTexts(dialog), (QStringList{lastMode, versionCheck, terminate}));
        QVERIFY(openInstalledSettings());
        for (const auto& [section, key] : {std::pair{"Sounds", "StartJingle"}, {"StartCenter", "RestoreModus"},
                                           {"Start", "VersionCheckEvery"}, {"StartCenter", "OnORVStart"}})
            QVERIFY2(!cNvWinIni::theInstance()->IsInUserGlobalIni(section, key)
                         && !cNvWinIni::theInstance()->IsInUserModusIni(section, key),
                     key);
    }

    void unusualValuesAndAccept()
    {
        QVERIFY(openUiSettings(*m_install, "[StartCenter]\nRestoreModus=2\nOnORVStart=Schliessen\n"
                                           "[Start]\nVersionCheckEvery=7\n"));
        OptionsDialog dialog(nullptr, {});
        // Only 1 restores the mode, any number but 0 checks the version, and an
        // unknown behaviour selects no radio button.
        QCOMPARE(checkedTexts(dialog), (QStringList{sound, versionCheck}));

        dialog.accept();
        QVERIFY(openInstalledSettings());
        QCOMPARE(stored("Sounds", "StartJingle"), "1");
        QCOMPARE(stored("StartCenter", "RestoreModus"), "0");
        QCOMPARE(stored("Start", "VersionCheckEvery"), "1");
        QCOMPARE(stored("StartCenter", "OnORVStart"), "NoChange");
    }

    void changesAreWrittenAtOnceEvenWhenCancelled()
    {
        QVERIFY(openUiSettings(*m_install));
        OptionsDialog dialog(nullptr, {});
        click(dialog, sound);
        QCOMPARE(stored("Sounds", "StartJingle"), "0");
        click(dialog, versionCheck);
        QCOMPARE(stored("Start", "VersionCheckEvery"), "0");
        click(dialog, noChange);
        QCOMPARE(stored("StartCenter", "OnORVStart"), "NoChange");

        // Cancelling takes nothing back, and untouched options stay unwritten.
        dialog.reject();
        QVERIFY(openInstalledSettings());
        QCOMPARE(stored("Sounds", "StartJingle"), "0");
        QCOMPARE(stored("StartCenter", "RestoreModus"), "(none)");
    }

    void versionTextFromTaxProgramVersionFileAndBundle()
    {
        QVERIFY(openUiSettings(*m_install, "[StartCenter]\nORVExecutable=ORV.app/Contents/MacOS/ORV\n"));
        QCOMPARE(OptionsDialog(nullptr, {}).getVersionString(), QStringLiteral("Start-Center Build-17065"));

        QVERIFY(m_install->writeResource("orv.vif", "[Version]\nVersion=17.0.65\n"));
        QCOMPARE(OptionsDialog(nullptr, {}).findChild<QLabel*>(QStringLiteral("VersionText"))->text(),
                 QStringLiteral("ORV Version 17.0.65\nStart-Center Build-17065"));

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
};

SC_TEST(TestOptionsDialog)
#include "tst_options.moc"
