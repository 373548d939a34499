#include "TestMain.h"
#include "WordWrap.h"

#include <QApplication>
#include <QFontMetrics>
#include <QTest>

// Tool-tip wrapping to a pixel width.
class TestWordWrap : public QObject
{
    Q_OBJECT

private slots:
    void breaksAfterBlanksSlashesHyphensAndUnderscores();
};

void TestWordWrap::breaksAfterBlanksSlashesHyphensAndUnderscores()
{
    const QFont font = QApplication::font();
    const QFontMetrics metrics(font);
    const QString text = QStringLiteral("/home/benutzer/Erbengemeinschaft-Weißbach_2011 Entwurf.fes11");
    const int width = metrics.horizontalAdvance(QStringLiteral("Erbengemeinschaft-"));

    const QString wrapped = wordWrap(text, width, font, false);
    const QStringList lines = wrapped.split(QLatin1Char('\n'));
    QVERIFY2(lines.size() >= 4 && lines.contains(QStringLiteral("Erbengemeinschaft-")), qPrintable(wrapped));
    for (int i = 0; i < lines.size(); ++i) {
        QVERIFY2(metrics.horizontalAdvance(lines[i]) <= width, qPrintable(lines[i]));
        const bool lastLine = i + 1 == lines.size();
        QVERIFY2(lastLine || QStringLiteral("/-_").contains(lines[i].back())
                     || text.contains(lines[i] + QLatin1Char(' ') + lines[i + 1]),
                 qPrintable(lines[i]));
    }
    // Nothing but blanks at the breaks is lost.
    QCOMPARE(QString(wrapped).remove(QLatin1Char('\n')).remove(QLatin1Char(' ')),
             QString(text).remove(QLatin1Char(' ')));
    QCOMPARE(wordWrap(text, width, font, true),
             QString(wrapped).replace(QLatin1Char('\n'), QStringLiteral("<br>")));

    // A word without break points keeps its line; line breaks stay.
    QCOMPARE(wordWrap(QStringLiteral("Donaudampfschifffahrt ist lang"), 5, font, false),
             QStringLiteral("Donaudampfschifffahrt\nist\nlang"));
    QCOMPARE(wordWrap(QStringLiteral("eins\nzwei\n\ndrei"), 10000, font, true),
             QStringLiteral("eins<br>zwei<br><br>drei"));
}

SC_TEST(TestWordWrap)
#include "tst_wordwrap.moc"
