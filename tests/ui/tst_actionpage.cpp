#include "PageFixture.h"
#include "TestMain.h"

#include "ActionPage.h"
#include "CaseFiles.h"
#include "ModePages.h"
#include "SCListView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

// The action page of the income-tax mode in a throw-away installation; the
// settings files are changed on disk between refreshes, as the tax program
// does while it runs.
class TestActionPage : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PageInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
    std::unique_ptr<ActionPage> m_page;
    QList<FileDialogRequest> m_dialogs;
    QString m_dialogAnswer;
    CrossPlatformApi::FileDialogHandler m_previousDialogHandler;

    // The row of further actions as "button|button|button", "|" standing
    // for a stretch.
    QString furtherActions() const
    {
        auto* row = m_page->findChild<QHBoxLayout*>(QStringLiteral("furtherActions"));
        QStringList items;
        for (int i = 0; i < row->count(); ++i)
            items << (row->itemAt(i)->widget() ? row->itemAt(i)->widget()->objectName() : QString());
        return items.join(QLatin1Char('|'));
    }
    bool isRecommended(ActionPage::ModeAction action) const
    {
        auto* layout = m_page->findChild<QHBoxLayout*>(QStringLiteral("recommendedAction"));
        return m_page->recommendedAction() == action && layout->indexOf(m_page->actionButton(action)) >= 0;
    }
    QString label(const char* name) const { return m_page->findChild<QLabel*>(QLatin1String(name))->text(); }
    SCListView* fileView() const { return m_page->findChild<SCListView*>(QStringLiteral("fileView")); }
    // Waits until the file list has read its folder.
    bool listed() const { return QTest::qWaitFor([this] { return !fileView()->isListing(); }); }
    QPushButton* button(const char* name) const { return m_page->findChild<QPushButton*>(QLatin1String(name)); }
    std::string lastWorkDir() const { return PageInstallation::setting("Files", "LastWorkDir"); }

private slots:
    void init()
    {
        m_install = std::make_unique<PageInstallation>();
        QVERIFY(m_install->isValid());
        m_boxes = std::make_unique<MessageBoxRecorder>();
        m_dialogs.clear();
        m_dialogAnswer.clear();
        m_previousDialogHandler = CrossPlatformApi::setFileDialogHandler([this](const FileDialogRequest& request) {
            m_dialogs << request;
            return m_dialogAnswer;
        });
        m_page = std::make_unique<ModePageNormal>();
    }

    void cleanup()
    {
        m_page.reset();
        CrossPlatformApi::setFileDialogHandler(m_previousDialogHandler);
        m_boxes.reset();
        m_install.reset();
    }

    void recommendationFollowsTheSettings()
    {
        const QString home = m_install->homeData();
        const QString lastFile = home + QStringLiteral("Lea Schäfer 2011.est11");
        const QString oldFile = home + QStringLiteral("Vorjahr/Lea Schäfer 2010.est10");
        QVERIFY(PageInstallation::createFile(lastFile));
        QVERIFY(PageInstallation::createFile(oldFile));
        QToolButton* convert = m_page->actionButton(ActionPage::ActionConvert);
        QToolButton* last = m_page->actionButton(ActionPage::ActionLast);
        QSignalSpy convertPlain(m_page.get(), qOverload<>(&ActionPage::startConvertClicked));
        QSignalSpy convertFile(m_page.get(), qOverload<const QString&>(&ActionPage::startConvertClicked));
        QSignalSpy newFile(m_page.get(), qOverload<>(&ActionPage::startORVClicked));

        // C: nothing recorded in either year.
        m_page->updateUI();
        QVERIFY(isRecommended(ActionPage::ActionNew));
        QCOMPARE(label("comment"), QStringLiteral("Erstellen Sie eine Einkommensteuer-Erklärung für das Jahr 2011."));
        QCOMPARE(furtherActions(), QStringLiteral("actionConvert||actionLast||actionOther"));
        QVERIFY(!last->isEnabled());
        convert->click();
        QCOMPARE(convertPlain.count(), 1);
        m_page->actionButton(ActionPage::ActionNew)->click();
        QCOMPARE(newFile.count(), 1);

        // B: last year's program recorded a case file of its year.
        QVERIFY(m_install->replaceSettings(m_install->lastYearModeSettings(),
                                           "[MRUFiles]\r\n0=<HomeDataDir>/Vorjahr/Lea Sch\xE4" "fer 2011.est10\r\n"));
        m_page->updateUI();
        QVERIFY(isRecommended(ActionPage::ActionConvert));
        QCOMPARE(label("comment"), QStringLiteral("Es wurde ein Steuerfall aus dem Vorjahr gefunden.<br>Übernehmen "
                                                  "Sie die Daten vom letzten Jahr in eine neue Steuererklärung für "
                                                  "2011: ") + oldFile);
        QCOMPARE(furtherActions(), QStringLiteral("actionNew||actionLast||actionOther"));
        QVERIFY(!last->isEnabled());
        convert->click();
        QCOMPARE(convertFile.count(), 1);
        QCOMPARE(convertFile.takeFirst().at(0).toString(), oldFile);
        QCOMPARE(convertPlain.count(), 1);

        // A: this year's last file exists; the takeover is the program's own again.
        QVERIFY(m_install->setLastFile(lastFile));
        m_page->updateUI();
        QVERIFY(isRecommended(ActionPage::ActionLast));
        QCOMPARE(label("comment"), QStringLiteral("Öffnen Sie den letzten Steuerfall, an dem sie gearbeitet haben: "
                                                  "<br><br>Datei: <b>Lea Schäfer 2011.est11</b><font size=-1><br>"
                                                  "Verzeichnis: ") + QDir::cleanPath(home) + QStringLiteral("</font>"));
        QCOMPARE(furtherActions(), QStringLiteral("actionNew||actionConvert||actionOther"));
        QVERIFY(last->isEnabled());
        convert->click();
        QCOMPARE(convertPlain.count(), 2);
        QCOMPARE(convertFile.count(), 0);

        // The file vanishes: back to B; then last year's file vanishes too: C.
        QVERIFY(QFile::remove(lastFile));
        m_page->updateUI();
        QVERIFY(isRecommended(ActionPage::ActionConvert));
        QVERIFY(!last->isEnabled());
        QVERIFY(QFile::remove(oldFile));
        m_page->updateUI();
        QVERIFY(isRecommended(ActionPage::ActionNew));
        QCOMPARE(furtherActions(), QStringLiteral("actionConvert||actionLast||actionOther"));

        // Names with markup characters are shown, not interpreted.
        const QString oddFile = home + QStringLiteral("Fall <i & Co.est11");
        QVERIFY(PageInstallation::createFile(oddFile));
        QVERIFY(m_install->setLastFile(oddFile));
        m_page->updateUI();
        QVERIFY(label("comment").contains(QStringLiteral("<b>Fall &lt;i &amp; Co.est11</b>")));
    }

    void previousYearFile()
    {
        const QString home = m_install->homeData();
        const auto lastYear = [this](const QByteArray& path) {
            return m_install->replaceSettings(m_install->lastYearModeSettings(), "[MRUFiles]\r\n0=" + path + "\r\n");
        };
        // No settings of last year's program.
        QCOMPARE(m_page->getFilePathToConvert(), QString());

        // Every "2011" of the recorded path becomes "2010"; the file must exist.
        QVERIFY(lastYear(home.toLatin1() + "2011/Fall 2011.est10"));
        QCOMPARE(m_page->getFilePathToConvert(), QString());
        QVERIFY(PageInstallation::createFile(home + QStringLiteral("2010/Fall 2010.est10")));
        QCOMPARE(m_page->getFilePathToConvert(), home + QStringLiteral("2010/Fall 2010.est10"));

        // A path without the year is used as it is, made absolute.
        QVERIFY(PageInstallation::createFile(home + QStringLiteral("Alt/Fall.est10")));
        QVERIFY(lastYear("<HomeDataDir>//Alt/../Alt/Fall.est10"));
        QCOMPARE(m_page->getFilePathToConvert(), home + QStringLiteral("Alt/Fall.est10"));

        // This year's own settings never count as last year's.
        QVERIFY(lastYear(""));
        QVERIFY(m_install->setLastFile(home + QStringLiteral("Alt/Fall.est10")));
        QCOMPARE(m_page->getFilePathToConvert(), QString());
    }

    // Which files are listed at all (patterns, read-only files) is the list's
    // own test; here the page's part: the mode's patterns, re-read on every
    // refresh, the buttons and the empty-folder text.
    void fileListShowsTheFilesOfTheMode()
    {
        const QString home = m_install->homeData();
        const QString kohler = home + QStringLiteral("Köhler 2011.est11");
        QVERIFY(PageInstallation::createFile(kohler));
        QVERIFY(PageInstallation::createFile(home + QStringLiteral("Fall.2011.est11")));
        QVERIFY(PageInstallation::createFile(home + QStringLiteral("Notiz.txt")));
        QSignalSpy open(m_page.get(), qOverload<const QString&>(&ActionPage::startORVClicked));

        m_page->updateUI();
        QVERIFY(listed());
        QCOMPARE(fileView()->fileNames(), (QStringList{"Fall.2011.est11", "Köhler 2011.est11"}));
        QCOMPARE(label("folderLabel"), QStringLiteral("Verzeichnis: ") + QDir::cleanPath(home));
        QVERIFY(button("overviewButton")->isEnabled());
        QVERIFY(!button("openButton")->isEnabled());   // nothing selected yet

        // A double click opens the row's file, extension included.
        QTreeWidgetItem* row = fileView()->topLevelItem(1);
        fileView()->setCurrentItem(row);
        QVERIFY(button("openButton")->isEnabled());
        emit fileView()->itemDoubleClicked(row, 0);
        button("openButton")->click();
        QCOMPARE(open.count(), 2);
        QCOMPARE(open.at(0).at(0).toString(), kohler);
        QCOMPARE(open.at(1).at(0).toString(), kohler);

        // Typing in the search field narrows the rows; the page keeps working
        // on them, and a search that finds nothing is not an empty folder.
        auto* search = m_page->findChild<QLineEdit*>(QStringLiteral("searchField"));
        QVERIFY(!search->acceptDrops());
        QTest::keyClicks(search, QStringLiteral("KOHLER"));
        QVERIFY(listed());
        QCOMPARE(fileView()->topLevelItemCount(), 1);
        emit fileView()->itemDoubleClicked(fileView()->topLevelItem(0), 0);
        QCOMPARE(open.count(), 3);
        QCOMPARE(open.at(2).at(0).toString(), kohler);
        QTest::keyClicks(search, QStringLiteral("x"));
        QVERIFY(listed());
        QCOMPARE(fileView()->topLevelItemCount(), 0);
        QVERIFY(!fileView()->isHidden());
        search->clear();
        QVERIFY(listed());
        QCOMPARE(fileView()->topLevelItemCount(), 2);

        QVERIFY(m_install->replaceSettings(m_install->userModeSettings(), "[FileExtensions]\r\nOpen=Alle|*.*\r\n"));
        m_page->updateUI();
        QVERIFY(listed());
        QCOMPARE(fileView()->topLevelItemCount(), 3);

        // A file-type string without "|" names no pattern: nothing is listed.
        QVERIFY(m_install->replaceSettings(m_install->userModeSettings(), "[FileExtensions]\r\nOpen=*.est11\r\n"));
        m_page->updateUI();
        QVERIFY(listed());
        QCOMPARE(fileView()->topLevelItemCount(), 0);
        QVERIFY(fileView()->isHidden());
        QVERIFY(!m_page->findChild<QLabel*>(QStringLiteral("emptyFolderLabel"))->isHidden());
        QCOMPARE(label("emptyFolderLabel"), QStringLiteral("Im Verzeichnis »") + QDir::cleanPath(home)
                                                + QStringLiteral("« konnten keine Dateien gefunden werden."));
        QVERIFY(!button("openButton")->isEnabled());
        QVERIFY(!button("overviewButton")->isEnabled());
    }

    void folderChangeIsStoredRelativeToHomeData()
    {
        const QString home = m_install->homeData();
        const QString archive = home + QStringLiteral("Archiv 2009");
        QVERIFY(PageInstallation::createFile(archive + QStringLiteral("/Alt.est11")));
        m_page->updateUI();
        QVERIFY(listed());
        QCOMPARE(fileView()->topLevelItemCount(), 0);

        // Cancelled: nothing changes.
        m_page->findChild<QToolButton*>(QStringLiteral("changeFolderButton"))->click();
        QCOMPARE(m_dialogs.size(), 1);
        QCOMPARE(m_dialogs.at(0).kind, FileDialogRequest::ExistingDirectory);
        QCOMPARE(m_dialogs.at(0).directory, home);
        QCOMPARE(lastWorkDir(), std::string());

        m_dialogAnswer = archive;
        m_page->changeFolder();
        QVERIFY(listed());
        QCOMPARE(lastWorkDir(), std::string("<HomeDataDir>/Archiv 2009"));
        QCOMPARE(m_page->lastWorkDir(), archive + QLatin1Char('/'));
        QCOMPARE(fileView()->fileNames(), QStringList(QStringLiteral("Alt.est11")));

        // Outside the home data folder the path is kept absolute.
        const QString elsewhere = m_install->install().root() + QStringLiteral("/Stick");
        QVERIFY(QDir().mkpath(elsewhere));
        m_dialogAnswer = elsewhere;
        m_page->changeFolder();
        QVERIFY(listed());
        QCOMPARE(fromLatin1(lastWorkDir()), elsewhere);

        // A working folder that disappears gives the home data folder.
        QVERIFY(QDir(elsewhere).removeRecursively());
        m_page->updateUI();
        QCOMPARE(m_page->lastWorkDir(), home);
        QCOMPARE(label("folderLabel"), QStringLiteral("Verzeichnis: ") + QDir::cleanPath(home));

        m_dialogAnswer = archive;
        m_page->changeFolder();
        m_page->findChild<QToolButton*>(QStringLiteral("homeButton"))->click();
        QVERIFY(listed());
        QCOMPARE(lastWorkDir(), std::string("<SYS_MYDOCUMENTS>/Steuerf\xE4lle"));
        QCOMPARE(fileView()->topLevelItemCount(), 0);
    }

    void openingNeverSendsAStaleName()
    {
        const QString home = m_install->homeData();
        const QString lastFile = home + QStringLiteral("Zuletzt.est11");
        QVERIFY(PageInstallation::createFile(lastFile));
        QVERIFY(PageInstallation::createFile(home + QStringLiteral("B.est11")));
        QVERIFY(m_install->setLastFile(lastFile));
        QSignalSpy open(m_page.get(), qOverload<const QString&>(&ActionPage::startORVClicked));
        m_page->updateUI();

        // Without a current row the open button means the last file.
        m_page->openCurrentItem();
        QCOMPARE(open.takeFirst().at(0).toString(), lastFile);

        // The other-file dialog gets the file types as Qt's dialogs read them.
        QVERIFY(m_install->replaceSettings(m_install->userModeSettings(),
                                           "[MRUFiles]\r\n0=" + lastFile.toLatin1()
                                               + "\r\n[FileExtensions]\r\nOpen=A|*.x|B|*.*\r\n"));
        m_page->actionButton(ActionPage::ActionOther)->click();
        QCOMPARE(m_dialogs.size(), 1);
        QCOMPARE(m_dialogs.at(0).kind, FileDialogRequest::OpenFile);
        QCOMPARE(m_dialogs.at(0).filter, QStringLiteral("A (*.x);;B (*.*)"));
        QCOMPARE(CaseFiles::dialogFilter(QStringLiteral("Steuerfälle|*.a;*.b|Alle|*.*")),
                 QStringLiteral("Steuerfälle (*.a *.b);;Alle (*.*)"));
        QCOMPARE(CaseFiles::dialogFilter(QStringLiteral("*.*")), QStringLiteral("*.*"));
        QCOMPARE(m_dialogs.at(0).directory, home);
        QCOMPARE(open.count(), 0);   // cancelled
        m_dialogAnswer = home + QStringLiteral("Gewählt.x");
        m_page->openOtherFile();
        QCOMPARE(open.takeFirst().at(0).toString(), m_dialogAnswer);

        // A row whose file was deleted after the refresh sends nothing; the list
        // is rebuilt instead.
        QVERIFY(m_install->setLastFile(lastFile));
        m_page->updateUI();
        QVERIFY(listed());
        QTreeWidgetItem* row = fileView()->topLevelItem(0);
        QCOMPARE(row->text(0), QStringLiteral("B"));
        QVERIFY(QFile::remove(home + QStringLiteral("B.est11")));
        m_page->openTreeItem(row, 0);
        QVERIFY(listed());
        QCOMPARE(open.count(), 0);
        QCOMPARE(fileView()->topLevelItemCount(), 1);
        m_page->openTreeItem(fileView()->topLevelItem(0), 0);
        QCOMPARE(open.takeFirst().at(0).toString(), lastFile);

        // The last file deleted after the refresh: the page moves on instead.
        QVERIFY(QFile::remove(lastFile));
        m_page->actionButton(ActionPage::ActionLast)->click();
        QCOMPARE(open.count(), 0);
        QVERIFY(m_page->recommendedAction() == ActionPage::ActionNew);
    }
};

SC_TEST(TestActionPage)
#include "tst_actionpage.moc"
