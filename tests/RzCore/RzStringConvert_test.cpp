#include <Rz/RzCore/RzString.h>

#include <functional>
#include <string>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

namespace {

const auto State = StringState;

RzString Binary(const std::string& bytes) {
    return RzString(bytes.data(), static_cast<int32_t>(bytes.size()), true);
}

std::string Content(const RzString& s) {
    return std::string(s.c_str(), static_cast<size_t>(s.length()));
}

}  // namespace

// The tables against the C library's converter and each other, UTF-8
// decoding against its rule and UTF-16 against the C library run in the
// fuzz targets (charset_roundtrip, utf8_decode); here: the shapes of the
// results and the codes and quirks worth seeing by example.
TEST(RzStringConvert, ResultShapes) {
    using Conversion = std::function<RzString(const RzString&)>;
    const struct {
        const char* name;
        Conversion convert;
        RzString source;
        std::string state;
    } cases[] = {
        {"table copy", &RzString::MacRomanToISO8859_1, Binary(std::string("a\x8E\0\x8E", 4)),
         std::string("a\xE9\0\x8E|4|bin|4", 12)},
        {"bullet, O tilde", &RzString::MacRomanToISO8859_1, RzString("\xA5\xCD"),
         "\x82\x90|2|txt|2"},
        {"quote stays", &RzString::ISO8859_1ToMacRoman, RzString("\x90\xD5"), "\xCD\xD5|2|txt|2"},
        {"table copy of null", &RzString::ISO8859_1ToMacRoman, RzString(), "|0|txt|0"},
        {"to UTF-8", &RzString::ISO8859_1ToUTF8, RzString("\xE9z"), "\xC3\xA9z|3|txt|4"},
        {"C1 code", &RzString::MacRomanToUTF8, RzString("\xA5"), "\xC2\x82|2|txt|2"},
        {"stops at zero", &RzString::ISO8859_1ToUTF8, Binary(std::string("a\0b", 3)), "a|1|txt|6"},
        {"euro", &RzString::UTF8ToISO8859_1, RzString("\xE2\x82\xAC"), "?|1|txt|3"},
        {"to UTF-16", &RzString::UTF8ToUTF16, Binary(std::string("A\0B", 3)),
         std::string("\0A|2|bin|6", 10)},
        {"zero unit", &RzString::UTF16ToUTF8, Binary(std::string("\0\0\0A", 4)), "|0|txt|16"},
        {"hex", &RzString::BinStr2Str, Binary(std::string("a\0b", 3)), "610062|6|txt|6"},
        {"bytes", &RzString::Str2BinStr, RzString("00ab7f"), std::string("\0\xAB\x7F|3|txt|3", 11)},
        {"zero in hex", &RzString::Str2BinStr, Binary(std::string("41\0\0", 4)),
         std::string("A\0|2|txt|2", 10)},
        {"empty hex", &RzString::Str2BinStr, RzString(""), "null"},
    };
    for (const auto& c : cases) EXPECT_EQ(State(c.convert(c.source)), c.state) << c.name;
}

TEST(RzStringConvert, UTF16ToUTF8) {
    const struct {
        std::string utf16, utf8;
    } cases[] = {
        {"\x07\xFF", "\xDF\xBF"},
        {std::string("\x08\0", 2), "\xE0\xA0\x80"},
        {std::string("\xD8\x3D\xDE\0", 4), "\xED\xA0\xBD\xED\xB8\x80"},  // no pair is combined
        {"\xFE\xFF", "\xEF\xBB\xBF"},   // a byte-order mark is a unit
        {std::string("\0AB", 3), "A"},  // a trailing odd byte
    };
    for (const auto& c : cases) EXPECT_EQ(Content(Binary(c.utf16).UTF16ToUTF8()), c.utf8);
}

// Decoding against its rule runs in the hex_decode fuzz target.
TEST(RzStringConvert, Hexadecimal) {
    RzString s("old");
    s = "\xAB\x7F";
    EXPECT_EQ(s.Bin2Str(s.c_str(), 2), "AB7F");  // the bytes may be the string's own
    EXPECT_EQ(s, "AB7F");
    EXPECT_EQ(State(s.Bin2Str("ab", -1)), "null");
    unsigned char out[2] = {0, 0xEE};  // nothing of a bad pair is written
    EXPECT_RZ_ERROR(RzString("AB0G").Str2Bin(out, nullptr), kRzFormatErr, "RzFormatErr");
    EXPECT_EQ(Joined(out[0], out[1]), Joined(0xAB, 0xEE));
    int32_t size = -7;
    RzString("0G0G").Str2Bin(nullptr, &size);  // nothing decoded, so nothing checked
    EXPECT_EQ(size, 2);
}
