#include "TestMain.h"
#include "WildcardPattern.h"

#include <QRegularExpression>
#include <QTest>

// Case-folder name filters, matched without a regular expression engine,
// against QDir's own way of matching them.
class TestWildcard : public QObject
{
    Q_OBJECT

private slots:
    void matchesLikeQDirNameFilters();
};

void TestWildcard::matchesLikeQDirNameFilters()
{
    const QStringList patterns{
        QStringLiteral("*.est11"), QStringLiteral("*.EST1?"), QStringLiteral("*"), QStringLiteral(""),
        QStringLiteral("Fall *.est1[0-2]"), QStringLiteral("*[!0-9]"), QStringLiteral("[]x]*"),
        QStringLiteral("[!]]*"), QStringLiteral("*a*b*c"), QStringLiteral("**.ES?11"), QStringLiteral("?"),
        QStringLiteral("[a-]*"), QStringLiteral("*[ÄÖÜ]*"), QStringLiteral("a\\b*"), QStringLiteral("*.e*t*1")};
    const QStringList names{
        QStringLiteral("Fall 1.est11"), QStringLiteral("FALL 2.EST11"), QStringLiteral("x.est12"),
        QStringLiteral(".est11"), QStringLiteral("est11"), QStringLiteral("Fall 3.est11.bak"), QStringLiteral(""),
        QStringLiteral("]abc"), QStringLiteral("xaxbxc"), QStringLiteral("aabbcc"), QStringLiteral("acb"),
        QStringLiteral("-"), QStringLiteral("A"), QStringLiteral("Müller Ärger.est11"), QStringLiteral("mÜller"),
        QStringLiteral("a\\bc"), QStringLiteral("Fall 9.Est10"), QStringLiteral("x"), QStringLiteral("9")};
    for (const QString& pattern : patterns) {
        const QRegularExpression qdir(QRegularExpression::wildcardToRegularExpression(pattern),
                                      QRegularExpression::CaseInsensitiveOption);
        QVERIFY2(qdir.isValid(), qPrintable(pattern));
        const WildcardPattern ours(pattern);
        for (const QString& name : names)
            QVERIFY2(ours.matches(name) == qdir.match(name).hasMatch(), qPrintable(pattern + QLatin1Char('|') + name));
    }

    // An unclosed set is no set: its "[" is a plain character.
    QVERIFY(WildcardPattern(QStringLiteral("a[b*")).matches(QStringLiteral("A[bcd")));
    QVERIFY(!WildcardPattern(QStringLiteral("a[b*")).matches(QStringLiteral("ab")));

    // Many stars against a long name that does not match end in time.
    const QString stars = QStringLiteral("*a").repeated(30) + QLatin1Char('b');
    QVERIFY(!WildcardPattern(stars).matches(QString(5000, QLatin1Char('a'))));
}

SC_TEST(TestWildcard)
#include "tst_wildcard.moc"
