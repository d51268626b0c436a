#include <Rz/RzIO/RzStdStream.h>

#include <stdio.h>
#include <string.h>

#include <Rz/Mac/RzByteOrder.h>
#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzStdStream";

namespace {

// The count is 32-bit and wraps.
int32_t Advance(int32_t count, uint32_t by) {
    return static_cast<int32_t>(static_cast<uint32_t>(count) + by);
}

}  // namespace

int32_t RzStdStream::SetPosition(int32_t, eRzFileSeekMode) {
    RZ_RAISE(kRzFileAccessErr);
}

int32_t RzStdStream::GetPosition() {
    return count;
}

uint32_t RzStdInStream::Read(void* buffer, uint32_t size, uint32_t* done) {
    // No room even for the terminator: reading size - 1 characters would
    // run far past the buffer.
    if (size == 0) return 0;
    char* out = static_cast<char*>(buffer);
    const uint32_t n = size - 1;
    for (uint32_t i = 0; i < n; ++i) out[i] = static_cast<char>(getchar());
    out[n] = 0;
    if (done) *done = n;
    count = Advance(count, n);
    return n;
}

uint32_t RzStdInStream::Write(const void*, uint32_t, uint32_t*) {
    RZ_RAISE(kRzFileAccessErr);
}

void RzStdInStream::Open(eRzFileAccess access) {
    if (access != eRzFileRead) RZ_RAISE(kRzFileAccessErr);
}

uint32_t RzStdOutStream::Read(void*, uint32_t, uint32_t*) {
    RZ_RAISE(kRzFileAccessErr);
}

uint32_t RzStdOutStream::Write(const void* buffer, uint32_t size, uint32_t* done) {
    RzString text;
    text.Set(buffer, static_cast<int32_t>(size));
    text.AdjustLineFeed(RzString(RzPlatformIsUnix(RzGetPlatform()) ? "\n" : "\r"));
    const uint32_t n = static_cast<uint32_t>(text.length());
    count = Advance(count, n);
    if (done) *done += n;
    fputs(text.c_str(), stdout);
    fflush(stdout);
    return n;
}

void RzStdOutStream::Open(eRzFileAccess access) {
    if (access != eRzFileWrite) RZ_RAISE(kRzFileAccessErr);
}

void RzStdOutStream::Write(const char* text) {
    if (text) Write(text, static_cast<uint32_t>(strlen(text) + 1), nullptr);
}
