// The root of the framework's shared objects.
//
// RzCastBase answers "are you a ...?" by type-name string instead of language
// run-time type information. RzObject adds a reference count: the creator
// holds the first reference, NewRef adds one, Delete drops one and destroys
// the object when the count reaches 0. RzSmartPtr (RzTemplates.h) automates
// this. Counts are plain integers: an object belongs to one thread at a time.
#ifndef RZ_RZCORE_RZOBJECT_H
#define RZ_RZCORE_RZOBJECT_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>

class RZ_API RzCastBase {
public:
    // `this` when typeName is "RzCastBase", otherwise null. A class that wants
    // to be castable by its own name overrides Cast: it tests its own name,
    // then hands the question to its base.
    virtual void* Cast(const char* typeName);
    // "RzCastBase".
    virtual const char* GetTypeName() const;
    virtual ~RzCastBase();

    // True when both texts are byte-for-byte equal (strcmp() == 0). A null
    // text equals only another null.
    static bool StringsEqual(const char* a, const char* b);
};

class RZ_API RzObject : public RzCastBase {
public:
    // Count 1: the creator's reference.
    RzObject() : refCount(1) {}
    // A copy is a new object: its count is 1, never the source's.
    RzObject(const RzObject&) : RzCastBase(), refCount(1) {}
    // Leaves the count alone.
    RzObject& operator=(const RzObject&) { return *this; }

    // `this` for "RzObject", otherwise RzCastBase's answer.
    void* Cast(const char* typeName) override;
    // "RzObject".
    const char* GetTypeName() const override;
    // Sets the count to 0, so that a smart pointer released later can tell
    // (while the memory is still readable) that the object is gone.
    ~RzObject() override;

    virtual int RefCount() const;
    // Adds a reference and returns this object.
    virtual RzObject* NewRef();
    // Drops a reference; the one that brings the count to 0 deletes the
    // object (which must come from new). A count already at 0 or below just
    // goes further down and the object stays. Never throws.
    virtual void Delete();

private:
    int32_t refCount;
};

#endif
