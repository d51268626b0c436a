#include <Rz/RzCore/RzString.h>

#include <iconv.h>
#include <string.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

namespace {

const auto State = StringState;

RzString Binary(const std::string& bytes) {
    return RzString(bytes.data(), static_cast<int32_t>(bytes.size()), true);
}

RzString Text(const std::string& bytes) {
    return RzString(bytes.c_str());
}

std::string Content(const RzString& s) {
    return std::string(s.c_str(), static_cast<size_t>(s.length()));
}

int32_t Capacity(const RzString& s) {
    return StringData(s)->capacity;
}

// Every byte 1..255 once, in an order that mixes runs of ASCII with the rest.
std::string AllNonZeroBytes() {
    std::string bytes;
    for (int i = 1; i < 256; ++i) bytes += static_cast<char>((i * 37) % 255 + 1);
    return bytes;
}

// The C library's conversion of `in`, or false when it has no converter.
bool Iconv(const char* to, const char* from, const std::string& in, std::string& out) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) return false;
    std::vector<char> buffer(4 * in.size() + 4);
    char* src = const_cast<char*>(in.data());
    char* dst = buffer.data();
    size_t srcLeft = in.size(), dstLeft = buffer.size();
    const bool converted = iconv(cd, &src, &srcLeft, &dst, &dstLeft) != static_cast<size_t>(-1);
    iconv_close(cd);
    out.assign(buffer.data(), buffer.size() - dstLeft);
    return converted;
}

}  // namespace

// --- Character sets ----------------------------------------------------------

TEST(RzStringConvert, MacRomanAndISO8859_1AreInversePermutations) {
    const std::string all = AllNonZeroBytes();
    const RzString latin = Text(all).MacRomanToISO8859_1();
    const RzString mac = Text(all).ISO8859_1ToMacRoman();
    std::vector<int> seen(256, 0);
    for (size_t i = 0; i < all.size(); ++i) {
        const unsigned char b = all[i], l = latin.c_str()[i], m = mac.c_str()[i];
        if (b < 0x80) {
            EXPECT_TRUE(l == b && m == b) << int(b);
        }
        ++seen[l];
    }
    for (int b = 1; b < 256; ++b) EXPECT_EQ(seen[b], 1) << b;
    EXPECT_EQ(Content(latin.ISO8859_1ToMacRoman()), all);
    EXPECT_EQ(Content(mac.MacRomanToISO8859_1()), all);
    EXPECT_EQ(State(latin), Content(latin) + "|255|txt|255");
}

TEST(RzStringConvert, CharacterSetSpotValues) {
    const struct {
        unsigned char in, out;
        bool fromMacRoman;
    } cases[] = {
        {0x8E, 0xE9, true},   // e acute
        {0xA5, 0x82, true},   // bullet, carried on a C1 code
        {0xCD, 0x90, true},   // capital O with tilde: the kept exception
        {0x90, 0xCD, false},  // and back
        {0xD5, 0xD5, false},  // ISO-8859-1 O tilde is Mac OS Roman's right single quote
        {0xE9, 0x8E, false},
    };
    for (auto c : cases) {
        const RzString in(reinterpret_cast<const char*>(&c.in), 1, false);
        const RzString out = c.fromMacRoman ? in.MacRomanToISO8859_1() : in.ISO8859_1ToMacRoman();
        EXPECT_EQ(static_cast<unsigned char>(out.c_str()[0]), c.out) << int(c.in);
    }
}

// Mac OS Roman characters that ISO-8859-1 has take their standard code (the
// one exception aside), as the C library's converter says.
TEST(RzStringConvert, MacRomanUsesStandardCodesWhereTheyExist) {
    std::string unicode;
    for (int b = 0x80; b < 0x100; ++b) {
        const std::string byte(1, static_cast<char>(b));
        if (!Iconv("UCS-4BE", "MACINTOSH", byte, unicode)) GTEST_SKIP() << "no MACINTOSH converter";
        const uint32_t u = (uint32_t(uint8_t(unicode[2])) << 8) | uint8_t(unicode[3]);
        if (unicode.compare(0, 2, std::string(2, '\0')) != 0 || u > 0xFF || b == 0xCD) continue;
        EXPECT_EQ(uint8_t(Text(byte).MacRomanToISO8859_1().c_str()[0]), u) << b;
    }
}

TEST(RzStringConvert, TableConversionsCopyWholeAndTranslateBeforeTheZero) {
    const RzString source = Binary(std::string("a\x8E\0\x8E", 4));
    const RzString copy = source.MacRomanToISO8859_1();
    EXPECT_EQ(State(copy), std::string("a\xE9\0\x8E|4|bin|4", 12));
    EXPECT_EQ(State(RzString().ISO8859_1ToMacRoman()), "|0|txt|0");
    EXPECT_EQ(Content(source), std::string("a\x8E\0\x8E", 4));  // the source is untouched
}

TEST(RzStringConvert, ISO8859_1ToUTF8AgreesWithIconv) {
    const std::string all = AllNonZeroBytes() + AllNonZeroBytes().substr(100);
    std::string expected;
    ASSERT_TRUE(Iconv("UTF-8", "ISO-8859-1", all, expected));
    const RzString utf8 = Text(all).ISO8859_1ToUTF8();
    EXPECT_EQ(Content(utf8), expected);
    EXPECT_EQ(Capacity(utf8), 2 * int32_t(all.size()));
    EXPECT_EQ(State(Text("\xE9").ISO8859_1ToUTF8()), "\xC3\xA9|2|txt|2");
    // One pass for MacRomanToUTF8 gives what the two steps give.
    const RzString mac = Text(all).MacRomanToUTF8();
    EXPECT_EQ(State(mac), State(Text(all).MacRomanToISO8859_1().ISO8859_1ToUTF8()));
    EXPECT_EQ(Content(Text("\xA5").MacRomanToUTF8()), "\xC2\x82");  // bullet: its C1 code
}

TEST(RzStringConvert, RoundTripsThroughUTF8AreLossless) {
    for (const std::string& text : {AllNonZeroBytes(), std::string("plain ASCII, long enough")}) {
        EXPECT_EQ(Content(Text(text).MacRomanToUTF8().UTF8ToMacRoman()), text);
        EXPECT_EQ(Content(Text(text).ISO8859_1ToUTF8().UTF8ToISO8859_1()), text);
    }
}

// --- Unicode -----------------------------------------------------------------

// Each case: UTF-8 bytes, then what UTF8ToISO8859_1 and UTF8ToUTF16 give.
TEST(RzStringConvert, UTF8Decoding) {
    const struct {
        std::string utf8, latin, utf16;
    } cases[] = {
        {"A", "A", std::string("\0A", 2)},
        {"\xC3\xA9", "\xE9", std::string("\0\xE9", 2)},
        {"\xE2\x82\xAC", "?", "\x20\xAC"},                      // euro sign
        {"\xF0\x9F\x98\x80", "?", std::string("\xF6\0", 2)},    // U+1F600 cut to 16 bits
        {"\xC3\x41", "\x03\x41", std::string("\0\x03\0A", 4)},  // a cut sequence, then 'A'
        {"\xE2\x82", "\x82", std::string("\0\x82", 2)},         // cut by the end
        {"\xBF\xBF", "?", "\x0F\xFF"},                          // continuation lead: length 5
        {"\x81\x80\x80\x80\x80\x81", "?\x01", std::string("\0\0\0\x01", 4)},  // five, then one
        {"\xFD\xBF\xBF\xBF\xBF\xBF", "?", "\xFF\xFF"},                        // 31 bits
        {"\xC0\x80\x78", "", std::string("\0\0\0x", 4)},  // an overlong zero, then 'x'
        {"\xED\xA0\xBD", "?", "\xD8\x3D"},                // a lone surrogate
    };
    for (const auto& c : cases) {
        const RzString latin = Text(c.utf8).UTF8ToISO8859_1();
        const RzString utf16 = Text(c.utf8).UTF8ToUTF16();
        EXPECT_EQ(Content(latin), c.latin) << c.utf8;
        EXPECT_EQ(Capacity(latin), int32_t(c.utf8.size()));
        EXPECT_EQ(State(utf16), c.utf16 + "|" + std::to_string(c.utf16.size()) + "|bin|" +
                                    std::to_string(2 * c.utf8.size()));
    }
    EXPECT_EQ(Content(Binary(std::string("A\0B", 3)).UTF8ToUTF16()), std::string("\0A", 2));
    EXPECT_EQ(State(RzString().UTF8ToUTF16()), "|0|bin|0");
}

// Texts of every length around the eight-byte steps, with two- and
// three-byte characters at every position.
TEST(RzStringConvert, UTF8ToUTF16AgreesWithIconv) {
    const char* const pieces[] = {"a", "Z", " ", "\xC3\xA9", "\xC3\xBC", "\xE2\x82\xAC", "."};
    for (int length = 0; length < 40; ++length) {
        for (int shift = 0; shift < 7; ++shift) {
            std::string text;
            for (int i = 0; i < length; ++i) text += pieces[(i * i + shift) % 7];
            std::string expected;
            ASSERT_TRUE(Iconv("UTF-16BE", "UTF-8", text, expected));
            const RzString utf16 = Text(text).UTF8ToUTF16();
            ASSERT_EQ(Content(utf16), expected) << text;
            EXPECT_EQ(Content(utf16.UTF16ToUTF8()), text);
        }
    }
}

TEST(RzStringConvert, UTF16ToUTF8) {
    const struct {
        std::string utf16, utf8;
    } cases[] = {
        {std::string("\0A", 2), "A"},
        {std::string("\0\xE9", 2), "\xC3\xA9"},
        {"\x07\xFF", "\xDF\xBF"},
        {std::string("\x08\0", 2), "\xE0\xA0\x80"},
        {std::string("\xD8\x3D\xDE\0", 4), "\xED\xA0\xBD\xED\xB8\x80"},  // no pair is combined
        {"\xFE\xFF", "\xEF\xBB\xBF"},     // a byte-order mark is a unit
        {std::string("\0AB", 3), "A"},    // a trailing odd byte
        {std::string("\0\0\0A", 4), ""},  // a zero unit ends the text
    };
    for (const auto& c : cases) {
        const RzString utf8 = Binary(c.utf16).UTF16ToUTF8();
        EXPECT_EQ(Content(utf8), c.utf8);
        EXPECT_EQ(Capacity(utf8), 4 * int32_t(c.utf16.size()));
    }
    EXPECT_EQ(std::string(Binary(std::string("\0\0\0A", 4)).UTF16ToUTF8().c_str() + 1, 1), "A");
}

// --- Hexadecimal text --------------------------------------------------------------

TEST(RzStringConvert, Bin2Str) {
    RzString s("old");
    EXPECT_EQ(State(s.Bin2Str("\x00\xAB\x7F", 3)), "00AB7F|6|txt|6");
    EXPECT_EQ(State(s), "00AB7F|6|txt|6");
    for (int32_t n : {0, -1}) EXPECT_EQ(State(RzString("x").Bin2Str("ab", n)), "null");
    EXPECT_EQ(State(s.Bin2Str(nullptr, 3)), "null");
    RzString self("hi");
    self.Bin2Str(self.c_str(), 2);  // the bytes may be the string's own
    EXPECT_EQ(self, "6869");
    EXPECT_EQ(Binary(std::string("a\0b", 3)).BinStr2Str(), "610062");
    RzString cut("abc");
    cut.Get(nullptr)[1] = 0;
    EXPECT_EQ(cut.BinStr2Str(), "61");
}

TEST(RzStringConvert, Str2Bin) {
    const struct {
        const char* hex;
        std::string written;
        bool raises;
    } cases[] = {
        {"00ab7f", std::string("\0\xAB\x7F", 3), false},
        {"AbCdEf", "\xAB\xCD\xEF", false},
        {"", "", false},
        {"0G", "", true},
        {"G0", "", true},
        {"AB0G", "\xAB", true},  // what was decoded stays
        {"ABC", "\xAB", true},   // odd length
        {"AB C", "\xAB", true},
    };
    for (const auto& c : cases) {
        unsigned char out[8];
        memset(out, 0xEE, sizeof out);
        int32_t size = -7;
        if (c.raises) {
            const RzError e = CatchRzError([&] { Text(c.hex).Str2Bin(out, &size); });
            EXPECT_TRUE(e.GetErr() == kRzFormatErr && strcmp(e.GetErrName(), "RzFormatErr") == 0 &&
                        strcmp(e.GetFileName(), "RzString") == 0)
                << c.hex;
            EXPECT_EQ(size, -7);
        } else {
            Text(c.hex).Str2Bin(out, &size);
            EXPECT_EQ(size, int32_t(c.written.size()));
        }
        EXPECT_EQ(std::string(reinterpret_cast<char*>(out), c.written.size()), c.written) << c.hex;
        EXPECT_EQ(out[c.written.size()], 0xEE) << c.hex;
    }
    int32_t size = 0;
    Text("0G0G").Str2Bin(nullptr, &size);  // nothing decoded, so nothing checked
    EXPECT_EQ(size, 2);
    EXPECT_RZ_ERROR(Text("ABC").Str2Bin(nullptr, &size), kRzFormatErr, "RzFormatErr");
}

TEST(RzStringConvert, BinSizeAndStr2BinStr) {
    EXPECT_EQ(RzString().BinSize(), 0);
    EXPECT_EQ(Text("ABCD").BinSize(), 2);
    EXPECT_RZ_ERROR(Text("ABC").BinSize(), kRzFormatErr, "RzFormatErr");
    EXPECT_EQ(State(Text("00ab7f").Str2BinStr()), std::string("\0\xAB\x7F", 3) + "|3|txt|3");
    EXPECT_EQ(State(Text("").Str2BinStr()), "null");
    EXPECT_EQ(State(RzString().Str2BinStr()), "null");
    // A zero byte in a binary text ends the decoding; the size stays.
    EXPECT_EQ(State(Binary(std::string("41\0\0", 4)).Str2BinStr()), std::string("A\0|2|txt|2", 10));
    EXPECT_RZ_ERROR(Text("4").Str2BinStr(), kRzFormatErr, "RzFormatErr");
    const std::string all = AllNonZeroBytes();
    EXPECT_EQ(Content(RzString().Bin2Str(all.data(), int32_t(all.size())).Str2BinStr()), all);
}
