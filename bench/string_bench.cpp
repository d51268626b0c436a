// RzString next to std::string (and StrMatch next to POSIX fnmatch), in the
// same binary and run.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"
#include <fnmatch.h>

#include <string>

#include <Rz/RzCore/RzString.h>

namespace {

const int64_t kAppendBytes = 16 << 20;

void BM_Append_RzString(benchmark::State& state) {
    for (auto _ : state) {
        RzString s;
        for (int64_t i = 0; i < kAppendBytes; ++i) s += static_cast<char>('a' + (i & 15));
        benchmark::DoNotOptimize(s.c_str());
    }
    state.SetBytesProcessed(state.iterations() * kAppendBytes);
}
BENCHMARK(BM_Append_RzString)->Unit(benchmark::kMillisecond);

void BM_Append_StdString(benchmark::State& state) {
    for (auto _ : state) {
        std::string s;
        for (int64_t i = 0; i < kAppendBytes; ++i) s += static_cast<char>('a' + (i & 15));
        benchmark::DoNotOptimize(s.data());
    }
    state.SetBytesProcessed(state.iterations() * kAppendBytes);
}
BENCHMARK(BM_Append_StdString)->Unit(benchmark::kMillisecond);

const int kCopies = 10000000;
const char kHundred[] =
    "0123456789012345678901234567890123456789012345678901234567890123456789"
    "012345678901234567890123456789";

void BM_Copy_RzString(benchmark::State& state) {
    RzString source(kHundred);
    for (auto _ : state) {
        for (int i = 0; i < kCopies; ++i) {
            RzString copy(source);
            benchmark::DoNotOptimize(copy);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCopies);
}
BENCHMARK(BM_Copy_RzString)->Unit(benchmark::kMillisecond);

void BM_Copy_StdString(benchmark::State& state) {
    std::string source(kHundred);
    for (auto _ : state) {
        for (int i = 0; i < kCopies; ++i) {
            std::string copy(source);
            benchmark::DoNotOptimize(copy);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCopies);
}
BENCHMARK(BM_Copy_StdString)->Unit(benchmark::kMillisecond);

struct MatchCase {
    const char* pattern;
    const char* text;
};
// Typical file-name patterns, matching and not.
const MatchCase kTypical[] = {
    {"*.txt", "Measurements 2008-03-07.txt"},
    {"*.icc", "Generic RGB Profile.icm"},
    {"IMG_????.JPG", "IMG_0042.JPG"},
    {"*profile*", "display-profile-calibrated.icc"},
    {"report-*-final.pdf", "report-2026-draft.pdf"},
};

void BM_Match_Typical_StrMatch(benchmark::State& state) {
    for (auto _ : state)
        for (const MatchCase& c : kTypical) benchmark::DoNotOptimize(StrMatch(c.pattern, c.text));
    state.SetItemsProcessed(state.iterations() * 5);
}
BENCHMARK(BM_Match_Typical_StrMatch);

void BM_Match_Typical_fnmatch(benchmark::State& state) {
    for (auto _ : state)
        for (const MatchCase& c : kTypical)
            benchmark::DoNotOptimize(fnmatch(c.pattern, c.text, FNM_NOESCAPE));
    state.SetItemsProcessed(state.iterations() * 5);
}
BENCHMARK(BM_Match_Typical_fnmatch);

const std::string kAs(200, 'a');
const char kPathological[] = "*a*a*a*a*a*a*a*a*a*a*b";

void BM_Match_Pathological_StrMatch(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(StrMatch(kPathological, kAs.c_str()));
}
BENCHMARK(BM_Match_Pathological_StrMatch)->Unit(benchmark::kMicrosecond);

void BM_Match_Pathological_fnmatch(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(fnmatch(kPathological, kAs.c_str(), FNM_NOESCAPE));
}
BENCHMARK(BM_Match_Pathological_fnmatch)->Unit(benchmark::kMicrosecond);

}  // namespace
