#include <Rz/RzIO/RzStdStream.h>

#include <stdio.h>

#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

TEST(RzStdStream, OutputConvertsLineEndsAndCounts) {
    RzStdOutStream out;
    uint32_t done = 5;
    testing::internal::CaptureStdout();
    out.Write("a\r\nb\rc\n", 7, &done);
    out.Write("text");  // its terminating zero is passed on and counted
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a\nb\nc\ntext");
    EXPECT_EQ(done, 5u + 6);  // added to, not overwritten
    EXPECT_EQ(out.GetPosition(), 6 + 5);
    EXPECT_RZ_ERROR(out.Read(&done, 1, nullptr), kRzFileAccessErr, "RzFileAccessErr");
    EXPECT_RZ_ERROR(out.Open(eRzFileRead), kRzFileAccessErr, "RzFileAccessErr");
}

TEST(RzStdStream, InputReadsSizeMinusOneCharactersThenAZeroByte) {
    RzStdinGuard input("hello");
    RzStdInStream in;
    char buffer[8];
    uint32_t done = 0;
    in.Read(buffer, 4, &done);
    EXPECT_EQ(Bytes(buffer, 4), Bytes("hel\0", 4));
    in.Read(buffer, 5, nullptr);  // past the end: EOF cut to a char
    EXPECT_EQ(Bytes(buffer, 5), Bytes("lo\xFF\xFF\0", 5));
    EXPECT_EQ(done + in.GetPosition(), 3u + 7);
    EXPECT_RZ_ERROR(in.SetPosition(0, eRzSeekFromStart), kRzFileAccessErr, "RzFileAccessErr");
    EXPECT_RZ_ERROR(in.Write("x", 1, nullptr), kRzFileAccessErr, "RzFileAccessErr");
}
