#include "ColorFileInstallation.h"
#include "SCColors.h"
#include "TestMain.h"

#include <QTest>
#include <QWidget>

namespace {

QColor rgb(unsigned int colorRef)
{
    return SCColors::fromColorRef(colorRef);
}

// Each box names the colour file, ColorDefs.ini of the installation (%2).
const QString notFound = QStringLiteral("Color Manager|Die Farbe >>%1<< wurde nicht gefunden\nFarbdatei: %2");
const QString tooDeep = QStringLiteral(
    "Color Manager|Die maximale verschachtelungstiefe wurde erreicht.\nAktuelle Farbe: %1\nFarbdatei: %2");

// A chain Top<n> -> <prefix>1 -> ... -> <prefix><n> = 1,2,3 of n references.
QByteArray referenceChain(int n, const QByteArray& prefix)
{
    QByteArray defs;
    for (int i = 1; i < n; ++i)
        defs += prefix + QByteArray::number(i) + '=' + prefix + QByteArray::number(i + 1) + "\r\n";
    defs += prefix + QByteArray::number(n) + "=1,2,3\r\n";
    return defs;
}

} // namespace

class ColorsTest : public QObject
{
    Q_OBJECT

private slots:
    void resolvesReferencesAndSumsLightness()
    {
        ColorFileInstallation install("[ApplicationColors]\r\n"
                                      "A=B+10\r\n"
                                      "Padded=   B+10   \r\n"
                                      "DirectDarker=100,100,100-40\r\n"
                                      "[ColorDefs]\r\n"
                                      "B=C-30\r\n"
                                      "C=100,100,100\r\n");
        QVERIFY(install.isValid());
        ColorManager* colors = ColorManager::theInstance();
        colors->init("ApplicationColors", true);

        // Grey 100 with the lightness changes +10 and -30 applied once, as -20.
        QCOMPARE(rgb(colors->getColor("A", 0)), QColor(80, 80, 80));
        QCOMPARE(rgb(colors->getColor("Padded", 0)), QColor(80, 80, 80));
        QCOMPARE(rgb(colors->getColor("DirectDarker", 0)), QColor(60, 60, 60));
        // Referenced colours live in their own section, not in the top-level one.
        QCOMPARE(colors->getColor("C", 0x123456), 0x123456u);
        QCOMPARE(install.messages, QStringList{notFound.arg(QLatin1String("C"), install.colorFile())});

        // setColor overrides the file until the cache is cleared.
        colors->setColor("A", 0x0000FF);
        QCOMPARE(colors->getColor("A", 0), 0x0000FFu);
        colors->clearColorCache();
        QCOMPARE(rgb(colors->getColor("A", 0)), QColor(80, 80, 80));
    }

    void limitsNestingDepth()
    {
        ColorFileInstallation install("[ApplicationColors]\r\n"
                                      "Top16=N1\r\n"
                                      "Top17=M1\r\n"
                                      "Cycle=Ping\r\n"
                                      "[ColorDefs]\r\n"
                                      + referenceChain(16, "N") + referenceChain(17, "M")
                                      + "Ping=Pong+1\r\nPong=Ping\r\n");
        QVERIFY(install.isValid());
        ColorManager* colors = ColorManager::theInstance();
        colors->init("ApplicationColors", true);

        QCOMPARE(rgb(colors->getColor("Top16", 0)), QColor(1, 2, 3));
        QVERIFY(install.messages.isEmpty());

        QCOMPARE(colors->getColor("Top17", 0xABCDEF), 0xABCDEFu);
        QCOMPARE(colors->getColor("Top17", 0), 0xABCDEFu);   // the cached default
        QCOMPARE(install.messages, QStringList{tooDeep.arg(QLatin1String("M17"), install.colorFile())});

        install.messages.clear();
        QCOMPARE(colors->getColor("Cycle", 0x111111), 0x111111u);
        QCOMPARE(install.messages.size(), 1);
        QVERIFY(install.messages.first().startsWith(tooDeep.section(QLatin1Char('%'), 0, 0)));
        QVERIFY(install.messages.first().endsWith(install.colorFile()));
    }

    void reportsEachFailureOncePerInit()
    {
        ColorFileInstallation install("[ApplicationColors]\r\n"
                                      "Dangling=Missing-5\r\n"
                                      "Trailing=100,100,100+\r\n"
                                      "TrailingRef=Open\r\n"
                                      "[ColorDefs]\r\n"
                                      "Open=1,2,3-\r\n");
        QVERIFY(install.isValid());
        ColorManager* colors = ColorManager::theInstance();
        colors->init("ApplicationColors", true);

        for (int round = 0; round < 2; ++round) {
            QCOMPARE(colors->getColor("Absent", 0x010203), 0x010203u);
            QCOMPARE(colors->getColor("Dangling", 0x040506), 0x040506u);
            QCOMPARE(colors->getColor("Trailing", 0x070809), 0x070809u);
            QCOMPARE(colors->getColor("TrailingRef", 0x0A0B0C), 0x0A0B0Cu);
        }
        const QStringList expected{notFound.arg(QLatin1String("Absent"), install.colorFile()),
                                   notFound.arg(QLatin1String("Missing"), install.colorFile())};
        QCOMPARE(install.messages, expected);

        // A new init empties the cache: the failures are reported again.
        install.messages.clear();
        colors->init("ApplicationColors", true);
        colors->getColor("Absent", 0);
        colors->getColor("Dangling", 0);
        QCOMPARE(install.messages, expected);

        // Without error messages nothing is shown, but the defaults stay.
        install.messages.clear();
        colors->init("ApplicationColors", false);
        QCOMPARE(colors->getColor("Absent", 0x010203), 0x010203u);
        QVERIFY(install.messages.isEmpty());
    }

    void survivesMalformedValues()
    {
        ColorFileInstallation install("[ApplicationColors]\r\n"
                                      "Letters=a,b,c\r\n"
                                      "Pair=1,2\r\n"
                                      "Commas=,,,\r\n"
                                      "Huge=99999999999,5,5\r\n"
                                      "HugeLighter=10,10,10+99999999999\r\n"
                                      "HugeDarker=Deep-2000000000\r\n"
                                      "RedOverflow=300,0,0\r\n"
                                      "Negative=10,-5,7\r\n"
                                      "OnlyOperator=+5\r\n"
                                      "Self=Self\r\n"
                                      "[ColorDefs]\r\n"
                                      "Self=Self\r\n"
                                      "Deep=200,10,10-2000000000\r\n");
        QVERIFY(install.isValid());
        ColorManager* colors = ColorManager::theInstance();
        colors->init("ApplicationColors", true);

        QCOMPARE(colors->getColor("Letters", 0xFFFFFF), 0u);
        QCOMPARE(rgb(colors->getColor("Pair", 0)), QColor(1, 2, 0));
        QCOMPARE(colors->getColor("Commas", 0xFFFFFF), 0u);
        colors->getColor("Huge", 0);
        QCOMPARE(rgb(colors->getColor("HugeLighter", 0)), QColor(255, 255, 255));
        // The lightness sum saturates instead of overflowing into a lightening.
        QCOMPARE(rgb(colors->getColor("HugeDarker", 0)), QColor(0, 0, 0));
        // Parts are packed unclipped: red 300 carries into the green byte.
        QCOMPARE(colors->getColor("RedOverflow", 0), 300u);
        // A "-" inside a triple is the operator: "10," darkened by 5 ("5,7").
        QCOMPARE(rgb(colors->getColor("Negative", 0)),
                 rgb(ColorManager::adjustByHSL(ColorManager::rgb2colorRef(10, 0, 0), 0, 0, -5)));
        QCOMPARE(colors->getColor("OnlyOperator", 0x42), 0x42u);
        QCOMPARE(colors->getColor("Self", 0x43), 0x43u);
        QCOMPARE(install.messages,
                 QStringList({notFound.arg(QString(), install.colorFile()), tooDeep.arg(QLatin1String("Self"), install.colorFile())}));
    }

    void takesFileNameFromConfiguration()
    {
        ColorFileInstallation install("[ApplicationColors]\r\nX=1,1,1\r\n",
                                      "[ApplicationColors]\r\nColorDefsIni=Special Colors.ini\r\n");
        QVERIFY(install.isValid());
        QVERIFY(install.writeResource(QStringLiteral("Special Colors.ini"), "[ApplicationColors]\r\nX=9,9,9\r\n"));
        ColorManager::theInstance()->init("ApplicationColors", true);
        QCOMPARE(rgb(ColorManager::theInstance()->getColor("X", 0)), QColor(9, 9, 9));
    }

    void convertsBetweenColorSpaces()
    {
        int h = -1, s = -1, l = -1;
        ColorManager::colorRef2hsl(ColorManager::rgb2colorRef(255, 0, 0), h, s, l);
        QCOMPARE(QList<int>({h, s, l}), QList<int>({0, 255, 128}));
        // The rounding of the way back is part of the behaviour.
        QCOMPARE(rgb(ColorManager::hsl2colorRef(h, s, l)), QColor(255, 1, 1));

        ColorManager::colorRef2hsl(ColorManager::rgb2colorRef(255, 0, 128), h, s, l);
        QCOMPARE(h, 330);   // red is the maximum and blue > green: wrapped by 360

        // Hue changes wrap around the circle, lightness changes clip.
        const unsigned int red = ColorManager::rgb2colorRef(255, 0, 0);
        QCOMPARE(ColorManager::adjustByHSL(red, 360, 0, 0), ColorManager::adjustByHSL(red, 0, 0, 0));
        QCOMPARE(ColorManager::adjustByHSL(red, -120, 0, 0), ColorManager::adjustByHSL(red, 240, 0, 0));
        QCOMPARE(rgb(ColorManager::adjustByHSL(red, 0, 0, 1000)), QColor(255, 255, 255));
        QCOMPARE(rgb(ColorManager::adjustByHSL(red, 0, -1000, 0)), QColor(128, 128, 128));

        int y = 0, u = 0, v = 0;
        ColorManager::colorRef2yuv(ColorManager::rgb2colorRef(200, 100, 50), y, u, v);
        QCOMPARE(QList<int>({y, u, v}), QList<int>({124, -74, 76}));
        QCOMPARE(rgb(ColorManager::yuv2colorRef(y, u, v)), QColor(200, 100, 50));
        QCOMPARE(rgb(ColorManager::adjustByYUV(ColorManager::rgb2colorRef(10, 10, 10), 500)),
                 QColor(255, 255, 255));

        QCOMPARE(ColorManager::rgb2htmlColor(255, 1, 171), std::string("#FF01AB"));
        QCOMPARE(ColorManager::colorRef2htmlColor(0xABCDEF), std::string("#EFCDAB"));
    }

    void emptyColorFileGivesBuiltInDefaults()
    {
        ColorFileInstallation install("");
        QVERIFY(install.isValid());
        ColorManager::theInstance()->init(SCColors::sectColors, true);

        struct Getter
        {
            QColor (*get)();
            const char* key;
            QColor expected;
        };
        // A few of the built-in values, among them the one whose getter falls
        // back through a second key.
        const QColor darkGray(Qt::darkGray);
        const Getter getters[] = {
            {&SCColors::getDefaultBackgroundColor, "DefaultBkg", QColor(255, 250, 235)},
            {&SCColors::getButtonBackgroundColor, "ControlButtonBkg", darkGray},
            {&SCColors::getDisabledBackgroundColor, "ControlDisabledBkg", darkGray},
            {&SCColors::getReadonlyBackgroundColor, "ControlReadonlyBkg", darkGray},
            {&SCColors::getDisabledTextColor, "DisabledText", QColor(128, 128, 128)},
            {&SCColors::getDefaultSelectionColor, "NavHighlightHigh", QColor(255, 234, 168)},
        };

        QStringList expectedMessages;
        for (const Getter& getter : getters) {
            if (getter.get == &SCColors::getDisabledBackgroundColor)   // asks ControlReadonlyBkg first
                expectedMessages << notFound.arg(QLatin1String("ControlReadonlyBkg"), install.colorFile());
            expectedMessages << notFound.arg(QLatin1String(getter.key), install.colorFile());
        }
        expectedMessages.removeDuplicates();

        for (int round = 0; round < 2; ++round) {
            for (const Getter& getter : getters)
                QCOMPARE(getter.get(), getter.expected);
        }
        QCOMPARE(install.messages, expectedMessages);
    }

    void convertsMixesAndSetsPalettes()
    {
        ColorFileInstallation install("[ApplicationColors]\r\nLink=1,2,3\r\n");
        QVERIFY(install.isValid());
        ColorManager::theInstance()->init(SCColors::sectColors, true);

        QCOMPARE(SCColors::getDefaultLinkColor(), QColor(1, 2, 3));
        QCOMPARE(SCColors::getColorFromIni("AnySection", "Link", Qt::red), QColor(1, 2, 3));
        QCOMPARE(SCColors::toColorRef(QColor(1, 2, 3)), 0x030201u);
        QCOMPARE(SCColors::toHtmlColor(QColor(255, 0, 171)), QStringLiteral("#FF00AB"));

        const QColor grey200(200, 200, 200);
        QCOMPARE(SCColors::mixColor(grey200, 100, grey200, 100), QColor(144, 144, 144));
        QCOMPARE(SCColors::mixColor(grey200, -100, grey200, 0).red(), 56);   // -200 modulo 256
        SCColors::setDialogGradientColors(QColor(250, 250, 250), QColor(150, 100, 50));
        QCOMPARE(SCColors::getDialogBackgroundColor(), QColor(200, 175, 150));

        QWidget widget;
        SCColors::setBackgroundColor(&widget, QColor(1, 2, 3));
        SCColors::setForegroundColor(&widget, QColor(4, 5, 6));
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            QCOMPARE(widget.palette().color(group, QPalette::Window), QColor(1, 2, 3));
            QCOMPARE(widget.palette().color(group, QPalette::WindowText), QColor(4, 5, 6));
        }
    }
};

SC_TEST(ColorsTest)
#include "tst_colors.moc"
