// RzSmartPtr<T>: a pointer that holds one counted reference to an object.
//
// T offers RefCount(), NewRef() and Delete() as RzObject does. The pointer
// never adopts the reference it is given: storing an object takes a new
// reference (NewRef), and letting it go drops that one (Delete). An object
// created with new (count 1) and stored in a smart pointer therefore has count
// 2, and its creator still gives up its own reference with Delete().
//
//     RzDataBase* db = new RzDataBase;   // count 1
//     RzSmartPtr<RzDataBase> p(db);      // count 2
//     db->Delete();                      // count 1, owned by p
//
// The destructor may throw: releasing an object whose count is already 0 or
// below (it was destroyed behind the pointer's back) raises "RzPtrInvalid"
// (20, unit "RzTemplates", line 206). A smart pointer destroyed during stack
// unwinding must therefore never hold such an object.
#ifndef RZ_RZCORE_RZTEMPLATES_H
#define RZ_RZCORE_RZTEMPLATES_H

#include <Rz/RzCore/RzExport.h>

// Raises "RzPtrInvalid" (20, unit "RzTemplates", line 206).
[[noreturn]] RZ_API void RzRaisePtrInvalid();

template <class T>
class RzSmartPtr {
public:
    RzSmartPtr() : ptr(nullptr) {}
    // Takes a new reference to p (when not null).
    explicit RzSmartPtr(T* p) : ptr(nullptr) { *this = p; }
    // Takes a new reference to other's object.
    RzSmartPtr(const RzSmartPtr& other) : ptr(nullptr) { *this = other.ptr; }
    // Drops the reference when the count is positive; raises "RzPtrInvalid"
    // when it is 0 or below.
    ~RzSmartPtr() noexcept(false) {
        if (!ptr) return;
        if (ptr->RefCount() > 0) {
            ptr->Delete();
        } else {
            RzRaisePtrInvalid();
        }
    }

    // Nothing when p is already held. Otherwise the new object gains a
    // reference before the old one loses its own, so that re-storing an
    // object reachable only through the old one is safe.
    RzSmartPtr& operator=(T* p) {
        if (p == ptr) return *this;
        if (p) p->NewRef();
        if (ptr) ptr->Delete();
        ptr = p;
        return *this;
    }
    RzSmartPtr& operator=(const RzSmartPtr& other) { return *this = other.ptr; }

    T* get() const { return ptr; }
    T* operator->() const { return ptr; }
    T& operator*() const { return *ptr; }
    explicit operator bool() const { return ptr != nullptr; }

private:
    T* ptr;
};

#endif
