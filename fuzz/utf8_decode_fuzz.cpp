// The UTF-8 decoder on any bytes, checked against a literal transcription of
// its rule: the decoder itself on a buffer of exactly the input's size (so
// that a read past it is caught), and UTF8ToUTF16 and UTF8ToISO8859_1, whose
// fast paths skip the decoder for runs of ASCII and two-byte text. Where the
// C library's converter takes the text as valid UTF-8 of the first plane,
// UTF8ToUTF16 must give what it gives, and UTF16ToUTF8 the text back.
//
// Short inputs are checked at every length from 0 up, so that one input
// puts each character at every place around the sixteen-byte blocks and the
// end of the text.
#include <iconv.h>
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

bool Same(const RzString& s, const std::string& bytes) {
    return s.length() == static_cast<int32_t>(bytes.size()) &&
           memcmp(s.c_str(), bytes.data(), bytes.size()) == 0;
}

// The C library's UTF-16BE of `text`, when it takes the whole text.
bool IconvUTF16(const std::string& text, std::string& out) {
    iconv_t cd = iconv_open("UTF-16BE", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1)) return false;
    std::vector<char> buffer(2 * text.size() + 2);
    char* src = const_cast<char*>(text.data());
    char* dst = buffer.data();
    size_t srcLeft = text.size(), dstLeft = buffer.size();
    const bool converted = iconv(cd, &src, &srcLeft, &dst, &dstLeft) != static_cast<size_t>(-1);
    iconv_close(cd);
    out.assign(buffer.data(), buffer.size() - dstLeft);
    return converted;
}

void CheckText(const uint8_t* data, size_t size) {
    const std::vector<uint32_t> expected = Reference(data, size);

    const std::vector<unsigned char> exact(data, data + size);
    const unsigned char* p = exact.data();
    const unsigned char* const end = p + size;
    for (uint32_t value : expected)
        if (p >= end || RzDecodeUTF8(p, end) != value) abort();
    if (p != end && *p != 0) abort();

    std::string utf16, latin;
    bool firstPlane = true;
    for (uint32_t value : expected) {
        utf16 += static_cast<char>((value >> 8) & 0xFF);
        utf16 += static_cast<char>(value & 0xFF);
        latin += value < 256 ? static_cast<char>(value) : '?';
        firstPlane &= value < 0x10000;
    }
    latin = latin.substr(0, latin.find('\0'));  // a decoded zero ends the text

    const RzString source(data, static_cast<int32_t>(size), true);
    const RzString u = source.UTF8ToUTF16();
    if (!Same(u, utf16)) abort();
    if (!Same(source.UTF8ToISO8859_1(), latin)) abort();

    // The raw converters read exactly the input too.
    std::vector<char> out(2 * size + 1);
    const char* in = reinterpret_cast<const char*>(exact.data());
    if (RzUTF8ToUTF16BE(in, size, out.data()) != utf16.size()) abort();
    if (RzUTF8ToISO8859_1(in, size, out.data()) != expected.size()) abort();

    const std::string text = std::string(reinterpret_cast<const char*>(data), size).c_str();
    std::string standard;
    if (firstPlane && IconvUTF16(text, standard)) {
        if (!Same(u, standard)) abort();
        if (!Same(u.UTF16ToUTF8(), text)) abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CheckText(data, size);
    for (size_t n = 0; size <= 96 && n < size; ++n) CheckText(data, n);
    return 0;
}
