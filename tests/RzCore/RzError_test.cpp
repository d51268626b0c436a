#include <Rz/RzCore/RzError.h>

#include <string>

#include "support/RzTestSupport.h"

TEST(RzError, DefaultIsNoError) {
    RzError e;
    EXPECT_EQ(e.GetErr(), 0u);
    EXPECT_STREQ(e.GetErrName(), "Unknown");
    EXPECT_STREQ(e.GetFileName(), "");
    EXPECT_EQ(e.GetLine(), 0);
    EXPECT_STREQ(e.what(), "No Error");
}

TEST(RzError, KeepsOnlyTheFileBaseName) {
    struct Case {
        const char *file, *expected;
    } cases[] = {{"a/b/c/RzFile", "RzFile"}, {"x\\y\\z", "z"}, {"dir/", ""}, {nullptr, ""}};
    for (const Case& c : cases) {
        RzError e(3, "RzArgErr", c.file, 12);
        EXPECT_STREQ(e.GetFileName(), c.expected) << (c.file ? c.file : "(null)");
        EXPECT_EQ(e.GetLine(), 12);
    }
    EXPECT_STREQ(RzError(3, nullptr, "f", 1).GetErrName(), "Unknown");
}

TEST(RzError, What) {
    EXPECT_STREQ(RzError(19, "RzFormatErr", "RzDataBase", 91).what(), "Error=19 (RzFormatErr)");
    // A code that the framework treats as 32-bit prints as the signed value.
    EXPECT_STREQ(RzError(0xFFFFFFFFu, "err", nullptr, 0).what(), "Error=-1 (err)");
    const std::string longName(5000, 'n');  // never overflows a buffer
    EXPECT_EQ(std::string(RzError(7, longName.c_str(), longName.c_str(), 1).what()),
              "Error=7 (" + longName + ")");
}

TEST(RzError, CopyAndAssignment) {
    RzError original(7, "RzIndexError", "RzArray", 40);
    RzError copy(original), assigned;
    assigned = original;
    for (const RzError* e : {&copy, &assigned}) {
        EXPECT_EQ(e->GetErr(), 7u);
        EXPECT_STREQ(e->GetErrName(), "RzIndexError");
        EXPECT_NE(e->GetErrName(), original.GetErrName());  // a copy, not shared
        EXPECT_STREQ(e->GetFileName(), "RzArray");
        EXPECT_EQ(e->GetLine(), 40);
    }
    // Self-assignment frees the fields before reading them.
    RzError& alias = assigned;
    assigned = alias;
    EXPECT_STREQ(assigned.GetErrName(), "Unknown");
    EXPECT_STREQ(assigned.GetFileName(), "");
    EXPECT_EQ(assigned.GetErr(), 7u);
}

TEST(RzError, ThrowSysError) {
    RzError e = CatchRzError([] { RzError::ThrowSysError(-43, ""); });
    EXPECT_EQ(e.GetErr(), 68u);
    EXPECT_STREQ(e.GetErrName(), "System error: -43");
    EXPECT_STREQ(e.GetFileName(), "");
    EXPECT_EQ(e.GetLine(), 0);
    EXPECT_STREQ(CatchRzError([] { RzError::ThrowSysError(5, "open"); }).GetErrName(),
                 "System error: 5 open");
    EXPECT_STREQ(CatchRzError([] { RzError::ThrowSysError(5, nullptr); }).GetErrName(),
                 "System error: 5");
}

TEST(RzError, NonZeroErrorsWriteTheirLineAtLevelOne) {
    DebugCapture capture(1);
    RzError e(19, "RzFormatErr", "a/b/RzDataBase", 7), copy(e), none(0, "x", "y", 1);
    RzError(0xFFFFFFFF, nullptr, nullptr, 8);
    EXPECT_EQ(capture.writes, std::vector<std::string>(
                                  {"RzError: 19 \"RzFormatErr\", file \"RzDataBase\", line 7\n",
                                   "RzError: -1 \"\", file \"\", line 8\n"}));
    RzSetDebugLevelImpl(0);
    RzError(19, "RzFormatErr", "f", 1);
    EXPECT_EQ(capture.writes.size(), 2u);
}

TEST(RzError, TableOfCodesAndNames) {
    struct Case {
        int constant;
        uint32_t code;
        const char* name;
    } cases[] = {
        {kRzUndefProc, 1, "RzUndefProc"},
        {kRzUnexpectedErr, 2, "RzUnexpectedErr"},
        {kRzArgErr, 3, "RzArgErr"},
        {kRzMemFullErr, 4, "RzMemFullErr"},
        {kRzIndexError, 7, "RzIndexError"},
        {kRzFileNotOpen, 12, "RzFileNotOpen"},
        {kRzFileLengthFailed, 13, "RzFileLengthFailed"},
        {kRzFileSeekFailed, 14, "RzFileSeekFailed"},
        {kRzFilePosFailed, 15, "RzFilePosFailed"},
        {kRzFileWriteFailed, 17, "RzFileWriteFailed"},
        {kRzFileAccessErr, 18, "RzFileAccessErr"},
        {kRzFormatErr, 19, "RzFormatErr"},
        {kRzPtrInvalid, 20, "RzPtrInvalid"},
        {kRzGeneralErr, 42, "RzGeneralErr"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(static_cast<uint32_t>(c.constant), c.code) << c.name;
        EXPECT_STREQ(RzErrorName(c.code), c.name) << c.code;
    }
    EXPECT_EQ(kRzNoErr, 0);
    EXPECT_EQ(kRzSysErr, 68);
    for (uint32_t unknown : {0u, 5u, 6u, 8u, 11u, 16u, 21u, 68u, 0xFFFFFFFFu})
        EXPECT_EQ(RzErrorName(unknown), nullptr) << unknown;
}
