#include "RzToolText.h"

#include <string.h>

#include <istream>
#include <memory>
#include <ostream>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzIO/RzFile.h>

namespace {

const size_t kBlock = 1 << 20;  // bytes read at a time

// One step of the framework's UTF-8 decoder at p[i] (n bytes in all): the
// lead byte gives the length (a continuation byte in lead position counts as
// 5, with the mask of entry 0), and continuation bytes are taken while they
// come, up to that length. Returns where the step ends; `complete` is false
// when the bytes ran out before the step had its length, so that more input
// could still extend it.
size_t UTF8Step(const unsigned char* p, size_t i, size_t n, uint32_t& value, bool& complete) {
    static const unsigned char kLength[64] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                                              1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                                              0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                              2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 5, 6};
    static const unsigned char kMask[7] = {0x3F, 0x7F, 0x1F, 0x0F, 0x07, 0x03, 0x01};
    unsigned length = kLength[p[i] >> 2];
    value = p[i] & kMask[length];
    if (length == 0) length = 5;
    size_t j = i + 1;
    unsigned taken = 1;
    for (; taken < length && j < n && (p[j] & 0xC0) == 0x80; ++taken, ++j)
        value = value << 6 | (p[j] & 0x3F);
    complete = taken == length || j < n;
    return j;
}

// How many of the eight bytes at p, from the first on, are 1 to 0x7F (at
// least 1: the caller has checked the first).
size_t AsciiRun(const unsigned char* p) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    uint64_t w;
    memcpy(&w, p, 8);
    const uint64_t high = 0x8080808080808080ull;
    // The lowest marked byte is the first zero or high byte; marks above it
    // may be wrong, and are not looked at.
    const uint64_t marks = (w & high) | ((w - 0x0101010101010101ull) & ~w & high);
    return marks ? static_cast<size_t>(__builtin_ctzll(marks)) / 8 : 8;
#else
    size_t run = 1;
    while (run < 8 && p[run] - 1u < 0x7Fu) ++run;
    return run;
#endif
}

RzString Bytes(const char* p, size_t n, bool binary) {
    return RzString(p, static_cast<int32_t>(n), binary);
}

void Write(std::ostream& out, const RzString& s) {
    out.write(s.c_str(), s.length());
}

// Standard input ("-") or a file, read in blocks through `feed`.
template <class Feed>
void ReadInput(const std::string& name, RzToolIO& io, Feed feed) {
    std::unique_ptr<char[]> block(new char[kBlock]);
    if (name == "-") {
        while (io.in) {
            io.in.read(block.get(), static_cast<std::streamsize>(kBlock));
            if (io.in.gcount() > 0) feed(block.get(), static_cast<size_t>(io.in.gcount()));
        }
        if (io.in.bad()) throw RzToolFailure("-: read error");
        io.in.clear();
        return;
    }
    RzToolExpectFile(name);
    RzFile file(RzFileSpec(Bytes(name.data(), name.size(), false)), eRzFileRead);
    uint32_t done = 0;
    while (file.Read(block.get(), kBlock, &done) > 0) feed(block.get(), done);
}

bool CharsetNamed(const std::string& name, RzToolCharset& charset) {
    static const struct {
        const char* name;
        RzToolCharset charset;
    } kNames[] = {{"macroman", eRzToolMacRoman},
                  {"latin1", eRzToolLatin1},
                  {"utf8", eRzToolUTF8},
                  {"utf16", eRzToolUTF16}};
    for (const auto& n : kNames)
        if (RzString(name.c_str()).cmpIgnoreCase(n.name) == 0) return charset = n.charset, true;
    return false;
}

}  // namespace

// --- Character sets ---------------------------------------------------------------

RzToolConverter::RzToolConverter(RzToolCharset from_, RzToolCharset to_, std::ostream& out_)
    : from(from_), to(to_), out(out_) {}

void RzToolConverter::Feed(const char* bytes, size_t n) {
    if (from == to) {
        out.write(bytes, static_cast<std::streamsize>(n));
        return;
    }
    if (pending.empty()) {
        Convert(bytes, n, false);
    } else {
        std::string block;
        block.swap(pending);
        block.append(bytes, n);
        Convert(block.data(), block.size(), false);
    }
}

bool RzToolConverter::Finish() {
    std::string rest;
    rest.swap(pending);
    if (from == eRzToolUTF16) return rest.empty();  // an odd last byte has no unit
    Convert(rest.data(), rest.size(), true);        // an unfinished sequence as far as it goes
    return true;
}

void RzToolConverter::Convert(const char* p, size_t n, bool last) {
    if (from == eRzToolUTF16) {
        // Unit by unit; a zero unit separates pieces, an odd byte waits.
        const size_t units = n & ~static_cast<size_t>(1);
        size_t start = 0;
        for (size_t i = 0; i < units; i += 2) {
            if (p[i] || p[i + 1]) continue;
            Segment(p + start, i - start);
            Zero();
            start = i + 2;
        }
        Segment(p + start, units - start);
        pending.assign(p + units, n - units);
    } else if (from == eRzToolUTF8) {
        // Step by step as the framework decodes; a step that decodes to 0
        // separates pieces, an unfinished one waits.
        const unsigned char* u = reinterpret_cast<const unsigned char*>(p);
        size_t start = 0, i = 0;
        while (i < n) {
            // ASCII other than the zero byte is a whole step of its own that
            // does not decode to 0: skipped up to the next other byte.
            if (u[i] - 1u < 0x7Fu) {
                i += i + 8 <= n ? AsciiRun(u + i) : 1;
                continue;
            }
            // So is a two-byte sequence whose lead has bits of its own.
            if (u[i] - 0xC1u < 0x1Fu && i + 1 < n && (u[i + 1] & 0xC0) == 0x80) {
                i += 2;
                continue;
            }
            uint32_t value = 0;
            bool complete = false;
            const size_t end = UTF8Step(u, i, n, value, complete);
            if (!complete && !last) break;
            if (value == 0) {
                Segment(p + start, i - start);
                Zero();
                start = end;
            }
            i = end;
        }
        Segment(p + start, i - start);
        pending.assign(p + i, n - i);
    } else {
        for (const char* zero; n > 0 && (zero = static_cast<const char*>(memchr(p, 0, n)));) {
            Segment(p, static_cast<size_t>(zero - p));
            Zero();
            n -= static_cast<size_t>(zero - p) + 1;
            p = zero + 1;
        }
        Segment(p, n);
    }
}

void RzToolConverter::Zero() {
    out.write("\0\0", to == eRzToolUTF16 ? 2 : 1);
}

// A piece without zeros.
void RzToolConverter::Segment(const char* p, size_t n) {
    if (n == 0) return;
    RzString s = Bytes(p, n, from == eRzToolUTF16);
    // Through UTF-8 where no conversion goes straight.
    if (from == eRzToolMacRoman && to == eRzToolLatin1) return Write(out, s.MacRomanToISO8859_1());
    if (from == eRzToolLatin1 && to == eRzToolMacRoman) return Write(out, s.ISO8859_1ToMacRoman());
    if (from == eRzToolMacRoman) s = s.MacRomanToUTF8();
    if (from == eRzToolLatin1) s = s.ISO8859_1ToUTF8();
    if (from == eRzToolUTF16) s = s.UTF16ToUTF8();
    if (to == eRzToolMacRoman) s = s.UTF8ToMacRoman();
    if (to == eRzToolLatin1) s = s.UTF8ToISO8859_1();
    if (to == eRzToolUTF16) s = s.UTF8ToUTF16();
    Write(out, s);
}

// --- Hexadecimal text ---------------------------------------------------------------

void RzToolHexEncoder::Feed(const char* bytes, size_t n) {
    const size_t kLine = 64;
    while (n > 0) {
        // Up to a million bytes at a time, so that the text stays small.
        const size_t take = n < kBlock ? n : kBlock;
        RzString text;
        text.Bin2Str(bytes, static_cast<int32_t>(take));
        const char* t = text.c_str();
        size_t left = 2 * take;
        while (left > 0) {
            const size_t part = left < kLine - column ? left : kLine - column;
            out.write(t, static_cast<std::streamsize>(part));
            t += part;
            left -= part;
            column += part;
            if (column == kLine) {
                out.put('\n');
                column = 0;
            }
        }
        bytes += take;
        n -= take;
    }
}

void RzToolHexEncoder::Finish() {
    if (column > 0) out.put('\n');
    column = 0;
}

void RzToolHexDecoder::Feed(const char* text, size_t n) {
    digits.clear();
    if (half) digits += half;
    for (size_t i = 0; i < n; ++i) {
        const char c = text[i];
        const bool lineEnd = c == '\n' ? !afterCR : c == '\r';
        afterCR = c == '\r';
        if (lineEnd || c == '\n') {
            if (lineEnd) ++line;
            column = 1;
            continue;
        }
        if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')) {
            digits += c;
        } else if (c != ' ' && c != '\t') {
            char shown[8];
            snprintf(shown, sizeof shown,
                     static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? "\\x%02X" : "%c",
                     static_cast<unsigned char>(c));
            throw RzToolFailure(name + ":" + std::to_string(line) + ":" + std::to_string(column) +
                                ": '" + shown + "' is not a hexadecimal digit");
        }
        ++column;
    }
    half = digits.size() % 2 ? digits.back() : 0;
    if (half) digits.pop_back();
    if (digits.empty()) return;
    const RzString hex = Bytes(digits.data(), digits.size(), false);
    std::unique_ptr<char[]> bytes(new char[digits.size() / 2]);
    int32_t size = 0;
    hex.Str2Bin(bytes.get(), &size);
    out.write(bytes.get(), size);
}

void RzToolHexDecoder::Finish() {
    if (half)
        throw RzToolFailure(name +
                            ": an odd number of hexadecimal digits (the last one has no "
                            "partner)");
}

// --- The commands -----------------------------------------------------------------

int RzToolConv(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {{"--from", true}, {"--to", true}});
    RzToolCharset from = eRzToolUTF8, to = eRzToolUTF8;
    for (const char* option : {"--from", "--to"}) {
        if (!a.Has(option)) throw RzToolUsageError(std::string(option) + " is missing");
        if (!CharsetNamed(a.Value(option), option[2] == 'f' ? from : to))
            throw RzToolUsageError(std::string(option) +
                                   " must be macroman, latin1, utf8 or utf16, not '" +
                                   a.Value(option) + "'");
    }
    std::vector<std::string> names = a.Operands();
    if (names.empty()) names.push_back("-");
    for (const std::string& name : names) {
        RzToolConverter converter(from, to, io.out);
        ReadInput(name, io, [&](const char* p, size_t n) { converter.Feed(p, n); });
        if (!converter.Finish())
            io.err << "rz: conv: " << name
                   << ": warning: the odd last byte of the UTF-16 input is dropped\n";
    }
    return kRzToolDone;
}

int RzToolHex(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {{"-d", false}, {"--decode", false}});
    const bool decode = a.Has("-d") || a.Has("--decode");
    std::vector<std::string> names = a.Operands();
    if (names.empty()) names.push_back("-");
    for (const std::string& name : names) {
        if (decode) {
            RzToolHexDecoder decoder(io.out, name);
            ReadInput(name, io, [&](const char* p, size_t n) { decoder.Feed(p, n); });
            decoder.Finish();
        } else {
            RzToolHexEncoder encoder(io.out);
            ReadInput(name, io, [&](const char* p, size_t n) { encoder.Feed(p, n); });
            encoder.Finish();
        }
    }
    return kRzToolDone;
}
