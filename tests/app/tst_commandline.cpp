#include "CommandLine.h"
#include "TestMain.h"

#include <QDir>
#include <QTest>

namespace {

const QStringList modes{QStringLiteral("normal"), QStringLiteral("einur")};

CommandLine parse(const QStringList& arguments)
{
    return CommandLine::parse(QStringList{QStringLiteral("startcenter")} + arguments, modes);
}

} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void filesAndOptions()
    {
        const QString here = QDir::currentPath() + QLatin1Char('/');
        // Names that a shell or a careless parser would mangle stay as they are.
        const QStringList odd{QStringLiteral("Fall mit Leerzeichen.est11"), QStringLiteral("\"Zitat\" 'x'.est11"),
                              QStringLiteral("zwei\nZeilen.est11"), QStringLiteral("$(rm -rf ~).est11"),
                              QStringLiteral("-")};
        CommandLine line = parse(QStringList{QStringLiteral("--new"), QStringLiteral("einur")} + odd
                                 + QStringList{QStringLiteral("--"), QStringLiteral("-Strich.est11"),
                                               QStringLiteral("--help"), QStringLiteral("/abs/x.eur11")});
        QCOMPARE(line.request(), CommandLine::Start);
        QCOMPARE(line.newMode(), QStringLiteral("einur"));
        QStringList expected;
        for (const QString& name : odd + QStringList{QStringLiteral("-Strich.est11"), QStringLiteral("--help")})
            expected << here + name;
        expected << QStringLiteral("/abs/x.eur11");
        QCOMPARE(line.files(), expected);

        // The later start's hand-over reads back to the same request, from
        // any folder, leading dashes and all.
        QVERIFY(QDir::setCurrent(QDir::rootPath()));
        const CommandLine handedOver = CommandLine::parse(line.handOverArguments(), modes, true);
        QVERIFY(QDir::setCurrent(here));
        QCOMPARE(handedOver.files(), expected);
        QCOMPARE(handedOver.newMode(), QStringLiteral("einur"));
        QVERIFY(handedOver.isIncomplete());
        QCOMPARE(parse({}).handOverArguments(), QStringList{QStringLiteral("startcenter")});

        QCOMPARE(parse({QStringLiteral("a.est11"), QStringLiteral("--version")}).request(), CommandLine::Version);
        QCOMPARE(parse({QStringLiteral("-h")}).request(), CommandLine::Help);
        QCOMPARE(parse({QStringLiteral("--new=normal")}).newMode(), QStringLiteral("normal"));
        for (const QStringList& wrong : {QStringList{QStringLiteral("--new")}, QStringList{QStringLiteral("--new=fest")},
                                         QStringList{QStringLiteral("-x")}, QStringList{QStringLiteral("--help=1")}}) {
            const CommandLine refused = parse(wrong);
            QCOMPARE(refused.request(), CommandLine::Invalid);
            QVERIFY(refused.files().isEmpty());
            QVERIFY(!refused.error().isEmpty());
        }
    }
};

SC_TEST(CommandLineTest)
#include "tst_commandline.moc"
