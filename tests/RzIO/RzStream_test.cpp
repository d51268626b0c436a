#include <Rz/RzIO/RzStream.h>

#include <string.h>

#include <string>
#include <vector>

#include "support/RzTestSupport.h"

namespace {

// Records what is written to it and throws on write number `failAt` (from 1).
struct Recorder : RzStreamImplemented {
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override {
        writes.push_back(size);
        text.append(static_cast<const char*>(buffer), size);
        if (done) *done = size;
        if (static_cast<int>(writes.size()) == failAt) throw RzError(42, "stop", "test", 0);
        return size;
    }
    std::string text;
    std::vector<uint32_t> writes;
    int failAt = -1;
};

// Serves `size` bytes and records each request.
struct Source : RzStreamImplemented {
    explicit Source(uint32_t size_) : size(size_) {}
    uint32_t Read(void* buffer, uint32_t want, uint32_t* done) override {
        wants.push_back(want);
        const uint32_t n = want < size - offset ? want : size - offset;
        memset(buffer, 'x', n);
        offset += n;
        if (done) *done = n;
        return n;
    }
    uint32_t size, offset = 0;
    std::vector<uint32_t> wants;
};

}  // namespace

TEST(RzStream, DefaultsRaiseAndTheNullStreamSwallows) {
    RzNullStream null;
    uint32_t done = 0;
    EXPECT_EQ(Joined(null.Write(nullptr, 12, &done), done), "12|12");
    EXPECT_RZ_ERROR(null.Read(&done, 1, &done), kRzUndefProc, "RzUndefProc");
    EXPECT_EQ(done, 12u);  // untouched
    EXPECT_RZ_ERROR(null.SetPosition(0, eRzSeekFromStart), kRzUndefProc, "RzUndefProc");
    const RzError e = CatchRzError([&] { null.GetPosition(); });
    EXPECT_EQ(Joined(e.GetErr(), e.GetErrName(), e.GetFileName()), "1|RzUndefProc|RzStream");
    EXPECT_STREQ(null.GetName().c_str(), "RzStream");
}

TEST(RzStream, OutputOperators) {
    struct Case {
        void (*write)(RzStream&);
        const char* expected;
    } cases[] = {
        {[](RzStream& s) { s << 3.14159; }, "   3.14"},
        {[](RzStream& s) { s << -1234567.891; }, "-1234567.89"},
        {[](RzStream& s) { s << 4294967295u; }, "4294967295"},
        {[](RzStream& s) { s << -5; }, "-5"},
        {[](RzStream& s) { s << -9000000000L; }, "-9000000000"},
        {[](RzStream& s) { s << 18446744073709551615UL; }, "18446744073709551615"},
        {[](RzStream& s) { s << "text" << RzString("+str") << 1; }, "text+str1"},
    };
    for (const Case& c : cases) {
        Recorder r;
        c.write(r);
        EXPECT_EQ(r.text, c.expected);
    }
    Recorder empty, big;
    empty << RzString();  // an empty string still writes, 0 bytes
    big << 1e300;
    EXPECT_EQ(empty.writes, std::vector<uint32_t>{0});
    EXPECT_EQ(big.text.size(), 304u);
}

TEST(RzStream, CopyPasses) {
    struct Case {
        uint32_t sourceSize;
        int32_t length;
        uint32_t chunk;
        std::vector<uint32_t> wants, writes;
    } cases[] = {
        {10000, 0, 4096, {4096, 4096, 4096}, {4096, 4096, 1808}},
        {10000, 5000, 4096, {4096, 904}, {4096, 904}},
        {8192, -1, 4096, {4096, 4096, 4096}, {4096, 4096, 0}},  // one more, empty pass
        {0, 0, 100, {100}, {0}},
    };
    for (const Case& c : cases) {
        Source source(c.sourceSize);
        Recorder destination;
        RzCopyStream(source, destination, c.length, c.chunk);
        EXPECT_EQ(source.wants, c.wants);
        EXPECT_EQ(destination.writes, c.writes);
    }
    // A bounded copy of a short source keeps passing until a stream fails.
    Source source(100);
    Recorder destination;
    destination.failAt = 50;
    EXPECT_RZ_ERROR(RzCopyStream(source, destination, 5000, 4096), 42, "stop");
    EXPECT_EQ(Joined(destination.writes.size(), destination.writes[0], destination.writes[49],
                     source.wants[49]),
              "50|100|0|4096");
}
