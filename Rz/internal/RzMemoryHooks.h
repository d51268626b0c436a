// The allocation function behind RzMemoryManagerCPP. It is the global
// operator new; the unit tests swap in a function that throws, so that the
// default manager's out-of-memory path can be exercised on a machine where
// operator new does not fail. The framework itself never changes it.
#ifndef RZ_INTERNAL_RZMEMORYHOOKS_H
#define RZ_INTERNAL_RZMEMORYHOOKS_H

#include <stddef.h>

// Returns a block that operator delete can free, or throws.
typedef void* (*RzOperatorNewFunction)(size_t size);

// Installs `f` (null restores the global operator new) and returns the
// function installed before.
RzOperatorNewFunction RzSetOperatorNewHook(RzOperatorNewFunction f);

#endif
