// Character-set conversions that the framework's units share: the tables and
// byte-level converters behind RzString's conversions, and the Mac
// traditional Chinese encoding in which new folder names are given.
//
// The converters work on plain byte ranges and know nothing of string
// buffers: the caller sizes the output (each function says how much it may
// write) and builds the string around it.
#ifndef RZ_INTERNAL_RZTEXTENCODING_H
#define RZ_INTERNAL_RZTEXTENCODING_H

#include <stddef.h>
#include <stdint.h>

#include <Rz/Mac/RzMacTypes.h>
#include <Rz/RzCore/RzString.h>

// --- Mac OS Roman and ISO-8859-1 ----------------------------------------------
//
// The upper halves of the two character sets, indexed by byte - 128; bytes
// below 128 are the same in both. The first table is a permutation of 128..255
// and the second its exact inverse, so a round trip is lossless. Characters
// of one set that the other lacks take codes nobody else claims (mostly the
// C1 range). Mac OS Roman 0xCD (capital O with tilde) deliberately maps to
// 0x90, not to its ISO-8859-1 code 0xD5, which comes back as Mac OS Roman
// 0xD5 (right single quotation mark).
extern const unsigned char kRzMacRomanToISO8859_1[128];
extern const unsigned char kRzISO8859_1ToMacRoman[128];

// Replaces every byte from 128 up through `table`, in place, up to the first
// zero byte or n bytes.
void RzTranslateUpperHalf(const unsigned char table[128], char* text, size_t n);

// The bytes of `in` before its first zero byte (at most n) as UTF-8: bytes
// below 128 are copied, a byte b from 128 up becomes 0xC0 + (b >> 6), 0x80 +
// (b & 0x3F). With `macRoman` the bytes are first taken through
// kRzMacRomanToISO8859_1. Writes at most 2 x n bytes to `out`, no terminator;
// returns the number written.
size_t RzISO8859_1ToUTF8(const char* in, size_t n, char* out, bool macRoman);

// --- UTF-8 --------------------------------------------------------------------

// Sequence length by lead byte >> 2: 1 for 0x00..0x7F, 0 for the
// continuation bytes 0x80..0xBF, 2 for 0xC0..0xDF, 3 for 0xE0..0xEF, 4 for
// 0xF0..0xF7, 5 for 0xF8..0xFB, 6 for 0xFC..0xFF.
extern const unsigned char UTF8EncodingLength[64];
// The lead byte's value bits by sequence length (entry 0 serves a
// continuation byte in lead position).
extern const unsigned char UTF8StartByteMask[7];

// Decodes one value from the bytes [p, end), p < end, and moves p behind the
// bytes it took. The lead byte gives the length L and its value bits; a
// continuation byte in lead position counts as length 5 with the mask of
// entry 0. Up to L - 1 further bytes are taken while each is a continuation
// byte (top bits 10), adding six bits each; the first byte that is not one
// (a zero byte included) ends the value unconsumed, so a cut sequence yields
// what it accumulated ("\xC3A" gives 3, then 'A'). Overlong forms, surrogates
// and values above 0x10FFFF are not checked; values have at most 31 bits.
inline uint32_t RzDecodeUTF8(const unsigned char*& p, const unsigned char* end) {
    const unsigned char lead = *p++;
    int length = UTF8EncodingLength[lead >> 2];
    uint32_t value = lead & UTF8StartByteMask[length];
    if (length == 0) length = 5;
    for (int i = 1; i < length && p < end && (*p & 0xC0) == 0x80; ++i)
        value = (value << 6) | (*p++ & 0x3F);
    return value;
}

// Writes u (below 0x10000) as one, two or three UTF-8 bytes; returns the end.
// Surrogate values are written like any other (no pairs are formed).
inline char* RzEncodeUTF8(uint32_t u, char* out) {
    if (u < 0x80) {
        *out++ = static_cast<char>(u);
    } else if (u < 0x800) {
        *out++ = static_cast<char>(0xC0 + (u >> 6));
        *out++ = static_cast<char>(0x80 + (u & 0x3F));
    } else {
        *out++ = static_cast<char>(0xE0 + (u >> 12));
        *out++ = static_cast<char>(0x80 + ((u >> 6) & 0x3F));
        *out++ = static_cast<char>(0x80 + (u & 0x3F));
    }
    return out;
}

// The bytes of `in` before its first zero byte (at most n), decoded by
// RzDecodeUTF8: each value below 256 becomes that byte, any other '?'. Writes
// at most n bytes (a byte per value), no terminator; returns the number
// written. An overlong form of zero writes a zero byte.
size_t RzUTF8ToISO8859_1(const char* in, size_t n, char* out);

// The same decoding, each value written as two bytes, most significant first,
// cut to its low 16 bits (no surrogate pairs). Writes at most 2 x n bytes;
// returns the number written.
size_t RzUTF8ToUTF16BE(const char* in, size_t n, char* out);

// The n bytes of `in` (zero bytes included) read as big-endian 16-bit units,
// a trailing odd byte ignored, each written by RzEncodeUTF8. Writes at most
// 3 x (n / 2) bytes, no terminator; returns the number written.
size_t RzUTF16BEToUTF8(const char* in, size_t n, char* out);

// --- Mac traditional Chinese ----------------------------------------------------

// `pascal` read as Mac traditional Chinese (text encoding 2), written to
// `utf8`. ASCII is unchanged; the encoding's own single bytes above ASCII map
// to their Unicode characters and double bytes go through the C library's
// Big5 converter. kTextMalformedInputErr for a byte that starts no character
// or a lead byte without its second byte, kTextUndefinedElementErr for a pair
// the encoding does not define, kTextUnsupportedEncodingErr when the C
// library has no Big5 converter (only for names that need one). `utf8` is
// unchanged on error.
OSErr RzMacChineseTradToUTF8(const unsigned char* pascal, RzString& utf8);

#endif
