#include <Rz/internal/RzTextEncoding.h>

#include <iconv.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__SSE2__) && (defined(__x86_64__) || defined(__i386__))
#include <tmmintrin.h>
#define RZ_TWO_BYTE_BLOCKS 1  // SSSE3, chosen at run time
#endif

#include <string>

// --- Tables -------------------------------------------------------------------

constexpr unsigned char kRzMacRomanToISO8859_1[128] = {
    0xC4, 0xC5, 0xC7, 0xC9, 0xD1, 0xD6, 0xDC, 0xE1, 0xE0, 0xE2, 0xE4, 0xE3, 0xE5, 0xE7, 0xE9, 0xE8,
    0xEA, 0xEB, 0xED, 0xEC, 0xEE, 0xEF, 0xF1, 0xF3, 0xF2, 0xF4, 0xF6, 0xF5, 0xFA, 0xF9, 0xFB, 0xFC,
    0xBE, 0xB0, 0xA2, 0xA3, 0xA7, 0x82, 0xB6, 0xDF, 0xAE, 0xA9, 0x8E, 0xB4, 0xA8, 0xAD, 0xC6, 0xD8,
    0x8D, 0xB1, 0xB2, 0xB3, 0xA5, 0xB5, 0xA6, 0x87, 0x9F, 0xB9, 0xBC, 0xAA, 0xBA, 0xBD, 0xE6, 0xF8,
    0xBF, 0xA1, 0xAC, 0x92, 0x80, 0x81, 0x8C, 0xAB, 0xBB, 0x83, 0xA0, 0xC0, 0xC3, 0x90, 0x91, 0x93,
    0xD0, 0x84, 0x96, 0x94, 0x95, 0xD5, 0xF7, 0xD7, 0xFF, 0x99, 0x98, 0xA4, 0x86, 0xDD, 0xDE, 0x97,
    0x88, 0xB7, 0x89, 0x8B, 0x8A, 0xC2, 0xCA, 0xC1, 0xCB, 0xC8, 0xCD, 0xCE, 0xCF, 0xCC, 0xD3, 0xD4,
    0xF0, 0xD2, 0xDA, 0xDB, 0xD9, 0x9B, 0x9A, 0x85, 0xAF, 0x9D, 0x9C, 0x9E, 0xB8, 0xFD, 0xFE, 0x8F,
};

constexpr unsigned char kRzISO8859_1ToMacRoman[128] = {
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
// Text is mostly ASCII, so the converters move sixteen bytes at a time while
// they are plain ASCII (non-zero and below 128), and look at single
// characters only around the others; UTF-8 to UTF-16 also takes Latin text
// sixteen bytes at a time where the processor can shuffle bytes. Where they
// store a whole block before knowing how much of it is valid output, the
// bytes behind the valid ones are overwritten by what follows. These stores
// stay inside the output size each converter documents: a block is stored
// only while sixteen input bytes remain, and the output never runs ahead of
// twice (once for ISO-8859-1) the input consumed.

namespace {

const uint64_t kOnes = 0x0101010101010101ull;
const uint64_t kHighBits = 0x8080808080808080ull;

uint64_t Load8(const unsigned char* p) {
    uint64_t w;
    memcpy(&w, p, sizeof w);
    return w;
}

bool HasZeroByte(uint64_t w) {
    return ((w - kOnes) & ~w & kHighBits) != 0;
}

const unsigned char* Bytes(const char* p) {
    return reinterpret_cast<const unsigned char*>(p);
}

unsigned char* Bytes(char* p) {
    return reinterpret_cast<unsigned char*>(p);
}

// --- Single bytes to UTF-8: one table lookup per byte, no branches.

struct UTF8Form {
    unsigned char bytes[2];  // the second is scratch for one-byte forms
    unsigned char length;
};

struct UTF8Forms {
    UTF8Form of[256];
};

constexpr UTF8Forms MakeUTF8Forms(bool fromMacRoman) {
    UTF8Forms forms{};
    for (int b = 0; b < 256; ++b) {
        const int c = b >= 0x80 && fromMacRoman ? kRzMacRomanToISO8859_1[b - 128] : b;
        if (c < 0x80) {
            forms.of[b] = UTF8Form{{static_cast<unsigned char>(c), 0}, 1};
        } else {
            forms.of[b] = UTF8Form{{static_cast<unsigned char>(0xC0 + (c >> 6)),
                                    static_cast<unsigned char>(0x80 + (c & 0x3F))},
                                   2};
        }
    }
    return forms;
}

constexpr UTF8Forms kISO8859_1Forms = MakeUTF8Forms(false);
constexpr UTF8Forms kMacRomanForms = MakeUTF8Forms(true);

size_t SingleBytesToUTF8(const unsigned char* p, size_t n, unsigned char* out,
                         const UTF8Forms& forms) {
    const unsigned char* const end = p + n;
    unsigned char* o = out;
    // Both bytes of a form are stored and the output moves by its length,
    // so the next form overwrites the scratch byte.
    auto put = [&o, &forms](unsigned char b) {
        const UTF8Form& form = forms.of[b];
        memcpy(o, form.bytes, 2);
        o += form.length;
    };
    while (end - p >= 16) {
        const uint64_t w0 = Load8(p), w1 = Load8(p + 8);
        if (HasZeroByte(w0) || HasZeroByte(w1)) break;
        if (((w0 | w1) & kHighBits) == 0) {
            memcpy(o, p, 16);
            o += 16;
        } else {
            for (int i = 0; i < 16; ++i) put(p[i]);
        }
        p += 16;
    }
    for (; p < end && *p != 0; ++p) put(*p);
    return static_cast<size_t>(o - out);
}

// --- UTF-8 decoding.

// The number of plain ASCII bytes that begin the 16 bytes at p (16 when all
// are). All 16 bytes are stored at `out`, as they are or, with `widen`, as
// big-endian 16-bit units; the caller keeps only the ASCII ones.
#if defined(__SSE2__)
size_t AsciiPrefix(const unsigned char* p, unsigned char* out, bool widen) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i zero = _mm_setzero_si128();
    if (widen) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(zero, v));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), _mm_unpackhi_epi8(zero, v));
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), v);
    }
    const unsigned stops =
        static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(v, _mm_cmpeq_epi8(v, zero))));
    return static_cast<size_t>(__builtin_ctz(stops | 0x10000u));
}
#else
// Without SSE2: the test eight bytes at a time, any byte order.
size_t AsciiPrefix(const unsigned char* p, unsigned char* out, bool widen) {
    if (widen) {
        for (int i = 0; i < 16; ++i) {
            out[2 * i] = 0;
            out[2 * i + 1] = p[i];
        }
    } else {
        memcpy(out, p, 16);
    }
    for (size_t i = 0; i < 16; i += 8) {
        const uint64_t w = Load8(p + i);
        if ((w & kHighBits) != 0 || HasZeroByte(w)) {
            size_t k = i;
            while (p[k] != 0 && p[k] < 0x80) ++k;
            return k;
        }
    }
    return 16;
}
#endif

#if defined(RZ_TWO_BYTE_BLOCKS)
// UTF-8 to UTF-16 sixteen bytes at a time, for text of ASCII and two-byte
// characters (the Latin scripts): every byte gets the unit a character
// starting there would give, and the units of continuation bytes are then
// squeezed out with a byte shuffle.

// For each set of kept units among eight: the shuffle that moves them to the
// front, and how many there are.
struct UnitCompaction {
    unsigned char shuffle[256][16];
    unsigned char count[256];
};

constexpr UnitCompaction MakeUnitCompaction() {
    UnitCompaction c{};
    for (int keep = 0; keep < 256; ++keep) {
        int n = 0;
        for (int unit = 0; unit < 8; ++unit) {
            if (keep & (1 << unit)) {
                c.shuffle[keep][2 * n] = static_cast<unsigned char>(2 * unit);
                c.shuffle[keep][2 * n + 1] = static_cast<unsigned char>(2 * unit + 1);
                ++n;
            }
        }
        for (int i = 2 * n; i < 16; ++i) c.shuffle[keep][i] = 0x80;  // zero
        c.count[keep] = static_cast<unsigned char>(n);
    }
    return c;
}

constexpr UnitCompaction kUnitCompaction = MakeUnitCompaction();

bool HasTwoByteBlocks() {
    // Also right when first asked while static objects are being built.
    static const bool has = (__builtin_cpu_init(), __builtin_cpu_supports("ssse3"));
    return has;
}

// Converts the sixteen bytes at p when they are ASCII (not zero) and
// complete two-byte sequences. `carry` says that the previous block's last
// lead took the first byte as its continuation; a lead in the last byte
// takes the byte behind the block, and `carry` is set for the next block.
// Returns false and changes nothing for any other block. Reads 17 bytes at
// p and stores up to 32 at o.
__attribute__((target("ssse3"))) bool TwoByteBlockToUTF16(const unsigned char* p, unsigned char*& o,
                                                          unsigned& carry) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i isLead =
        _mm_cmpeq_epi8(_mm_and_si128(v, _mm_set1_epi8(char(0xE0))), _mm_set1_epi8(char(0xC0)));
    const __m128i isContinuation =
        _mm_cmpeq_epi8(_mm_and_si128(v, _mm_set1_epi8(char(0xC0))), _mm_set1_epi8(char(0x80)));
    const unsigned zeros = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_setzero_si128())));
    const unsigned others = unsigned(_mm_movemask_epi8(v));
    const unsigned leads = unsigned(_mm_movemask_epi8(isLead));
    const unsigned continuations = unsigned(_mm_movemask_epi8(isContinuation));
    const unsigned lastLead = leads >> 15;
    if (zeros != 0 || others != (leads | continuations) ||
        continuations != (((leads << 1) | carry) & 0xFFFF) || (lastLead && (p[16] & 0xC0) != 0x80))
        return false;

    // A lead b with its continuation c gives ((b & 0x1F) << 6) | (c & 0x3F):
    // high byte (b >> 2) & 0x07, low byte (b << 6) | (c & 0x3F).
    const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 1));
    const __m128i leadLow =
        _mm_or_si128(_mm_and_si128(_mm_slli_epi16(v, 6), _mm_set1_epi8(char(0xC0))),
                     _mm_and_si128(next, _mm_set1_epi8(0x3F)));
    const __m128i low = _mm_or_si128(_mm_and_si128(isLead, leadLow), _mm_andnot_si128(isLead, v));
    const __m128i high =
        _mm_and_si128(isLead, _mm_and_si128(_mm_srli_epi16(v, 2), _mm_set1_epi8(0x07)));

    const unsigned keep = ~continuations & 0xFFFF;
    const unsigned first = keep & 0xFF, second = keep >> 8;
    const __m128i* shuffles = reinterpret_cast<const __m128i*>(kUnitCompaction.shuffle);
    _mm_storeu_si128(
        reinterpret_cast<__m128i*>(o),
        _mm_shuffle_epi8(_mm_unpacklo_epi8(high, low), _mm_loadu_si128(shuffles + first)));
    o += 2 * kUnitCompaction.count[first];
    _mm_storeu_si128(
        reinterpret_cast<__m128i*>(o),
        _mm_shuffle_epi8(_mm_unpackhi_epi8(high, low), _mm_loadu_si128(shuffles + second)));
    o += 2 * kUnitCompaction.count[second];
    carry = lastLead;
    return true;
}
#else
bool HasTwoByteBlocks() {
    return false;
}

bool TwoByteBlockToUTF16(const unsigned char*, unsigned char*&, unsigned&) {
    return false;
}
#endif

template <bool kToUTF16>
size_t DecodeUTF8(const unsigned char* p, size_t n, unsigned char* out) {
    const size_t width = kToUTF16 ? 2 : 1;
    const unsigned char* const end = p + n;
    unsigned char* o = out;
    const bool blocks = kToUTF16 && HasTwoByteBlocks();
    const unsigned char* oneByOneUntil = p;  // behind a block that was not two-byte text
    unsigned carry = 0;
    while (p < end) {
        if (blocks && p >= oneByOneUntil && end - p >= 17) {
            if (TwoByteBlockToUTF16(p, o, carry)) {
                p += 16;
                continue;
            }
            oneByOneUntil = p + 16;
        }
        p += carry;  // the continuation byte that the last block took
        carry = 0;
        if (p == end) break;
        if (end - p >= 16) {
            const size_t ascii = AsciiPrefix(p, o, kToUTF16);
            p += ascii;
            o += width * ascii;
            if (ascii == 16) continue;
        }
        const unsigned lead = *p;
        if (lead == 0) break;
        uint32_t value;
        if ((lead & 0xE0) == 0xC0 && end - p >= 2 && (p[1] & 0xC0) == 0x80) {
            // The two-byte form, most common after ASCII, without the loop.
            value = ((lead & 0x1F) << 6) | (p[1] & 0x3F);
            p += 2;
        } else {
            value = RzDecodeUTF8(p, end);
        }
        if (kToUTF16) {
            o[0] = static_cast<unsigned char>(value >> 8);
            o[1] = static_cast<unsigned char>(value);
        } else {
            o[0] = value < 256 ? static_cast<unsigned char>(value) : '?';
        }
        o += width;
    }
    return static_cast<size_t>(o - out);
}

}  // namespace

void RzTranslateUpperHalf(const unsigned char table[128], char* text, size_t n) {
    unsigned char* p = Bytes(text);
    for (size_t i = 0; i < n && p[i] != 0; ++i)
        if (p[i] >= 0x80) p[i] = table[p[i] - 128];
}

size_t RzISO8859_1ToUTF8(const char* in, size_t n, char* out, bool macRoman) {
    return SingleBytesToUTF8(Bytes(in), n, Bytes(out), macRoman ? kMacRomanForms : kISO8859_1Forms);
}

size_t RzUTF8ToISO8859_1(const char* in, size_t n, char* out) {
    return DecodeUTF8<false>(Bytes(in), n, Bytes(out));
}

size_t RzUTF8ToUTF16BE(const char* in, size_t n, char* out) {
    return DecodeUTF8<true>(Bytes(in), n, Bytes(out));
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
