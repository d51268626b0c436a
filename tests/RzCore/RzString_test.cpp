#include <Rz/RzCore/RzString.h>

#include <limits.h>
#include <string.h>

#include <string>

#include "support/RzTestSupport.h"

namespace {

// The buffer behind a non-null string: c_str() points at its characters.
const RzStringData* DataOf(const RzString& s) {
    return reinterpret_cast<const RzStringData*>(s.c_str() - offsetof(RzStringData, chars));
}

int32_t Capacity(const RzString& s) {
    return DataOf(s)->capacity;
}
int32_t RefCount(const RzString& s) {
    return DataOf(s)->refCount;
}

bool IsNull(const RzString& s) {
    static const char* const nullText = RzString().c_str();
    return s.c_str() == nullText;
}

}  // namespace

TEST(RzString, NullAndEmptyFormsReadAlike) {
    RzString forms[] = {RzString(), RzString(0, true), RzString(static_cast<const char*>(nullptr)),
                        RzString(""), RzString("x", 0, false)};
    RzString set;
    set.Set("abc", 0);
    for (const RzString& s : forms) {
        EXPECT_EQ(s.length(), 0);
        EXPECT_STREQ(s.c_str(), "");
        EXPECT_TRUE(s == "");
        EXPECT_TRUE(s == RzString());
        EXPECT_EQ(s.ToSig(), 0u);
        EXPECT_RZ_ERROR(s[0], kRzIndexError, "RzIndexError");
    }
    EXPECT_TRUE(IsNull(RzString()));
    EXPECT_TRUE(IsNull(RzString(0, true)));
    EXPECT_TRUE(IsNull(set));
    EXPECT_FALSE(IsNull(RzString("")));
    EXPECT_EQ(Capacity(RzString("")), 0);
}

TEST(RzString, Construction) {
    RzString reserved(10, false);
    EXPECT_EQ(reserved.length(), 0);
    EXPECT_EQ(Capacity(reserved), 10);
    EXPECT_NO_THROW(reserved[5]);  // below the capacity, beyond the length
    EXPECT_RZ_ERROR(reserved[10], kRzIndexError, "RzIndexError");
    EXPECT_RZ_ERROR(reserved[-1], kRzIndexError, "RzIndexError");

    RzString binary("a\0b", 3, true);
    EXPECT_EQ(binary.length(), 3);
    EXPECT_EQ(Bytes(binary.c_str(), 3), Bytes("a\0b", 3));

    RzString zero('\0');
    EXPECT_EQ(zero.length(), 1);  // stored as known, although c_str reads empty
    EXPECT_STREQ(zero.c_str(), "");
    EXPECT_EQ(RzString('q'), "q");

    const unsigned char pascal[] = {3, 'a', 'b', 'c', 'd'};
    EXPECT_EQ(RzString(pascal), "abc");
    EXPECT_TRUE(IsNull(RzString(static_cast<const unsigned char*>(nullptr))));
}

TEST(RzString, CopiesShareUntilWritten) {
    RzString a("hello");
    RzString b(a);
    EXPECT_EQ(a.c_str(), b.c_str());
    EXPECT_EQ(RefCount(a), 2);

    b += '!';
    EXPECT_EQ(a, "hello");
    EXPECT_EQ(b, "hello!");
    EXPECT_EQ(RefCount(a), 1);

    RzString c;
    c = a;
    c[0] = 'J';  // the writable index unshares first
    EXPECT_EQ(a, "hello");
    EXPECT_EQ(c, "Jello");
    // Unsharing copies with capacity equal to the length.
    EXPECT_EQ(Capacity(c), 5);

    RzString d = a;
    char* p = d.Get(nullptr);
    p[1] = 'a';
    EXPECT_EQ(a, "hello");
    EXPECT_EQ(d, "hallo");

    // Self-assignment is harmless; assignment from a copy of itself too.
    d = d;
    EXPECT_EQ(d, "hallo");
    RzString e(RzString("temp"));
    e = RzString(e);
    EXPECT_EQ(e, "temp");
}

TEST(RzString, WritingThroughGetIsCountedAgain) {
    RzString s("abcdef");
    int32_t n = -5;
    char* p = s.Get(&n);
    EXPECT_EQ(n, 6);
    p[2] = 0;
    EXPECT_EQ(s.length(), 2);
    EXPECT_EQ(s, "ab");

    int32_t untouched = 77;
    EXPECT_EQ(RzString().Get(&untouched), nullptr);
    EXPECT_EQ(untouched, 77);

    // A binary string never recounts.
    RzString bin("x\0y", 3, true);
    bin.Get(nullptr)[0] = 0;
    EXPECT_EQ(bin.length(), 3);
}

TEST(RzString, SetLength) {
    RzString s(8, false);
    char* p = s.Get(nullptr);
    memcpy(p, "abcdefgh", 8);
    s.SetLength(4);
    EXPECT_EQ(s.length(), 4);
    EXPECT_EQ(Bytes(s.c_str(), 4), "abcd");
    s.SetLength(-1);  // unknown again: counted up to the zero at the capacity
    EXPECT_EQ(s.length(), 8);
    EXPECT_RZ_ERROR(s.SetLength(9), kRzIndexError, "RzIndexError");
    RzString null;
    EXPECT_RZ_ERROR(null.SetLength(0), kRzIndexError, "RzIndexError");

    // A shared buffer is made private and keeps its capacity.
    RzString reserved(10, false);
    RzString copy = reserved;
    copy.SetLength(3);
    EXPECT_EQ(reserved.length(), 0);
    EXPECT_EQ(copy.length(), 3);
    EXPECT_EQ(Capacity(copy), 10);
}

TEST(RzString, AppendGrowth) {
    // 1 character onto a full 4-character buffer: the floor of 10.
    RzString s("abcd");
    EXPECT_EQ(Capacity(s), 4);
    s += 'e';
    EXPECT_EQ(Capacity(s), 10);
    EXPECT_EQ(s, "abcde");

    // A full buffer of 20 grows by half to 30.
    RzString t(20, false);
    t += "01234567890123456789";
    EXPECT_EQ(Capacity(t), 20);
    t += "x";
    EXPECT_EQ(Capacity(t), 30);

    // A large append takes exactly what it needs.
    RzString u("ab");
    u += "0123456789012345678901234567890123456789";
    EXPECT_EQ(Capacity(u), 42);

    // One byte at a time, the capacity follows the documented steps exactly
    // (whatever spare room the block keeps behind them).
    RzString grown;
    int32_t expected = 0;
    for (int i = 0; i < 5000; ++i) {
        grown += 'x';
        if (i + 1 > expected) {
            int32_t needed = i + 1;
            if (2 * needed < 3 * expected) needed = 3 * expected / 2;
            expected = needed < 10 ? 10 : needed;
        }
        ASSERT_EQ(Capacity(grown), expected) << "after " << i + 1 << " bytes";
        ASSERT_EQ(grown.c_str()[Capacity(grown)], 0);
    }
    EXPECT_RZ_ERROR(grown[expected], kRzIndexError, "RzIndexError");

    // Appending nothing to the null string gives a non-null empty buffer.
    RzString n;
    n += RzString();
    EXPECT_FALSE(IsNull(n));
    EXPECT_EQ(Capacity(n), 0);

    // CatStringData directly.
    RzStringData* d = CatStringData(nullptr, nullptr, 0);
    EXPECT_EQ(d->capacity, 0);
    d = CatStringData(d, "xyz", 3);
    EXPECT_EQ(d->capacity, 10);
    EXPECT_STREQ(d->chars, "xyz");
    RzString adopt(d);
    EXPECT_EQ(adopt, "xyz");
}

TEST(RzString, AppendFormsAndOperators) {
    RzString s;
    s += "ab";
    const unsigned char pascal[] = {2, 'c', 'd'};
    s += pascal;
    s += 'e';
    s += RzString("fg");
    EXPECT_EQ(s, "abcdefg");
    EXPECT_EQ(s.length(), 7);

    EXPECT_EQ(RzString("ab") + 'c', "abc");
    EXPECT_EQ('a' + RzString("bc"), "abc");
    EXPECT_EQ(RzString("ab") + RzString("cd"), "abcd");
    EXPECT_EQ(RzString() + RzString(), "");

    // Appending a zero byte keeps it: the next append counts the text again
    // and lands behind the zero's position, as a fresh count finds it.
    RzString z("ab");
    z += '\0';
    EXPECT_EQ(z.length(), 3);
    z += 'c';
    EXPECT_EQ(z.length(), 3);
    EXPECT_EQ(z, "abc");

    // A binary buffer appends at its known length, zero bytes included.
    RzString b("a\0", 2, true);
    b += 'z';
    EXPECT_EQ(b.length(), 3);
    EXPECT_EQ(Bytes(b.c_str(), 3), Bytes("a\0z", 3));
}

TEST(RzString, AppendToItself) {
    RzString s("abc");  // capacity 3: the self-append must reallocate
    s += s;
    EXPECT_EQ(s, "abcabc");
    for (int i = 0; i < 6; ++i) s += s;
    EXPECT_EQ(s.length(), 6 * 64);
    EXPECT_EQ(std::string(s.c_str()).substr(0, 9), "abcabcabc");

    RzString t("xy");
    t += t.c_str();
    EXPECT_EQ(t, "xyxy");
    RzString shared = t;
    t += t;
    EXPECT_EQ(t, "xyxyxyxy");
    EXPECT_EQ(shared, "xyxy");

    RzString u;
    u += u;
    EXPECT_EQ(u, "");
}

TEST(RzString, LongRepeatedAppendKeepsEveryByte) {
    RzString s;
    std::string expected;
    for (int i = 0; i < 100000; ++i) {
        const char c = static_cast<char>('a' + i % 26);
        s += c;
        expected += c;
        if (i % 997 == 0) {
            s += "--";
            expected += "--";
        }
    }
    ASSERT_EQ(s.length(), static_cast<int32_t>(expected.size()));
    EXPECT_EQ(std::string(s.c_str()), expected);
}

TEST(RzString, PascalOutput) {
    unsigned char out[256];
    std::string longText(300, 'z');
    RzString(longText.c_str()).p_str(out);
    EXPECT_EQ(out[0], 255);
    EXPECT_EQ(out[255], 'z');
    RzString().p_str(out);
    EXPECT_EQ(out[0], 0);
    RzString("hi").p_str(out);
    EXPECT_EQ(out[0], 2);
    EXPECT_EQ(out[1], 'h');
    EXPECT_EQ(RzString("x").p_str(nullptr), nullptr);
}

TEST(RzString, Comparison) {
    EXPECT_LT(RzString("abc").cmp(RzString("abd")), 0);
    EXPECT_EQ(RzString().cmp(""), 0);
    EXPECT_RZ_ERROR(RzString("a").cmp(static_cast<const char*>(nullptr)), kRzArgErr, "RzArgErr");
    EXPECT_RZ_ERROR((void)(RzString("a") == static_cast<const char*>(nullptr)), kRzArgErr,
                    "RzArgErr");
    EXPECT_RZ_ERROR((void)(RzString("a") != static_cast<const char*>(nullptr)), kRzArgErr,
                    "RzArgErr");
    EXPECT_RZ_ERROR(RzString("a").cmpIgnoreCase(static_cast<const char*>(nullptr)), kRzArgErr,
                    "RzArgErr");
    EXPECT_TRUE("abc" == RzString("abc"));
    EXPECT_TRUE(static_cast<const char*>(nullptr) == RzString());

    EXPECT_TRUE(RzString("a") < RzString("b"));
    EXPECT_TRUE(RzString("b") > RzString("a"));
    EXPECT_TRUE(RzString("a") <= RzString("a"));
    EXPECT_TRUE(RzString("a") >= RzString("a"));
    EXPECT_FALSE(RzString("b") <= RzString("a"));

    // Binary strings compare only up to their first zero byte.
    EXPECT_TRUE(RzString("ab\0x", 4, true) == RzString("ab\0y", 4, true));

    // Case folding covers A-Z only; bytes from 128 order below ASCII here,
    // but above it for the strcmp-based cmp.
    EXPECT_EQ(RzString("HeLLo").cmpIgnoreCase("hello"), 0);
    EXPECT_LT(Rzstricmp("a", "B"), 0);
    EXPECT_LT(Rzstricmp("\xE9", "a"), 0);
    EXPECT_GT(RzString("\xE9").cmp("a"), 0);
    EXPECT_NE(Rzstricmp("\xC9", "\xE9"), 0);  // no accented folding
    EXPECT_EQ(Rzstricmp("[", "{"), '[' - '{');

    EXPECT_EQ(Rzstrincmp("ABCx", "abcy", 3), 0);
    EXPECT_LT(Rzstrincmp("ABCx", "abcy", 4), 0);
    EXPECT_EQ(Rzstrincmp("ab", "xy", 0), 0);
    EXPECT_EQ(Rzstrincmp("ab", "xy", -3), 0);
    EXPECT_EQ(Rzstrincmp("ab", "AB", 10), 0);  // the shared end stops it
    EXPECT_GT(Rzstrincmp("abc", "AB", 10), 0);
}

TEST(RzString, NumbersAndFormatting) {
    EXPECT_EQ(RzString("  42abc").atol(), 42);
    EXPECT_EQ(RzString("abc").atol(), 0);
    EXPECT_EQ(RzString("-17").atol(), -17);
    EXPECT_EQ(RzString("99999999999").atol(), INT32_MAX);  // as a 32-bit long saturates
    EXPECT_EQ(RzString("-99999999999").atol(), INT32_MIN);
    EXPECT_DOUBLE_EQ(RzString(" 2.5e1x").atof(), 25.0);
    EXPECT_DOUBLE_EQ(RzString().atof(), 0.0);

    RzString s;
    EXPECT_EQ(s.ltoa(-123), "-123");
    EXPECT_EQ(s, "-123");
    EXPECT_EQ(s.ftoa(1.5, nullptr), "1.500000");
    EXPECT_EQ(s.ftoa(1.5, "%.2f"), "1.50");
    EXPECT_EQ(s.Printf("%d-%s", 7, "x"), "7-x");
    EXPECT_EQ(s, "7-x");
    EXPECT_TRUE(IsNull(s.Printf("%s", "")));

    // Results longer than the classic 4096-byte buffer come out whole.
    std::string big(10000, 'q');
    EXPECT_EQ(s.Printf("<%s>", big.c_str()).length(), 10002);
    EXPECT_EQ(s.ftoa(1e300, "%.3f").length(), 305);
}

TEST(RzString, FourCharacterCodes) {
    RzString s;
    EXPECT_EQ(s.FromSig(0x54455800u), "TEX ");  // 'T','E','X',0
    EXPECT_EQ(s.FromSig(0x54455854u), "TEXT");
    EXPECT_EQ(s.FromSig(0x3Fu), "   ?");
    EXPECT_EQ(RzString("TEXT").ToSig(), 0x54455854u);
    EXPECT_EQ(RzString("ab").ToSig(), 0x61622020u);
    EXPECT_EQ(RzString("abcdef").ToSig(), 0x61626364u);
    EXPECT_EQ(RzString("").ToSig(), 0u);
    EXPECT_EQ(RzString("\xFF\x80").ToSig(), 0xFF802020u);
    for (uint32_t code : {0x38424953u, 0x2A2A2A2Au, 0x6A703220u})
        EXPECT_EQ(RzString().FromSig(code).ToSig(), code);
}

TEST(RzString, StrMatchExamples) {
    struct Case {
        const char* pattern;
        const char* text;
        bool match;
    } cases[] = {
        {"*.txt", "a.txt", true}, {"a?c", "abc", true},     {"a?c", "ac", false},
        {"*", "", true},          {"", "a", false},         {"", "", true},
        {"A*", "abc", false},     {"*a*b", "xxaxxb", true}, {"*a*b", "xxaxxbc", false},
        {"**", "", true},         {"a**", "a", true},       {"?", "", false},
        {"*?", "", false},        {"?*", "x", true},        {"a*b*c", "abc", true},
        {"a*b*c", "acb", false},  {"*ab", "aab", true},     {"x*", "y", false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(StrMatch(c.pattern, c.text), c.match) << c.pattern << " vs " << c.text;
    const char* same = "a*";
    EXPECT_TRUE(StrMatch(same, same));
    EXPECT_FALSE(StrMatch(nullptr, "a"));
    EXPECT_FALSE(StrMatch("a", nullptr));
    EXPECT_TRUE(StrMatch(nullptr, nullptr));
}

TEST(RzString, StrMatchPathologicalPatternIsFast) {
    std::string text(200, 'a');
    EXPECT_FALSE(StrMatch("*a*a*a*a*a*a*a*a*a*a*b", text.c_str()));
    EXPECT_TRUE(StrMatch("*a*a*a*a*a*a*a*a*a*a*", text.c_str()));
    EXPECT_FALSE(StrMatchMax("*a*a*a*a*a*a*a*a*a*a*b", text.c_str(), 300));
    std::string long_text(20000, 'a');
    EXPECT_FALSE(StrMatch("*a*a*a*a*a*a*a*a*a*a*b", long_text.c_str()));
}

TEST(RzString, StrMatchMaxHonoursTheBudget) {
    // "*b" against "aab": the star must absorb two characters.
    EXPECT_TRUE(StrMatchMax("*b", "aab", 2));
    EXPECT_FALSE(StrMatchMax("*b", "aab", 1));
    // The budget is checked only while text remains: absorbing the last
    // character may overdraw it.
    EXPECT_TRUE(StrMatchMax("a*", "abc", 1));
    EXPECT_FALSE(StrMatchMax("a*", "abc", 0));
    // Equal pattern and text: true unless the budget is already negative.
    const char pattern[] = "abc", text2[] = "abc";
    EXPECT_TRUE(StrMatchMax(pattern, text2, 0));
    EXPECT_FALSE(StrMatchMax(pattern, text2, -1));
    EXPECT_TRUE(StrMatchMax("", "", -5));
    // Equal suffixes end the walk with a match once reached within budget.
    const char stars[] = "****", marks[] = "???****";
    EXPECT_TRUE(StrMatchMax(stars, marks, 3));
    EXPECT_FALSE(StrMatchMax(stars, marks, 2));
    // The same pointer matches whatever the budget.
    const char* text = "xyz";
    EXPECT_TRUE(StrMatchMax(text, text, -1));
    // A pattern inside the text's own buffer: reaching the same position is a
    // match at once.
    const char* buffer = "?bc";
    EXPECT_TRUE(StrMatchMax(buffer, buffer + 0, -3));
}
