// The tick clock behind RzSystem's timing services. It is the operating
// system's (RzOSTickCount, RzOSDelayTicks); the unit tests install a clock
// of their own, so that the millisecond arithmetic can be checked at any
// tick count, the wrap after 4294967 ticks included, without waiting for it.
// The framework itself never changes it.
#ifndef RZ_INTERNAL_RZTICKCLOCK_H
#define RZ_INTERNAL_RZTICKCLOCK_H

#include <stdint.h>

struct RzTickClock {
    uint32_t (*ticks)();                // the tick count now, 60 a second
    uint32_t (*delay)(uint32_t count);  // waits `count` ticks; the tick count at the end
};

// Installs `clock` (null: the operating system's) and returns the clock
// installed before.
RzTickClock RzSetTickClock(const RzTickClock* clock);

#endif
