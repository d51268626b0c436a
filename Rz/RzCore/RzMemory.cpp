#include <Rz/RzCore/RzMemory.h>

#include <string.h>

#include <new>

#include <Rz/RzCore/RzError.h>
#include <Rz/internal/RzMemoryHooks.h>
#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzMemory";

namespace {

void* GlobalOperatorNew(size_t size) {
    return ::operator new(size);
}

// What RzMemoryManagerCPP allocates with. Changed only by
// RzSetOperatorNewHook (the unit tests); constant-initialised, so it is valid
// before any constructor runs.
RzOperatorNewFunction gOperatorNew = GlobalOperatorNew;

}  // namespace

// The default manager and the installed one. DefaultManager has no state;
// pMemoryManager is changed only by RzSetMemoryManager.
RzMemoryManagerCPP DefaultManager;
RzMemoryManager* pMemoryManager = nullptr;

RzMemoryManager::~RzMemoryManager() {}

void* RzMemoryManagerCPP::Alloc(uint32_t size) {
    try {
        return gOperatorNew(size);
    } catch (...) {
        // Whatever operator new throws becomes the framework's own error.
        RzRaiseMemFull();
    }
}

void RzRaiseMemFull() {
    RZ_RAISE_AT(kRzMemFullErr, kRzLineMemFull);
}

void RzMemoryManagerCPP::Free(void* ptr) {
    if (ptr) ::operator delete(ptr);
}

// DefaultManager is called non-virtually: that works even for an allocation
// made by another unit's static constructor before this unit's have run.
void* RzAlloc(uint32_t size) {
    if (pMemoryManager) return pMemoryManager->Alloc(size);
    return DefaultManager.RzMemoryManagerCPP::Alloc(size);
}

void RzFree(void* ptr) {
    if (pMemoryManager) {
        pMemoryManager->Free(ptr);
    } else {
        DefaultManager.RzMemoryManagerCPP::Free(ptr);
    }
}

void RzCopy(void* dst, const void* src, uint32_t n) {
    if (dst && src) memmove(dst, src, n);
}

void RzSet(void* dst, int value, uint32_t n) {
    if (dst) memset(dst, value & 0xFF, n);
}

void* RzClone(const void* src, uint32_t n) {
    void* block = RzAlloc(n);
    if (block && src) memmove(block, src, n);
    return block;
}

void RzSetMemoryManager(RzMemoryManager* mgr) {
    pMemoryManager = mgr;
}

RzMemoryManager* RzGetMemoryManager() {
    return pMemoryManager;
}

void StartMemDebug() {}
void MemCheckPoint(bool) {}
void EndMemDebug() {}

RzOperatorNewFunction RzSetOperatorNewHook(RzOperatorNewFunction f) {
    RzOperatorNewFunction previous = gOperatorNew;
    gOperatorNew = f ? f : GlobalOperatorNew;
    return previous;
}
