// cDate::fromString on arbitrary text, in a time zone with summer time. A
// date that was read must come back as the same day from its own text form.

#include "Date.h"
#include "FuzzSupport.h"

#include <cstdlib>
#include <ctime>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool zoneSet = [] {
        ::setenv("TZ", "Europe/Berlin", 1);
        ::tzset();
        return true;
    }();
    (void)zoneSet;

    const std::string text(reinterpret_cast<const char*>(data), size);
    cDate date;
    if (!date.fromString(text))
        return 0;
    if (date.getTime_t() == -1)
        return 0;
    FUZZ_CHECK(date.getDay() >= 1 && date.getDay() <= 31);
    FUZZ_CHECK(date.getMonth() >= 1 && date.getMonth() <= 12);
    FUZZ_CHECK(date.getDayOfWeek() >= 0 && date.getDayOfWeek() <= 6);

    // The text form of a day with a four-digit year from 1901 on reads back
    // as the same day. (Numbers out of range roll over into other years:
    // a negative year gives a date in antiquity, whose text form reads as a
    // two-digit year of this century.)
    if (date.getYear() >= 1901 && date.getYear() <= 9999) {
        cDate again;
        FUZZ_CHECK(again.fromString(date.asString()));
        FUZZ_CHECK(again == date);
    }
    (date + cDateSpan(1)).asString();
    return 0;
}
