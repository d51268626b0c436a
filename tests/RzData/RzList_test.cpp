#include <Rz/RzData/RzList.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

namespace {

template <class T>
std::vector<int> Values(const RzList<T>& list) {
    std::vector<int> v;
    for (int i = 0; i < list.count; ++i) v.push_back(list[i].value);
    return v;
}

testing::AssertionResult Matches(const RzList<int>& list, const std::deque<int>& model,
                                 int capacity) {
    std::vector<int> got;
    for (int i = 0; i < list.count; ++i) got.push_back(list[i]);
    if (got != std::vector<int>(model.begin(), model.end()) || list.storage.count != capacity)
        return testing::AssertionFailure() << "elements or capacity " << list.storage.count;
    if (list.count > 0 && list.tail != (list.head + list.count - 1) % capacity)
        return testing::AssertionFailure() << "tail " << list.tail << " head " << list.head;
    return testing::AssertionSuccess();
}

}  // namespace

TEST(RzList, BehavesLikeADequeGrowingTo2nPlus1) {
    std::mt19937 random(7);
    RzList<int> list;
    std::deque<int> model;
    int capacity = 10;
    for (int step = 0; step < 4000; ++step) {
        const int count = static_cast<int>(model.size());
        const int op = static_cast<int>(random() % 8);
        if (op < 5) {  // additions
            if (count == capacity) capacity = 2 * count + 1;
            if (op < 3) {
                list.AddBack(step);
                model.push_back(step);
            } else {
                list.AddFront(step);
                model.push_front(step);
            }
        } else if (op < 7 && count > 0) {
            const int i = static_cast<int>(random() % count);
            list.Remove(i);
            model.erase(model.begin() + i);
        } else if (op == 7) {
            const int n = static_cast<int>(random() % (count + 4));
            list.ReSize(n);  // compared with the count, not the capacity
            if (n != count) capacity = n;
            model.resize(std::min(n, count));
        }
        ASSERT_TRUE(Matches(list, model, capacity)) << "step " << step << " op " << op;
        if (step % 50 == 0) {
            RzList<int> copy(list);  // keeps the ring layout, slot for slot
            EXPECT_TRUE(copy.head == list.head && copy.tail == list.tail);
            EXPECT_TRUE(
                std::equal(list.storage.data, list.storage.data + capacity, copy.storage.data));
            RzList<int> assigned;
            assigned.AddFront(-1);
            assigned = list;  // linearised
            EXPECT_TRUE(Matches(assigned, model, capacity));
            EXPECT_EQ(assigned.head, 0);
        }
    }
}

TEST(RzList, RingPlacementAtTheEdges) {
    RzList<int> list;
    EXPECT_TRUE(list.count == 0 && list.tail == -1 && list.storage.count == 10);
    list.AddFront(1);  // the last slot
    list.AddBack(2);   // wraps to slot 0
    EXPECT_TRUE(list.head == 9 && list.tail == 0 && list.storage[9] == 1 && list.storage[0] == 2);
    RzList<int> one;
    one.AddBack(5);
    one.Remove(0);
    EXPECT_TRUE(one.count == 0 && one.tail == 9);
    one.AddBack(6);
    EXPECT_EQ(one.storage[0], 6);
    // An addition to a full list may pass one of the list's own elements.
    for (bool front : {false, true}) {
        RzList<int> full;
        for (int i = 0; i < 10; ++i) full.AddBack(i);
        front ? full.AddFront(full[9]) : full.AddBack(full[0]);
        EXPECT_EQ(full.storage.count, 21);
        EXPECT_EQ(full[0], front ? 9 : 0);
        EXPECT_EQ(full[10], front ? 9 : 0);
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
            EXPECT_EQ(Values(list), std::vector<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}))
                << front << " failing at " << failAt;
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
    EXPECT_TRUE(list.count == 1 && list[0] == 1);
}
