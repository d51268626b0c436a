#include <Rz/RzCore/RzTemplates.h>

#include <string>

#include "support/RzTestSupport.h"

namespace {

// Logs every count operation in order and never destroys itself.
struct Counted {
    int RefCount() const { return count; }
    Counted* NewRef() {
        *log += "+" + name;
        ++count;
        return this;
    }
    void Delete() {
        *log += "-" + name;
        --count;
    }
    std::string name, *log;
    int count = 1;
};

}  // namespace

TEST(RzSmartPtr, TakesTheNewReferenceBeforeDroppingTheOld) {
    std::string log;
    Counted a{"a", &log}, b{"b", &log};
    {
        RzSmartPtr<Counted> p;
        EXPECT_FALSE(p);
        p = &a;
        p = &a;  // the same pointer: nothing
        p = &b;
        RzSmartPtr<Counted>& alias = p;
        p = alias;  // nothing either
        RzSmartPtr<Counted> q(p), r(&a);
        q = r;
        EXPECT_EQ(log, "+a+b-a+b+a+a-b");
        p = static_cast<Counted*>(nullptr);
        EXPECT_EQ(Joined(p.get() == nullptr, bool(q), q.get() == &a, &*q == &a, q->name),
                  "true|true|true|true|a");
        log.clear();
    }
    EXPECT_EQ(log, "-a-a");  // r and q; p held nothing
    EXPECT_EQ(Joined(a.count, b.count), "1|1");
}

TEST(RzSmartPtr, ReleasingAnObjectWithoutReferencesRaisesPtrInvalid) {
    for (int count : {0, -1}) {
        std::string log;
        Counted dead{"d", &log};
        RzError e = CatchRzError([&] {
            RzSmartPtr<Counted> p(&dead);
            dead.count = count;
        });
        EXPECT_EQ(ErrorFields(e), "20|RzPtrInvalid|RzTemplates|206");
        EXPECT_EQ(log, "+d");  // no Delete
    }
}
