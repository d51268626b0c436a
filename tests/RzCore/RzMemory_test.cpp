#include <Rz/RzCore/RzMemory.h>

#include "support/RzMemoryTestSupport.h"
#include "support/RzTestSupport.h"

TEST(RzMemory, CallsGoToTheInstalledManagerOrTheDefault) {
    CountingMemoryManager counting;
    MemoryManagerGuard guard(&counting);
    void* p = RzAlloc(24);
    char* q = static_cast<char*>(RzClone("abc", 4));
    EXPECT_STREQ(q, "abc");
    EXPECT_EQ(counting.lastSize, 4u);
    RzFree(p);
    RzFree(q);
    RzFree(nullptr);  // the manager decides about null too
    EXPECT_EQ(Joined(counting.allocs, counting.frees, counting.live), "2|3|0");

    RzSetMemoryManager(nullptr);
    EXPECT_EQ(RzGetMemoryManager(), nullptr);  // never &DefaultManager
    void* a = RzAlloc(0);
    void* b = RzClone(nullptr, 0);
    EXPECT_EQ(Joined(a != nullptr, b != nullptr, a != b), "true|true|true");
    RzFree(a);
    RzFree(b);
    EXPECT_EQ(counting.allocs + counting.frees, 5);

    CountingMemoryManager empty(0);  // a custom manager's null is passed on
    RzSetMemoryManager(&empty);
    EXPECT_EQ(RzClone("data", 5), nullptr);
}

TEST(RzMemory, DefaultManagerTurnsAnyAllocationFailureIntoMemFull) {
    MemoryManagerGuard useDefault(nullptr);
    {
        FailingOperatorNewGuard<std::bad_alloc> fail;
        EXPECT_EQ(ErrorFields(CatchRzError([] { RzClone("x", 1); })), "4|RzMemFullErr|RzMemory|37");
    }
    {
        FailingOperatorNewGuard<int> fail;  // not only std::bad_alloc
        EXPECT_EQ(ErrorFields(CatchRzError([] { DefaultManager.Alloc(1); })),
                  "4|RzMemFullErr|RzMemory|37");
    }
    RzFree(RzAlloc(4));  // the guards put operator new back
}

TEST(RzMemory, CopyAndSetHandleOverlapAndIgnoreNull) {
    char buffer[] = "0123456789";
    RzCopy(buffer + 2, buffer, 5);
    EXPECT_STREQ(buffer, "0101234789");
    RzCopy(buffer, buffer + 1, 5);
    EXPECT_STREQ(buffer, "1012334789");
    RzCopy(buffer, nullptr, 3);
    RzCopy(nullptr, buffer, 3);
    RzSet(nullptr, 'x', 3);
    RzSet(buffer, 0x141, 3);  // low byte only
    EXPECT_STREQ(buffer, "AAA2334789");
}
