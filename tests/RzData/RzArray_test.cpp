#include <Rz/RzData/RzArray.h>

#include <limits.h>

#include <vector>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

namespace {

template <class E>
std::vector<int> Values(const RzArray<E>& a) {
    std::vector<int> v;
    for (int i = 0; i < a.count; ++i) v.push_back(a[i].value);
    return v;
}

template <class E>
class RzArrayOf : public testing::Test {};
using ElementTypes = testing::Types<Tracked, MovableTracked>;
TYPED_TEST_SUITE(RzArrayOf, ElementTypes);

}  // namespace

TYPED_TEST(RzArrayOf, ResizeKeepsLeadingElementsAndDestroysTheRestAtOnce) {
    std::vector<int> grown(1000);
    for (int i = 0; i < 4; ++i) grown[i] = i + 1;
    struct Case {
        int n;
        std::vector<int> expected;
    } cases[] = {{2, {1, 2}},  {6, {1, 2, 3, 4, 0, 0}}, {4, {1, 2, 3, 4}}, {0, {}}, {-3, {}},
                 {1000, grown}};
    for (const Case& c : cases) {
        RzArray<TypeParam> a(4);
        for (int i = 0; i < 4; ++i) a[i].value = i + 1;
        a.ReSize(c.n);
        EXPECT_EQ(Values(a), c.expected) << c.n;
        EXPECT_EQ(TrackedCounts::live, a.count);
    }
    EXPECT_EQ(TrackedCounts::live, 0);
}

TYPED_TEST(RzArrayOf, GrowingOneElementAtATimeIsAmortised) {
    const int n = 5000;
    TrackedCounts::constructions = 0;
    RzArray<TypeParam> a;
    for (int i = 0; i < n; ++i) {
        a.ReSize(a.count + 1);
        a[i].value = i;
    }
    for (int i = 0; i < n; ++i) ASSERT_EQ(a[i].value, i);
    EXPECT_EQ(TrackedCounts::live, n);
    EXPECT_LT(TrackedCounts::constructions, 6 * n);  // a copy per step would be n * n / 2
}

TYPED_TEST(RzArrayOf, FailuresLeaveResizedArraysUnchangedAndCopiesEmpty) {
    // From 7 elements with room for 9: grow in place, grow into a new block,
    // shrink into a new block.
    for (int target : {9, 12, 1}) {
        for (int failAt = 0;; ++failAt) {
            RzArray<TypeParam> a(6);
            a.ReSize(7);
            for (int i = 0; i < 7; ++i) a[i].value = i * 10;
            const std::vector<int> before = Values(a);
            TrackedCounts::failAfter = failAt;
            bool failed = false;
            try {
                a.ReSize(target);
            } catch (int) {
                failed = true;
            }
            TrackedCounts::failAfter = -1;
            EXPECT_EQ(TrackedCounts::live, a.count);
            if (!failed) break;
            EXPECT_EQ(Values(a), before) << target << " failing at " << failAt;
        }
    }
    RzArray<TypeParam> source(3), target(2);
    for (int failAt : {0, 2, 4}) {
        TrackedCounts::failAfter = failAt;
        EXPECT_THROW(target = source, int);
        EXPECT_TRUE(target.count == 0 && target.data == nullptr);
        TrackedCounts::failAfter = failAt;
        EXPECT_THROW(RzArray<TypeParam> copy(source), int);
        TrackedCounts::failAfter = failAt;
        EXPECT_THROW(RzArray<TypeParam> fresh(5), int);
        EXPECT_EQ(TrackedCounts::live, 3);
    }
    TrackedCounts::failAfter = -1;
}

TEST(RzArray, StringElementsShareOneBufferAndReleaseItWithTheElement) {
    RzString s("shared");
    RzArray<RzString> a(4);
    for (int i = 0; i < 4; ++i) a[i] = s;
    RzArray<RzString> b(a);
    RzArray<RzString>& alias = b;
    b = alias;
    EXPECT_EQ(SharingCount(s), 9);
    a.ReSize(2);
    EXPECT_EQ(SharingCount(s), 7);
    a.ReSize(100);
    EXPECT_EQ(SharingCount(s), 7);
    EXPECT_TRUE(a[1].c_str() == s.c_str() && a[2].length() == 0);
    b.Clear();
    EXPECT_TRUE(b.count == 0 && b.data == nullptr);
    a = b;
    EXPECT_EQ(SharingCount(s), 1);
}

TEST(RzArray, IndexOutsideTheElementsRaisesIndexError) {
    RzArray<int> a(3);
    const RzArray<int>& constant = a;
    for (int i : {-1, 3, INT_MIN, INT_MAX}) {
        EXPECT_STREQ(CatchRzError([&] { (void)a[i]; }).GetFileName(), "RzArray");
        EXPECT_RZ_ERROR((void)constant[i], 7, "RzIndexError");
    }
}
