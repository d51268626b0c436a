// The UTF-8 decoder on any bytes, checked against a literal transcription of
// its rule: the decoder itself on a buffer of exactly the input's size (so
// that a read past it is caught), and UTF8ToUTF16 and UTF8ToISO8859_1, whose
// fast paths skip the decoder for runs of ASCII.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include <Rz/RzCore/RzString.h>
#include <Rz/internal/RzTextEncoding.h>

namespace {

// One value per step until the zero byte (or the end of the input): the lead
// byte gives the length, the continuation bytes that follow add six bits each.
std::vector<uint32_t> Reference(const unsigned char* s, size_t n) {
    std::vector<uint32_t> values;
    size_t i = 0;
    while (i < n && s[i] != 0) {
        const unsigned char lead = s[i++];
        // Lead bytes up to `last`: the sequence length and the lead's value bits.
        static const struct {
            unsigned char last;
            int length;
            uint32_t mask;
        } forms[] = {{0x7F, 1, 0x7F}, {0xBF, 5, 0x3F} /* a continuation byte as lead */,
                     {0xDF, 2, 0x1F}, {0xEF, 3, 0x0F},
                     {0xF7, 4, 0x07}, {0xFB, 5, 0x03},
                     {0xFF, 6, 0x01}};
        auto form = forms;
        while (lead > form->last) ++form;
        const int length = form->length;
        const uint32_t mask = form->mask;
        uint32_t value = lead & mask;
        for (int k = 1; k < length; ++k) {
            if (i >= n || s[i] == 0 || (s[i] >> 6) != 2) break;
            value = value * 64 + (s[i++] & 0x3F);
        }
        values.push_back(value);
    }
    return values;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint32_t> expected = Reference(data, size);

    const std::vector<unsigned char> exact(data, data + size);
    const unsigned char* p = exact.data();
    const unsigned char* const end = p + size;
    for (uint32_t value : expected)
        if (p >= end || RzDecodeUTF8(p, end) != value) abort();
    if (p != end && *p != 0) abort();

    std::string utf16, latin;
    for (uint32_t value : expected) {
        utf16 += static_cast<char>((value >> 8) & 0xFF);
        utf16 += static_cast<char>(value & 0xFF);
        latin += value < 256 ? static_cast<char>(value) : '?';
    }
    latin = latin.substr(0, latin.find('\0'));  // a decoded zero ends the text

    const RzString source(data, static_cast<int32_t>(size), true);
    const RzString u = source.UTF8ToUTF16();
    if (u.length() != static_cast<int32_t>(utf16.size()) ||
        memcmp(u.c_str(), utf16.data(), utf16.size()) != 0)
        abort();
    const RzString l = source.UTF8ToISO8859_1();
    if (l.length() != static_cast<int32_t>(latin.size()) ||
        memcmp(l.c_str(), latin.data(), latin.size()) != 0)
        abort();

    // The raw converters read exactly the input too.
    std::vector<char> out(2 * size + 1);
    const char* in = reinterpret_cast<const char*>(exact.data());
    if (RzUTF8ToUTF16BE(in, size, out.data()) != utf16.size()) abort();
    if (RzUTF8ToISO8859_1(in, size, out.data()) != expected.size()) abort();
    return 0;
}
