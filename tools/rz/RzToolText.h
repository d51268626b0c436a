// rz conv and rz hex: bytes between character sets and to and from
// hexadecimal text, streamed (any size of input, in blocks), every byte
// accounted for. See RzTool.h for the calling convention.
#ifndef RZ_TOOLS_RZTOOLTEXT_H
#define RZ_TOOLS_RZTOOLTEXT_H

#include <stddef.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "RzTool.h"

int RzToolConv(const std::vector<std::string>& args, RzToolIO& io);
int RzToolHex(const std::vector<std::string>& args, RzToolIO& io);

enum RzToolCharset { eRzToolMacRoman, eRzToolLatin1, eRzToolUTF8, eRzToolUTF16 };

// Converts a stream between character sets with the string conversions of
// the framework, fed in blocks of any size; the result does not depend on
// where the blocks end. The framework's conversions read text up to its
// first zero byte; here a zero (a zero byte, a UTF-16 zero unit, or a UTF-8
// sequence that decodes to 0) separates the pieces that are converted and
// comes out as the target's zero, so nothing after it is lost. UTF-16 is
// big-endian without byte-order mark both ways.
class RzToolConverter {
public:
    RzToolConverter(RzToolCharset from, RzToolCharset to, std::ostream& out);
    // Converts what `bytes` completes; an unfinished UTF-8 sequence or odd
    // UTF-16 byte waits for the next block.
    void Feed(const char* bytes, size_t n);
    // Converts what is left at the end of the input. Returns false when an
    // odd last byte of UTF-16 input was dropped (as the framework drops it).
    bool Finish();

private:
    // Converts p[0, n); unless `last`, what is unfinished waits in pending.
    void Convert(const char* p, size_t n, bool last);
    void Zero();
    void Segment(const char* p, size_t n);

    RzToolCharset from, to;
    std::ostream& out;
    std::string pending;  // the bytes that wait for the next block
};

// Writes bytes as upper-case hexadecimal text, 64 digits to a line.
class RzToolHexEncoder {
public:
    explicit RzToolHexEncoder(std::ostream& out) : out(out), column(0) {}
    void Feed(const char* bytes, size_t n);
    void Finish();  // ends the last line

private:
    std::ostream& out;
    size_t column;  // digits on the current line
};

// Reads hexadecimal text (either case, blanks, tabs and line ends anywhere)
// back into bytes. A character that is no digit, and an odd number of digits
// at the end, throw RzToolFailure naming `name` and the line and column.
class RzToolHexDecoder {
public:
    RzToolHexDecoder(std::ostream& out, const std::string& name)
        : out(out), name(name), line(1), column(1), afterCR(false), half(0) {}
    void Feed(const char* text, size_t n);
    void Finish();

private:
    std::ostream& out;
    const std::string name;
    long line, column;
    bool afterCR;
    char half;           // a digit waiting for its partner, or 0
    std::string digits;  // the digits of the current block
};

#endif
