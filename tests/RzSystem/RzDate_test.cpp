#include <Rz/RzSystem/RzDate.h>

#include <limits.h>
#include <time.h>

#include <string>

#include <Rz/RzSystem/RzSystem.h>

#include "support/RzTestSupport.h"

namespace {

std::string Text(const RzDate& d) {
    return d.GetString().c_str();
}

}  // namespace

TEST(RzDate, ClampsEachFieldByItself) {
    struct Case {
        int y, mo, d, h, mi, s;
        const char* expected;
    } cases[] = {
        {2008, 13, 0, 24, -5, 60, "2008-12-1 23:00:59"},
        {-1, 1, 1, 0, 0, 0, "0-1-1 0:00:00"},
        {5000, 2, 31, 12, 30, 30, "3000-2-31 12:30:30"},  // no month lengths
        {INT_MIN, INT_MAX, INT_MIN, INT_MAX, INT_MIN, INT_MAX, "0-12-1 23:00:59"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Text(RzDate(c.y, c.mo, c.d, c.h, c.mi, c.s)), c.expected) << c.expected;

    RzDate date(2008, 3, 7, 9, 5, 0);
    date.SetTime(99, -1, 7);
    EXPECT_EQ(Text(date), "2008-3-7 23:00:07");
}

TEST(RzDate, AccessorsBypassTheClamping) {
    RzDate date(2008, 3, 7, 9, 5, 0);
    date.Month() = 13;
    date.Second() = 75;
    EXPECT_EQ(Text(date), "2008-13-7 9:05:75");
    const RzDate& view = date;
    EXPECT_EQ(view.Month(), 13);
}

TEST(RzDate, DayNumbersCountEveryMonthAs31Days) {
    EXPECT_EQ(RzDate(0, 1, 1, 0, 0, 0).Day2Long(), 0);
    EXPECT_EQ(RzDate(2008, 3, 7, 0, 0, 0).Day2Long(), 747044);
    // 28 February to 1 March is four days here.
    EXPECT_EQ(RzDate(2008, 3, 1, 0, 0, 0).Day2Long() - RzDate(2008, 2, 28, 0, 0, 0).Day2Long(), 4);
    EXPECT_EQ(RzDate(0, 1, 1, 23, 59, 59).SecondOfDay(), 86399);

    RzDate date(2000, 6, 6, 9, 5, 7);
    date.Long2Date(372);
    EXPECT_EQ(Text(date), "1-1-1 9:05:07");  // the time is left alone

    // Fields set out of range wrap in 32 bits instead of overflowing.
    date.Year() = INT_MAX;
    date.Hour() = INT_MAX;
    EXPECT_EQ(date.Day2Long(), static_cast<int32_t>(uint32_t(INT_MAX) * 372u));
    EXPECT_EQ(date.SecondOfDay(), static_cast<int32_t>(uint32_t(INT_MAX) * 3600u + 5u * 60u + 7u));
}

TEST(RzDate, TextForms) {
    struct Case {
        RzDate date;
        const char *day, *full, *fileName, *fileNameUnderscore, *shortForm;
    } cases[] = {
        {RzDate(1999, 12, 31, 23, 59, 59), "1999-12-31", "1999-12-31 23:59:59", "19991231 23-59",
         "19991231_23-59", "@M`X||"},
        {RzDate(0, 1, 1, 0, 0, 0), "0-1-1", "0-1-1 0:00:00", "00101 00-00", "00101_00-00",
         "qBBAAA"},
    };
    for (const Case& c : cases) {
        EXPECT_STREQ(c.date.GetDayString().c_str(), c.day);
        EXPECT_STREQ(c.date.GetString().c_str(), c.full);
        EXPECT_STREQ(c.date.GetFileNameString().c_str(), c.fileName);
        EXPECT_STREQ(c.date.GetFileNameString("_").c_str(), c.fileNameUnderscore);
        EXPECT_STREQ(c.date.GetShortString().c_str(), c.shortForm);
    }
    // A separator longer than the classic buffer comes out whole.
    std::string wide(300, '~');
    EXPECT_EQ(RzDate(2008, 3, 7, 9, 5, 0).GetFileNameString(wide.c_str()).length(), 300 + 13);
}

TEST(RzDate, ShortFormCharactersAreSigned) {
    // From 2063 on the year's character has its top bit set and reads back
    // 256 years early.
    RzDate later(0, 1, 1, 0, 0, 0);
    later.SetShortString(RzDate(2063, 1, 1, 0, 0, 0).GetShortString());
    EXPECT_EQ(later.Year(), 1807);
    // The year 1935 is the character 0, which the next appended character
    // overwrites (appending to a text counts it first): five characters
    // remain, and they do not read back.
    RzString zeroYear = RzDate(1935, 1, 1, 0, 0, 0).GetShortString();
    EXPECT_STREQ(zeroYear.c_str(), "BBAAA");
    EXPECT_RZ_ERROR(later.SetShortString(zeroYear), kRzFormatErr, "RzFormatErr");
}

TEST(RzDate, Parsers) {
    enum Parser { kDay, kFull, kShort };
    struct Case {
        Parser parser;
        const char* text;
        const char* expected;  // null: "RzFormatErr", the date unchanged
    } cases[] = {
        {kDay, "  2008 3 7 9:05 and more", "2008-3-7 0:00:00"},
        {kDay, "2008-13-32", "2008-12-31 0:00:00"},
        {kDay, "99999999999-1-1", "3000-1-1 0:00:00"},
        {kDay, "+2008-+3-+7", "2008-3-7 0:00:00"},
        {kDay, "2008", nullptr},
        {kDay, "2008-3-x", nullptr},
        {kFull, "2008-03-07 09:05", "2008-3-7 9:05:00"},
        {kFull, "2008-03-07", "2008-3-7 0:00:00"},
        {kFull, "2008-3-7 9", "2008-3-7 9:00:00"},  // a longer attempt's hour stays
        {kFull, "2008-3-7 9:5:6:7", "2008-3-7 9:05:06"},
        {kFull, "2008:3:7", "2008-3-7 0:00:00"},
        {kFull, "x", nullptr},
        {kFull, "2008-3", nullptr},
        {kShort, "\x7f\x7f\x7f\x7f\x7f\x7f", "2062-12-31 23:59:59"},
        {kShort, "\x80\x80\x80\x80\x80\x80", "1807-1-1 0:00:00"},
        {kShort, "IDHJF", nullptr},
        {kShort, "IDHJFAA", nullptr},
    };
    for (const Case& c : cases) {
        RzDate date(1970, 1, 2, 3, 4, 5);
        auto parse = [&] {
            if (c.parser == kDay) date.SetDayString(c.text);
            if (c.parser == kFull) date.SetString(c.text);
            if (c.parser == kShort) date.SetShortString(c.text);
        };
        if (c.expected) {
            parse();
            EXPECT_EQ(Text(date), c.expected) << c.text;
        } else {
            RzError e = CatchRzError(parse);
            EXPECT_EQ(e.GetErr(), kRzFormatErr) << c.text;
            EXPECT_STREQ(e.GetErrName(), "RzFormatErr");
            EXPECT_STREQ(e.GetFileName(), "RzSystem");
            EXPECT_EQ(Text(date), "1970-1-2 3:04:05") << c.text;
        }
    }
}

TEST(RzDate, GetDateIsLocalTimeNow) {
    const time_t before = time(nullptr);
    RzDate now = RzSystem::GetDate();
    const time_t after = time(nullptr);
    struct tm early, late;
    localtime_r(&before, &early);
    localtime_r(&after, &late);
    const int seconds = now.SecondOfDay();
    const int first = (early.tm_hour * 60 + early.tm_min) * 60 + early.tm_sec;
    const int last = (late.tm_hour * 60 + late.tm_min) * 60 + late.tm_sec;
    EXPECT_TRUE(seconds >= first || seconds <= last) << now.GetString().c_str();
    EXPECT_TRUE(now.Year() == early.tm_year + 1900 || now.Year() == late.tm_year + 1900);
    EXPECT_TRUE(now.Day() == early.tm_mday || now.Day() == late.tm_mday);
}
