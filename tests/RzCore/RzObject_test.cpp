#include <Rz/RzCore/RzObject.h>

#include "support/RzTestSupport.h"

namespace {

// Counts destructions and answers to its own name the documented way.
struct Probe : RzObject {
    explicit Probe(int* destroyed) : destroyed(destroyed) {}
    ~Probe() override { ++*destroyed; }
    void* Cast(const char* typeName) override {
        return StringsEqual("Probe", typeName) ? this : RzObject::Cast(typeName);
    }
    int* destroyed;
};

}  // namespace

TEST(RzObject, CastsByTypeName) {
    int destroyed = 0;
    RzCastBase root;
    RzObject object;
    Probe probe(&destroyed);
    struct Case {
        RzCastBase* target;
        const char* name;
        bool castable;
    } cases[] = {
        {&root, "RzCastBase", true},   {&root, "RzObject", false},  {&object, "RzObject", true},
        {&object, "RzCastBase", true}, {&object, "RzObjec", false}, {&object, "rzobject", false},
        {&object, nullptr, false},     {&probe, "Probe", true},     {&probe, "RzCastBase", true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.target->Cast(c.name), c.castable ? static_cast<void*>(c.target) : nullptr)
            << c.target->GetTypeName() << " as " << (c.name ? c.name : "(null)");
    }
    EXPECT_STREQ(root.GetTypeName(), "RzCastBase");
    EXPECT_STREQ(probe.GetTypeName(), "RzObject");  // not overridden
}

TEST(RzObject, CountsReferencesButNeverCopiesTheCount) {
    int destroyed = 0;
    RzObject* p = new Probe(&destroyed);
    EXPECT_EQ(p->NewRef(), p);
    RzObject copy(*p);
    const int copied = copy.RefCount();
    copy = *p;
    EXPECT_EQ(Joined(copied, copy.RefCount(), p->RefCount()), "1|1|2");
    p->Delete();
    EXPECT_EQ(destroyed, 0);
    p->Delete();  // the last reference destroys through the virtual destructor
    EXPECT_EQ(destroyed, 1);
}
