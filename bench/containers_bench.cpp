// RzArray and RzList against their std-library counterparts, with int and
// RzString elements, at sizes far enough apart to show how each scales.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"

#include <deque>
#include <vector>

#include <Rz/RzCore/RzString.h>
#include <Rz/RzData/RzArray.h>
#include <Rz/RzData/RzList.h>

namespace {

template <class T>
T Element();
template <>
int Element<int>() {
    return 7;
}
template <>
RzString Element<RzString>() {
    return RzString("element");  // copies share the buffer
}

int Weight(int x) {
    return x;
}
int Weight(const RzString& s) {
    return s.length();
}

void Sizes(benchmark::internal::Benchmark* b) {
    b->Arg(1000)->Arg(100000)->Arg(1000000);
}

// Appending one element at a time.
template <class T>
void RzArrayGrowByOne(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const T v = Element<T>();
    for (auto _ : state) {
        RzArray<T> a;
        for (int i = 0; i < n; ++i) {
            a.ReSize(a.count + 1);
            a[i] = v;
        }
        benchmark::DoNotOptimize(a.data);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
template <class T>
void VectorPushBack(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const T v = Element<T>();
    for (auto _ : state) {
        std::vector<T> a;
        for (int i = 0; i < n; ++i) a.push_back(v);
        benchmark::DoNotOptimize(a.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <class T, bool Front>
void RzListAdd(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const T v = Element<T>();
    for (auto _ : state) {
        RzList<T> list;
        for (int i = 0; i < n; ++i) Front ? list.AddFront(v) : list.AddBack(v);
        benchmark::DoNotOptimize(list.storage.data);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
template <class T, bool Front>
void DequeAdd(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const T v = Element<T>();
    for (auto _ : state) {
        std::deque<T> list;
        for (int i = 0; i < n; ++i) Front ? list.push_front(v) : list.push_back(v);
        benchmark::DoNotOptimize(&list.front());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// Reading every element through the checked index.
template <class T>
void RzListIndex(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    RzList<T> list;
    for (int i = 0; i < n; ++i) list.AddFront(Element<T>());  // a wrapped ring
    for (auto _ : state) {
        long sum = 0;
        for (int i = 0; i < n; ++i) sum += Weight(list[i]);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
template <class T>
void DequeIndex(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::deque<T> list;
    for (int i = 0; i < n; ++i) list.push_front(Element<T>());
    for (auto _ : state) {
        long sum = 0;
        for (int i = 0; i < n; ++i) sum += Weight(list[static_cast<size_t>(i)]);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// Taking the first element off a list of n (and adding one back): RzList moves
// every element down, so one removal costs time proportional to n.
template <class T>
void RzListRemoveFirst(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const T v = Element<T>();
    RzList<T> list;
    for (int i = 0; i < n; ++i) list.AddBack(v);
    for (auto _ : state) {
        list.Remove(0);
        list.AddBack(v);
    }
    state.SetItemsProcessed(state.iterations());
}
template <class T>
void DequeRemoveFirst(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const T v = Element<T>();
    std::deque<T> list(static_cast<size_t>(n), v);
    for (auto _ : state) {
        list.pop_front();
        list.push_back(v);
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK_TEMPLATE(RzArrayGrowByOne, int)->Apply(Sizes);
BENCHMARK_TEMPLATE(VectorPushBack, int)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzArrayGrowByOne, RzString)->Apply(Sizes);
BENCHMARK_TEMPLATE(VectorPushBack, RzString)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListAdd, int, false)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeAdd, int, false)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListAdd, RzString, false)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeAdd, RzString, false)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListAdd, int, true)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeAdd, int, true)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListAdd, RzString, true)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeAdd, RzString, true)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListIndex, int)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeIndex, int)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListIndex, RzString)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeIndex, RzString)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListRemoveFirst, int)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeRemoveFirst, int)->Apply(Sizes);
BENCHMARK_TEMPLATE(RzListRemoveFirst, RzString)->Apply(Sizes);
BENCHMARK_TEMPLATE(DequeRemoveFirst, RzString)->Apply(Sizes);
