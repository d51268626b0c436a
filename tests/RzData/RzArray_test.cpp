// Values, sharing, layout and index errors of arrays of strings run against a
// model in the containers fuzz target; these are the cases it cannot see:
// elements that count themselves, fail on demand, or are only copied.
#include <Rz/RzData/RzArray.h>

#include <algorithm>
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

TYPED_TEST(RzArrayOf, ResizeKeepsLeadingElementsOrNothingWhenAnElementFails) {
    // From 7 elements with room for 9: grow in place, grow into a new block,
    // shrink in place or into a new block, and the cases without effect.
    for (int target : {9, 12, 1000, 6, 1, 0, -3, 7}) {
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
            EXPECT_EQ(TrackedCounts::live, a.count);  // no element outlives its place
            if (failed) {
                EXPECT_EQ(Values(a), before) << target << " failing at " << failAt;
                continue;
            }
            std::vector<int> expected(static_cast<size_t>(std::max(target, 0)), 0);
            std::copy_n(before.begin(), std::min<size_t>(7, expected.size()), expected.begin());
            EXPECT_EQ(Values(a), expected) << target;
            break;
        }
    }
    RzArray<TypeParam> source(3), target(2);
    for (int failAt : {0, 2, 4}) {
        TrackedCounts::failAfter = failAt;
        EXPECT_THROW(target = source, int);
        EXPECT_EQ(target.count, 0);  // its old elements were already destroyed
        EXPECT_EQ(target.data, nullptr);
        TrackedCounts::failAfter = failAt;
        EXPECT_THROW(RzArray<TypeParam> copy(source), int);
        TrackedCounts::failAfter = failAt;
        EXPECT_THROW(RzArray<TypeParam> fresh(5), int);
        EXPECT_EQ(TrackedCounts::live, 3);
    }
    TrackedCounts::failAfter = -1;
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
