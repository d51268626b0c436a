#include <Rz/RzData/RzList.h>

#include <string>
#include <vector>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

namespace {

// "head tail capacity: elements".
std::string Layout(const RzList<int>& list) {
    std::string s = std::to_string(list.head) + " " + std::to_string(list.tail) + " " +
                    std::to_string(list.storage.count) + ":";
    for (int i = 0; i < list.count; ++i) s += " " + std::to_string(list[i]);
    return s;
}

}  // namespace

// Random operation sequences against a std::deque model run in the
// containers fuzz target; these are the layouts worth pinning down.
TEST(RzList, RingLayoutGrowthAndResizing) {
    for (bool front : {false, true}) {
        RzList<int> list;
        std::vector<int> capacities;
        for (int i = 0; i < 43; ++i) {
            front ? list.AddFront(i) : list.AddBack(i);
            if (i == 9 || i == 10 || i == 21) capacities.push_back(list.storage.count);
        }
        // A full list may be passed one of its own elements.
        front ? list.AddFront(list[42]) : list.AddBack(list[0]);
        capacities.push_back(list.storage.count);
        EXPECT_EQ(capacities, std::vector<int>({10, 21, 43, 87}));
        EXPECT_TRUE(list[0] == 0 && list[43] == 0 && list[front ? 1 : 42] == 42);
    }
    RzList<int> list, assigned, one;
    list.AddFront(1);  // the last slot
    list.AddBack(2);   // wraps to slot 0
    EXPECT_EQ(Layout(list), "9 0 10: 1 2");
    EXPECT_EQ(Layout(RzList<int>(list)), "9 0 10: 1 2");  // a copy keeps the layout
    assigned = list;                                      // linearised
    EXPECT_EQ(Layout(assigned), "0 1 10: 1 2");
    list.Remove(1);
    list.Remove(0);
    EXPECT_EQ(Layout(list), "9 8 10:");
    list.AddBack(6);  // element 0 stays at the head slot
    EXPECT_EQ(list.storage[9], 6);
    one.AddBack(5);
    one.Remove(0);
    EXPECT_EQ(Layout(one), "0 9 10:");  // wrapped back
    one.AddBack(6);
    EXPECT_EQ(one.storage[0], 6);

    list = one;
    for (int i = 0; i < 11; ++i) list.AddBack(i);
    for (int i = 0; i < 7; ++i) list.Remove(0);
    struct Case {
        int n;
        const char* layout;
    } cases[] = {{5, "0 4 21: 6 7 8 9 10"},  // the element count: no effect
                 {8, "0 4 8: 6 7 8 9 10"},
                 {3, "0 2 3: 6 7 8"},
                 {3, "0 2 3: 6 7 8"}};  // a full list cannot be resized to its size
    for (const Case& c : cases) {
        list.ReSize(c.n);
        EXPECT_EQ(Layout(list), c.layout) << c.n;
    }
}

TEST(RzList, RemoveCopiesTheSlotBehindTheLastElement) {
    RzString s[10] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};
    {
        RzList<RzString> partial;  // slot 3 holds a default string
        for (int i = 0; i < 3; ++i) partial.AddBack(s[i]);
        partial.Remove(0);
        EXPECT_TRUE(SharingCount(s[0]) == 1 && SharingCount(s[1]) == 2 && SharingCount(s[2]) == 2);
        EXPECT_EQ(partial.storage[2].length(), 0);
    }
    RzList<RzString> full;
    for (const RzString& x : s) full.AddBack(x);
    full.Remove(0);  // the last step reads slot 0, which by then holds "b"
    EXPECT_EQ(full.storage[9].c_str(), s[1].c_str());
    EXPECT_TRUE(SharingCount(s[0]) == 1 && SharingCount(s[1]) == 3 && SharingCount(s[9]) == 2);
    full.ReSize(1);
    EXPECT_TRUE(SharingCount(s[1]) == 2 && SharingCount(s[9]) == 1);
}

TEST(RzList, FailedAdditionsKeepTheElements) {
    for (bool front : {false, true}) {
        for (int failAt = 0;; ++failAt) {
            RzList<Tracked> list;
            Tracked x;
            for (x.value = 0; x.value < 10; ++x.value) list.AddBack(x);
            TrackedCounts::failAfter = failAt;
            bool failed = false;
            try {
                front ? list.AddFront(x) : list.AddBack(x);
            } catch (int) {
                failed = true;
            }
            TrackedCounts::failAfter = -1;
            if (!failed) break;
            list.AddBack(x);
            std::vector<int> values;
            for (int i = 0; i < list.count; ++i) values.push_back(list[i].value);
            EXPECT_EQ(values, std::vector<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10})) << failAt;
        }
    }
    EXPECT_EQ(TrackedCounts::live, 0);
}

TEST(RzList, IndexOutsideTheElementsRaisesIndexError) {
    RzList<int> list;
    EXPECT_STREQ(CatchRzError([&] { (void)list[0]; }).GetFileName(), "RzList");
    list.AddBack(1);
    const RzList<int>& constant = list;
    for (int i : {-1, 1}) {
        EXPECT_RZ_ERROR((void)constant[i], 7, "RzIndexError");
        EXPECT_RZ_ERROR(list.Remove(i), 7, "RzIndexError");
    }
    EXPECT_EQ(Layout(list), "0 0 10: 1");
}
