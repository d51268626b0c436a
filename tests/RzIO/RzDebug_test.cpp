#include <Rz/RzIO/RzDebug.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <Rz/RzIO/RzStdStream.h>

#include "support/RzTestSupport.h"

namespace {

// A stream whose every write raises; counts the attempts.
class FailingStream : public RzStreamImplemented {
public:
    explicit FailingStream(int kind_) : kind(kind_) {}
    uint32_t Write(const void*, uint32_t, uint32_t*) override {
        ++attempts;
        if (kind == 0) throw RzError(kRzFileWriteFailed, "RzFileWriteFailed", "test", 1);
        if (kind == 1) throw std::runtime_error("disk");
        throw 42;
    }
    int kind, attempts = 0;
};

}  // namespace

TEST(RzDebug, LevelsDecideWhatIsWritten) {
    struct Case {
        int debugLevel, messageLevel;
        bool written;
    } cases[] = {{0, 0, true}, {0, 1, false}, {0, -1, true},
                 {2, 1, true}, {2, 2, true},  {2, 3, false}};
    for (const Case& c : cases) {
        DebugCapture capture(c.debugLevel);
        EXPECT_EQ(RzGetDebugLevelImpl(), c.debugLevel);
        RzDebugWriteImpl(c.messageLevel, "w");
        RzDebugPrintfImpl(c.messageLevel, "p%d", 1);
        EXPECT_EQ(capture.Text(), c.written ? "w\np1\n" : "") << c.debugLevel << c.messageLevel;
    }
}

TEST(RzDebug, LineEndsAreAddedOnce) {
    const std::string long4094(4094, 'a'), long4095(4095, 'b'), long5000(5000, 'c');
    struct Case {
        std::function<void()> write;
        std::vector<std::string> writes;
    } cases[] = {
        {[] { RzDebugWriteImpl(0, "x"); }, {"x", "\n"}},
        {[] { RzDebugWriteImpl(0, RzString("x\n")); }, {"x\n"}},
        {[] { RzDebugWriteImpl(0, ""); }, {""}},
        {[] { RzDebugPrintfImpl(0, "%d items", 3); }, {"3 items\n"}},
        {[] { RzDebugPrintfImpl(0, "%s", "y\n"); }, {"y\n"}},
        {[&] { RzDebugPrintfImpl(0, "%s", long4094.c_str()); }, {long4094 + "\n"}},
        {[&] { RzDebugPrintfImpl(0, "%s", long4095.c_str()); }, {long4095, "\n"}},
        {[&] { RzDebugPrintfImpl(0, "%s", long5000.c_str()); }, {long5000, "\n"}},
    };
    for (const Case& c : cases) {
        DebugCapture capture(0);
        c.write();
        EXPECT_EQ(capture.writes, c.writes);
    }
}

TEST(RzDebug, TheDefaultStreamIsStandardOutputAndNullNeverClears) {
    DebugStateGuard guard;
    RzStream* def = RzGetDefaultOutputStream();
    EXPECT_EQ(def, RzGetDefaultOutputStream());
    EXPECT_NE(def->Cast("RzObject"), nullptr);
    EXPECT_NE(dynamic_cast<RzStdOutStream*>(def), nullptr);
    RzNullStream null;
    EXPECT_EQ(RzOutputStream(&null), &null);
    EXPECT_EQ(RzOutputStream(nullptr), &null);
    EXPECT_EQ(RzSetDebugOutputImpl(nullptr), &null);
    EXPECT_EQ(RzGetDebugOutputImpl(), &null);
    RzSetDebugOutputImpl(def);
    RzSetDebugLevelImpl(0);
    EXPECT_EQ(CaptureStdout([] { RzDebugWriteImpl(0, "x"); }), "x\n");
}

TEST(RzDebug, StreamErrorsAreSwallowedWithoutRecursion) {
    // kind 0 raises an RzError at level 1, whose own debug line would go to
    // the same failing stream again and again without the guard.
    for (int kind = 0; kind < 3; ++kind) {
        DebugStateGuard guard;
        FailingStream failing(kind);
        RzSetDebugOutputImpl(&failing);
        RzSetDebugLevelImpl(1);
        RzDebugWriteImpl(1, "x");
        RzDebugPrintfImpl(1, "%s", "y");
        EXPECT_EQ(failing.attempts, 2) << kind;  // "x" (its line end is skipped), "y\n"
    }
}
