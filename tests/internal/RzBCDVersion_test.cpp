#include <Rz/internal/RzBCDVersion.h>

#include "support/RzTestSupport.h"

TEST(RzBCDVersion, FromKernelRelease) {
    struct Case {
        const char* release;
        int32_t bcd;
    } cases[] = {
        {"6.1.0-18-amd64", 0x0610},
        {"5.15.120", 0x0599},
        {"10.4.9", 0x1049},
        {"4.19", 0x0490},
        {"3", 0x0300},
        {"123.4.5", 0x9945},
        {"6.1.0.1-rc", 0x0610},
        {"6.x", 0x0600},
        {"", 0},
        {"linux", 0},
        {nullptr, 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(RzBCDVersionFromRelease(c.release), c.bcd) << (c.release ? c.release : "(null)");
    EXPECT_EQ(RzBCDVersion(-1, 12, 3), 0x0093);
}
