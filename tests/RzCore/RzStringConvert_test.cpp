#include <Rz/RzCore/RzString.h>

#include <iconv.h>
#include <string.h>

#include <functional>
#include <string>
#include <vector>

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

// Every byte 1..255 once, in an order that mixes ASCII with the rest.
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

// Mac OS Roman characters that ISO-8859-1 has keep their standard code (as
// the C library's converter says), except 0xCD; the others fill the unused
// codes, so that the table is a permutation. (That the second table undoes
// it for every byte, also through UTF-8, is replayed from the fuzz corpus.)
TEST(RzStringConvert, MacRomanTable) {
    const std::string all = AllNonZeroBytes();
    const std::string latin = Content(RzString(all.c_str()).MacRomanToISO8859_1());
    std::vector<int> seen(256, 0);
    for (size_t i = 0; i < all.size(); ++i) {
        const unsigned char mac = all[i], code = latin[i];
        ++seen[code];
        std::string unicode;
        ASSERT_TRUE(Iconv("UCS-4BE", "MACINTOSH", all.substr(i, 1), unicode));
        const uint32_t u =
            (uint8_t(unicode[1]) << 16) | (uint8_t(unicode[2]) << 8) | uint8_t(unicode[3]);
        EXPECT_TRUE(u > 255 || mac == 0xCD || code == u) << int(mac);
    }
    for (int b = 1; b < 256; ++b) EXPECT_EQ(seen[b], 1) << b;
    EXPECT_EQ(Content(RzString("\xA5\xCD").MacRomanToISO8859_1()), "\x82\x90");  // bullet, O tilde
    EXPECT_EQ(Content(RzString("\x90\xD5").ISO8859_1ToMacRoman()), "\xCD\xD5");
}

// Lengths, binary flags and capacities of the results.
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

// Each case: UTF-8 bytes, then what UTF8ToISO8859_1 and UTF8ToUTF16 give.
TEST(RzStringConvert, UTF8Decoding) {
    const struct {
        std::string utf8, latin, utf16;
    } cases[] = {
        {"\xC3\xA9", "\xE9", std::string("\0\xE9", 2)},
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
        EXPECT_EQ(Content(RzString(c.utf8.c_str()).UTF8ToISO8859_1()), c.latin) << c.utf8;
        EXPECT_EQ(Content(RzString(c.utf8.c_str()).UTF8ToUTF16()), c.utf16) << c.utf8;
    }
}

// Valid text of every length around the sixteen-byte blocks, with two- and
// three-byte characters at every position, as the C library converts it.
TEST(RzStringConvert, UnicodeAgreesWithIconv) {
    const char* const pieces[] = {"a", "Z", " ", "\xC3\xA9", "\xC3\xBC", "\xE2\x82\xAC", "."};
    for (int length = 0; length < 40; ++length) {
        for (int shift = 0; shift < 7; ++shift) {
            std::string text, expected;
            for (int i = 0; i < length; ++i) text += pieces[(i * i + shift) % 7];
            ASSERT_TRUE(Iconv("UTF-16BE", "UTF-8", text, expected));
            const RzString utf16 = RzString(text.c_str()).UTF8ToUTF16();
            ASSERT_EQ(Content(utf16), expected) << text;
            EXPECT_EQ(Content(utf16.UTF16ToUTF8()), text);
        }
    }
    const std::string all = AllNonZeroBytes();
    std::string expected;
    ASSERT_TRUE(Iconv("UTF-8", "ISO-8859-1", all, expected));
    EXPECT_EQ(Content(RzString(all.c_str()).ISO8859_1ToUTF8()), expected);
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

TEST(RzStringConvert, Hexadecimal) {
    RzString s("old");
    EXPECT_EQ(s.Bin2Str("\x00\xAB\x7F", 3), "00AB7F");
    EXPECT_EQ(s, "00AB7F");
    EXPECT_EQ(State(s.Bin2Str("ab", -1)), "null");
    s = "hi";
    s.Bin2Str(s.c_str(), 2);  // the bytes may be the string's own
    EXPECT_EQ(s, "6869");
    EXPECT_RZ_ERROR(RzString("ABC").BinSize(), kRzFormatErr, "RzFormatErr");

    // Decoding stops at the first fault; what came before stays, the size
    // is not reported.
    for (const char* hex : {"AB0G", "ABC", "AB C"}) {
        unsigned char out[4] = {0, 0xEE, 0xEE, 0xEE};
        int32_t size = -7;
        const RzError e = CatchRzError([&] { RzString(hex).Str2Bin(out, &size); });
        EXPECT_TRUE(e.GetErr() == kRzFormatErr && strcmp(e.GetFileName(), "RzString") == 0) << hex;
        EXPECT_TRUE(out[0] == 0xAB && out[1] == 0xEE && size == -7) << hex;
    }
    int32_t size = 0;
    RzString("0G0G").Str2Bin(nullptr, &size);  // nothing decoded, so nothing checked
    EXPECT_EQ(size, 2);
}
