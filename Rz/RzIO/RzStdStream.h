// Console streams: standard input read character by character, and standard
// output with the platform's line ends. Both count the bytes that passed
// (their position) and refuse seeking; using one in the wrong direction
// raises "RzFileAccessErr" (18). Neither owns the process's console: Close
// does nothing. The default debug output stream is an RzStdOutStream.
#ifndef RZ_RZIO_RZSTDSTREAM_H
#define RZ_RZIO_RZSTDSTREAM_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>
#include <Rz/RzIO/RzStream.h>

class RZ_API RzStdStream : public RzStream {
public:
    RzStdStream() : count(0) {}
    // Always raises "RzFileAccessErr" (18).
    int32_t SetPosition(int32_t offset, eRzFileSeekMode mode) override;
    // The number of bytes read or written so far.
    int32_t GetPosition() override;
    // Accepts only the stream's own direction; anything else raises
    // "RzFileAccessErr" (18).
    virtual void Open(eRzFileAccess access) = 0;
    virtual void Close() = 0;

protected:
    int32_t count;  // bytes transferred so far; wraps at 32 bits
};

class RZ_API RzStdInStream : public RzStdStream {
public:
    // Reads exactly size - 1 characters with getchar (no stop at a line end;
    // past the end of input each further byte is EOF cut to a char, 0xFF),
    // then stores a zero byte behind them, so that a buffer of `size` bytes
    // holds a C string. *done and the count grow by size - 1. A size of 0
    // reads and stores nothing.
    uint32_t Read(void* buffer, uint32_t size, uint32_t* done) override;
    // Raises "RzFileAccessErr" (18).
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override;
    void Open(eRzFileAccess access) override;  // eRzFileRead only
    void Close() override {}
};

class RZ_API RzStdOutStream : public RzStdStream {
public:
    // Raises "RzFileAccessErr" (18).
    uint32_t Read(void* buffer, uint32_t size, uint32_t* done) override;
    // Converts every line end (CR, LF, CR LF) to the platform's (LF on Unix
    // systems, CR elsewhere), writes the result up to its first zero byte to
    // standard output and flushes it. The count grows by the converted
    // length, and so does *done: it is added to, not overwritten (set it to 0
    // first for the count of this call alone). Returns the converted length.
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override;
    void Open(eRzFileAccess access) override;  // eRzFileWrite only
    void Close() override {}
    // Writes `text` with its terminating zero (strlen + 1 bytes) through the
    // virtual Write; null writes nothing.
    virtual void Write(const char* text);
};

#endif
