#include "PageFixture.h"
#include "TestMain.h"

#include "CaseFiles.h"
#include "DirSelectDialog.h"
#include "HoverLabel.h"
#include "ModePages.h"
#include "SCListView.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

// The list-style page of the utility-cost mode in a throw-away installation.
// The working folder and file types are read by the same functions as the
// action page's, which its test covers; here the page's own part.
class TestModePage : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PageInstallation> m_install;
    std::unique_ptr<MessageBoxRecorder> m_boxes;
    std::unique_ptr<ModePage> m_page;

    // The highlighted entry: "new", "last" or "" (none or both).
    QString highlighted() const
    {
        const bool isNew = m_page->getFrameByFunction(ModePage::FunctionNew)->autoFillBackground();
        const bool isLast = m_page->getFrameByFunction(ModePage::FunctionLast)->autoFillBackground();
        return isNew == isLast ? QString() : QLatin1String(isNew ? "new" : "last");
    }
    SCListView* fileView() const { return m_page->findChild<SCListView*>(QStringLiteral("FileView")); }
    // Waits until the file list has read its folder.
    bool listed() const { return QTest::qWaitFor([this] { return !fileView()->isListing(); }); }

    // Picks folder in the folder chooser the page is about to open, and
    // accepts it once the chooser has the folder as its current item.
    void answerFolderChooser(const QString& folder)
    {
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [timer, folder, tries = 0]() mutable {
            auto* dialog = qobject_cast<DirSelectDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            if (tries++ == 0)
                dialog->setDirectory(folder);
            if (dialog->directory() == folder || tries > 300) {
                timer->deleteLater();
                dialog->accept();
            }
        });
        timer->start(10);
    }

private slots:
    void init()
    {
        m_install = std::make_unique<PageInstallation>();
        QVERIFY(m_install->isValid());
        m_boxes = std::make_unique<MessageBoxRecorder>();
        m_page = std::make_unique<ModePageNebenk>();
    }

    void cleanup()
    {
        m_page.reset();
        m_boxes.reset();
        m_install.reset();
    }

    void nameFilters()
    {
        QCOMPARE(CaseFiles::parseNameFilters(QStringLiteral("Steuerfälle|*.a;*.b|Alle|*.*")),
                 (QStringList{"*.a", "*.b", "*.*"}));
        QCOMPARE(CaseFiles::parseNameFilters(QStringLiteral("A||B|*.b")), (QStringList{QString(), "*.b"}));
        // Without "|" there is no pattern; the one empty pattern matches no file.
        QCOMPARE(CaseFiles::parseNameFilters(QString()), QStringList(QString()));
    }

    void lastFileEntryAndHighlight()
    {
        const QString lastFile = m_install->homeData() + QStringLiteral("Müller 2011.est11");
        auto* label = m_page->findChild<QLabel*>(QStringLiteral("lastFileLabel"));
        QFrame* lastEntry = m_page->getFrameByFunction(ModePage::FunctionLast);
        QSignalSpy open(m_page.get(), qOverload<const QString&>(&ModePage::startORVClicked));

        // Nothing recorded: the new file is the next step, in the larger font.
        m_page->workDirChanged();
        QCOMPARE(highlighted(), QStringLiteral("new"));
        QVERIFY(m_page->getLabelByFunction(ModePage::FunctionNew)->font().pointSizeF()
                > m_page->getLabelByFunction(ModePage::FunctionLast)->font().pointSizeF());
        QVERIFY(!lastEntry->isEnabled());
        QCOMPARE(label->text(), QString());
        m_page->openLastFile();
        QCOMPARE(open.takeFirst().at(0).toString(), QString());

        QVERIFY(PageInstallation::createFile(lastFile));
        QVERIFY(m_install->setLastFile(lastFile));
        m_page->workDirChanged();
        QCOMPARE(highlighted(), QStringLiteral("last"));
        QVERIFY(lastEntry->isEnabled());
        QCOMPARE(label->text(), QStringLiteral("»Müller 2011.est11«"));
        m_page->openLastFile();
        QCOMPARE(open.takeFirst().at(0).toString(), lastFile);

        // Gone: one box per disappearance, however often the page refreshes.
        QVERIFY(QFile::remove(lastFile));
        m_page->workDirChanged();
        m_page->workDirChanged();
        QCOMPARE(m_boxes->boxes.size(), 1);
        const QString box = m_boxes->boxes.at(0);
        QVERIFY(box.startsWith(QStringLiteral("Datei nicht gefunden|Ihr zuletzt bearbeiteter Steuerfall »Müller "
                                              "2011.est11« kann nicht gefunden werden!\n(")
                               + lastFile + QStringLiteral(")\n\nDie Datei wurde eventuell gelöscht")));
        QVERIFY(box.endsWith(QStringLiteral("öffnen Sie ihn unter » Weitere Abrechnungen...«.\nAnschließend "
                                            "können Sie Ihren Steuerfall in der Dateiliste auswählen.\n")));
        QCOMPARE(label->text(), QStringLiteral("Datei nicht gefunden!"));
        QVERIFY(!lastEntry->isEnabled());
        QCOMPARE(highlighted(), QStringLiteral("new"));

        QVERIFY(PageInstallation::createFile(lastFile));
        m_page->workDirChanged();
        QVERIFY(QFile::remove(lastFile));
        m_page->workDirChanged();
        QCOMPARE(m_boxes->boxes.size(), 2);

        // Showing the page reads the settings again.
        QVERIFY(PageInstallation::createFile(lastFile));
        QSignalSpy selected(m_page.get(), &ModePage::selectedFile);
        m_page->show();
        QVERIFY(lastEntry->isEnabled());
        QCOMPARE(highlighted(), QStringLiteral("last"));
        QCOMPARE(selected.count(), 1);
    }

    void fileListAndFolderChooser()
    {
        const QString home = m_install->homeData();
        const QString sub = home + QStringLiteral("Häuser");
        QVERIFY(PageInstallation::createFile(sub + QStringLiteral("/Ring 2011.est11")));
        QVERIFY(PageInstallation::createFile(sub + QStringLiteral("/Weg 2011.est11")));
        auto* message = m_page->findChild<QLabel*>(QStringLiteral("noFileLabel"));
        QSignalSpy selected(m_page.get(), &ModePage::selectedFile);
        QSignalSpy open(m_page.get(), qOverload<const QString&>(&ModePage::startORVClicked));

        // Nothing listed: the message says why, and nothing can be opened.
        m_page->workDirChanged();
        QVERIFY(listed());
        QVERIFY(fileView()->isHidden());
        QVERIFY(!message->isHidden());
        QCOMPARE(message->text(), QStringLiteral("Aktueller Ordner:\n»") + QDir::cleanPath(home)
                                      + QStringLiteral("«\n\nFür den aktuellen Programm-Modus haben Sie in diesem "
                                                       "Ordner bisher keine Steuerfälle gespeichert."));
        m_page->openSelectedFile();
        QCOMPARE(open.count(), 0);

        answerFolderChooser(sub);
        m_page->selectDirectory();
        QVERIFY(listed());
        QCOMPARE(PageInstallation::setting("Files", "LastWorkDir"), std::string("<HomeDataDir>/H\xE4user"));
        QCOMPARE(fileView()->topLevelItemCount(), 2);
        QVERIFY(message->isHidden());
        QCOMPARE(m_page->findChild<QLabel*>(QStringLiteral("folderLabel"))->text(),
                 QStringLiteral("Verzeichnis: ") + sub);

        fileView()->setCurrentItem(fileView()->topLevelItem(1));
        QCOMPARE(selected.count(), 1);
        QCOMPARE(selected.at(0).at(0).toString(), sub + QStringLiteral("/Weg 2011"));
        m_page->openSelectedFile();
        QCOMPARE(open.takeFirst().at(0).toString(), sub + QStringLiteral("/Weg 2011"));
    }

    void hoverLabelClicksOnlyAfterItsOwnPress()
    {
        HoverLabel label(QStringLiteral("Neue Nebenkostenabrechnung"), nullptr, 3);
        label.resize(200, 20);
        QSignalSpy clicked(&label, qOverload<>(&HoverLabel::clicked));
        QSignalSpy clickedNumber(&label, qOverload<int>(&HoverLabel::clicked));

        QTest::mouseRelease(&label, Qt::LeftButton);
        QCOMPARE(clicked.count(), 0);
        QTest::mousePress(&label, Qt::LeftButton);
        QTest::mouseRelease(&label, Qt::LeftButton);
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(clickedNumber.at(0).at(0).toInt(), 3);
        // The mark is cleared on release: a second release alone does nothing.
        QTest::mouseRelease(&label, Qt::LeftButton);
        QCOMPARE(clicked.count(), 1);
    }
};

SC_TEST(TestModePage)
#include "tst_modepage.moc"
