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

    // The text form reads back as the same day, as long as it fits the
    // reader's ten characters and its year is one the reader accepts.
    const std::string asText = date.asString();
    cDate again;
    if (again.fromString(asText))
        FUZZ_CHECK(again == date);
    (date + cDateSpan(1)).asString();
    return 0;
}
