#include <Rz/internal/RzTextEncoding.h>

#include <string.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// Texts of every length around the sixteen-byte blocks the converters move,
// with other bytes at every position: accents, longer and cut sequences,
// stray continuation bytes and zero bytes.
std::vector<std::string> Samples() {
    const char* const pieces[] = {
        "a",    "Z",    " ",        "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
        "\xC3", "\x80", "\xFD\xBF", "\x8E"};
    std::vector<std::string> samples;
    for (int length = 0; length < 48; ++length) {
        for (int kind = 0; kind < 12; ++kind) {
            std::string s;
            for (int i = 0; i < length; ++i)
                s += (i * 7 + kind) % 11 == 0 ? pieces[3 + (i + kind) % 7] : pieces[(i + kind) % 3];
            if (kind == 11 && length > 0) s[length / 2] = 0;
            samples.push_back(s);
        }
    }
    return samples;
}

// What each converter writes, one character at a time.
std::string ReferenceSingleBytes(const std::string& in, bool macRoman) {
    std::string out;
    for (unsigned char b : in) {
        if (b == 0) break;
        const unsigned c = b >= 0x80 && macRoman ? kRzMacRomanToISO8859_1[b - 128] : b;
        char bytes[3];
        out.append(bytes, RzEncodeUTF8(c, bytes));
    }
    return out;
}

std::string ReferenceDecoded(const std::string& in, bool toUTF16) {
    std::string out;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(in.data());
    const unsigned char* const end = p + in.size();
    while (p < end && *p != 0) {
        const uint32_t v = RzDecodeUTF8(p, end);
        if (toUTF16) out += static_cast<char>(v >> 8);
        out += toUTF16 ? static_cast<char>(v) : v < 256 ? static_cast<char>(v) : '?';
    }
    return out;
}

struct Converter {
    const char* name;
    size_t (*bound)(size_t n);  // the output size the converter may use
    size_t (*convert)(const char* in, size_t n, char* out);
    std::string (*reference)(const std::string& in);
};

const Converter kConverters[] = {
    {"ISO8859_1ToUTF8", [](size_t n) { return 2 * n; },
     [](const char* in, size_t n, char* out) { return RzISO8859_1ToUTF8(in, n, out, false); },
     [](const std::string& in) { return ReferenceSingleBytes(in, false); }},
    {"MacRomanToUTF8", [](size_t n) { return 2 * n; },
     [](const char* in, size_t n, char* out) { return RzISO8859_1ToUTF8(in, n, out, true); },
     [](const std::string& in) { return ReferenceSingleBytes(in, true); }},
    {"UTF8ToISO8859_1", [](size_t n) { return n; }, RzUTF8ToISO8859_1,
     [](const std::string& in) { return ReferenceDecoded(in, false); }},
    {"UTF8ToUTF16BE", [](size_t n) { return 2 * n; }, RzUTF8ToUTF16BE,
     [](const std::string& in) { return ReferenceDecoded(in, true); }},
};

}  // namespace

// The block-wise converters write what converting one character at a time
// writes, and their stores ahead of the result never land behind the output
// size they document.
TEST(RzTextEncoding, ConvertersMatchTheCharacterRule) {
    const char guard = '\x5A';
    for (const Converter& c : kConverters) {
        for (const std::string& in : Samples()) {
            std::vector<char> out(c.bound(in.size()) + 32, guard);
            const size_t written = c.convert(in.data(), in.size(), out.data());
            ASSERT_EQ(std::string(out.data(), written), c.reference(in)) << c.name << " " << in;
            for (size_t i = c.bound(in.size()); i < out.size(); ++i)
                ASSERT_EQ(out[i], guard) << c.name << " " << in;
        }
    }
}
