// The one way the framework raises an error: RzRaise records the unit's base
// name (not __FILE__) and the line. Each source file that raises errors
// defines `static const char kRzUnit[] = "<UnitName>";` and uses RZ_RAISE,
// which passes the line of the raising statement. The few errors whose line
// is part of the framework's contract call RzRaise with that line directly.
#ifndef RZ_INTERNAL_RZRAISE_H
#define RZ_INTERNAL_RZRAISE_H

#include <Rz/RzCore/RzError.h>

#define RZ_RAISE(code, name) RzRaise((code), (name), kRzUnit, __LINE__)

#endif
