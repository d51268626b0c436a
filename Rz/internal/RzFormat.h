// printf-style formatting into a buffer that grows to the result, shared by
// RzString::Printf and the debug printf. A result that fits the classic
// 4096-byte buffer is formatted once, into that buffer; a longer one is
// formatted again into a block of its size, so that it comes out whole
// instead of overrunning the buffer.
#ifndef RZ_INTERNAL_RZFORMAT_H
#define RZ_INTERNAL_RZFORMAT_H

#include <stdarg.h>

#include <memory>

class RzFormatted {
public:
    enum { kClassicSize = 4096 };

    // Formats `format` with `args`; the caller still owns `args` (va_end).
    RzFormatted(const char* format, va_list args);
    RzFormatted(const RzFormatted&) = delete;
    RzFormatted& operator=(const RzFormatted&) = delete;

    // The number of characters formatted, -1 when the C library refused the
    // format (then Text() is "").
    int Length() const { return length; }
    // The whole result, zero-terminated. While Length() < kClassicSize it is
    // the classic buffer, which the caller may extend up to its size.
    char* Text() { return text; }

private:
    char classic[kClassicSize];
    std::unique_ptr<char[]> large;
    char* text;
    int length;
};

#endif
