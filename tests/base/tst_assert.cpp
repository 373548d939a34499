#include "NvAssert.h"
#include "TestMain.h"

#include <QTest>

#include <csignal>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

class AssertionTests : public QObject
{
    Q_OBJECT

private slots:
    // The failing assertion runs in a child process; its error output comes
    // back through a pipe.
    void failedAssertionPrintsAndAborts()
    {
        int pipeEnds[2];
        QCOMPARE(pipe(pipeEnds), 0);
        const pid_t child = fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            signal(SIGABRT, SIG_DFL);   // not the test framework's crash handler
            dup2(pipeEnds[1], STDERR_FILENO);
            close(pipeEnds[0]);
            NV_ASSERT_AT(!"Kein Int Wert", "cIniFile", 106);
            _exit(0);
        }
        close(pipeEnds[1]);
        std::string output;
        char chunk[256];
        for (ssize_t n; (n = read(pipeEnds[0], chunk, sizeof chunk)) > 0;)
            output.append(chunk, std::size_t(n));
        close(pipeEnds[0]);
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);

        QCOMPARE(output, std::string("cIniFile:106: failed assertion `!\"Kein Int Wert\"'\n"));
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGABRT);

        NV_ASSERT_AT(1 + 1 == 2, "here", 1);   // a passing assertion does nothing
    }
};

SC_TEST(AssertionTests)
#include "tst_assert.moc"
