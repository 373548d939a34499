#include "CrossPlatformApi.h"
#include "DirSelectDialog.h"
#include "SCAppStyle.h"
#include "SCListView.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QLabel>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyleFactory>
#include <QTest>
#include <QTreeView>

#include <ctime>

#include <unistd.h>

namespace {

const QString countPrefix = QStringLiteral("Das gewählte Verzeichnis enthält ");

// Runs the test in a time zone with summer time and restores the process's one.
class BerlinTime
{
public:
    BerlinTime()
        : m_hadZone(qEnvironmentVariableIsSet("TZ"))
        , m_zone(qgetenv("TZ"))
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }
    ~BerlinTime()
    {
        if (m_hadZone)
            qputenv("TZ", m_zone);
        else
            qunsetenv("TZ");
        tzset();
    }

private:
    bool m_hadZone;
    QByteArray m_zone;
};

// Answers the custom metric of the page width like the application style.
class PageWidthStyle : public QProxyStyle
{
public:
    PageWidthStyle()
        : QProxyStyle(QStringLiteral("Fusion"))
    {
    }
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        return metric == PixelMetric(SCAppStyle::PM_PageWidth)
            ? 461
            : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

QStringList rowTexts(const QTreeWidget& list, int column)
{
    QStringList texts;
    for (int row = 0; row < list.topLevelItemCount(); ++row)
        texts.append(list.topLevelItem(row)->text(column));
    return texts;
}

} // namespace

class FileListTest : public QObject
{
    Q_OBJECT

private:
    // A case file in the folder, last changed at the local time changed.
    bool writeCaseFile(const QString& name, const QDateTime& changed = QDateTime::currentDateTime())
    {
        QFile file(m_folder + name);
        return file.open(QIODevice::WriteOnly) && file.write("<Person>x</Person>") > 0 && file.flush()
            && file.setFileTime(changed, QFileDevice::FileModificationTime);
    }

    TempInstallation m_installation;
    QString m_folder;

private slots:
    void initTestCase()
    {
        // Colour lookups of the dialog may report a missing colour file.
        CrossPlatformApi::setMessageBoxHandler(
            [](const MessageBoxRequest&) { return MessageBoxAnswer{QMessageBox::Ok, false}; });
    }

    void cleanupTestCase()
    {
        CrossPlatformApi::setMessageBoxHandler({});
    }

    void init()
    {
        m_folder = m_installation.root() + QStringLiteral("/Steuerf\u00E4lle/");
        QDir(m_folder).removeRecursively();
        QVERIFY(QDir().mkpath(m_folder));
    }

    void listsCaseFilesByName()
    {
        const BerlinTime berlin;
        QVERIFY(writeCaseFile(QStringLiteral("b.est11"), QDateTime(QDate(2012, 1, 9), QTime(7, 5))));
        QVERIFY(writeCaseFile(QStringLiteral("Fall.2011.est11"), QDateTime(QDate(2011, 7, 30), QTime(23, 59))));
        QVERIFY(writeCaseFile(QStringLiteral("\u00C4rger.est11")));
        QVERIFY(writeCaseFile(QStringLiteral("A.est11"), QDateTime(QDate(2011, 3, 27), QTime(3, 30))));
        QVERIFY(writeCaseFile(QStringLiteral("notiz.txt")));
        QVERIFY(QDir(m_folder).mkdir(QStringLiteral("Ordner.est11")));

        SCListView list(nullptr);
        QCOMPARE(list.headerItem()->text(0), QStringLiteral("Dateiname"));
        QCOMPARE(list.headerItem()->text(1), QStringLiteral("Letzte \u00C4nderung"));
        list.init(m_folder, {QStringLiteral("*.est11")});

        // Names without their last extension, case ignored in the order;
        // summer and winter times in local time.
        QCOMPARE(rowTexts(list, 0), (QStringList{QStringLiteral("A"), QStringLiteral("b"),
                                                 QStringLiteral("Fall.2011"), QStringLiteral("\u00C4rger")}));
        QCOMPARE(rowTexts(list, 1).mid(0, 3), (QStringList{QStringLiteral("27.03.2011 03:30"),
                                                           QStringLiteral("09.01.2012 07:05"),
                                                           QStringLiteral("30.07.2011 23:59")}));
        QCOMPARE(list.fileNames(), (QStringList{QStringLiteral("A.est11"), QStringLiteral("b.est11"),
                                                QStringLiteral("Fall.2011.est11"),
                                                QStringLiteral("\u00C4rger.est11")}));

        QCOMPARE(list.selectedFileName(), QString());
        list.setCurrentItem(list.topLevelItem(2));
        QCOMPARE(list.selectedFileName(), m_folder + QStringLiteral("Fall.2011"));

        // Without a trailing separator the folder runs into the name.
        const QString bare = m_folder.chopped(1);
        list.setRootDir(bare);
        list.setCurrentItem(list.topLevelItem(0));
        QCOMPARE(list.selectedFileName(), bare + QStringLiteral("A"));

        // Several patterns; without any pattern every file is listed.
        list.init(m_folder, {QStringLiteral("*.txt"), QStringLiteral("b.*")});
        QCOMPARE(list.fileNames(), (QStringList{QStringLiteral("b.est11"), QStringLiteral("notiz.txt")}));
        list.init(m_folder, {});
        QCOMPARE(list.topLevelItemCount(), 5);
    }

    void leavesOutFilesTheTaxProgramCannotSave()
    {
        QVERIFY(writeCaseFile(QStringLiteral("a.est11")));
        QVERIFY(writeCaseFile(QStringLiteral("b.est11")));
        QVERIFY(writeCaseFile(QStringLiteral("c.est11")));
        QVERIFY(QFile::setPermissions(m_folder + QStringLiteral("b.est11"),
                                      QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        QVERIFY(QFile::setPermissions(m_folder + QStringLiteral("c.est11"), {}));

        SCListView list(nullptr);
        list.init(m_folder, {QStringLiteral("*.est11")});
        // The superuser may read and save any file, so for it nothing is left out.
        const QStringList expected = geteuid() == 0
            ? QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}
            : QStringList{QStringLiteral("a")};
        QCOMPARE(rowTexts(list, 0), expected);
        QCOMPARE(list.fileNames().size(), expected.size());
        QCOMPARE(list.fileNames().first(), QStringLiteral("a.est11"));
    }

    void rebuildsOnlyWhenAsked()
    {
        QVERIFY(writeCaseFile(QStringLiteral("b.est11")));
        SCListView list(nullptr);
        list.setNameFilters({QStringLiteral("*.est11")});
        list.setRootDir(m_folder);
        QCOMPARE(list.topLevelItemCount(), 1);
        list.setCurrentItem(list.topLevelItem(0));

        // The same folder again keeps the rows and the selection.
        QVERIFY(writeCaseFile(QStringLiteral("a.est11")));
        list.setRootDir(m_folder);
        QCOMPARE(list.topLevelItemCount(), 1);
        QCOMPARE(list.selectedFileName(), m_folder + QStringLiteral("b"));
        // The names stay those of the rows until the list is rebuilt, so a
        // row's index always finds its own file.
        QCOMPARE(list.fileNames(), QStringList{QStringLiteral("b.est11")});
        list.setNameFilters({QStringLiteral("*.*")});
        QCOMPARE(list.topLevelItemCount(), 1);

        list.setNameFilters({QStringLiteral("*.est11")});
        list.updateList();
        QCOMPARE(rowTexts(list, 0), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
        QCOMPARE(list.fileNames(), (QStringList{QStringLiteral("a.est11"), QStringLiteral("b.est11")}));
        QCOMPARE(list.selectedFileName(), QString());

        // init with the same folder still takes the new patterns.
        QVERIFY(writeCaseFile(QStringLiteral("c.est12")));
        list.init(m_folder, {QStringLiteral("*.est12")});
        QCOMPARE(rowTexts(list, 0), QStringList{QStringLiteral("c")});
    }

    void emptiesForVanishedFolders()
    {
        QVERIFY(writeCaseFile(QStringLiteral("a.est11")));
        SCListView list(nullptr);
        list.init(m_folder, {QStringLiteral("*.est11")});
        list.setCurrentItem(list.topLevelItem(0));
        QVERIFY(QDir(m_folder).removeRecursively());

        list.updateList();
        QCOMPARE(list.topLevelItemCount(), 0);
        QCOMPARE(list.fileNames(), QStringList());
        QCOMPARE(list.selectedFileName(), QString());

        list.setRootDir(m_installation.root() + QStringLiteral("/nie/da/gewesen/"));
        QCOMPARE(list.topLevelItemCount(), 0);
    }

    void sizesTheNameColumnFromTheStyle()
    {
        const QString previousStyle = QApplication::style()->name();
        SCListView list(nullptr);
        list.resize(300, 200);

        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        list.init(m_folder, {});
        QCOMPARE(list.columnWidth(0), 150);

        QApplication::setStyle(new PageWidthStyle);
        list.updateList();
        QCOMPARE(list.columnWidth(0), 230);

        QApplication::setStyle(QStyleFactory::create(previousStyle));
    }

    void countsCaseFilesOfTheClickedFolder()
    {
        const QString sub = m_folder + QStringLiteral("sub");
        QVERIFY(QDir().mkpath(sub + QStringLiteral("/ordner.est11")));
        DirSelectDialog dialog(nullptr);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Verzeichnis ausw\u00E4hlen"));
        QVERIFY(dialog.isModal());
        auto* label = dialog.findChild<QLabel*>();
        auto* tree = dialog.findChild<QTreeView*>();
        auto* model = qobject_cast<QFileSystemModel*>(tree->model());
        QVERIFY(label && model);

        dialog.setFileFilter({QStringLiteral("*.est11"), QStringLiteral("*.eur11")});
        dialog.setDirectory(m_folder);
        QCOMPARE(label->text(), countPrefix + QStringLiteral("keinen Steuerfall."));

        QVERIFY(writeCaseFile(QStringLiteral("a.est11")));
        QVERIFY(writeCaseFile(QStringLiteral("notiz.txt")));
        dialog.loadValues();
        QCOMPARE(label->text(), countPrefix + QStringLiteral("1 Steuerfall."));

        QVERIFY(writeCaseFile(QStringLiteral("b.eur11")));
        dialog.setFileFilter({QStringLiteral("*.est11"), QStringLiteral("*.eur11")});
        QCOMPARE(label->text(), countPrefix + QStringLiteral("2 Steuerf\u00E4lle."));

        // A click on another folder counts that one; folders are no case files.
        dialog.changeDir(model->index(sub));
        QCOMPARE(label->text(), countPrefix + QStringLiteral("keinen Steuerfall."));
        for (int i = 0; i < 12; ++i)
            QVERIFY(writeCaseFile(QStringLiteral("sub/%1.est11").arg(i)));
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          tree->visualRect(model->index(sub)).center());
        QCOMPARE(label->text(), countPrefix + QStringLiteral("12 Steuerf\u00E4lle."));
    }

    void choosesTheGivenFolder()
    {
        const QString deep = m_folder + QStringLiteral("eins/zwei/drei/vier");
        QVERIFY(QDir().mkpath(deep));
        QVERIFY(QDir().mkpath(m_folder + QStringLiteral("eins/Zwei b")));

        DirSelectDialog dialog(nullptr);
        auto* tree = dialog.findChild<QTreeView*>();
        auto* model = qobject_cast<QFileSystemModel*>(tree->model());
        QCOMPARE(dialog.directory(), QString());

        // The model reads folders lazily; the path must be there at once.
        dialog.setDirectory(deep);
        QCOMPARE(dialog.directory(), deep);
        QCOMPARE(tree->currentIndex(), model->index(deep));
        for (QModelIndex folder = tree->currentIndex(); folder.isValid(); folder = folder.parent())
            QVERIFY2(tree->isExpanded(folder), qPrintable(model->filePath(folder)));
        QVERIFY(tree->isColumnHidden(1) && tree->isColumnHidden(2) && tree->isColumnHidden(3));
        QVERIFY(!tree->isColumnHidden(0));

        // A folder that is not there leaves no choice.
        dialog.setDirectory(m_folder + QStringLiteral("fehlt"));
        QCOMPARE(dialog.directory(), QString());

        dialog.setDirectory(deep);
        dialog.show();
        auto* ok = dialog.findChild<QPushButton*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(ok->text(), QStringLiteral("&OK"));
        ok->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.directory(), deep);
    }
};

SC_TEST(FileListTest)
#include "tst_filelist.moc"
