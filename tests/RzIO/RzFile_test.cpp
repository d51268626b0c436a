#include <Rz/RzIO/RzFile.h>

#include <unistd.h>

#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

const auto Spec = FileSpecAt;

}  // namespace

TEST(RzFile, OpensLazilyAndKeepsItsFirstMode) {
    RzTempDir dir;
    const std::string path = dir / "a.txt";
    RzFile out(Spec(path), eRzFileWrite);
    EXPECT_EQ(access(path.c_str(), F_OK), -1);
    uint32_t done = 0;
    EXPECT_EQ(Joined(out.Write("abc", 3, &done), done), "3|3");
    out.Open(eRzFileRead, false);  // already open: still the writer
    out.WriteString(RzString("de"));
    EXPECT_STREQ(out.GetName().c_str(), ("RzFile\t" + path).c_str());
    out.Close();
    EXPECT_RZ_ERROR(out.GetPosition(), kRzFileNotOpen, "RzFileNotOpen");  // not reopened
    RzFlushFileStream log(Spec(path));
    log.Write("f", 1, nullptr);
    EXPECT_EQ(FileText(path), "abcdef");
    unlink(path.c_str());  // closed after each write: the next one creates it anew
    log.Write("g", 1, nullptr);
    EXPECT_EQ(FileText(path), "g");
}

TEST(RzFile, PositionsLengthAndReadString) {
    RzTempDir dir;
    const std::string path = dir / "ten.bin", bytes(
                                                  "01234\0"
                                                  "6789",
                                                  10);
    RzFlushFileStream(Spec(path)).Write(bytes.data(), 10, nullptr);
    struct Case {
        int32_t offset;
        eRzFileSeekMode mode;
        int32_t position;
    } cases[] = {{3, eRzSeekFromEnd, 7},     {0, eRzSeekFromEnd, 10},  {-4, eRzSeekFromCurrent, 0},
                 {3, eRzSeekFromCurrent, 7}, {2, eRzSeekFromStart, 2}, {-2, eRzSeekFromEnd, 12}};
    for (const Case& c : cases) {
        RzFile f(Spec(path), eRzFileRead);
        f.SetPosition(4, eRzSeekFromStart);
        const int32_t length = f.Length();
        EXPECT_EQ(Joined(length, f.GetPosition()), "10|4");  // Length keeps the position
        f.SetPosition(c.offset, c.mode);
        EXPECT_EQ(f.GetPosition(), c.position) << c.offset << " mode " << c.mode;
        if (c.position > 10) {  // a negative size: a failed 4 GB allocation on the 32-bit target
            EXPECT_RZ_ERROR(f.ReadString(), kRzMemFullErr, "RzMemFullErr");
        } else {
            const RzString rest = f.ReadString();
            EXPECT_EQ(Bytes(rest.c_str(), rest.length()), bytes.substr(c.position));
        }
    }
}

TEST(RzFile, Failures) {
    RzTempDir dir;
    const std::string none = dir / "none", made = dir / "made", big = dir / "big";
    RzFlushFileStream(Spec(big)).Write("x", 1, nullptr);
    ASSERT_EQ(truncate(big.c_str(), 3LL << 30), 0);  // sparse, past the 32-bit lengths
    char byte;
    struct Case {
        std::function<void(RzFile&)> call;
        eRzFileAccess access;
        std::string path, name;
        uint32_t code;
    } cases[] = {
        {[](RzFile& f) { f.Open(eRzFileNone, 0); }, eRzFileNone, none, "FileNotOpen: " + none, 12},
        {[&](RzFile& f) { f.Read(&byte, 1, nullptr); }, eRzFileNone, none, "RzFileNotOpen", 12},
        {[](RzFile& f) { f.Length(); }, eRzFileNone, none, "RzFileNotOpen", 12},
        {[](RzFile& f) { f.Write(nullptr, 1, nullptr); }, eRzFileWrite, made, "RzArgErr", 3},
        {[](RzFile& f) { f.SetPosition(0, eRzFileSeekMode(3)); }, eRzFileWrite, made, "RzArgErr",
         3},
        {[](RzFile& f) { f.SetPosition(-1, eRzSeekFromStart); }, eRzFileWrite, made,
         "RzFileSeekFailed", 14},
        {[](RzFile& f) { f.Length(); }, eRzFileRead, big, "RzFileLengthFailed", 13},
        {[](RzFile& f) {
             f.SetPosition(INT32_MAX, eRzSeekFromStart);
             f.SetPosition(1, eRzSeekFromCurrent);
             f.GetPosition();
         },
         eRzFileRead, big, "RzFilePosFailed", 15},
    };
    for (const Case& c : cases) {
        RzFile f(Spec(c.path), c.access);
        const RzError e = CatchRzError([&] { c.call(f); });
        EXPECT_EQ(Joined(e.GetErr(), e.GetErrName(), e.GetFileName()),
                  Joined(c.code, c.name, c.name.find(':') == std::string::npos ? "RzFile" : ""));
    }
    // The layer's own failure passes through.
    EXPECT_EQ(CatchRzError([&] { RzFile(Spec(none), eRzFileRead).ReadString(); }).GetErr(), 12u);
    // A device that takes no data: the count is stored before the failure.
    RzFile full(Spec("/dev/full"), eRzFileWrite);
    const std::string block(1 << 16, 'x');
    uint32_t done = 0;
    EXPECT_RZ_ERROR(full.Write(block.data(), block.size(), &done), 17, "RzFileWriteFailed");
    EXPECT_LT(done, block.size());
}
