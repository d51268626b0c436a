#include <Rz/RzCore/RzString.h>

#include <string.h>

#include <string>
#include <utility>

#include <Rz/RzData/RzArray.h>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

namespace {

const auto State = StringState;

RzString Bin(const char* p, size_t n) {
    return RzString(p, static_cast<int32_t>(n), true);
}

std::string Join(const RzArray<RzString>& a) {
    std::string out;
    for (int i = 0; i < a.count; ++i) out += std::string(a[i].c_str()) + "|";
    return out;
}

}  // namespace

TEST(RzStringEdit, Find) {
    // Only A-Z fold. A `what` holding a zero byte compares through that byte
    // only, but candidates still end at length - length(what).
    struct Case {
        RzString text, what;
        int32_t from;
        bool ignoreCase;
        int32_t forward, backward;
    } cases[] = {{"abcde", "", 3, false, 3, 5},
                 {"ab", "", 3, false, -1, 2},
                 {"abc", "B", 0, true, 1, 1},
                 {"abc", "B", 0, false, -1, -1},
                 {"abab", "ab", -4, false, 0, 2},
                 {"aXbAxB", "axb", 1, true, 3, 3},
                 {"\xE9\xC9", "\xC9", 0, true, 1, 1},
                 {RzString(), "a", 0, false, -1, -1},
                 {Bin("xb\0yy", 5), Bin("b\0z", 3), 0, false, 1, 1},
                 {Bin("xb\0", 3), Bin("b\0z", 3), 0, false, -1, -1}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.text.c_str()) + " / " + c.what.c_str());
        EXPECT_EQ(c.text.find(c.what, c.from, c.ignoreCase), c.forward);
        EXPECT_EQ(c.text.findreverse(c.what, c.ignoreCase), c.backward);
    }
    RzString path("/usr/local/lib");
    EXPECT_EQ(Joined(path.find('/', 1), path.find('/', 15), path.findreverse('/'),
                     path.containsChar("kl"), path.containsChar("")),
              "4|-1|10|5|-1");
    EXPECT_EQ(Joined(RzString::IsWhiteSpace('\0', RzString()), RzString::IsWhiteSpace('\r', ""),
                     RzString::IsWhiteSpace(' ', ","), RzString::IsWhiteSpace('\0', ",")),
              "true|true|false|false");
}

TEST(RzStringEdit, FindInLongTexts) {
    // Long texts: case-insensitive search goes a window at a time (a match
    // may straddle two), and a search whose rare byte hits everywhere falls
    // back to another method part way.
    for (int32_t at : {0, 65533, 65535, 65536, 131071, 199997}) {
        std::string text(200000, 'x');
        text.replace(static_cast<size_t>(at), 3, "AbC");
        const RzString t(text.c_str());
        EXPECT_EQ(t.find("aBc", 0, true), at);
        EXPECT_EQ(t.find("aBc", at + 1, true), -1);
        const RzString b(
            std::string(200000, 'b').replace(static_cast<size_t>(at), 2, "ee").c_str());
        EXPECT_EQ(b.find("eeb", 0, false), at);
        EXPECT_EQ(b.find("eeb", at + 1, false), -1);
    }
}

TEST(RzStringEdit, Substr) {
    const RzString hello("hello");
    struct Case {
        int32_t from, count;
        const char* expected;
    } cases[] = {{2, -1, "llo"}, {-3, 2, "he"}, {5, 1, ""}, {1, 0, ""}, {3, 100, "lo"}};
    for (const Case& c : cases) EXPECT_EQ(hello.substr(c.from, c.count), c.expected);
    EXPECT_EQ(State(hello.substr(9, 2)), "|0|txt|0");  // non-null empty
    EXPECT_EQ(State(Bin("a\0bc", 4).substr(1, 2)), Bytes("\0b|2|bin|2", 10));
    EXPECT_RZ_ERROR(hello.substr(1, -2), kRzArgErr, "RzArgErr");
}

TEST(RzStringEdit, InPlaceRewriting) {
    struct Case {
        const char* before;
        void (*edit)(RzString&);
        const char* after;
    } cases[] = {
        {"a.b.c", [](RzString& s) { s.Replace('.', '\0'); }, "a"},
        {"Hello \xC4Z9", [](RzString& s) { s.LoCase(); }, "hello \xC4z9"},
        {"Hello \xE4z9", [](RzString& s) { s.HiCase(); }, "HELLO \xE4Z9"},
        {"1.500", [](RzString& s) { s.StripTrailingZeros(); }, "1.5"},
        {".", [](RzString& s) { s.StripTrailingZeros(); }, "0"},
        {"100", [](RzString& s) { s.StripTrailingZeros(); }, "100"},
        {"100.0", [](RzString& s) { s.StripTrailingZeros(); }, "100"},
        {"a\r\nb\rc\n", [](RzString& s) { s.AdjustLineFeed("\n"); }, "a\nb\nc\n"},
        {"a\nb\n\r", [](RzString& s) { s.AdjustLineFeed("\r\n"); }, "a\r\nb\r\n\r\n"},
        {" x ", [](RzString& s) { s.Strip(" \t", true, false); }, "x"},
        {" \t ", [](RzString& s) { s.Strip(" \t"); }, ""},
    };
    for (const Case& c : cases) {
        RzString s(c.before);
        const RzString shared = s;  // edits must not reach a copy
        c.edit(s);
        EXPECT_EQ(s, c.after) << c.before;
        EXPECT_EQ(s.length(), static_cast<int32_t>(strlen(c.after))) << c.before;
        EXPECT_EQ(shared, c.before);
    }
    RzString null;
    EXPECT_EQ(State(null.Strip(" ")), "null");
    RzString bin = Bin("A\0B", 3);
    bin.LoCase();
    bin.Reverse();
    EXPECT_EQ(State(bin), Bytes("b\0a|3|bin|3", 11));
    RzString lines("a\rb\rc");  // appended into a buffer of the old length
    lines.AdjustLineFeed("\r\n");
    EXPECT_EQ(State(lines), "a\r\nb\r\nc|7|txt|10");
}

TEST(RzStringEdit, GlobalReplace) {
    // Against the loop it is defined by in the string_replace fuzz target.
    RzString s("banana"), self("ab");
    EXPECT_EQ(Replace("a", "aa", s), 3);
    EXPECT_EQ(s, "baanaanaa");
    EXPECT_EQ(Replace("", "y", s), 0);
    EXPECT_EQ(Replace(self, "x", self), 1);
    EXPECT_EQ(self, "x");
}

TEST(RzStringEdit, Words) {
    // Reading and counting single words run against their definition in the
    // string_words fuzz target.
    const RzString quoted("  \"say \\\"hi\\\" now\" next");
    EXPECT_EQ(quoted.ReadWord(1, true, " "), "next");
    EXPECT_EQ(State(quoted.ReadWord(2, true, " ")), "null");
    RzArray<RzString> words;
    quoted.ReadStrings(words, " ");
    EXPECT_EQ(Join(words), "\"say \\\"hi\\\" now\"|next|");  // stored with quotes
    for (auto c : {std::make_pair("a,,b,", "a||b|"), std::make_pair(",a", "|a|"),
                   std::make_pair("", ""), std::make_pair("abc", "abc|")}) {
        RzString(c.first).Split(words, ',');
        EXPECT_EQ(Join(words), c.second) << c.first;
    }
    RzString("x y,z").Split(words, ',');
    RzString merged("old");
    merged.MergeStrings(words, " ");
    EXPECT_EQ(merged, "x y z");  // not quoted: three words come back
}

TEST(RzStringEdit, Quoting) {
    struct Case {
        const char *plain, *quoted;
    } cases[] = {{"a\\b", "\"a\\\\b\""},
                 {"", "\"\""},
                 {"say \"x\"", "\"say \\\"x\\\"\""},
                 {"\n\t", "\"\n\t\""}};
    for (const Case& c : cases) {
        EXPECT_EQ(RzString(c.plain).QuoteString(), c.quoted);
        EXPECT_EQ(RzString(c.quoted).UnQuoteString(), c.plain);
    }
    EXPECT_EQ(RzString("\"").UnQuoteString(), "");
    EXPECT_EQ(RzString("\"a\\nb\\\"").UnQuoteString(), "a\\nb\\");  // kept backslashes
    for (const RzString& bad : {RzString(), RzString(""), RzString("abc"), RzString("\"abc")})
        EXPECT_RZ_ERROR(bad.UnQuoteString(), kRzFormatErr, "RzFormatErr");
}
