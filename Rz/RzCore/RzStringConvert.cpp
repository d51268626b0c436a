// RzString's conversions between character sets, Unicode forms and
// hexadecimal text. The byte-level work is in RzTextEncoding; this file sizes
// the result buffers and gives the results their lengths.
#include <Rz/RzCore/RzString.h>

#include <stdint.h>
#include <string.h>

#include <new>

#include <Rz/internal/RzRaise.h>
#include <Rz/internal/RzTextEncoding.h>

static const char kRzUnit[] = "RzString";

namespace {

// The number of bytes a conversion reads: length(), which is negative for a
// binary string whose length was made unknown.
size_t SourceLength(const RzString& s) {
    const int32_t n = s.length();
    return n > 0 ? static_cast<size_t>(n) : 0;
}

// A new buffer of the given capacity to write a result into.
RzString Fresh(int64_t capacity, bool isBinary) {
    if (capacity > INT32_MAX) throw std::bad_alloc();
    RzString result(NewStringData(nullptr, static_cast<int32_t>(capacity), isBinary));
    return result;
}

RzString TranslatedCopy(const RzString& s, bool isBinary, const unsigned char table[128]) {
    const size_t n = SourceLength(s);
    RzString copy(NewStringData(s.c_str(), static_cast<int32_t>(n), isBinary));
    RzTranslateUpperHalf(table, copy.Get(nullptr), n);
    copy.SetLength(static_cast<int>(n));
    return copy;
}

RzString SingleBytesToUTF8(const RzString& s, bool macRoman) {
    const size_t n = SourceLength(s);
    RzString result = Fresh(2 * static_cast<int64_t>(n), false);
    char* out = result.Get(nullptr);
    const size_t written = RzISO8859_1ToUTF8(s.c_str(), n, out, macRoman);
    out[written] = 0;
    result.SetLength(static_cast<int>(written));
    return result;
}

const char kHexDigits[] = "0123456789ABCDEF";

int HexValue(unsigned char c) {
    if (c >= '0' && c <= '9') return c - '0';
    c |= 0x20;  // 'A'..'F' to 'a'..'f'; no other byte lands there
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}  // namespace

// --- Character sets -------------------------------------------------------------

RzString RzString::MacRomanToISO8859_1() const {
    return TranslatedCopy(*this, data && data->isBinary, kRzMacRomanToISO8859_1);
}

RzString RzString::ISO8859_1ToMacRoman() const {
    return TranslatedCopy(*this, data && data->isBinary, kRzISO8859_1ToMacRoman);
}

RzString RzString::ISO8859_1ToUTF8() const {
    return SingleBytesToUTF8(*this, false);
}

// One pass does both steps: the intermediate copy has this string's length,
// so the capacity is the same.
RzString RzString::MacRomanToUTF8() const {
    return SingleBytesToUTF8(*this, true);
}

RzString RzString::UTF8ToISO8859_1() const {
    const size_t n = SourceLength(*this);
    RzString result = Fresh(static_cast<int64_t>(n), false);
    char* out = result.Get(nullptr);
    out[RzUTF8ToISO8859_1(c_str(), n, out)] = 0;  // the length is counted as for any text
    return result;
}

RzString RzString::UTF8ToMacRoman() const {
    return UTF8ToISO8859_1().ISO8859_1ToMacRoman();
}

// --- Unicode ----------------------------------------------------------------------

RzString RzString::UTF8ToUTF16() const {
    const size_t n = SourceLength(*this);
    RzString result = Fresh(2 * static_cast<int64_t>(n), true);
    char* out = result.Get(nullptr);
    const size_t written = RzUTF8ToUTF16BE(c_str(), n, out);
    // Not part of the result: a zero behind it keeps text reads of the
    // binary string from running into bytes nobody wrote.
    out[written] = 0;
    result.SetLength(static_cast<int>(written));
    return result;
}

RzString RzString::UTF16ToUTF8() const {
    const size_t n = SourceLength(*this);
    RzString result = Fresh(4 * static_cast<int64_t>(n), false);
    char* out = result.Get(nullptr);
    out[RzUTF16BEToUTF8(c_str(), n, out)] = 0;
    return result;
}

// --- Hexadecimal text --------------------------------------------------------------

RzString RzString::Bin2Str(const void* bytes, int32_t n) {
    RzString text;
    if (bytes && n > 0) {
        text = Fresh(2 * static_cast<int64_t>(n), false);
        char* out = text.Get(nullptr);
        const unsigned char* in = static_cast<const unsigned char*>(bytes);
        for (int32_t i = 0; i < n; ++i) {
            out[2 * i] = kHexDigits[in[i] >> 4];
            out[2 * i + 1] = kHexDigits[in[i] & 0x0F];
        }
        text.SetLength(2 * n);
    }
    // `bytes` may lie in this string's buffer: assign only now.
    *this = text;
    return text;
}

RzString RzString::BinStr2Str() const {
    RzString text;
    text.Bin2Str(c_str(), static_cast<int32_t>(SourceLength(*this)));
    return text;
}

int32_t RzString::BinSize() const {
    const size_t n = SourceLength(*this);
    if (n % 2 != 0) RZ_RAISE(kRzFormatErr);
    return static_cast<int32_t>(n / 2);
}

void RzString::Str2Bin(void* out, int32_t* sizeOut) const {
    if (out) {
        const unsigned char* text = reinterpret_cast<const unsigned char*>(c_str());
        const size_t n = SourceLength(*this);
        unsigned char* o = static_cast<unsigned char*>(out);
        for (size_t i = 0; i < n && text[i] != 0; i += 2) {
            const int high = HexValue(text[i]);
            if (high < 0) RZ_RAISE(kRzFormatErr);
            const int low = i + 1 < n ? HexValue(text[i + 1]) : -1;
            if (low < 0) RZ_RAISE(kRzFormatErr);  // not a digit, or no second digit
            *o++ = static_cast<unsigned char>((high << 4) | low);
        }
    }
    const int32_t size = BinSize();
    if (sizeOut) *sizeOut = size;
}

RzString RzString::Str2BinStr() const {
    const int32_t size = BinSize();
    if (size == 0) return RzString();
    RzString bytes = Fresh(size, false);
    char* out = bytes.Get(nullptr);
    memset(out, 0, static_cast<size_t>(size));  // a zero byte in the text ends the decoding early
    Str2Bin(out, nullptr);
    bytes.SetLength(size);
    return bytes;
}
