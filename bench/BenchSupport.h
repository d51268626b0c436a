// Shared set-up of the benchmarks. They run with the allocator as
// applications get it: no thresholds are tuned.
#ifndef RZ_BENCH_BENCHSUPPORT_H
#define RZ_BENCH_BENCHSUPPORT_H

#include <benchmark/benchmark.h>

#include <Rz/RzData/RzDataBase.h>

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

// Times read(db) into a new database each pass, started from a trimmed
// heap; making and destroying the database are not timed.
template <class Read>
void TimeReadIntoNewDatabase(benchmark::State& state, int64_t bytesPerPass, Read read) {
    for (auto _ : state) {
        state.PauseTiming();
        TrimHeap();
        RzDataBase* db = new RzDataBase;
        state.ResumeTiming();
        read(*db);
        benchmark::DoNotOptimize(db->GetCount());
        state.PauseTiming();
        db->Delete();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * bytesPerPass);
}

}  // namespace rzbench

#endif
