#include "Date.h"

#include "CrossPlatformApi.h"
#include "ValidatedBuffer.h"

#include <cstdlib>

namespace {

constexpr long secondsPerDay = 86400;

void setNoon(struct tm& time)
{
    time.tm_sec = 0;
    time.tm_min = 0;
    time.tm_hour = 12;
}

} // namespace

cDate::cDate(unsigned int year, unsigned int month, unsigned int day)
{
    setDate(year, month, day);
}

cDate::cDate(long time)
    : m_time(correctTimeZone(time))
{
}

cDate::cDate(const std::string& text)
{
    fromString(text);
}

cDate cDate::today()
{
    return cDate(long(std::time(nullptr)));
}

bool cDate::setDate(unsigned int year, unsigned int month, unsigned int day)
{
    if (month == 0 || day == 0) {
        m_time = -1;
        return false;
    }
    if (year < 100)
        year += 2000;
    else if (year < 1901)
        return false;

    // Starting from now keeps today's daylight-saving state, so that the
    // difference to today() is a whole number of days in every season.
    struct tm time = {};
    CrossPlatformApi::localtime_s(time, long(std::time(nullptr)));
    setNoon(time);
    time.tm_mday = int(day);
    time.tm_mon = int(month) - 1;
    time.tm_year = int(year) - 1900;
    m_time = long(std::mktime(&time));
    return m_time != -1;
}

bool cDate::fromString(const std::string& text)
{
    if (text.empty() || text.size() > 10)
        return false;
    const std::string::size_type firstDot = text.find('.');
    if (firstDot == std::string::npos)
        return false;
    const std::string::size_type secondDot = text.find('.', firstDot + 1);
    if (secondDot == std::string::npos || text.find('.', secondDot + 1) != std::string::npos)
        return false;
    const int day = std::atoi(text.substr(0, firstDot).c_str());
    const int month = std::atoi(text.substr(firstDot + 1, secondDot - firstDot - 1).c_str());
    const int year = std::atoi(text.substr(secondDot + 1).c_str());
    return setDate(unsigned(year), unsigned(month), unsigned(day));
}

std::string cDate::format(const std::string& format) const
{
    if (m_time == -1)
        return std::string();
    const struct tm time = localTime();
    ValidatedBuffer buffer(unsigned(format.size()) + 32);
    if (std::strftime(buffer.get(), buffer.getSize(), format.c_str(), &time) == 0)
        return std::string();
    return std::string(buffer.getConst());
}

std::string cDate::asString() const
{
    return format("%d.%m.%Y");
}

int cDate::getDay() const
{
    return localTime().tm_mday;
}

int cDate::getMonth() const
{
    return localTime().tm_mon + 1;
}

int cDate::getYear() const
{
    return localTime().tm_year + 1900;
}

int cDate::getDayOfWeek() const
{
    return localTime().tm_wday;
}

cDate& cDate::operator+=(const cDateSpan& span)
{
    m_time += span.getDays() * secondsPerDay;
    return *this;
}

cDate& cDate::operator-=(const cDateSpan& span)
{
    m_time -= span.getDays() * secondsPerDay;
    return *this;
}

cDate cDate::operator+(const cDateSpan& span) const
{
    cDate result = *this;
    result += span;
    return result;
}

cDate cDate::operator-(const cDateSpan& span) const
{
    cDate result = *this;
    result -= span;
    return result;
}

cDateSpan cDate::operator-(const cDate& other) const
{
    return cDateSpan(int((m_time - other.m_time) / secondsPerDay));
}

long cDate::correctTimeZone(long time)
{
    struct tm local = {};
    CrossPlatformApi::localtime_s(local, time);
    setNoon(local);
    return long(std::mktime(&local));
}

struct tm cDate::localTime() const
{
    struct tm local = {};
    CrossPlatformApi::localtime_s(local, m_time);
    return local;
}
