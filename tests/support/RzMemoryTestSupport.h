// A counting memory manager and guards that install a manager or make the
// default one fail.
#ifndef RZ_TESTS_SUPPORT_RZMEMORYTESTSUPPORT_H
#define RZ_TESTS_SUPPORT_RZMEMORYTESTSUPPORT_H

#include <stdint.h>
#include <stdlib.h>

#include <new>

#include <Rz/RzCore/RzMemory.h>
#include <Rz/internal/RzMemoryHooks.h>

// Counts its calls and serves blocks from malloc, or null from allocation
// number `failFrom` (0-based) on.
class CountingMemoryManager : public RzMemoryManager {
public:
    explicit CountingMemoryManager(int32_t failFrom = INT32_MAX) : failFrom(failFrom) {}
    void* Alloc(uint32_t size) override {
        lastSize = size;
        if (allocs++ >= failFrom) return nullptr;
        ++live;
        return malloc(size ? size : 1);
    }
    void Free(void* ptr) override {
        ++frees;
        if (ptr) --live;
        free(ptr);
    }

    int32_t failFrom;
    int32_t allocs = 0;  // Alloc calls, failed ones included
    int32_t frees = 0;   // Free calls, null included
    int32_t live = 0;    // blocks given out and not yet freed
    uint32_t lastSize = 0;
};

// Installs a manager (null: the default) for the guard's lifetime.
class MemoryManagerGuard {
public:
    explicit MemoryManagerGuard(RzMemoryManager* mgr) : saved(RzGetMemoryManager()) {
        RzSetMemoryManager(mgr);
    }
    ~MemoryManagerGuard() { RzSetMemoryManager(saved); }

private:
    RzMemoryManager* saved;
};

// Makes the default manager's operator new throw `Exception` meanwhile.
template <class Exception = std::bad_alloc>
class FailingOperatorNewGuard {
public:
    FailingOperatorNewGuard() : saved(RzSetOperatorNewHook(Throw)) {}
    ~FailingOperatorNewGuard() { RzSetOperatorNewHook(saved); }

private:
    static void* Throw(size_t) { throw Exception(); }
    RzOperatorNewFunction saved;
};

#endif
