// RzArray and RzList of elements whose construction or copy fails on demand,
// once with elements that can only be copied and once with elements whose
// move assignment cannot fail (which the containers move). After every
// operation, failed or not, the containers must hold what a model says:
// a failed ReSize, AddBack or AddFront keeps the elements as they were, a
// failed copy or fresh array leaves nothing behind, and a failed assignment
// leaves the target empty. No element may outlive its place or go missing:
// the live elements are exactly those of the arrays and of the list's ring.
//
// Input: triples of bytes, an operation, its argument and the failure point:
// below 0x80 the n-th following construction or copy (n modulo 32) throws,
// from 0x80 on none does.
#include <stdint.h>
#include <stdlib.h>

#include <algorithm>
#include <vector>

#include <Rz/RzData/RzArray.h>
#include <Rz/RzData/RzList.h>

#include "support/RzContainerTestSupport.h"

namespace {

void Check(bool ok) {
    if (!ok) abort();
}

template <class E>
std::vector<int> Values(const RzArray<E>& a) {
    std::vector<int> v;
    for (int i = 0; i < a.count; ++i) v.push_back(a.data[i].value);
    return v;
}

template <class E>
std::vector<int> Values(const RzList<E>& list) {
    std::vector<int> v;
    for (int i = 0; i < list.count; ++i) v.push_back(list[i].value);
    return v;
}

// Runs `op` with the failure point armed; true when it threw the element's int.
template <class Op>
bool Fails(int failAfter, Op op) {
    TrackedCounts::failAfter = failAfter;
    bool failed = false;
    try {
        op();
    } catch (int) {
        failed = true;
    }
    TrackedCounts::failAfter = -1;
    return failed;
}

template <class E>
void Run(const uint8_t* data, size_t size) {
    const int liveBefore = TrackedCounts::live;
    {
        RzArray<E> a, b;
        RzList<E> list;
        std::vector<int> aModel, bModel, listModel;
        int next = 1;  // values given to new elements, so that copies can be told apart
        for (size_t at = 0; at + 2 < size; at += 3) {
            const int op = data[at] % 6, arg = data[at + 1];
            const int failAfter = data[at + 2] < 0x80 ? data[at + 2] % 32 : -1;
            switch (op) {
                case 0: {  // -3 to 44 elements
                    const int n = arg % 48 - 3;
                    if (Fails(failAfter, [&] { a.ReSize(n); })) break;
                    aModel.resize(static_cast<size_t>(std::max(n, 0)), 0);
                    for (int i = 0; i < a.count; ++i)
                        if (aModel[i] == 0) aModel[i] = a[i].value = next++;
                    break;
                }
                case 1:
                    Fails(failAfter, [&] {
                        RzArray<E> copy(a);
                        Check(Values(copy) == aModel);
                    });
                    break;
                case 2:
                    if (Fails(failAfter, [&] { b = a; })) {
                        Check(b.data == nullptr);
                        bModel.clear();
                    } else {
                        bModel = aModel;
                    }
                    break;
                case 3:
                    Fails(failAfter, [&] { RzArray<E> fresh(arg % 16); });
                    break;
                case 4: {
                    E x;
                    x.value = next++;
                    if (Fails(failAfter, [&] { arg % 2 ? list.AddFront(x) : list.AddBack(x); }))
                        break;
                    listModel.insert(arg % 2 ? listModel.begin() : listModel.end(), x.value);
                    break;
                }
                default: {  // -1 to 30 elements
                    const int n = arg % 32 - 1;
                    if (Fails(failAfter, [&] { list.ReSize(n); })) break;
                    listModel.resize(std::min(listModel.size(), size_t(std::max(n, 0))));
                    break;
                }
            }
            Check(Values(a) == aModel && Values(b) == bModel && Values(list) == listModel);
            Check(TrackedCounts::live - liveBefore == a.count + b.count + list.storage.count);
        }
    }
    Check(TrackedCounts::live == liveBefore);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Run<Tracked>(data, size);
    Run<MovableTracked>(data, size);
    return 0;
}
