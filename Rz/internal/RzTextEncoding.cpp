#include <Rz/internal/RzTextEncoding.h>

#include <iconv.h>
#include <string.h>

#include <string>

// --- Tables -------------------------------------------------------------------

const unsigned char kRzMacRomanToISO8859_1[128] = {
    0xC4, 0xC5, 0xC7, 0xC9, 0xD1, 0xD6, 0xDC, 0xE1, 0xE0, 0xE2, 0xE4, 0xE3, 0xE5, 0xE7, 0xE9, 0xE8,
    0xEA, 0xEB, 0xED, 0xEC, 0xEE, 0xEF, 0xF1, 0xF3, 0xF2, 0xF4, 0xF6, 0xF5, 0xFA, 0xF9, 0xFB, 0xFC,
    0xBE, 0xB0, 0xA2, 0xA3, 0xA7, 0x82, 0xB6, 0xDF, 0xAE, 0xA9, 0x8E, 0xB4, 0xA8, 0xAD, 0xC6, 0xD8,
    0x8D, 0xB1, 0xB2, 0xB3, 0xA5, 0xB5, 0xA6, 0x87, 0x9F, 0xB9, 0xBC, 0xAA, 0xBA, 0xBD, 0xE6, 0xF8,
    0xBF, 0xA1, 0xAC, 0x92, 0x80, 0x81, 0x8C, 0xAB, 0xBB, 0x83, 0xA0, 0xC0, 0xC3, 0x90, 0x91, 0x93,
    0xD0, 0x84, 0x96, 0x94, 0x95, 0xD5, 0xF7, 0xD7, 0xFF, 0x99, 0x98, 0xA4, 0x86, 0xDD, 0xDE, 0x97,
    0x88, 0xB7, 0x89, 0x8B, 0x8A, 0xC2, 0xCA, 0xC1, 0xCB, 0xC8, 0xCD, 0xCE, 0xCF, 0xCC, 0xD3, 0xD4,
    0xF0, 0xD2, 0xDA, 0xDB, 0xD9, 0x9B, 0x9A, 0x85, 0xAF, 0x9D, 0x9C, 0x9E, 0xB8, 0xFD, 0xFE, 0x8F,
};

const unsigned char kRzISO8859_1ToMacRoman[128] = {
    0xC4, 0xC5, 0xA5, 0xC9, 0xD1, 0xF7, 0xDC, 0xB7, 0xE0, 0xE2, 0xE4, 0xE3, 0xC6, 0xB0, 0xAA, 0xFF,
    0xCD, 0xCE, 0xC3, 0xCF, 0xD3, 0xD4, 0xD2, 0xDF, 0xDA, 0xD9, 0xF6, 0xF5, 0xFA, 0xF9, 0xFB, 0xB8,
    0xCA, 0xC1, 0xA2, 0xA3, 0xDB, 0xB4, 0xB6, 0xA4, 0xAC, 0xA9, 0xBB, 0xC7, 0xC2, 0xAD, 0xA8, 0xF8,
    0xA1, 0xB1, 0xB2, 0xB3, 0xAB, 0xB5, 0xA6, 0xE1, 0xFC, 0xB9, 0xBC, 0xC8, 0xBA, 0xBD, 0xA0, 0xC0,
    0xCB, 0xE7, 0xE5, 0xCC, 0x80, 0x81, 0xAE, 0x82, 0xE9, 0x83, 0xE6, 0xE8, 0xED, 0xEA, 0xEB, 0xEC,
    0xD0, 0x84, 0xF1, 0xEE, 0xEF, 0xD5, 0x85, 0xD7, 0xAF, 0xF4, 0xF2, 0xF3, 0x86, 0xDD, 0xDE, 0xA7,
    0x88, 0x87, 0x89, 0x8B, 0x8A, 0x8C, 0xBE, 0x8D, 0x8F, 0x8E, 0x90, 0x91, 0x93, 0x92, 0x94, 0x95,
    0xF0, 0x96, 0x98, 0x97, 0x99, 0x9B, 0x9A, 0xD6, 0xBF, 0x9D, 0x9C, 0x9E, 0x9F, 0xFD, 0xFE, 0xD8,
};

const unsigned char UTF8EncodingLength[64] = {
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 0x00..0x3F
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,  // 0x40..0x7F
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // 0x80..0xBF: continuation bytes
    2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 5, 6,  // 0xC0..0xFF
};

const unsigned char UTF8StartByteMask[7] = {0x3F, 0x7F, 0x1F, 0x0F, 0x07, 0x03, 0x01};

// --- Converters -----------------------------------------------------------------
//
// Text is mostly ASCII, so each converter looks at eight bytes at a time
// while they are all plain ASCII (non-zero and below 128) and falls back to
// one character at a time at the first byte that is not. The word is stored
// as ASCII output before it is known how much of it is ASCII; the bytes
// behind the first other byte are then overwritten by what follows. The
// stores stay inside the output size each converter documents, because the
// output never runs ahead of twice (once for ISO-8859-1) the input read.

namespace {

#if defined(__BYTE_ORDER__) && defined(__ORDER_LITTLE_ENDIAN__) && \
    __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
const bool kWordAtATime = true;  // the first byte in memory is the word's low byte
#else
const bool kWordAtATime = false;
#endif

const uint64_t kOnes = 0x0101010101010101ull;
const uint64_t kHighBits = 0x8080808080808080ull;

uint64_t Load8(const unsigned char* p) {
    uint64_t w;
    memcpy(&w, p, sizeof w);
    return w;
}

void Store8(unsigned char* p, uint64_t w) {
    memcpy(p, &w, sizeof w);
}

// Marks (with its high bit) every byte of w that is zero or from 128 up. A
// zero byte can also mark the byte after it, so only the lowest mark is exact,
// which is the one FirstMark reads.
uint64_t Marks(uint64_t w) {
    return (w | (w - kOnes)) & kHighBits;
}

size_t FirstMark(uint64_t marks) {
    return static_cast<size_t>(__builtin_ctzll(marks)) >> 3;
}

// Four bytes, each widened to a big-endian 16-bit unit: b0 b1 b2 b3 become
// 0 b0 0 b1 0 b2 0 b3 in memory.
uint64_t WidenBigEndian(uint64_t fourBytes) {
    uint64_t y = fourBytes & 0xFFFFFFFFull;
    y = (y | (y << 16)) & 0x0000FFFF0000FFFFull;
    y = (y | (y << 8)) & 0x00FF00FF00FF00FFull;
    return y << 8;
}

template <bool kFromMacRoman>
size_t ToUTF8(const unsigned char* p, size_t n, unsigned char* out) {
    const unsigned char* const end = p + n;
    unsigned char* o = out;
    while (p < end) {
        if (kWordAtATime && end - p >= 8) {
            const uint64_t w = Load8(p);
            Store8(o, w);
            const uint64_t marks = Marks(w);
            if (marks == 0) {
                p += 8;
                o += 8;
                continue;
            }
            const size_t ascii = FirstMark(marks);
            p += ascii;
            o += ascii;
        }
        unsigned b = *p++;
        if (b == 0) break;
        if (b < 0x80) {
            *o++ = static_cast<unsigned char>(b);
            continue;
        }
        if (kFromMacRoman) b = kRzMacRomanToISO8859_1[b - 128];
        o[0] = static_cast<unsigned char>(0xC0 + (b >> 6));
        o[1] = static_cast<unsigned char>(0x80 + (b & 0x3F));
        o += 2;
    }
    return static_cast<size_t>(o - out);
}

const unsigned char* Bytes(const char* p) {
    return reinterpret_cast<const unsigned char*>(p);
}

unsigned char* Bytes(char* p) {
    return reinterpret_cast<unsigned char*>(p);
}

}  // namespace

void RzTranslateUpperHalf(const unsigned char table[128], char* text, size_t n) {
    unsigned char* p = Bytes(text);
    for (size_t i = 0; i < n && p[i] != 0; ++i)
        if (p[i] >= 0x80) p[i] = table[p[i] - 128];
}

size_t RzISO8859_1ToUTF8(const char* in, size_t n, char* out, bool macRoman) {
    return macRoman ? ToUTF8<true>(Bytes(in), n, Bytes(out))
                    : ToUTF8<false>(Bytes(in), n, Bytes(out));
}

size_t RzUTF8ToISO8859_1(const char* in, size_t n, char* out) {
    const unsigned char* p = Bytes(in);
    const unsigned char* const end = p + n;
    unsigned char* o = Bytes(out);
    while (p < end) {
        if (kWordAtATime && end - p >= 8) {
            const uint64_t w = Load8(p);
            Store8(o, w);
            const uint64_t marks = Marks(w);
            if (marks == 0) {
                p += 8;
                o += 8;
                continue;
            }
            const size_t ascii = FirstMark(marks);
            p += ascii;
            o += ascii;
        }
        if (*p == 0) break;
        const uint32_t value = RzDecodeUTF8(p, end);
        *o++ = value < 256 ? static_cast<unsigned char>(value) : '?';
    }
    return static_cast<size_t>(o - Bytes(out));
}

size_t RzUTF8ToUTF16BE(const char* in, size_t n, char* out) {
    const unsigned char* p = Bytes(in);
    const unsigned char* const end = p + n;
    unsigned char* o = Bytes(out);
    while (p < end) {
        if (kWordAtATime && end - p >= 8) {
            const uint64_t w = Load8(p);
            Store8(o, WidenBigEndian(w));
            Store8(o + 8, WidenBigEndian(w >> 32));
            const uint64_t marks = Marks(w);
            if (marks == 0) {
                p += 8;
                o += 16;
                continue;
            }
            const size_t ascii = FirstMark(marks);
            p += ascii;
            o += 2 * ascii;
        }
        if (*p == 0) break;
        const uint32_t value = RzDecodeUTF8(p, end);
        o[0] = static_cast<unsigned char>(value >> 8);
        o[1] = static_cast<unsigned char>(value);
        o += 2;
    }
    return static_cast<size_t>(o - Bytes(out));
}

size_t RzUTF16BEToUTF8(const char* in, size_t n, char* out) {
    const unsigned char* p = Bytes(in);
    char* o = out;
    for (size_t i = 0; i + 1 < n; i += 2) o = RzEncodeUTF8((uint32_t(p[i]) << 8) | p[i + 1], o);
    return static_cast<size_t>(o - out);
}

// --- Mac traditional Chinese ----------------------------------------------------

namespace {

// The encoding's single bytes above ASCII that Big5 lacks.
uint32_t MacSingleByte(unsigned char b) {
    switch (b) {
        case 0x80:
            return 0x5C;  // a variant of the backslash; its variant tag is dropped
        case 0xA0:
            return 0xA0;  // no-break space
        case 0xFD:
            return 0xA9;  // copyright sign
        case 0xFE:
            return 0x2122;  // trade mark sign
        case 0xFF:
            return 0x2026;  // horizontal ellipsis
        default:
            return 0;
    }
}

}  // namespace

OSErr RzMacChineseTradToUTF8(const unsigned char* pascal, RzString& utf8) {
    std::string in =
        pascal ? std::string(reinterpret_cast<const char*>(pascal + 1), pascal[0]) : std::string();
    std::string out;
    iconv_t cd = reinterpret_cast<iconv_t>(-1);
    OSErr err = noErr;
    for (size_t i = 0; i < in.size() && err == noErr; ++i) {
        unsigned char b = static_cast<unsigned char>(in[i]);
        if (b < 0x80) {
            out += static_cast<char>(b);
        } else if (uint32_t single = MacSingleByte(b)) {
            char encoded[3];
            out.append(encoded, RzEncodeUTF8(single, encoded));
        } else if (b < 0xA1 || b > 0xF9 || b == 0xC7 || b == 0xC8 || i + 1 >= in.size()) {
            err = kTextMalformedInputErr;
        } else {
            if (cd == reinterpret_cast<iconv_t>(-1)) {
                cd = iconv_open("UTF-8", "BIG5");
                if (cd == reinterpret_cast<iconv_t>(-1)) {
                    err = kTextUnsupportedEncodingErr;
                    break;
                }
            }
            char pair[2] = {in[i], in[i + 1]};
            char converted[8];
            char* src = pair;
            char* dst = converted;
            size_t srcLeft = 2, dstLeft = sizeof converted;
            if (iconv(cd, &src, &srcLeft, &dst, &dstLeft) == static_cast<size_t>(-1) || srcLeft)
                err = kTextUndefinedElementErr;
            else
                out.append(converted, sizeof converted - dstLeft);
            ++i;
        }
    }
    if (cd != reinterpret_cast<iconv_t>(-1)) iconv_close(cd);
    if (err == noErr)
        utf8 = out.empty() ? RzString("")
                           : RzString(out.data(), static_cast<int32_t>(out.size()), false);
    return err;
}
