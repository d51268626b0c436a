// Debug output: a process-wide debug level, a process-wide current output
// stream, and the functions that write a message when its level is at most
// the current level. Errors report themselves here at level 1.
//
// The current stream is chosen on first use: standard output (the default
// stream, an RzStdOutStream) unless the application has set another stream
// or a log file. A log file is written through an RzFlushFileStream, so each
// write appends to the file and closes it again. Debug writes never throw:
// every error of the stream is swallowed.
//
// Nothing here is locked; the framework is used from one thread at a time.
#ifndef RZ_RZIO_RZDEBUG_H
#define RZ_RZIO_RZDEBUG_H

#include <Rz/RzCore/RzDefs.h>
#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzString.h>

class RzStream;

// The default stream: an RzStdOutStream built on the first call and
// destroyed at exit.
RZ_API RzStream* RzGetDefaultOutputStream();

// A non-null `s` becomes the current stream (not owned: the previous one is
// never deleted). Null returns the current stream, first choosing the
// default stream when none is set; it never clears the current stream.
RZ_API RzStream* RzOutputStream(RzStream* s);

// The name of the current log file ("" when none was set).
RZ_API RzString& RzOutputFile();

// The current debug level; 0 at start, so only level-0 and negative messages
// pass.
RZ_API void RzSetDebugLevelImpl(int level);
RZ_API int RzGetDebugLevelImpl();

// The same as RzOutputStream(s).
RZ_API RzStream* RzSetDebugOutputImpl(RzStream* s);
// The current stream, the default stream when none is set yet.
RZ_API RzStream* RzGetDebugOutputImpl();

// Sets the log file name. A non-empty name makes a new RzFlushFileStream for
// it the current stream (the file is touched only by later writes; the
// stream is never deleted). An empty name only clears the name: an earlier
// log file stays the current stream. To go back to standard output, call
// RzSetDebugOutputImpl(RzGetDefaultOutputStream()). Allocation failures
// propagate.
RZ_API void RzSetDebugOutputFileImpl(const RzString& name);
// A copy of the log file name.
RZ_API RzString RzGetDebugOutputFileImpl();

// Writes `text` through the current stream when `level` is at most the
// debug level, followed by a separate "\n" when the text is not empty and
// does not end in one. Never throws: errors of the stream are swallowed.
// While a debug write is under way on this thread, further debug writes
// (such as the line of an error the stream raises) are dropped.
RZ_API void RzDebugWriteImpl(int level, const char* text);
RZ_API void RzDebugWriteImpl(int level, const RzString& text);

// Formats like printf when `level` passes the check (the arguments are not
// formatted otherwise), adds "\n" when the result does not end in one, and
// writes it with RzDebugWriteImpl.
RZ_API void RzDebugPrintfImpl(int level, const char* format, ...) RZ_PRINTF_FORMAT(2, 3);

// A hook for breaking into a debugger; it does nothing. (The memory
// debugging hooks are in RzMemory.h.)
RZ_API void RzDebugBreakImpl();

#endif
