#include <Rz/RzIO/RzDebug.h>

#include <stdarg.h>
#include <string.h>

#include <vector>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzIO/RzFile.h>
#include <Rz/RzIO/RzStdStream.h>
#include <Rz/internal/RzFormat.h>

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
    va_list args;
    va_start(args, format);
    RzFormatted formatted(format, args);
    va_end(args);
    const int n = formatted.Length();
    if (n < 0) return;
    // A line end goes into the classic buffer when there is room for it (1 to
    // 4094 characters); a longer result gets its line end from
    // RzDebugWriteImpl, as a second write.
    char* text = formatted.Text();
    if (n >= 1 && n <= RzFormatted::kClassicSize - 2 && text[n - 1] != '\n') {
        text[n] = '\n';
        text[n + 1] = 0;
    }
    RzDebugWriteImpl(level, text);
}

void RzDebugBreakImpl() {}
