#pragma once

#include <ctime>
#include <string>

// A signed number of days.
class cDateSpan
{
public:
    cDateSpan() = default;
    cDateSpan(int days) : m_days(days) {}
    virtual ~cDateSpan() = default;
    cDateSpan(const cDateSpan&) = default;
    cDateSpan& operator=(const cDateSpan&) = default;
    cDateSpan& operator=(int days)
    {
        m_days = days;
        return *this;
    }

    int getDays() const { return m_days; }

private:
    int m_days = 0;
};

// A calendar day, held as 12:00 local time of that day (seconds since the
// epoch), so that adding whole days never ends on a neighbouring day across a
// daylight-saving change. -1 means "no valid date". Text form: day.month.year.
class cDate
{
public:
    cDate() = default;
    cDate(unsigned int year, unsigned int month, unsigned int day);
    explicit cDate(long time);                 // the local day of time
    explicit cDate(const std::string& text);   // fromString(text)
    virtual ~cDate() = default;
    cDate(const cDate&) = default;
    cDate& operator=(const cDate&) = default;

    static cDate today();

    // A month or day of 0 makes the date invalid; a year below 100 counts as
    // 2000 + year, other years before 1901 are refused and leave the date as
    // it was. Days and months out of range roll over (31.2. is in March).
    bool setDate(unsigned int year, unsigned int month, unsigned int day);
    // Reads "d.m.y" (at most 10 characters, exactly two dots).
    bool fromString(const std::string& text);
    // strftime of the local time; empty for an invalid date.
    std::string format(const std::string& format) const;
    std::string asString() const;   // "05.03.2012"

    int getDay() const;         // 1-31
    int getMonth() const;       // 1-12
    int getYear() const;        // four digits
    int getDayOfWeek() const;   // 0 = Sunday
    long getTime_t() const { return m_time; }

    bool operator==(const cDate& other) const { return m_time == other.m_time; }
    bool operator!=(const cDate& other) const { return m_time != other.m_time; }
    bool operator<(const cDate& other) const { return m_time < other.m_time; }
    bool operator<=(const cDate& other) const { return m_time <= other.m_time; }
    bool operator>(const cDate& other) const { return m_time > other.m_time; }
    bool operator>=(const cDate& other) const { return m_time >= other.m_time; }

    cDate& operator+=(const cDateSpan& span);
    cDate& operator-=(const cDateSpan& span);
    cDate operator+(const cDateSpan& span) const;
    cDate operator-(const cDateSpan& span) const;
    // Whole days between the two, truncated toward zero.
    cDateSpan operator-(const cDate& other) const;

private:
    static long correctTimeZone(long time);
    struct tm localTime() const;

    long m_time = 0;
};
