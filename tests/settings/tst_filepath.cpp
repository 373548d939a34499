#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include "Exceptions.h"
#include "FilePath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>

#include <unistd.h>

class TestFilePath : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void componentsOfFilePaths();
    void existingFolderWithoutSlash();
    void settersRebuildThePath();
    void parentPathSparesTopmostFolders();
    void displayStringAndComparison();
    void makeDirCreatesParents();
    void uniqueNames();
    void makeRelativeTo();
    void deleteTree();
    void currentFolder();

private:
    std::string root() const { return m_install->root().toStdString(); }
    bool touch(const std::string& path) const { return m_install->writeFile(QString::fromStdString(path), "x"); }

    std::unique_ptr<TempInstallation> m_install;
};

void TestFilePath::init()
{
    m_install = std::make_unique<TempInstallation>();
    QVERIFY(m_install->isValid());
}

void TestFilePath::cleanup()
{
    m_install.reset();
}

void TestFilePath::componentsOfFilePaths()
{
    const FilePath path("\\home\\user\\ORVKonf.user.ini");
    QCOMPARE(path.asString(), std::string("/home/user/ORVKonf.user.ini"));
    QVERIFY(path.isAbsolute());
    QVERIFY(!path.isUNC());
    QCOMPARE(path.getDrive(), '\0');
    QCOMPARE(path.getDirectory(), std::string("/home/user/"));
    QCOMPARE(path.getPath(), std::string("/home/user/"));
    QCOMPARE(path.getPrefix(), std::string("ORVKonf.user"));
    QCOMPARE(path.getSuffix(), std::string("ini"));
    QCOMPARE(path.getName(), std::string("ORVKonf.user.ini"));

    const FilePath relative("name");
    QVERIFY(!relative.isAbsolute());
    QCOMPARE(relative.getPath(), std::string());
    QCOMPARE(relative.getSuffix(), std::string());
    QVERIFY(FilePath().empty());
    QVERIFY(!FilePath().exists());

    // Components too long for their buffers are cut by the split.
    const FilePath longSuffix("/a/file.abcdefghijkl");
    QCOMPARE(longSuffix.getSuffix(), std::string("abcdefgh"));
    QCOMPARE(longSuffix.asString(), std::string("/a/file.abcdefghijkl"));
}

void TestFilePath::existingFolderWithoutSlash()
{
    QVERIFY(QDir().mkpath(m_install->root() + "/data.dir"));
    const FilePath folder(root() + "/data.dir");
    QVERIFY(folder.isDirectory());
    QVERIFY(folder.exists());
    QCOMPARE(folder.getPath(), root() + "/data.dir/");
    QCOMPARE(folder.getPrefix(), std::string());
    QCOMPARE(folder.getSuffix(), std::string());

    QVERIFY(touch(root() + "/data.dir/file.txt"));
    const FilePath file(root() + "/data.dir/file.txt/");
    QVERIFY(!file.isDirectory());
    QVERIFY(file.exists());
    QVERIFY(!FilePath(root() + "/data.dir/*").isDirectory());
    QVERIFY(!FilePath(root() + "/nothing").exists());
}

void TestFilePath::settersRebuildThePath()
{
    FilePath path("/home/user/file.txt");
    path.setName("other.user.ini");
    QCOMPARE(path.asString(), std::string("/home/user/other.user.ini"));
    path.setName(nullptr);
    QCOMPARE(path.asString(), std::string("/home/user/other.user.ini"));
    path.setSuffix("cfg");
    QCOMPARE(path.asString(), std::string("/home/user/other.user.cfg"));
    path.setSuffix(".ini");
    path.setPrefix(std::string("main"));
    QCOMPARE(path.asString(), std::string("/home/user/main.ini"));
    path.addPath("/sub/deeper");
    QCOMPARE(path.asString(), std::string("/home/user/sub/deeper/main.ini"));
    path.setDirectory("/other");
    QCOMPARE(path.asString(), std::string("/other/main.ini"));

    FilePath name("/a/");
    name.setName("noext");
    QCOMPARE(name.asString(), std::string("/a/noext"));
    QCOMPARE(name.getSuffix(), std::string());

    // A setter given a component too long for its buffer reports it.
    QVERIFY_THROWS_EXCEPTION(xNvMessageExc, path.setSuffix("0123456789"));
    QVERIFY_THROWS_EXCEPTION(xNvMessageExc, path.setPrefix(std::string(256, 'p')));
}

void TestFilePath::parentPathSparesTopmostFolders()
{
    QCOMPARE(FilePath("/home/user/x.txt").getParentPath().asString(), std::string("/home/"));
    QCOMPARE(FilePath("/home/user/sub/").getParentPath().asString(), std::string("/home/user/"));
    QCOMPARE(FilePath("/abc/x/").getParentPath().asString(), std::string("/abc/"));
    QVERIFY(FilePath("/ab/x/").getParentPath().empty());
    QVERIFY(FilePath("/home/x.txt").getParentPath().empty());
    QVERIFY(FilePath("/").getParentPath().empty());
}

void TestFilePath::displayStringAndComparison()
{
    const std::string text = "/0123456789/0123456789/0123456789/abcde";
    QCOMPARE(text.size(), std::size_t(39));
    const FilePath path(text + "f");
    QCOMPARE(path.getDisplayString(20), "..." + (text + "f").substr(23));
    QCOMPARE(path.getDisplayString(20).size(), std::size_t(20));
    QCOMPARE(path.getDisplayString(40), text + "f");
    QCOMPARE(path.getDisplayString(2), std::string("..."));

    QVERIFY(FilePath("/Home/User/A.INI") == FilePath("\\home\\user\\a.ini"));
    QVERIFY(!(FilePath("/home/user/a.ini") == FilePath("/home/user/a.ini/")));
}

void TestFilePath::makeDirCreatesParents()
{
    const FilePath file(root() + "/one/two/three/file.ini");
    QVERIFY(file.makeDir());
    QVERIFY(QFileInfo(m_install->root() + "/one/two/three").isDir());
    QVERIFY(!QFileInfo::exists(m_install->root() + "/one/two/three/file.ini"));
    QVERIFY(file.makeDir());

    // A file in the way makes it fail.
    QVERIFY(touch(root() + "/blocked"));
    QVERIFY(!FilePath(root() + "/blocked/sub/").makeDir());
}

void TestFilePath::uniqueNames()
{
    const std::string file = root() + "/x.txt";
    QCOMPARE(FilePath(file).getUnique().asString(), file);
    QVERIFY(touch(file));
    QCOMPARE(FilePath(file).getUnique().asString(), root() + "/x_1.txt");
    QVERIFY(touch(root() + "/x_1.txt"));
    QCOMPARE(FilePath(file).getUnique().asString(), root() + "/x_2.txt");

    FilePath folder(root() + '/');
    std::string name;
    QVERIFY(folder.makeUniqueDir("tmp", name));
    QCOMPARE(name.size(), std::size_t(3 + 36));
    QVERIFY(name.rfind("tmp", 0) == 0);
    QCOMPARE(folder.getPath(), root() + '/' + name + '/');
    QVERIFY(folder.isDirectory());

    QVERIFY(touch(root() + "/plain"));
    FilePath blocked(root() + "/plain/");
    QVERIFY(!blocked.makeUniqueDir("u", name));
    QCOMPARE(blocked.asString(), root() + "/plain/");
    QCOMPARE(name.size(), std::size_t(1 + 36));
}

void TestFilePath::makeRelativeTo()
{
    QVERIFY(QDir().mkpath(m_install->root() + "/base"));
    FilePath relative("sub\\file.ini");
    QVERIFY(relative.makeRelativeTo(FilePath(root() + "/base")));
    QCOMPARE(relative.asString(), root() + "/base/sub/file.ini");

    FilePath besideFile("other.ini");
    QVERIFY(besideFile.makeRelativeTo(FilePath(root() + "/base/settings.ini")));
    QCOMPARE(besideFile.asString(), root() + "/base/other.ini");

    FilePath absolute(root() + "/base");
    QVERIFY(absolute.makeRelativeTo(FilePath("/elsewhere/")));
    QCOMPARE(absolute.asString(), root() + "/base");
}

void TestFilePath::deleteTree()
{
    QVERIFY(touch(root() + "/tree/a.txt"));
    QVERIFY(touch(root() + "/tree/.hidden"));
    QVERIFY(touch(root() + "/tree/sub/deeper/b.txt"));
    QVERIFY(QDir().mkpath(m_install->root() + "/tree/empty"));
    QVERIFY(touch(root() + "/outside/keep.txt"));
    QVERIFY(::symlink((root() + "/outside").c_str(), (root() + "/tree/link").c_str()) == 0);

    QVERIFY(FilePath(root() + "/tree/a.txt").deleteTree());
    QVERIFY(!QFileInfo::exists(m_install->root() + "/tree"));
    QVERIFY(QFileInfo::exists(m_install->root() + "/outside/keep.txt"));

    // Folders of three characters or fewer are never removed.
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_install->root()));
    QVERIFY(touch(root() + "/ab/file"));
    QVERIFY(touch(root() + "/abc/file"));
    const bool shortRemoved = FilePath("ab/").deleteTree();
    const bool longerRemoved = FilePath("abc/").deleteTree();
    QDir::setCurrent(previous);
    QVERIFY(!shortRemoved);
    QVERIFY(QFileInfo::exists(m_install->root() + "/ab/file"));
    QVERIFY(longerRemoved);
    QVERIFY(!QFileInfo::exists(m_install->root() + "/abc"));
}

void TestFilePath::currentFolder()
{
    const QString previous = QDir::currentPath();
    QVERIFY(QDir().mkpath(m_install->root() + "/cwd"));
    const bool changed = FilePath(root() + "/cwd").setCWD();
    FilePath current;
    current.getCWD();
    QDir::setCurrent(previous);
    QVERIFY(changed);
    QCOMPARE(current.asString(), QFileInfo(m_install->root() + "/cwd").canonicalFilePath().toStdString() + '/');
    QVERIFY(!FilePath(root() + "/missing/").setCWD());
}

SC_TEST(TestFilePath)
#include "tst_filepath.moc"
