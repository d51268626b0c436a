// Untyped memory blocks through one replaceable manager.
//
// RzAlloc/RzFree and the helpers built on them go to the installed manager,
// or to DefaultManager (the global operator new/delete) while none is
// installed. Strings and containers do not come here; they use the global
// allocation operators directly.
//
// The installed manager is a plain process-wide pointer: install it before
// other threads allocate, and free every block through the manager that
// allocated it. The framework never deletes an installed manager.
#ifndef RZ_RZCORE_RZMEMORY_H
#define RZ_RZCORE_RZMEMORY_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>

class RZ_API RzMemoryManager {
public:
    virtual ~RzMemoryManager();
    // A block of `size` bytes. A manager may return null when it has none.
    virtual void* Alloc(uint32_t size) = 0;
    // Returns a block from Alloc. Also called with null; the manager decides.
    virtual void Free(void* ptr) = 0;
};

// The default manager: the global operator new and delete.
class RZ_API RzMemoryManagerCPP : public RzMemoryManager {
public:
    // Never returns null (size 0 gives a distinct block); when operator new
    // fails, raises "RzMemFullErr" (4, unit "RzMemory", line 37) instead.
    void* Alloc(uint32_t size) override;
    // Deletes a non-null block.
    void Free(void* ptr) override;
};

// The manager used while pMemoryManager is null; lives until program exit.
extern RZ_API RzMemoryManagerCPP DefaultManager;
// The installed manager, null while DefaultManager serves. Owned by whoever
// installed it; change it with RzSetMemoryManager.
extern RZ_API RzMemoryManager* pMemoryManager;

// A block from the installed manager (its null result passed on unchanged),
// or from DefaultManager. Size 0 is not special.
RZ_API void* RzAlloc(uint32_t size);
// Gives the block to the installed manager's Free (null included), or
// deletes it with operator delete when it is non-null.
RZ_API void RzFree(void* ptr);
// Copies n bytes, overlapping ranges allowed (memmove). Does nothing when
// either pointer is null.
RZ_API void RzCopy(void* dst, const void* src, uint32_t n);
// Fills n bytes with the low byte of `value`. Does nothing for a null dst.
RZ_API void RzSet(void* dst, int value, uint32_t n);
// An RzAlloc block of n bytes holding a copy of src; uninitialised when src is
// null. Returns null without copying when the manager gives none.
RZ_API void* RzClone(const void* src, uint32_t n);

// Installs `mgr` (null returns to DefaultManager). Blocks are not handed over.
RZ_API void RzSetMemoryManager(RzMemoryManager* mgr);
// The installed manager as stored: null while DefaultManager serves.
RZ_API RzMemoryManager* RzGetMemoryManager();

// Memory-debugging hooks; they do nothing in this build.
RZ_API void StartMemDebug();
RZ_API void MemCheckPoint(bool);
RZ_API void EndMemDebug();

#endif
