#include <Rz/RzIO/RzStream.h>

#include <stdio.h>
#include <string.h>

#include <Rz/RzCore/RzMemory.h>
#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzStream";

RzString RzStream::GetName() const {
    return RzString("RzStream");
}

uint32_t RzStreamImplemented::Read(void*, uint32_t, uint32_t*) {
    RZ_RAISE(kRzUndefProc);
}

uint32_t RzStreamImplemented::Write(const void*, uint32_t, uint32_t*) {
    RZ_RAISE(kRzUndefProc);
}

int32_t RzStreamImplemented::SetPosition(int32_t, eRzFileSeekMode) {
    RZ_RAISE(kRzUndefProc);
}

int32_t RzStreamImplemented::GetPosition() {
    RZ_RAISE(kRzUndefProc);
}

uint32_t RzNullStream::Write(const void*, uint32_t size, uint32_t* done) {
    if (done) *done = size;
    return size;
}

RzStream& operator<<(RzStream& s, const RzString& text) {
    s.Write(text.c_str(), static_cast<uint32_t>(text.length()), nullptr);
    return s;
}

RzStream& operator<<(RzStream& s, const char* text) {
    s.Write(text, static_cast<uint32_t>(strlen(text)), nullptr);
    return s;
}

namespace {

// One number as text through the stream's Write. The buffer is large enough
// for every integer and for "%7.2f" of any double (at most 309 integer
// digits, the sign, the point and two decimals).
template <typename Number>
RzStream& WriteNumber(RzStream& s, const char* format, Number v) {
    char text[400];
    snprintf(text, sizeof text, format, v);
    return s << static_cast<const char*>(text);
}

}  // namespace

RzStream& operator<<(RzStream& s, double v) {
    return WriteNumber(s, "%7.2f", v);
}

RzStream& operator<<(RzStream& s, int v) {
    return WriteNumber(s, "%d", v);
}

RzStream& operator<<(RzStream& s, long v) {
    return WriteNumber(s, "%ld", v);
}

RzStream& operator<<(RzStream& s, unsigned int v) {
    return WriteNumber(s, "%u", v);
}

RzStream& operator<<(RzStream& s, unsigned long v) {
    return WriteNumber(s, "%lu", v);
}

void RzCopyStream(RzStream& source, RzStream& destination, int32_t length, uint32_t chunkSize) {
    // The buffer goes back to the manager also when a stream raises.
    struct Buffer {
        void* p;
        ~Buffer() { RzFree(p); }
    } buffer{RzAlloc(chunkSize)};
    const bool bounded = length > 0;
    int32_t remaining = length;
    for (;;) {
        uint32_t got = 0;
        const uint32_t want = (bounded && static_cast<uint32_t>(remaining) < chunkSize)
                                  ? static_cast<uint32_t>(remaining)
                                  : chunkSize;
        source.Read(buffer.p, want, &got);
        destination.Write(buffer.p, got, nullptr);
        if (bounded) {
            remaining -= static_cast<int32_t>(got);
            if (remaining < 1) break;
        } else if (got < want) {
            break;
        }
    }
}
