#include <Rz/RzIO/RzDebug.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

TEST(RzDebug, LevelsAndLineEnds) {
    const std::string a(4094, 'a'), b(4095, 'b'), c(5000, 'c');  // the classic buffer: 4096
    struct Case {
        int debugLevel, level;
        std::function<void(int)> write;
        std::vector<std::string> writes;
    } cases[] = {
        {0, 0, [](int l) { RzDebugWriteImpl(l, "x"); }, {"x", "\n"}},
        {0, -1, [](int l) { RzDebugWriteImpl(l, RzString("x\n")); }, {"x\n"}},
        {0, 1, [](int l) { RzDebugWriteImpl(l, "x"); }, {}},
        {0, 0, [](int l) { RzDebugWriteImpl(l, ""); }, {""}},
        {2, 2, [](int l) { RzDebugPrintfImpl(l, "%d items", 3); }, {"3 items\n"}},
        {2, 3, [](int l) { RzDebugPrintfImpl(l, "%d items", 3); }, {}},
        {0, 0, [&](int l) { RzDebugPrintfImpl(l, "%s", a.c_str()); }, {a + "\n"}},
        {0, 0, [&](int l) { RzDebugPrintfImpl(l, "%s", b.c_str()); }, {b, "\n"}},
        {0, 0, [&](int l) { RzDebugPrintfImpl(l, "%s", c.c_str()); }, {c, "\n"}},
    };
    for (const Case& c : cases) {
        DebugCapture capture(c.debugLevel);
        c.write(c.level);
        EXPECT_EQ(capture.writes, c.writes) << c.debugLevel << " " << c.level;
    }
}

namespace {

// Every write raises; kind 0 an RzError, whose own debug line would go to
// this stream again and again without the re-entry guard.
struct FailingStream : RzStreamImplemented {
    uint32_t Write(const void*, uint32_t, uint32_t*) override {
        ++attempts;
        if (kind == 0) RzRaiseCode(kRzFileWriteFailed, "test", 1);
        throw 42;
    }
    int kind = 0, attempts = 0;
};

}  // namespace

TEST(RzDebug, StreamErrorsAreSwallowedWithoutRecursion) {
    DebugCapture capture(1);
    FailingStream failing[2];
    for (int kind = 0; kind < 2; ++kind) {
        failing[kind].kind = kind;
        RzSetDebugOutputImpl(&failing[kind]);
        RzDebugWriteImpl(1, "x");  // the line end is not tried after a failure
        RzDebugPrintfImpl(1, "%s", "y");
        EXPECT_EQ(failing[kind].attempts, 2) << kind;
    }
}

TEST(RzDebug, LogFileIsKeptWhenTheNameIsClearedAndFailuresAreDropped) {
    DebugCapture capture(1);
    RzTempDir dir;
    const std::string path = dir / "log.txt";
    testing::internal::CaptureStdout();
    RzSetDebugOutputImpl(RzGetDefaultOutputStream());
    RzDebugWriteImpl(0, "out");
    RzSetDebugOutputFileImpl(RzString(path.c_str()));
    EXPECT_EQ(access(path.c_str(), F_OK), -1);  // created by the first write
    RzDebugWriteImpl(0, "one");
    RzSetDebugOutputFileImpl(RzString(""));
    EXPECT_STREQ(RzGetDebugOutputFileImpl().c_str(), "");
    RzDebugPrintfImpl(0, "two %d", 2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "out\n");
    EXPECT_EQ(FileText(path), "one\ntwo 2\n");
    // A file that cannot be opened: messages and error lines are dropped.
    RzSetDebugOutputFileImpl(RzString((dir / "missing/log.txt").c_str()));
    RzDebugWriteImpl(1, "dropped");
    EXPECT_RZ_ERROR(RzRaiseCode(kRzArgErr, "test", 1), kRzArgErr, "RzArgErr");
    EXPECT_EQ(access((dir / "missing").c_str(), F_OK), -1);
}

TEST(RzDebug, LogFileSurvivesConcurrentWritersInOtherProcesses) {
    DebugCapture capture(0);
    RzTempDir dir;
    RzSetDebugOutputFileImpl(RzString((dir / "shared.log").c_str()));
    std::vector<std::string> expected, lines;
    for (int w = 0; w < 4; ++w) {
        for (int i = 0; i < 300; ++i)
            expected.push_back(std::to_string(w * 1000 + i) + "-" + std::string(200, 'x'));
        if (fork() == 0) {
            for (int i = w * 300; i < w * 300 + 300; ++i)
                RzDebugPrintfImpl(0, "%s", expected[i].c_str());
            _exit(0);
        }
    }
    for (int w = 0; w < 4; ++w) wait(nullptr);
    std::istringstream text(FileText(dir / "shared.log"));
    for (std::string l; std::getline(text, l);) lines.push_back(l);
    std::sort(lines.begin(), lines.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(lines == expected) << lines.size() << " lines";
}
