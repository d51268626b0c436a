// Values, sharing, layout and index errors of arrays and lists of strings run
// against a model in the containers fuzz target, and elements that fail on
// demand in the containers_failing target; this is what no model sees.
#include <Rz/RzData/RzArray.h>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

namespace {

template <class E>
class RzArrayOf : public testing::Test {};
using ElementTypes = testing::Types<Tracked, MovableTracked>;
TYPED_TEST_SUITE(RzArrayOf, ElementTypes);

}  // namespace

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
