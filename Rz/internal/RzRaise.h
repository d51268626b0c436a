// The one way the framework raises an error. Each source file that raises
// errors defines `static const char kRzUnit[] = "<UnitName>";` and writes
// RZ_RAISE(kRzFormatErr): the name comes with the code (RzErrorCodes.h), the
// unit's base name (not __FILE__) and the line of the raising statement are
// recorded.
//
// A few errors carry a line that applications rely on rather than the line of
// the statement; they are raised with RZ_RAISE_AT and one of the constants
// below, so that the number is written down once.
#ifndef RZ_INTERNAL_RZRAISE_H
#define RZ_INTERNAL_RZRAISE_H

#include <Rz/RzCore/RzError.h>

#define RZ_RAISE(code) RzRaiseCode((code), kRzUnit, __LINE__)
#define RZ_RAISE_AT(code, fixedLine) RzRaiseCode((code), kRzUnit, (fixedLine))

enum {
    kRzLineMemFull = 37,              // "RzMemFullErr", unit RzMemory
    kRzLinePtrInvalid = 206,          // "RzPtrInvalid", unit RzTemplates
    kRzLineEntryWithoutEquals = 91,   // "RzFormatErr", unit RzDataBase
    kRzLineProtectedEntryOpen = 616,  // "RzFormatErr", unit RzDataBase: no '>'
};

// "RzMemFullErr" as the memory manager raises it (unit RzMemory, line 37),
// for the places outside the memory unit that report an allocation the same
// way.
[[noreturn]] void RzRaiseMemFull();

#endif
