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

// Large enough for every integer and for "%7.2f" of any double (at most 309
// integer digits, the sign, the point and two decimals).
const size_t kNumberBuffer = 400;

}  // namespace

RzStream& operator<<(RzStream& s, double v) {
    char text[kNumberBuffer];
    snprintf(text, sizeof text, "%7.2f", v);
    return s << static_cast<const char*>(text);
}

RzStream& operator<<(RzStream& s, int v) {
    char text[kNumberBuffer];
    snprintf(text, sizeof text, "%d", v);
    return s << static_cast<const char*>(text);
}

RzStream& operator<<(RzStream& s, long v) {
    char text[kNumberBuffer];
    snprintf(text, sizeof text, "%ld", v);
    return s << static_cast<const char*>(text);
}

RzStream& operator<<(RzStream& s, unsigned int v) {
    char text[kNumberBuffer];
    snprintf(text, sizeof text, "%u", v);
    return s << static_cast<const char*>(text);
}

RzStream& operator<<(RzStream& s, unsigned long v) {
    char text[kNumberBuffer];
    snprintf(text, sizeof text, "%lu", v);
    return s << static_cast<const char*>(text);
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
