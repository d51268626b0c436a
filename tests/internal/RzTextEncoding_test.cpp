#include <Rz/internal/RzTextEncoding.h>

#include <string.h>

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// The decoder reads nothing at or behind `end`, even inside a sequence.
TEST(RzTextEncoding, DecoderStopsAtTheEnd) {
    const unsigned char euro[] = {0xE2, 0x82, 0xAC};
    for (size_t n = 1; n <= 3; ++n) {
        const unsigned char* p = euro;
        const uint32_t value = RzDecodeUTF8(p, euro + n);
        EXPECT_EQ(p, euro + n);
        EXPECT_EQ(value, n == 1 ? 0x2u : n == 2 ? 0x82u : 0x20ACu);
    }
}

// The converters store eight (sixteen) bytes at a time ahead of what they
// know to be output; none of it may land behind the size each one documents.
TEST(RzTextEncoding, ConvertersStayInsideTheirOutput) {
    const struct {
        const char* name;
        size_t (*bound)(size_t n);
        std::function<size_t(const char*, size_t, char*)> convert;
    } converters[] = {
        {"ISO8859_1ToUTF8", [](size_t n) { return 2 * n; },
         [](const char* in, size_t n, char* out) { return RzISO8859_1ToUTF8(in, n, out, false); }},
        {"MacRomanToUTF8", [](size_t n) { return 2 * n; },
         [](const char* in, size_t n, char* out) { return RzISO8859_1ToUTF8(in, n, out, true); }},
        {"UTF8ToISO8859_1", [](size_t n) { return n; }, RzUTF8ToISO8859_1},
        {"UTF8ToUTF16BE", [](size_t n) { return 2 * n; }, RzUTF8ToUTF16BE},
        {"UTF16BEToUTF8", [](size_t n) { return 3 * (n / 2); }, RzUTF16BEToUTF8},
    };
    const char guard = '\x5A';
    for (const auto& c : converters) {
        for (size_t n = 0; n < 40; ++n) {
            for (int kind = 0; kind < 3; ++kind) {
                std::string in;  // ASCII, then one of: more ASCII, an accent, a zero byte
                for (size_t i = 0; i < n; ++i) in += char('a' + i % 26);
                if (n > 0 && kind == 1) in[n - 1] = '\xE9';
                if (n > 0 && kind == 2) in[n / 2] = 0;
                std::vector<char> out(c.bound(n) + 32, guard);
                const size_t written = c.convert(in.data(), n, out.data());
                EXPECT_LE(written, c.bound(n)) << c.name << " " << n;
                for (size_t i = c.bound(n); i < out.size(); ++i)
                    ASSERT_EQ(out[i], guard) << c.name << " " << n << " kind " << kind;
            }
        }
    }
}
