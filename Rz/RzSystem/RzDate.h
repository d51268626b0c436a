// RzDate: a calendar date with a time of day, as six separate integers.
//
// A date has no time zone, no weekday and no notion of month lengths: each
// field is only kept within its own range (year 0..3000, month 1..12, day
// 1..31, hour 0..23, minute and second 0..59), so 31 February is a valid
// date. It is set from numbers, from the clock (RzSystem::GetDate) or from
// text, and written back in a few fixed text forms.
//
// Day numbers (Day2Long, Long2Date) count every month as 31 days and every
// year as 372: from 28 February to 1 March is 4 days. Stored day numbers
// depend on this, so it is kept.
#ifndef RZ_RZSYSTEM_RZDATE_H
#define RZ_RZSYSTEM_RZDATE_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzString.h>

class RZ_API RzDate {
public:
    // SetDate with the same arguments: every field is clamped to its range.
    RzDate(int year, int month, int day, int hour, int minute, int second);

    // Clamps each field by itself to its range and stores it.
    void SetDate(int year, int month, int day, int hour, int minute, int second);
    // The same for the three time fields; the date is untouched.
    void SetTime(int hour, int minute, int second);

    // Year, month and day from a day number (the inverse of Day2Long for
    // numbers from 0 up); the time is untouched and nothing is clamped.
    void Long2Date(int32_t dayNumber);

    // Parsers. Each raises "RzFormatErr" (19) on text it cannot read and then
    // leaves the date unchanged; numbers it reads are clamped.
    //
    // "2008-3-7": three numbers separated by '-' or blanks, anything after
    // them ignored; the time becomes 0:00:00.
    void SetDayString(const RzString& text);
    // "2008-3-7 9:05:00", or with five or three numbers ('-', ':' and blanks
    // separate them). The three forms are tried from the longest and share
    // their numbers, so a text with four numbers ("2008-3-7 9") reads as
    // 9:00:00, a text with five as minutes, and missing fields are 0.
    void SetString(const RzString& text);
    // The six-character form of GetShortString. Any other length raises.
    void SetShortString(const RzString& text);

    // The fields themselves. Assigning through them bypasses the clamping.
    int& Year() { return year; }
    int& Month() { return month; }
    int& Day() { return day; }
    int& Hour() { return hour; }
    int& Minute() { return minute; }
    int& Second() { return second; }
    int Year() const { return year; }
    int Month() const { return month; }
    int Day() const { return day; }
    int Hour() const { return hour; }
    int Minute() const { return minute; }
    int Second() const { return second; }

    // year * 372 + (month - 1) * 31 + (day - 1), in 32-bit arithmetic.
    int32_t Day2Long() const;
    // (hour * 60 + minute) * 60 + second.
    int32_t SecondOfDay() const;

    // "2008-3-7" (no zero padding).
    RzString GetDayString() const;
    // "2008-3-7 9:05:00".
    RzString GetString() const;
    // "20080307 09-05" (no seconds); the second form puts `separator` where
    // the blank is.
    RzString GetFileNameString() const;
    RzString GetFileNameString(RzString separator) const;
    // Six characters, one per field: the year as the character year - 1935
    // (modulo 256, "I" for 2008), each other field as 'A' + value, so
    // 2008-3-7 9:05:00 is "IDHJFA". Characters are signed: years from 2063
    // on, and fields set past their range through the accessors, do not read
    // back as they were.
    RzString GetShortString() const;

private:
    int year;
    int month;
    int day;
    int hour;
    int minute;
    int second;
};

#endif
