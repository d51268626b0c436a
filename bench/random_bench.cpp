// RzRandom next to the standard library's generator with the same modulus
// and multiplier (std::minstd_rand), in the same binary and run: uniform
// reals (std::uniform_real_distribution over minstd_rand) and raw steps.
#include <benchmark/benchmark.h>

#include <random>

#include <Rz/RzMath/RzRandom.h>

namespace {

const int kDraws = 10000000;

void BM_Uniform_RzRandom(benchmark::State& state) {
    RzRandom rng(12345);
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kDraws; ++i) sum += rng.Random();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kDraws);
}
BENCHMARK(BM_Uniform_RzRandom)->Unit(benchmark::kMillisecond);

void BM_Uniform_MinstdRand(benchmark::State& state) {
    std::minstd_rand rng(12345);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kDraws; ++i) sum += uniform(rng);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kDraws);
}
BENCHMARK(BM_Uniform_MinstdRand)->Unit(benchmark::kMillisecond);

void BM_Step_RzRandom(benchmark::State& state) {
    RzRandom rng(12345);
    for (auto _ : state) {
        int64_t sum = 0;
        for (int i = 0; i < kDraws; ++i) sum += rng.NextSeed();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kDraws);
}
BENCHMARK(BM_Step_RzRandom)->Unit(benchmark::kMillisecond);

void BM_Step_MinstdRand(benchmark::State& state) {
    std::minstd_rand rng(12345);
    for (auto _ : state) {
        int64_t sum = 0;
        for (int i = 0; i < kDraws; ++i) sum += rng();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kDraws);
}
BENCHMARK(BM_Step_MinstdRand)->Unit(benchmark::kMillisecond);

}  // namespace
