#include <Rz/RzIO/RzDebug.h>

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <vector>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzIO/RzFile.h>
#include <Rz/RzIO/RzStdStream.h>

namespace {

// The debug level, set by RzSetDebugLevelImpl (applications and tests); read
// on every debug call.
int gDebugLevel = 0;

// The current output stream, not owned. Null until first use; then changed
// only by RzOutputStream / RzSetDebugOutputImpl with a stream and by
// RzSetDebugOutputFileImpl with a name.
RzStream* gStream = nullptr;

// Set while this thread writes a debug message. A stream that fails raises an
// RzError, whose constructor writes its own debug line: without this flag
// that line would go to the same failing stream, which would raise again,
// and so on until the stack ran out.
thread_local bool gWriting = false;

// Every log stream RzSetDebugOutputFileImpl made, appended to by it. They
// are never destroyed: the application may still hold one, and errors may
// write debug lines while statics are being destroyed. The list only keeps
// them reachable for leak checkers.
std::vector<RzStream*>* gLogStreams = nullptr;

RzStream* CurrentStream() {
    if (!gStream) gStream = RzGetDefaultOutputStream();
    return gStream;
}

}  // namespace

RzStream* RzGetDefaultOutputStream() {
    static RzStdOutStream gDefaultStream;
    return &gDefaultStream;
}

RzStream* RzOutputStream(RzStream* s) {
    if (s) {
        gStream = s;
        return s;
    }
    return CurrentStream();
}

RzString& RzOutputFile() {
    static RzString gOutputFile;
    return gOutputFile;
}

void RzSetDebugLevelImpl(int level) {
    gDebugLevel = level;
}

int RzGetDebugLevelImpl() {
    return gDebugLevel;
}

RzStream* RzSetDebugOutputImpl(RzStream* s) {
    return RzOutputStream(s);
}

RzStream* RzGetDebugOutputImpl() {
    return CurrentStream();
}

void RzSetDebugOutputFileImpl(const RzString& name) {
    RzOutputFile() = name;
    if (name.length() != 0) {
        if (!gLogStreams) gLogStreams = new std::vector<RzStream*>;
        gLogStreams->push_back(nullptr);  // room first: a made stream is always kept
        gStream = gLogStreams->back() = new RzFlushFileStream(RzFileSpec(name));
    } else {
        // Clearing the name keeps an earlier log file in use on purpose.
        CurrentStream();
    }
}

RzString RzGetDebugOutputFileImpl() {
    return RzOutputFile();
}

void RzDebugWriteImpl(int level, const char* text) {
    RzStream* stream = CurrentStream();
    if (level > gDebugLevel || !text || gWriting) return;
    gWriting = true;
    try {
        const size_t n = strlen(text);
        stream->Write(text, static_cast<uint32_t>(n), nullptr);
        if (n > 0 && text[n - 1] != '\n') stream->Write("\n", 1, nullptr);
    } catch (...) {
        // Debug output never throws: errors write here while being raised.
    }
    gWriting = false;
}

void RzDebugWriteImpl(int level, const RzString& text) {
    RzDebugWriteImpl(level, text.c_str());
}

void RzDebugPrintfImpl(int level, const char* format, ...) {
    if (level > gDebugLevel) return;
    const size_t kSize = 4096;
    char buffer[kSize];
    va_list args;
    va_start(args, format);
    const int n = vsnprintf(buffer, kSize, format, args);
    va_end(args);
    if (n < 0) return;
    if (static_cast<size_t>(n) < kSize) {
        if (n >= 1 && n <= static_cast<int>(kSize) - 2 && buffer[n - 1] != '\n') {
            buffer[n] = '\n';
            buffer[n + 1] = 0;
        }
        RzDebugWriteImpl(level, buffer);
        return;
    }
    // A result that does not fit the classic buffer comes out whole instead of
    // overrunning it; RzDebugWriteImpl adds its line end.
    std::vector<char> large(static_cast<size_t>(n) + 1);
    va_start(args, format);
    vsnprintf(large.data(), large.size(), format, args);
    va_end(args);
    RzDebugWriteImpl(level, large.data());
}

void RzDebugBreakImpl() {}
