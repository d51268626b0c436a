// RzStream: the framework's abstract byte stream.
//
// A stream is a counted object (RzObject) with four raw operations (read,
// write, set position, get position) and a descriptive name. Files, the
// console and the debug output are streams. RzStreamImplemented gives
// defaults that raise "RzUndefProc" (1), so a subclass overrides only what it
// supports; RzNullStream swallows everything written to it.
//
// `done` arguments are optional (null: not wanted); when given they receive
// the number of bytes transferred. Sizes and counts are unsigned 32-bit,
// offsets and positions signed 32-bit.
#ifndef RZ_RZIO_RZSTREAM_H
#define RZ_RZIO_RZSTREAM_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzObject.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzIO/RzFileAccess.h>

class RZ_API RzStream : public RzObject {
public:
    RzStream() {}
    // Reads up to `size` bytes; returns the count (also stored in *done).
    virtual uint32_t Read(void* buffer, uint32_t size, uint32_t* done) = 0;
    // Writes `size` bytes; returns the count (also stored in *done).
    virtual uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) = 0;
    // Returns 0 on success.
    virtual int32_t SetPosition(int32_t offset, eRzFileSeekMode mode) = 0;
    virtual int32_t GetPosition() = 0;
    // "RzStream"; subclasses that know a better name say it.
    virtual RzString GetName() const;
};

// Raw operations that raise "RzUndefProc" (1) unless overridden; nothing is
// transferred and `done` is left untouched.
class RZ_API RzStreamImplemented : public RzStream {
public:
    uint32_t Read(void* buffer, uint32_t size, uint32_t* done) override;
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override;
    int32_t SetPosition(int32_t offset, eRzFileSeekMode mode) override;
    int32_t GetPosition() override;
};

// A write-only sink: Write discards the data and reports it all written,
// whatever the buffer (null included). The other operations raise.
class RZ_API RzNullStream : public RzStreamImplemented {
public:
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override;
};

// Formatted output through the stream's Write; each returns the stream so
// that calls chain. No separator or line end is added.
RZ_API RzStream& operator<<(RzStream& s, const RzString& text);  // length() bytes
RZ_API RzStream& operator<<(RzStream& s, const char* text);      // up to the zero; not null
RZ_API RzStream& operator<<(RzStream& s, double v);              // "%7.2f"
RZ_API RzStream& operator<<(RzStream& s, int v);                 // "%d"
RZ_API RzStream& operator<<(RzStream& s, long v);                // "%ld"
RZ_API RzStream& operator<<(RzStream& s, unsigned int v);        // "%u"
RZ_API RzStream& operator<<(RzStream& s, unsigned long v);       // "%lu"

// Copies from source to destination through a buffer of chunkSize bytes
// (from RzAlloc). A length above 0 copies exactly that many bytes: such a
// copy has no end-of-source test, so a source holding fewer bytes keeps it
// passing 0-byte reads and writes without end. A length of 0 or less copies
// until a read comes back short. Errors of either stream pass through.
RZ_API void RzCopyStream(RzStream& source, RzStream& destination, int32_t length,
                         uint32_t chunkSize);

#endif
