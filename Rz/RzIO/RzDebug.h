// Debug output: a process-wide debug level and the functions that write a
// message when its level is at most the current level. Errors report
// themselves here at level 1.
//
// The output stream and the log file arrive with the stream classes; until
// then a message that passes the level check is dropped.
#ifndef RZ_RZIO_RZDEBUG_H
#define RZ_RZIO_RZDEBUG_H

#include <Rz/RzCore/RzDefs.h>

// The current debug level; 0 at start, so only level-0 and negative messages
// pass.
void RzSetDebugLevelImpl(int level);
int RzGetDebugLevelImpl();

// Writes `text` (plus a line feed when it does not end in one) when `level` is
// at most the current debug level. Never throws.
void RzDebugWriteImpl(int level, const char* text);

// Formats like printf when `level` passes the check (the arguments are not
// evaluated otherwise) and writes the result with RzDebugWriteImpl.
void RzDebugPrintfImpl(int level, const char* format, ...) RZ_PRINTF_FORMAT(2, 3);

#endif
