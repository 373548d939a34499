#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include "Exceptions.h"
#include "FilePath.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <memory>

#include <unistd.h>

class TestFilePath : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_install = std::make_unique<TempInstallation>(); }
    void cleanup() { m_install.reset(); }

    void componentsAndSetters()
    {
        FilePath path("\\home\\user\\ORVKonf.user.ini");
        QCOMPARE(path.asString(), std::string("/home/user/ORVKonf.user.ini"));
        QCOMPARE(path.getPath(), std::string("/home/user/"));
        QCOMPARE(path.getPrefix(), std::string("ORVKonf.user"));
        QCOMPARE(path.getSuffix(), std::string("ini"));
        QCOMPARE(path.getName(), std::string("ORVKonf.user.ini"));
        QVERIFY(path == FilePath("/HOME/User/orvkonf.USER.ini"));

        path.setName("other.txt");
        path.setSuffix("cfg");
        QCOMPARE(path.asString(), std::string("/home/user/other.cfg"));
        path.setPrefix(std::string("main"));
        path.addPath("/sub/deeper");
        QCOMPARE(path.asString(), std::string("/home/user/sub/deeper/main.cfg"));
        path.setDirectory("/other");
        path.setName(nullptr);
        QCOMPARE(path.asString(), std::string("/other/main.cfg"));

        // Too long components are cut by the split, and reported by a setter.
        QCOMPARE(FilePath("/a/file.abcdefghijkl").getSuffix(), std::string("abcdefgh"));
        QVERIFY_THROWS_EXCEPTION(xNvMessageExc, path.setSuffix("0123456789"));
        QCOMPARE(path.asString(), std::string("/other/main.cfg"));

        const std::string forty = "/0123456789/0123456789/0123456789/abcdef";
        QCOMPARE(FilePath(forty).getDisplayString(20), "..." + forty.substr(23));
    }

    void folderRules()
    {
        QVERIFY(QDir().mkpath(m_install->root() + "/data.dir"));
        const FilePath folder(root() + "/data.dir");
        QCOMPARE(folder.getPath(), root() + "/data.dir/");
        QCOMPARE(folder.getName(), std::string());
        QVERIFY(touch("data.dir/file.txt"));
        QVERIFY(!FilePath(root() + "/data.dir/file.txt/").isDirectory());
        QVERIFY(!FilePath(root() + "/data.dir/*").isDirectory());

        // The topmost folders have no parent, so that they are never touched.
        QCOMPARE(FilePath("/home/user/x.txt").getParentPath().asString(), std::string("/home/"));
        QCOMPARE(FilePath("/abc/x/").getParentPath().asString(), std::string("/abc/"));
        QVERIFY(FilePath("/ab/x/").getParentPath().empty());

        FilePath relative("sub\\file.ini");
        QVERIFY(relative.makeRelativeTo(folder));
        QCOMPARE(relative.asString(), root() + "/data.dir/sub/file.ini");
        FilePath absolute(root() + "/data.dir");
        QVERIFY(absolute.makeRelativeTo(FilePath("/elsewhere/")));
        QCOMPARE(absolute.asString(), root() + "/data.dir");
    }

    void createAndFindNames()
    {
        const FilePath nested(root() + "/one/two/three/file.ini");
        QVERIFY(nested.makeDir());
        QVERIFY(QFileInfo(m_install->root() + "/one/two/three").isDir());
        QVERIFY(touch("blocked"));
        QVERIFY(!FilePath(root() + "/blocked/sub/").makeDir());

        const std::string file = root() + "/x.txt";
        QCOMPARE(FilePath(file).getUnique().asString(), file);
        QVERIFY(touch("x.txt"));
        QCOMPARE(FilePath(file).getUnique().asString(), root() + "/x_1.txt");
        QVERIFY(touch("x_1.txt"));
        QCOMPARE(FilePath(file).getUnique().asString(), root() + "/x_2.txt");

        FilePath folder(root() + '/');
        std::string name;
        QVERIFY(folder.makeUniqueDir("tmp", name));
        QCOMPARE(name.size(), std::size_t(3 + 36));
        QCOMPARE(folder.asString(), root() + '/' + name + '/');
        QVERIFY(folder.isDirectory());
    }

    void deleteTree()
    {
        QVERIFY(touch("tree/a.txt"));
        QVERIFY(touch("tree/sub/deeper/b.txt"));
        QVERIFY(QDir().mkpath(m_install->root() + "/tree/empty"));
        QVERIFY(touch("outside/keep.txt"));
        QVERIFY(::symlink((root() + "/outside").c_str(), (root() + "/tree/link").c_str()) == 0);
        QVERIFY(FilePath(root() + "/tree/a.txt").deleteTree());
        QVERIFY(!QFileInfo::exists(m_install->root() + "/tree"));
        QVERIFY(QFileInfo::exists(m_install->root() + "/outside/keep.txt"));

        // Folders of three characters or fewer are refused.
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_install->root()));
        QVERIFY(touch("ab/file"));
        QVERIFY(touch("abc/file"));
        const bool shortRemoved = FilePath("ab/").deleteTree();
        const bool longerRemoved = FilePath("abc/").deleteTree();
        QDir::setCurrent(previous);
        QVERIFY(!shortRemoved);
        QVERIFY(QFileInfo::exists(m_install->root() + "/ab/file"));
        QVERIFY(longerRemoved);
        QVERIFY(!QFileInfo::exists(m_install->root() + "/abc"));
    }

private:
    std::string root() const { return m_install->root().toStdString(); }
    bool touch(const QString& name) const { return m_install->writeFile(name, "x"); }

    std::unique_ptr<TempInstallation> m_install;
};

SC_TEST(TestFilePath)
#include "tst_filepath.moc"
