// Shared set-up of the benchmarks.
#ifndef RZ_BENCH_BENCHSUPPORT_H
#define RZ_BENCH_BENCHSUPPORT_H

#if defined(__GLIBC__)
#include <malloc.h>

namespace rzbench {

// glibc raises its mmap threshold as large blocks are freed and gives freed
// heap memory back to the system, so the speed of a benchmark that allocates
// megabytes would depend on which benchmarks ran before it and on whether its
// first pass touched fresh pages. Fixed thresholds keep every block on the
// reused heap, so that each pass measures the code, not the page faults.
inline bool SteadyAllocator() {
    static const bool set =
        mallopt(M_MMAP_THRESHOLD, 32 << 20) && mallopt(M_TRIM_THRESHOLD, 1 << 30);
    return set;
}
static const bool kSteadyAllocator = SteadyAllocator();

}  // namespace rzbench

#endif
#endif
