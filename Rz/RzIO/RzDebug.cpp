#include <Rz/RzIO/RzDebug.h>

#include <stdarg.h>

namespace {

// The process-wide debug level, set by RzSetDebugLevelImpl (applications and
// tests); read on every debug call.
int gDebugLevel = 0;

}  // namespace

void RzSetDebugLevelImpl(int level) {
    gDebugLevel = level;
}

int RzGetDebugLevelImpl() {
    return gDebugLevel;
}

void RzDebugWriteImpl(int level, const char* text) {
    if (level > gDebugLevel || !text) return;
    // No output stream yet: the message is dropped.
}

void RzDebugPrintfImpl(int level, const char* format, ...) {
    if (level > gDebugLevel) return;
    (void)format;
    // No output stream yet: the message is dropped without formatting it.
}
