// Shared helpers for the unit tests.
#ifndef RZ_TESTS_SUPPORT_RZTESTSUPPORT_H
#define RZ_TESTS_SUPPORT_RZTESTSUPPORT_H

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzIO/RzDebug.h>

// Expects `statement` to throw an RzError with the given code and name.
#define EXPECT_RZ_ERROR(statement, expectedCode, expectedName)                                    \
    do {                                                                                          \
        bool rzThrown = false;                                                                    \
        try {                                                                                     \
            statement;                                                                            \
        } catch (const RzError& rzError) {                                                        \
            rzThrown = true;                                                                      \
            EXPECT_EQ(rzError.GetErr(), static_cast<uint32_t>(expectedCode));                     \
            EXPECT_STREQ(rzError.GetErrName(), expectedName);                                     \
        }                                                                                         \
        EXPECT_TRUE(rzThrown) << "expected RzError " << (expectedName) << " from " << #statement; \
    } while (0)

// Runs `statement` and returns the RzError it throws (fails the test if none).
template <typename F>
RzError CatchRzError(F statement) {
    try {
        statement();
    } catch (const RzError& e) {
        return e;
    }
    ADD_FAILURE() << "no RzError thrown";
    return RzError();
}

// Saves the debug level and restores it when the test ends.
class DebugLevelGuard {
public:
    explicit DebugLevelGuard(int level) : saved(RzGetDebugLevelImpl()) {
        RzSetDebugLevelImpl(level);
    }
    ~DebugLevelGuard() { RzSetDebugLevelImpl(saved); }

private:
    int saved;
};

// Saves the whole debug state (level, current stream, log file name) and
// puts it back when the test ends.
class DebugStateGuard {
public:
    DebugStateGuard()
        : level(RzGetDebugLevelImpl()),
          stream(RzGetDebugOutputImpl()),
          file(RzGetDebugOutputFileImpl()) {}
    ~DebugStateGuard() {
        RzSetDebugLevelImpl(level);
        RzSetDebugOutputImpl(stream);
        RzOutputFile() = file;
    }

private:
    int level;
    RzStream* stream;
    RzString file;
};

// Captures the debug output: while it lives, the debug level is `level` and
// every debug write lands in `writes` (one element per Write call).
class DebugCapture : public RzStreamImplemented {
public:
    explicit DebugCapture(int level = 1) {
        RzSetDebugLevelImpl(level);
        RzSetDebugOutputImpl(this);
    }
    uint32_t Write(const void* buffer, uint32_t size, uint32_t* done) override {
        writes.emplace_back(static_cast<const char*>(buffer), size);
        if (done) *done = size;
        return size;
    }
    std::string Text() const {
        std::string all;
        for (const std::string& w : writes) all += w;
        return all;
    }
    std::vector<std::string> writes;

private:
    DebugStateGuard saved;
};

// Runs `body` with standard output going into a pipe and returns what it
// printed (keep it under the pipe's 64 KB).
inline std::string CaptureStdout(const std::function<void()>& body) {
    int fds[2];
    if (pipe(fds) != 0) return "(no pipe)";
    fflush(stdout);
    const int saved = dup(1);
    dup2(fds[1], 1);
    close(fds[1]);
    body();
    fflush(stdout);
    dup2(saved, 1);
    close(saved);
    std::string out;
    char chunk[4096];
    for (ssize_t n; (n = read(fds[0], chunk, sizeof chunk)) > 0;) out.append(chunk, n);
    close(fds[0]);
    return out;
}

// Bytes as a std::string, for comparisons that include zero bytes.
inline std::string Bytes(const char* p, size_t n) {
    return std::string(p, n);
}

#endif
