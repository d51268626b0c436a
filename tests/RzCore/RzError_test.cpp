#include <Rz/RzCore/RzError.h>

#include <string>

#include "support/RzTestSupport.h"

TEST(RzError, DefaultIsNoError) {
    RzError e;
    EXPECT_EQ(ErrorFields(e) + " " + e.what(), "0|Unknown||0 No Error");
}

TEST(RzError, KeepsOnlyTheFileBaseName) {
    struct Case {
        const char *file, *expected;
    } cases[] = {{"a/b/c/RzFile", "RzFile"}, {"x\\y\\z", "z"}, {"dir/", ""}, {nullptr, ""}};
    for (const Case& c : cases)
        EXPECT_EQ(ErrorFields(RzError(3, "RzArgErr", c.file, 12)),
                  Joined(3, "RzArgErr", c.expected, 12));
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
        EXPECT_EQ(ErrorFields(*e), "7|RzIndexError|RzArray|40");
        EXPECT_NE(e->GetErrName(), original.GetErrName());  // a copy, not shared
    }
    // Self-assignment frees the fields before reading them.
    RzError& alias = assigned;
    assigned = alias;
    EXPECT_EQ(ErrorFields(assigned), "7|Unknown||40");
}

TEST(RzError, ThrowSysError) {
    EXPECT_EQ(ErrorFields(CatchRzError([] { RzError::ThrowSysError(-43, ""); })),
              "68|System error: -43||0");
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
    // The named constants come from the same table as the names.
    EXPECT_EQ(Joined(kRzNoErr, kRzSysErr), "0|68");
    std::string table;
    for (uint32_t code = 0; code < 100; ++code)
        if (RzErrorName(code)) table += Joined(code, RzErrorName(code)) + " ";
    EXPECT_EQ(table,
              "1|RzUndefProc 2|RzUnexpectedErr 3|RzArgErr 4|RzMemFullErr 7|RzIndexError "
              "12|RzFileNotOpen 13|RzFileLengthFailed 14|RzFileSeekFailed 15|RzFilePosFailed "
              "17|RzFileWriteFailed 18|RzFileAccessErr 19|RzFormatErr 20|RzPtrInvalid "
              "42|RzGeneralErr ");
    EXPECT_EQ(RzErrorName(0xFFFFFFFF), nullptr);
}
