// Shared set-up of the benchmarks. They run with the allocator as
// applications get it: no thresholds are tuned.
#ifndef RZ_BENCH_BENCHSUPPORT_H
#define RZ_BENCH_BENCHSUPPORT_H

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace rzbench {

// Gives the heap's free memory back to the system, so that the next pass
// starts on fresh pages as a new process does and pays for its page faults.
inline void TrimHeap() {
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

}  // namespace rzbench

#endif
