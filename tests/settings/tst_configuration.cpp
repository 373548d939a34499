#include "SettingsFixture.h"
#include "TempInstallation.h"
#include "TestMain.h"

#include <QDir>

#include <memory>
#include <vector>

namespace {
using Log = std::vector<std::string>;

class RecordingObserver : public cConfiguration::Observer
{
public:
    RecordingObserver(std::string name, Log& log) : m_name(std::move(name)), m_log(log) {}
    void ConfigurationChanged(const std::string& section, const std::string& key) override
    {
        m_log.push_back(m_name + ":" + section + "/" + key);
    }

private:
    std::string m_name;
    Log& m_log;
};
} // namespace

// The configuration registry over the settings of a one-mode installation.
class TestConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_install = std::make_unique<SettingsSandbox>();
        m_install->writeResource("ORVKonf.ini", "[Settings]\nUserSettings=" + m_install->root().toLatin1()
                                                    + "/user\n[Modus]\nnormal=normal.ini\n"
                                                      "[Start]\nName=installed\nCount=3\n");
        m_install->writeResource("normal.ini", "[Start]\n");
        QVERIFY(cNvWinIni::theInstance()->setGlobalIniName(cszNvWinIniName));
        cNvWinIni::theInstance()->setModus("normal");
    }

    void cleanup() { m_install.reset(); }

    void handlesShareTheCurrentValue()
    {
        const cReadHandle<std::string> first = config()->GetHString("Start", "Name", "x");
        const cReadHandle<std::string> second = config()->GetHString("Start", "Name", "y");
        QCOMPARE(first.Value(), "installed");
        QVERIFY(config()->Write("Start", "Name", "written"));
        QCOMPARE(first.Value(), "written");
        QCOMPARE(std::string(second), "written");
        QCOMPARE(cNvWinIni::theInstance()->GetString("Start", "Name", "x"), "written");

        const cReadHandle<long> count = config()->GetHInt("Start", "Count", 0);
        QCOMPARE(count.Value(), 3L);
        QVERIFY(config()->Write("Start", "Count", 8));
        QCOMPARE(long(count), 8L);

        // Set changes the handles only; the next Get reads the files again.
        config()->Set("Start", "Name", "onlyInMemory");
        QCOMPARE(second.Value(), "onlyInMemory");
        QCOMPARE(config()->GetString("Start", "Name", "x"), "written");

        // Handles are kept by the caller's spelling of the names.
        const cReadHandle<std::string> upper = config()->GetHString("START", "Name", "x");
        config()->Set("START", "Name", "upper");
        QCOMPARE(upper.Value(), "upper");
        QCOMPARE(first.Value(), "written");

        // A null key drops the section's handles; those given out keep their value.
        config()->Set("Start", nullptr, "ignored");
        config()->Set("Start", "Name", "new");
        QCOMPARE(first.Value(), "written");
    }

    void observersHearEachChangeOnce()
    {
        Log log;
        RecordingObserver observers[2] = {{"a", log}, {"b", log}};   // a has the lower address
        RecordingObserver elsewhere("other", log);
        config()->Register(&observers[1], "start");
        config()->Register(&observers[0], "Start");
        config()->Register(&observers[0], "START");
        config()->Register(&elsewhere, "Files");

        QVERIFY(config()->Write("Start", "Name", "v1"));
        QVERIFY(config()->Write("Start", "Name", "v1"));
        config()->Set("start", "count", 4);
        config()->Set("Start", nullptr, "dropped");
        QCOMPARE(log, (Log{"a:START/NAME", "b:START/NAME", "a:START/COUNT", "b:START/COUNT"}));

        log.clear();
        config()->Unregister(&observers[1], "START");
        config()->Unregister(&observers[0], "start");
        QVERIFY(config()->Write("Start", "Name", "v2"));
        QCOMPARE(log, Log());
    }

    void unwritableUserFolderKeepsValueForTheSession()
    {
        // The user folder vanishes while the program runs: the file cannot be
        // written, yet the value lives on in memory and handles agree with reads.
        const cReadHandle<std::string> name = config()->GetHString("Start", "Name", "x");
        QVERIFY(QDir(m_install->root() + "/user").removeRecursively());

        QVERIFY(config()->Write("Start", "Name", "kept"));
        QCOMPARE(name.Value(), "kept");
        QCOMPARE(config()->GetString("Start", "Name", "x"), "kept");
        QVERIFY(!QDir(m_install->root() + "/user").exists());
        QCOMPARE(m_install->boxes.boxes, QStringList());
    }

private:
    cConfiguration* config() const { return cConfiguration::theInstance(); }

    std::unique_ptr<SettingsSandbox> m_install;
};

SC_TEST(TestConfiguration)
#include "tst_configuration.moc"
