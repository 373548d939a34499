#include "CrossPlatformApi.h"
#include "DirSelectDialog.h"
#include "SCListView.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QProcess>
#include <QLabel>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QTreeView>

#include <ctime>

#include <fcntl.h>
#include <unistd.h>

class FileListTest : public QObject
{
    Q_OBJECT

private:
    bool writeCaseFile(const QString& name, const QDateTime& changed = QDateTime::currentDateTime())
    {
        QFile file(m_folder + name);
        return file.open(QIODevice::WriteOnly) && file.write("<Person>x</Person>") > 0 && file.flush()
            && file.setFileTime(changed, QFileDevice::FileModificationTime);
    }

    static QStringList column(const SCListView& list, int column)
    {
        QStringList texts;
        for (int row = 0; row < list.topLevelItemCount(); ++row)
            texts.append(list.topLevelItem(row)->text(column));
        return texts;
    }

    static bool listed(const SCListView& list)
    {
        return QTest::qWaitFor([&] { return !list.isListing(); });
    }

    TempInstallation m_installation;
    QString m_folder;

private slots:
    // The chooser's colour lookup may report the missing colour file.
    void initTestCase() { CrossPlatformApi::setMessageBoxHandler([](auto&) { return MessageBoxAnswer{}; }); }

    void cleanupTestCase() { CrossPlatformApi::setMessageBoxHandler({}); }

    void init()
    {
        m_folder = m_installation.root() + QStringLiteral("/Steuerfälle/");
        QDir(m_folder).removeRecursively();
        QVERIFY(QDir().mkpath(m_folder));
    }

    void listsCaseFilesByName()
    {
        // A zone with summer time: both offsets must come out right.
        const bool hadZone = qEnvironmentVariableIsSet("TZ");
        const QByteArray zone = qgetenv("TZ");
        qputenv("TZ", "Europe/Berlin");
        tzset();
        const auto restoreZone = qScopeGuard([&] {
            hadZone ? qputenv("TZ", zone) : qunsetenv("TZ");
            tzset();
        });

        QVERIFY(writeCaseFile(QStringLiteral("b.est11"), QDateTime(QDate(2012, 1, 9), QTime(7, 5))));
        QVERIFY(writeCaseFile(QStringLiteral("Fall.2011.est11"), QDateTime(QDate(2011, 7, 30), QTime(23, 59))));
        QVERIFY(writeCaseFile(QStringLiteral("A.est11"), QDateTime(QDate(2011, 3, 27), QTime(3, 30))));
        QVERIFY(writeCaseFile(QStringLiteral("notiz.txt")));
        QVERIFY(QDir(m_folder).mkdir(QStringLiteral("Ordner.est11")));
        // Files the tax program cannot save are left out (the superuser can save any).
        QVERIFY(writeCaseFile(QStringLiteral("nur lesen.est11")));
        QVERIFY(QFile::setPermissions(m_folder + QStringLiteral("nur lesen.est11"), QFile::ReadOwner));
        const bool superuser = geteuid() == 0;

        SCListView list(nullptr);
        list.init(m_folder, {QStringLiteral("*.est11")});
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0).mid(0, 3), (QStringList{"A", "b", "Fall.2011"}));
        QCOMPARE(column(list, 1).mid(0, 3), (QStringList{"27.03.2011 03:30", "09.01.2012 07:05", "30.07.2011 23:59"}));
        QCOMPARE(list.fileNames(), (QStringList{"A.est11", "b.est11", "Fall.2011.est11"}
                                    + (superuser ? QStringList{"nur lesen.est11"} : QStringList())));
        list.setCurrentItem(list.topLevelItem(2));
        QCOMPARE(list.selectedFileName(), m_folder + QStringLiteral("Fall.2011"));
    }

    // Names as an archive from other systems holds them: Latin-1 bytes, a
    // line break; hidden files and a link that loops are not case files.
    void listsEveryNameTheFolderHolds()
    {
        const QByteArray folder = QFile::encodeName(m_folder);
        // Qt's own removal of the folder does not see that name.
        const auto removeLatin1 = qScopeGuard([&] { unlink((folder + "M\xFCller 2011.est11").constData()); });
        for (const QByteArray& name : {QByteArray("M\xFCller 2011.est11"), QByteArray("Zeile\nzwei.est11"),
                                       QByteArray(".versteckt.est11")}) {
            const int fd = open((folder + name).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
            QVERIFY(fd >= 0);
            close(fd);
        }
        QVERIFY(symlink("schleife.est11", (folder + "schleife.est11").constData()) == 0);

        SCListView list(nullptr);
        list.init(m_folder, {QStringLiteral("*.est11")});
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), (QStringList{"Müller 2011", "Zeile\nzwei"}));
        QVERIFY(list.entries().at(0).latin1Name);
        QCOMPARE(list.entries().at(0).localName, QByteArray("M\xFCller 2011.est11"));
        QVERIFY(!list.entries().at(1).latin1Name);
    }

    // A newer refresh overtakes an older one: rows the older one delivered
    // are dropped, never mixed in, and a refresh whose folder cannot be read
    // yet (a slow mount, here a busy worker) returns at once.
    void newerRefreshOvertakesAnOlderOne()
    {
        const QString other = m_folder + QStringLiteral("anderer/");
        QVERIFY(QDir().mkpath(other));
        for (int i = 0; i < 1500; ++i)
            QVERIFY(writeCaseFile(QStringLiteral("alt %1.est11").arg(i)));
        QVERIFY(writeCaseFile(QStringLiteral("anderer/neu.est11")));

        SCListView list(nullptr);
        list.init(m_folder, {QStringLiteral("*.est11")});
        QThreadPool::globalInstance()->waitForDone();   // its rows now wait in the event queue
        list.setRootDir(other);
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), QStringList{"neu"});
        list.setCurrentItem(list.topLevelItem(0));

        const int threads = QThreadPool::globalInstance()->maxThreadCount();
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QSemaphore slowMount;
        QThreadPool::globalInstance()->start([&] { slowMount.acquire(); });
        const auto restore = qScopeGuard([&] {
            slowMount.release();
            QThreadPool::globalInstance()->setMaxThreadCount(threads);
        });

        // The same folder again: the rows stay until the new ones arrive, and
        // the current file stays current.
        QVERIFY(writeCaseFile(QStringLiteral("anderer/a.est11")));
        list.updateList();
        QVERIFY(list.isListing());
        QCOMPARE(column(list, 0), QStringList{"neu"});
        slowMount.release();
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), (QStringList{"a", "neu"}));
        QCOMPARE(list.currentItem()->text(0), QStringLiteral("neu"));

        // Another folder drops the rows at once; of three refreshes queued
        // behind a slow one only the last fills the list.
        QThreadPool::globalInstance()->start([&] { slowMount.acquire(); });
        list.setRootDir(m_folder);
        list.updateList();
        QCOMPARE(list.topLevelItemCount(), 0);
        list.setRootDir(other);
        slowMount.release();
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), (QStringList{"a", "neu"}));
    }

    void rebuildsOnlyWhenAsked()
    {
        QVERIFY(writeCaseFile(QStringLiteral("b.est11")));
        SCListView list(nullptr);
        list.setNameFilters({QStringLiteral("*.est11")});
        list.setRootDir(m_folder);
        QVERIFY(listed(list));
        list.setCurrentItem(list.topLevelItem(0));

        // The same folder again keeps rows and selection, and the names stay
        // those of the rows, so that a row's index finds its own file.
        QVERIFY(writeCaseFile(QStringLiteral("a.est11")));
        list.setRootDir(m_folder);
        QCOMPARE(list.selectedFileName(), m_folder + QStringLiteral("b"));
        QCOMPARE(list.fileNames(), QStringList{"b.est11"});

        list.updateList();
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), (QStringList{"a", "b"}));
        QCOMPARE(list.fileNames(), (QStringList{"a.est11", "b.est11"}));

        // init with the same folder takes new patterns.
        list.init(m_folder, {QStringLiteral("b.*")});
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), QStringList{"b"});

        // A vanished folder lists nothing.
        QVERIFY(QDir(m_folder).removeRecursively());
        list.updateList();
        QVERIFY(listed(list));
        QCOMPARE(list.topLevelItemCount(), 0);
        QCOMPARE(list.fileNames(), QStringList());
    }

    // Files another program writes or removes show up without a refresh by
    // hand, a burst of them in few refreshes; an unwatched list stays as it is.
    void followsChangesOfTheWatchedFolder()
    {
        QVERIFY(writeCaseFile(QStringLiteral("a.est11")));
        SCListView list(nullptr);
        list.setWatching(true);
        list.init(m_folder, {QStringLiteral("*.est11")});
        QVERIFY(listed(list));
        QSignalSpy refreshes(&list, &SCListView::listingFinished);

        QProcess writer;
        writer.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"),
                     QStringLiteral("cd \"$1\" && for i in 1 2 3 4 5 6 7 8 9; do echo x > neu$i.est11; done; rm a.est11"),
                     QStringLiteral("sh"), m_folder});
        QVERIFY(writer.waitForFinished(5000));
        QTRY_COMPARE(list.fileNames().size(), 9);
        QVERIFY(!list.fileNames().contains(QStringLiteral("a.est11")));
        QTest::qWait(400);
        QVERIFY2(refreshes.size() <= 2, QByteArray::number(refreshes.size()));

        list.setWatching(false);
        QVERIFY(writeCaseFile(QStringLiteral("spaet.est11")));
        QTest::qWait(400);
        QCOMPARE(list.fileNames().size(), 9);
    }

    // A header click sorts by that column, a second one reverses; the
    // current file stays current, and the folder's order stays the names'.
    void sortsByHeaderClick()
    {
        QVERIFY(writeCaseFile(QStringLiteral("b.est11"), QDateTime(QDate(2011, 1, 1), QTime(8, 0))));
        QVERIFY(writeCaseFile(QStringLiteral("C.est11"), QDateTime(QDate(2010, 1, 1), QTime(8, 0))));
        QVERIFY(writeCaseFile(QStringLiteral("a.est11"), QDateTime(QDate(2012, 1, 1), QTime(8, 0))));
        SCListView list(nullptr);
        list.resize(400, 300);
        list.show();
        list.init(m_folder, {QStringLiteral("*.est11")});
        QVERIFY(listed(list));
        list.setCurrentItem(list.topLevelItem(1));

        const auto clickHeader = [&](int section) {
            QHeaderView* header = list.header();
            const QPoint at(header->sectionViewportPosition(section) + 5, header->height() / 2);
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
            return listed(list);
        };
        QVERIFY(clickHeader(1));
        QCOMPARE(column(list, 0), (QStringList{"C", "b", "a"}));
        QCOMPARE(list.selectedFileName(), m_folder + QStringLiteral("b"));
        QVERIFY(clickHeader(1));
        QCOMPARE(column(list, 0), (QStringList{"a", "b", "C"}));
        QCOMPARE(list.entryOf(list.topLevelItem(2))->name, QStringLiteral("C.est11"));
        QVERIFY(clickHeader(0));
        QCOMPARE(column(list, 0), (QStringList{"a", "b", "C"}));
        QVERIFY(clickHeader(0));
        QCOMPARE(column(list, 0), (QStringList{"C", "b", "a"}));
        QCOMPARE(list.fileNames(), (QStringList{"a.est11", "b.est11", "C.est11"}));

        // A refresh keeps the chosen order.
        QVERIFY(writeCaseFile(QStringLiteral("d.est11")));
        list.updateList();
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), (QStringList{"d", "C", "b", "a"}));
    }

    // Case, umlauts and "ß" do not matter; the rows found are the files'.
    void searchIgnoresCaseAndAccents()
    {
        for (const char* name : {"Müller 2011.est11", "Mueller.est11", "Straße 4.est11", "Mullerova.est11", "x.est11"})
            QVERIFY(writeCaseFile(QString::fromUtf8(name)));
        SCListView list(nullptr);
        list.init(m_folder, {QStringLiteral("*.est11")});
        QVERIFY(listed(list));

        for (const char* text : {"muller", "müller", "MÜLLER", "Mu\xCC\x88ller"}) {
            list.setSearchText(QString::fromUtf8(text));
            QVERIFY(listed(list));
            QCOMPARE(column(list, 0), (QStringList{"Mullerova", "Müller 2011"}));
        }
        list.setSearchText(QStringLiteral("STRASSE"));
        QVERIFY(listed(list));
        QCOMPARE(column(list, 0), QStringList{"Straße 4"});
        QCOMPARE(list.entryOf(list.topLevelItem(0))->name, QStringLiteral("Straße 4.est11"));

        list.setSearchText(QStringLiteral("nichts"));
        QVERIFY(listed(list));
        QCOMPARE(list.topLevelItemCount(), 0);
        QCOMPARE(list.fileCount(), 5);
        list.setSearchText(QString());
        QVERIFY(listed(list));
        QCOMPARE(list.topLevelItemCount(), 5);
    }

    void choosesAFolderAndCountsItsCaseFiles()
    {
        const QString prefix = QStringLiteral("Das gewählte Verzeichnis enthält ");
        const QString deep = m_folder + QStringLiteral("eins/zwei/drei.est11");
        QVERIFY(QDir().mkpath(deep));
        DirSelectDialog dialog(nullptr);
        auto* label = dialog.findChild<QLabel*>();
        auto* tree = dialog.findChild<QTreeView*>();
        QCOMPARE(dialog.directory(), QString());

        // The model reads folders lazily; the path must be there at once.
        dialog.setDirectory(deep);
        QCOMPARE(dialog.directory(), deep);
        for (QModelIndex folder = tree->currentIndex(); folder.isValid(); folder = folder.parent())
            QVERIFY(tree->isExpanded(folder));
        dialog.setDirectory(m_folder + QStringLiteral("fehlt"));
        QCOMPARE(dialog.directory(), QString());

        dialog.setFileFilter({QStringLiteral("*.est11"), QStringLiteral("*.eur11")});
        dialog.setDirectory(m_folder);
        QTRY_COMPARE(label->text(), prefix + QStringLiteral("keinen Steuerfall."));
        QVERIFY(writeCaseFile(QStringLiteral("a.est11")));
        QVERIFY(writeCaseFile(QStringLiteral("notiz.txt")));
        dialog.loadValues();
        QTRY_COMPARE(label->text(), prefix + QStringLiteral("1 Steuerfall."));
        QVERIFY(writeCaseFile(QStringLiteral("eins/zwei/b.eur11")));
        QVERIFY(writeCaseFile(QStringLiteral("eins/zwei/c.est11")));

        // A click counts the clicked folder; folders are no case files.
        const auto* model = qobject_cast<QFileSystemModel*>(tree->model());
        const QModelIndex zwei = model->index(m_folder + QStringLiteral("eins/zwei"));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        tree->scrollTo(zwei);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(zwei).center());
        QTRY_COMPARE(label->text(), prefix + QStringLiteral("2 Steuerfälle."));
    }
};

SC_TEST(FileListTest)
#include "tst_filelist.moc"
