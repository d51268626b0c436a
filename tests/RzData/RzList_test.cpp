// The ring layout, growth steps, Remove, resizing, sharing and index errors
// of lists of strings run against a model of the documented layout in the
// containers fuzz target; what it cannot see is an element that fails.
#include <Rz/RzData/RzList.h>

#include <vector>

#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

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
