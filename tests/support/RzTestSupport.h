// Shared helpers for the unit tests.
#ifndef RZ_TESTS_SUPPORT_RZTESTSUPPORT_H
#define RZ_TESTS_SUPPORT_RZTESTSUPPORT_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzIO/RzDebug.h>
#include <Rz/RzIO/RzStream.h>

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

// Captures the debug output: while it lives, the debug level is `level` and
// every debug write lands in `writes` (one element per Write call). The whole
// debug state (level, stream, log file name) is put back at the end.
class DebugCapture : public RzStreamImplemented {
public:
    explicit DebugCapture(int level)
        : savedLevel(RzGetDebugLevelImpl()),
          savedStream(RzGetDebugOutputImpl()),
          savedFile(RzGetDebugOutputFileImpl()) {
        RzSetDebugLevelImpl(level);
        RzSetDebugOutputImpl(this);
    }
    ~DebugCapture() override {
        RzSetDebugLevelImpl(savedLevel);
        RzSetDebugOutputImpl(savedStream);
        RzOutputFile() = savedFile;
    }
    uint32_t Write(const void* buffer, uint32_t size, uint32_t*) override {
        writes.emplace_back(static_cast<const char*>(buffer), size);
        return size;
    }
    std::vector<std::string> writes;

private:
    int savedLevel;
    RzStream* savedStream;
    RzString savedFile;
};

// Bytes as a std::string, for comparisons that include zero bytes.
inline std::string Bytes(const char* p, size_t n) {
    return std::string(p, n);
}

// Several values as one text, "a|b|c", so that one assertion checks them all
// and a failure still shows each value.
inline std::string TestText(const RzString& s) {
    return s.c_str();
}
inline std::string TestText(const std::string& s) {
    return s;
}
inline std::string TestText(const char* s) {
    return s ? s : "(null)";
}
inline std::string TestText(bool b) {
    return b ? "true" : "false";
}
template <class Number>
std::string TestText(Number v) {
    return std::to_string(v);
}
template <class... T>
std::string Joined(const T&... values) {
    std::string joined;
    bool first = true;
    for (const std::string& v : {TestText(values)...}) {
        joined += (first ? "" : "|") + v;
        first = false;
    }
    return joined;
}

// An error's code, name, unit and line: "19|RzFormatErr|RzDataBase|91".
inline std::string ErrorFields(const RzError& e) {
    return Joined(e.GetErr(), e.GetErrName(), e.GetFileName(), e.GetLine());
}

#endif
