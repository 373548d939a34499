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
    void linesFitAndBreakAfterBreakCharacters();
    void unbreakableWordsAndExistingLineBreaks();
};

void TestWordWrap::linesFitAndBreakAfterBreakCharacters()
{
    const QFont font = QApplication::font();
    const QFontMetrics metrics(font);
    const QString text = QStringLiteral("/home/benutzer/Steuerfälle/Erbengemeinschaft-Weißbach_2011 "
                                        "Entwurf mit Anlagen.fes11");
    const int width = metrics.horizontalAdvance(QStringLiteral("Erbengemeinschaft-"));

    const QString wrapped = wordWrap(text, width, font, false);
    const QStringList lines = wrapped.split(QLatin1Char('\n'));
    QVERIFY2(lines.size() > 3, qPrintable(wrapped));
    for (const QString& line : lines) {
        QVERIFY2(metrics.horizontalAdvance(line) <= width, qPrintable(line));
        QVERIFY2(!line.startsWith(QLatin1Char(' ')) && !line.endsWith(QLatin1Char(' ')), qPrintable(line));
    }
    // Nothing but the blanks at the breaks is lost, and no line is split
    // where the text has no break point.
    QCOMPARE(QString(wrapped).remove(QLatin1Char('\n')).remove(QLatin1Char(' ')),
             QString(text).remove(QLatin1Char(' ')));
    QVERIFY(lines.contains(QStringLiteral("Erbengemeinschaft-")));
    for (int i = 0; i + 1 < lines.size(); ++i) {
        const QChar last = lines[i].back();
        const bool brokeAfterBlank = text.contains(lines[i] + QLatin1Char(' ') + lines[i + 1].front());
        QVERIFY2(QStringLiteral("/-_").contains(last) || brokeAfterBlank, qPrintable(lines[i]));
    }

    QCOMPARE(wordWrap(text, width, font, true),
             QString(wrapped).replace(QLatin1Char('\n'), QStringLiteral("<br>")));
    QCOMPARE(wordWrap(text, 10000, font, true), text);
}

void TestWordWrap::unbreakableWordsAndExistingLineBreaks()
{
    const QFont font = QApplication::font();
    QCOMPARE(wordWrap(QStringLiteral("Donaudampfschifffahrt ist lang"), 5, font, false),
             QStringLiteral("Donaudampfschifffahrt\nist\nlang"));
    QCOMPARE(wordWrap(QStringLiteral("eins\nzwei\n\ndrei"), 10000, font, true),
             QStringLiteral("eins<br>zwei<br><br>drei"));
    QCOMPARE(wordWrap(QString(), 100, font, true), QString());
}

SC_TEST(TestWordWrap)
#include "tst_wordwrap.moc"
