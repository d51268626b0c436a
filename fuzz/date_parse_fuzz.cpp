// Runs the three date parsers on arbitrary text: none may crash; a parse that
// succeeds leaves every field within its range, and one that fails raises
// "RzFormatErr" and leaves the date as it was. A parsed date reads back from
// its text, from its day number, and from its short form in the years that
// form carries (1807 to 2062, but for 1935, whose character is a zero byte).
//
// Input: byte 0 picks the parser, the rest is the text (zero bytes included).
#include <stdint.h>
#include <stdlib.h>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzSystem/RzDate.h>

namespace {

bool InRange(const RzDate& d) {
    return d.Year() >= 0 && d.Year() <= 3000 && d.Month() >= 1 && d.Month() <= 12 && d.Day() >= 1 &&
           d.Day() <= 31 && d.Hour() >= 0 && d.Hour() <= 23 && d.Minute() >= 0 &&
           d.Minute() <= 59 && d.Second() >= 0 && d.Second() <= 59;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const RzString text(data + 1, static_cast<int32_t>(size - 1), false);
    RzDate date(1970, 1, 2, 3, 4, 5);
    const RzString before = date.GetString();
    try {
        switch (data[0] % 3) {
            case 0:
                date.SetDayString(text);
                break;
            case 1:
                date.SetString(text);
                break;
            default:
                date.SetShortString(text);
                break;
        }
    } catch (const RzError& e) {
        if (e.GetErr() != kRzFormatErr || date.GetString() != before) abort();
        return 0;
    }
    if (!InRange(date)) abort();
    // What a date writes, its parsers read back.
    RzDate again(0, 1, 1, 0, 0, 0);
    again.SetString(date.GetString());
    if (again.GetString() != date.GetString()) abort();
    RzDate day(0, 1, 1, date.Hour(), date.Minute(), date.Second());
    day.Long2Date(date.Day2Long());
    if (day.GetString() != date.GetString()) abort();
    if (date.Year() >= 1807 && date.Year() <= 2062 && date.Year() != 1935) {
        RzDate shortForm(0, 1, 1, 0, 0, 0);
        shortForm.SetShortString(date.GetShortString());
        if (shortForm.GetString() != date.GetString()) abort();
    }
    return 0;
}
