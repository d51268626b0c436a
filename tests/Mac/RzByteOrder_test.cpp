#include <Rz/Mac/RzByteOrder.h>

#include "support/RzTestSupport.h"

TEST(RzByteOrder, Swaps) {
    EXPECT_EQ(SwapShort(static_cast<short>(0x80FF)), static_cast<short>(0xFF80));
    EXPECT_EQ(SwapUShort(0xFF00), 0x00FF);
    EXPECT_EQ(SwapLong(-123456), static_cast<int32_t>(0xC01DFEFF));
    EXPECT_EQ(SwapULong(0x80000001u), 0x01000080u);

    short shorts[3] = {0x0102, 0x0304, 0x0506};
    EXPECT_EQ(SwapShortPtr(shorts, 2), shorts);
    EXPECT_EQ(Joined(shorts[0], shorts[1], shorts[2]), Joined(0x0201, 0x0403, 0x0506));
    EXPECT_EQ(SwapShortPtr(nullptr, 5), nullptr);
    int32_t longs[2] = {0x01020304, 0x05060708};
    EXPECT_EQ(SwapLongPtr(longs, -1), longs);
    EXPECT_EQ(longs[0], 0x01020304);
    SwapLongPtr(longs, 2);
    EXPECT_EQ(Joined(longs[0], longs[1]), Joined(0x04030201, 0x08070605));
}

TEST(RzByteOrder, HostAndPlatform) {
    EXPECT_EQ(RzGetEndian(), 1);  // x86 and the other Linux targets we build for
    EXPECT_EQ(RzGetPlatform(), kRzPlatformLinux);
    EXPECT_EQ(
        Joined(RzPlatformIsUnix(kRzPlatformLinux), RzPlatformIsUnix(kRzPlatformMacOSX),
               RzPlatformIsUnix(kRzPlatformMacOS9), RzPlatformIsUnix(kRzPlatformMacOSClassic)),
        "true|true|false|false");
    EXPECT_GT(RzGetSystemVersion(), 0);
}
