#include <Rz/RzCore/RzObject.h>

#include <string.h>

void* RzCastBase::Cast(const char* typeName) {
    return StringsEqual("RzCastBase", typeName) ? this : nullptr;
}

const char* RzCastBase::GetTypeName() const {
    return "RzCastBase";
}

RzCastBase::~RzCastBase() {}

bool RzCastBase::StringsEqual(const char* a, const char* b) {
    if (!a || !b) return a == b;
    return strcmp(a, b) == 0;
}

void* RzObject::Cast(const char* typeName) {
    if (StringsEqual("RzObject", typeName)) return this;
    return RzCastBase::Cast(typeName);
}

const char* RzObject::GetTypeName() const {
    return "RzObject";
}

RzObject::~RzObject() {
    // A plain store to a dying object may be optimised away; this one is
    // what makes a late release detectable, so it is kept.
    *static_cast<volatile int32_t*>(&refCount) = 0;
}

int RzObject::RefCount() const {
    return refCount;
}

RzObject* RzObject::NewRef() {
    ++refCount;
    return this;
}

void RzObject::Delete() {
    if (--refCount == 0) delete this;
}
