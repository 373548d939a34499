#include "Date.h"
#include "TestMain.h"

#include <QDate>
#include <QTest>

#include <ctime>

// Runs in a zone with daylight-saving time, so that day arithmetic across
// the change to summer time is exercised.
class DateTests : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_oldZone = qgetenv("TZ");
        m_hadZone = qEnvironmentVariableIsSet("TZ");
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }

    void cleanupTestCase()
    {
        if (m_hadZone)
            qputenv("TZ", m_oldZone);
        else
            qunsetenv("TZ");
        tzset();
    }

    void readingText()
    {
        cDate date;
        QVERIFY(date.fromString("5.3.12"));
        QCOMPARE(date.getDay(), 5);
        QCOMPARE(date.getMonth(), 3);
        QCOMPARE(date.getYear(), 2012);
        QCOMPARE(date.getDayOfWeek(), 1);
        QCOMPARE(date.asString(), std::string("05.03.2012"));
        QVERIFY(date == cDate(std::string("05.03.2012")));
        QVERIFY(date == cDate(2012, 3, 5));

        QVERIFY(date.fromString("29.02.2011"));
        QCOMPARE(date.asString(), std::string("01.03.2011"));

        for (const char* refused : {"1.1.1899", "12.12.2012.1", "1.2", "", "01.01.20121"})
            QVERIFY2(!date.fromString(refused), refused);
        QCOMPARE(date.asString(), std::string("01.03.2011"));

        QVERIFY(!date.fromString("0.1.2012"));
        QCOMPARE(date.getTime_t(), -1L);
        QCOMPARE(date.asString(), std::string());
        QVERIFY(!date.fromString(".1.2012"));
    }

    void noonOfTheLocalDay()
    {
        struct tm lateEvening = {};
        lateEvening.tm_year = 2012 - 1900;
        lateEvening.tm_mon = 6;
        lateEvening.tm_mday = 14;
        lateEvening.tm_hour = 23;
        lateEvening.tm_min = 59;
        lateEvening.tm_isdst = -1;
        const cDate date(long(mktime(&lateEvening)));
        QCOMPARE(date.format("%d.%m.%Y %H:%M:%S"), std::string("14.07.2012 12:00:00"));
        QCOMPARE(date.format(""), std::string());
    }

    void dayArithmetic()
    {
        // 25 March 2012 is the change to summer time.
        const cDate before(2012, 3, 20);
        const cDate after = before + cDateSpan(14);
        QCOMPARE(after.asString(), std::string("03.04.2012"));
        QCOMPARE((after - before).getDays(), 14);
        QCOMPARE((cDate(2012, 3, 24) - cDate(2012, 3, 26)).getDays(), -2);
        QVERIFY(before < after && after >= before && before != after);

        cDate date = after;
        date -= cDateSpan(14);
        QVERIFY(date == before);

        const int expected = int(QDate(2012, 1, 1).daysTo(QDate::currentDate()));
        QCOMPARE((cDate::today() - cDate(2012, 1, 1)).getDays(), expected);
        QCOMPARE((cDate::today() - cDate(2012, 7, 1)).getDays(), expected - 182);
    }

private:
    QByteArray m_oldZone;
    bool m_hadZone = false;
};

SC_TEST(DateTests)
#include "tst_dates.moc"
