#include <Rz/RzIO/RzStdStream.h>

#include <unistd.h>

#include <string>

#include "support/RzTestSupport.h"

TEST(RzStdStream, OutputConvertsLineEndsCountsAndAccumulatesDone) {
    RzStdOutStream out;
    EXPECT_EQ(out.GetPosition(), 0);
    uint32_t done = 5;
    const std::string printed = CaptureStdout([&] {
        EXPECT_EQ(out.Write("a\r\nb\rc\n", 7, &done), 6u);
        out.Write("x", 1, &done);
        out.Write(static_cast<const char*>(nullptr));
        out.Write("text");
    });
    EXPECT_EQ(printed, "a\nb\nc\nxtext");
    EXPECT_EQ(done, 5u + 6 + 1);
    // The text form passes its terminating zero on, and it is counted.
    EXPECT_EQ(out.GetPosition(), 6 + 1 + 5);
}

TEST(RzStdStream, InputReadsSizeMinusOneCharactersThenTheEndByte) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    ASSERT_EQ(write(fds[1], "hello", 5), 5);
    close(fds[1]);
    const int saved = dup(0);
    dup2(fds[0], 0);
    close(fds[0]);

    RzStdInStream in;
    char buffer[8];
    uint32_t done = 99;
    EXPECT_EQ(in.Read(buffer, 4, &done), 3u);
    EXPECT_EQ(Bytes(buffer, 4), Bytes("hel\0", 4));
    EXPECT_EQ(done, 3u);
    EXPECT_EQ(in.Read(buffer, 0, &done), 0u);  // no room even for the zero byte
    EXPECT_EQ(done, 3u);
    // Past the end of input every byte is EOF cut to a char.
    in.Read(buffer, 5, nullptr);
    EXPECT_EQ(Bytes(buffer, 5), Bytes("lo\xFF\xFF\0", 5));
    EXPECT_EQ(in.GetPosition(), 7);

    dup2(saved, 0);
    close(saved);
    clearerr(stdin);
}

TEST(RzStdStream, WrongDirectionsAndSeekingAreRefused) {
    RzStdInStream in;
    RzStdOutStream out;
    char c = 0;
    const std::function<void()> refused[] = {
        [&] { in.Open(eRzFileWrite); },     [&] { in.Open(eRzFileNone); },
        [&] { in.Write("x", 1, nullptr); }, [&] { in.SetPosition(0, eRzSeekFromStart); },
        [&] { out.Open(eRzFileRead); },     [&] { out.Open(eRzFileReadWrite); },
        [&] { out.Read(&c, 1, nullptr); },  [&] { out.SetPosition(0, eRzSeekFromCurrent); },
    };
    for (const auto& call : refused) {
        RzError e = CatchRzError(call);
        EXPECT_EQ(e.GetErr(), static_cast<uint32_t>(kRzFileAccessErr));
        EXPECT_STREQ(e.GetErrName(), "RzFileAccessErr");
        EXPECT_STREQ(e.GetFileName(), "RzStdStream");
    }
    in.Open(eRzFileRead);
    out.Open(eRzFileWrite);
    in.Close();
    out.Close();
    EXPECT_STREQ(out.GetName().c_str(), "RzStream");
}
