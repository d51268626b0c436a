// The operating-system seam on a real disk, each test in a fresh temporary
// folder.
#include <Rz/internal/RzOS.h>

#include <fcntl.h>
#include <limits.h>
#include <linux/fs.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/internal/RzAppleDouble.h>

#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

typedef std::vector<unsigned char> Blob;
const char kMetadata[] = "user.org.netatalk.Metadata";
const char kStream[] = "user.DosStream.AFP_AfpInfo:$DATA";
const char kApple[] = "user.com.apple.FinderInfo";
const uint32_t kTEXT = 0x54455854, kttxt = 0x74747874, kprof = 0x70726F66, ksync = 0x73796E63;

Blob Fi(uint32_t type, uint32_t creator, uint16_t flags) {
    Blob fi(32, 0);
    RzPutBE32(&fi[0], type), RzPutBE32(&fi[4], creator), RzPutBE16(&fi[8], flags);
    return fi;
}

Blob Record(uint32_t type, uint32_t creator, uint16_t flags, bool rejected = false) {
    Blob r(kRzMetadataSize);
    RzMetadataBuild(r.data(), Fi(type, creator, flags).data(), 0);
    if (rejected) r[7] = 2;  // version 0x00020002: one the servers would delete
    return r;
}

Blob Stream(uint32_t type, uint32_t creator) {  // with the trailing zero
    Blob s(61, 0), fi = Fi(type, creator, 0);
    memcpy(s.data(), "AFP\0\0\0\1\0", 8);
    memcpy(&s[16], fi.data(), 32);
    return s;
}

// A "._name" file as a Mac writes it: Finder information 'prof'/'sync' at 50.
const std::string kSidecar = [] {
    Blob f(50, 0), fi = Fi(kprof, ksync, 0);
    RzPutBE32(&f[0], kRzAppleDoubleMagic), RzPutBE32(&f[4], kRzAppleDoubleVersion2);
    memcpy(&f[8], "Mac OS X        ", 16);
    f[25] = 2;
    RzPutBE32(&f[26], 9), RzPutBE32(&f[30], 50), RzPutBE32(&f[34], 32);
    RzPutBE32(&f[38], 2), RzPutBE32(&f[42], 82);
    f.insert(f.end(), fi.begin(), fi.end());
    return std::string(f.begin(), f.end());
}();

uint32_t SidecarType(const std::string& path) {
    std::string f = FileText(path);
    return f.size() >= 54 ? RzGetBE32(reinterpret_cast<const unsigned char*>(&f[50])) : 0;
}

Blob Attr(const std::string& path, const char* name) {
    Blob v(1024);
    ssize_t n = getxattr(path.c_str(), name, v.data(), v.size());
    v.resize(n < 0 ? 0 : static_cast<size_t>(n));
    return v;
}

void SetAttr(const std::string& path, const char* name, const Blob& v) {
    if (v.empty()) return;
    ASSERT_EQ(setxattr(path.c_str(), name, v.data(), v.size(), 0), 0) << path;
}

// "TYPE/crea flags" (a zero code as 0, flags in hex) as RzOSReadFinderInfo
// reports them, "dir " first for a folder, or "error N".
std::string Read(const std::string& path) {
    uint32_t type = 0xDEAD, creator = 0xDEAD;
    uint16_t flags = 0xDEAD;
    bool isDirectory = false;
    const OSErr err = RzOSReadFinderInfo(path.c_str(), type, creator, flags, &isDirectory);
    if (err) return "error " + std::to_string(err);
    auto code = [](uint32_t c) { return c ? std::string(RzString().FromSig(c).c_str()) : "0"; };
    char hex[8];
    snprintf(hex, sizeof hex, " %x", flags);
    return (isDirectory ? "dir " : "") + code(type) + "/" + code(creator) + hex;
}

std::string PathOf(short volume, int32_t folder, const unsigned char* name = nullptr) {
    FSRef ref;
    if (RzOSFolderMakeRef(volume, folder, ref) != noErr) return "?";
    std::string path = ref.path.c_str();
    if (!name) return path;
    return (path == "/" ? "" : path) + "/" + std::string((const char*)name + 1, name[0]);
}

const unsigned char* P(const char* pascal) {
    return reinterpret_cast<const unsigned char*>(pascal);
}

// FSPathMakeFSSpec, as the file layer composes it.
OSErr PathMakeFSSpec(const char* path, FSSpec& spec) {
    FSRef ref;
    const OSErr err = RzOSPathMakeRef(path, ref, nullptr);
    return err != noErr ? err : RzOSRefMakeFSSpec(ref, spec);
}

}  // namespace

TEST(RzOS, FolderIDs) {
    RzTempDir t;
    mkdir((t / "a").c_str(), 0755);
    RzPutFile(t / "a/f");
    FSRef ref, file;
    RzString path;
    EXPECT_EQ(RzOSFolderMakeRef(-99, kRzRootFolderID, ref), nsvErr);
    EXPECT_EQ(RzOSFolderMakeRef(kRzRootVolume, 15, ref), dirNFErr);
    FSSpec spec, again;
    ASSERT_EQ(PathMakeFSSpec("/", spec), noErr);
    EXPECT_EQ(spec.parID, kRzRootParentID);
    ASSERT_EQ(PathMakeFSSpec((t / "a/f").c_str(), spec), noErr);
    ASSERT_EQ(RzOSPathMakeRef((t / "a/f").c_str(), file, nullptr), noErr);
    // An ID names the folder it was handed out for, never another one; a
    // reference names the item and says so once it is gone.
    rename((t / "a").c_str(), (t / "b").c_str());
    mkdir((t / "a").c_str(), 0755);
    EXPECT_EQ(RzOSFolderMakeRef(spec.vRefNum, spec.parID, ref), dirNFErr);
    EXPECT_EQ(RzOSRefMakePath(file, path), fnfErr);
    EXPECT_EQ(RzOSResolveAlias(file, nullptr, nullptr), fnfErr);
    ASSERT_EQ(PathMakeFSSpec((t / "b/./f").c_str(), again), noErr);
    EXPECT_EQ(again.parID, spec.parID);  // found again under its new name
    EXPECT_EQ(PathOf(spec.vRefNum, spec.parID), t / "b");
}

TEST(RzOS, MakeFSSpecNamesAndRelativePaths) {
    RzTempDir t;
    mkdir((t / "top").c_str(), 0755);
    mkdir((t / "top/sub").c_str(), 0755);
    RzPutFile(t / "top/sub/file");
    FSSpec top, spec;
    FSRef ref;
    ASSERT_EQ(PathMakeFSSpec((t / "top/sub").c_str(), top), noErr);
    struct Case {
        const char* name;
        OSErr err;
        std::string path;
    } cases[] = {
        {"\011:sub:file", noErr, t / "top/sub/file"},
        {"\010:sub:new", fnfErr, t / "top/sub/new"},
        {"\000", noErr, t / "top"},
        {"\002::", noErr, t.path()},
        {"\012:none:file", dirNFErr, ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(RzOSMakeFSSpec(kRzRootVolume, top.parID, P(c.name), spec), c.err) << c.name + 1;
        if (c.err == dirNFErr) {
            EXPECT_EQ(spec.parID, 0);
            continue;
        }
        EXPECT_EQ(PathOf(spec.vRefNum, spec.parID, spec.name), c.path) << c.name + 1;
        EXPECT_EQ(RzOSSpecMakeRef(spec, ref), c.err) << c.name + 1;
    }
    // Volume 0, folder 0: the working directory.
    char cwd[PATH_MAX];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(chdir((t / "top/sub").c_str()), 0);
    OSErr err = RzOSMakeFSSpec(0, 0, P("\004file"), spec);
    ASSERT_EQ(chdir(cwd), 0);
    EXPECT_EQ(err, noErr);
    EXPECT_EQ(PathOf(spec.vRefNum, spec.parID, spec.name), t / "top/sub/file");
}

TEST(RzOS, FinderInfoFallbacksInOrder) {
    RzTempDir t;
    struct Case {
        const char* what;
        Blob record, stream, apple;
        bool sidecar;
        const char* read;
    } cases[] = {
        {"nothing", {}, {}, {}, false, "0/0 0"},
        {"record", Record(kTEXT, kttxt, 0x4000), {}, {}, false, "TEXT/ttxt 4000"},
        {"sidecar", {}, {}, {}, true, "prof/sync 0"},
        {"record first", Record(kTEXT, kttxt, 0), Stream(kprof, ksync), {}, false, "TEXT/ttxt 0"},
        {"stream next", {}, Stream(kprof, ksync), Fi(kTEXT, kttxt, 0), true, "prof/sync 0"},
        {"apple next", {}, {}, Fi(kTEXT, kttxt, 0), true, "TEXT/ttxt 0"},
        {"rejected", Record(kTEXT, kttxt, 0, true), Stream(kprof, ksync), {}, false, "prof/sync 0"},
        {"record too long", Blob(403, 0), {}, {}, true, "prof/sync 0"},
    };
    for (const Case& c : cases) {
        std::string name = c.what, path = t / name;
        RzPutFile(path);
        SetAttr(path, kMetadata, c.record);
        SetAttr(path, kStream, c.stream);
        SetAttr(path, kApple, c.apple);
        if (c.sidecar) RzPutFile(t / ("._" + name), kSidecar);
        EXPECT_EQ(Read(path), c.read) << c.what;
    }
    mkdir((t / "folder").c_str(), 0755);
    SetAttr(t / "folder", kMetadata, Record(0, 0, 0x4000));
    EXPECT_EQ(Read(t / "folder"), "dir 0/0 4000");
    EXPECT_EQ(Read(t / "missing"), "error -43");
}

TEST(RzOS, WritingFinderInfo) {
    RzTempDir t;
    std::string f = t / "f.txt", g = t / "g", h = t / "h";
    for (const std::string& path : {f, g, h}) RzPutFile(path);
    EXPECT_EQ(RzOSWriteFinderInfo(f.c_str(), 0, 0), noErr);  // nothing to record
    EXPECT_EQ(RzOSChangeFinderFlags(f.c_str(), false, kIsInvisible), noErr);
    EXPECT_TRUE(Attr(f, kMetadata).empty());

    // A fresh record is the servers' own, dated by the file's modification.
    struct timespec times[2] = {{946684800, 0}, {946684800, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, f.c_str(), times, 0), 0);
    ASSERT_EQ(utimensat(AT_FDCWD, h.c_str(), times, 0), 0);
    EXPECT_EQ(RzOSWriteFinderInfo(f.c_str(), kTEXT, kttxt), noErr);
    EXPECT_EQ(RzOSChangeFinderFlags(f.c_str(), true, kIsInvisible), noErr);
    EXPECT_EQ(Attr(f, kMetadata), Record(kTEXT, kttxt, 0x4000));
    EXPECT_EQ(RzOSWriteFinderInfo(f.c_str(), 0, ksync), noErr);  // zero keeps the type
    EXPECT_EQ(RzOSChangeFinderFlags(f.c_str(), false, kIsInvisible), noErr);
    EXPECT_EQ(Attr(f, kMetadata), Record(kTEXT, ksync, 0));

    // Read-modify-write keeps what the servers keep in their record.
    Blob used = Record(kprof, ksync, 0);
    used[37] = 5;  // a comment
    memcpy(&used[154], "hello", 5);
    for (size_t k = 374; k < 402; ++k) used[k] = static_cast<unsigned char>(k);
    used[373] = 0x20;  // write inhibit
    SetAttr(g, kMetadata, used);
    EXPECT_EQ(RzOSWriteFinderInfo(g.c_str(), kTEXT, 0), noErr);
    EXPECT_EQ(RzOSChangeFinderFlags(g.c_str(), true, kIsInvisible), noErr);
    RzPutBE32(&used[122], kTEXT);
    used[130] = 0x40;
    used[373] = 0x21;
    EXPECT_EQ(Attr(g, kMetadata), used);

    // A record the servers would delete is replaced; the other copies follow
    // the change, and none is made where there was none.
    SetAttr(h, kMetadata, Record(kprof, ksync, 0, true));
    SetAttr(h, kStream, Stream(kprof, ksync));
    SetAttr(h, kApple, Fi(kprof, ksync, 0));
    RzPutFile(t / "._h", kSidecar);
    EXPECT_EQ(RzOSWriteFinderInfo(h.c_str(), kTEXT, 0), noErr);
    EXPECT_EQ(Attr(h, kMetadata), Record(kTEXT, ksync, 0));
    EXPECT_EQ(RzGetBE32(&Attr(h, kStream)[16]), kTEXT);
    EXPECT_EQ(Attr(h, kApple), Fi(kTEXT, ksync, 0));
    EXPECT_EQ(SidecarType(t / "._h"), kTEXT);
    EXPECT_EQ(Attr(f, kStream).size() + Attr(f, kApple).size(), 0u);
    EXPECT_NE(access((t / "._f.txt").c_str(), F_OK), 0);
    EXPECT_EQ(RzOSChangeFinderFlags((t / "none").c_str(), true, kIsInvisible), fnfErr);
}

TEST(RzOS, FileSystemWithoutUserAttributes) {
    NoXattrMount m;
    if (!m.mounted) GTEST_SKIP() << m.reason;
    std::string f = m.point + "/f";
    RzPutFile(f);
    ASSERT_EQ(setxattr(f.c_str(), kMetadata, "x", 1, 0), -1);
    ASSERT_EQ(errno, ENOTSUP);
    EXPECT_EQ(Read(f), "0/0 0");
    EXPECT_EQ(RzOSWriteFinderInfo(f.c_str(), kTEXT, kttxt), wrgVolTypErr);
    EXPECT_EQ(RzOSChangeFinderFlags(f.c_str(), true, kIsInvisible), wrgVolTypErr);
    EXPECT_EQ(RzOSChangeFinderFlags(f.c_str(), false, kIsInvisible), noErr);  // already so
    EXPECT_NE(access((m.point + "/._f").c_str(), F_OK), 0);
    // A "._" file a Mac left there is read and kept up to date.
    RzPutFile(m.point + "/._f", kSidecar);
    EXPECT_EQ(Read(f), "prof/sync 0");
    EXPECT_EQ(RzOSWriteFinderInfo(f.c_str(), kTEXT, 0), noErr);
    EXPECT_EQ(SidecarType(m.point + "/._f"), kTEXT);

    // Opening a file stamps it where it can; here that is skipped quietly.
    RzFileSpec s(RzString((m.point + "/g.txt").c_str()));
    s.SetCreatorID(kttxt);
    FILE* file = RzMacOpenFile(s, eRzFileWrite);
    ASSERT_NE(file, nullptr);
    fclose(file);
    EXPECT_EQ(Read(m.point + "/g.txt"), "0/0 0");
    EXPECT_EQ(RzMacSetVisible(s, false), wrgVolTypErr);
}

namespace {

// The monotonic clock in 60ths of a second, as the tick clock counts it.
uint64_t MonotonicTicks() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return uint64_t(now.tv_sec) * 60 + uint64_t(now.tv_nsec) * 60 / 1000000000;
}

double MonotonicMs() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

}  // namespace

TEST(RzOS, DelayEndsOnTheTickGridAndNeverEarly) {
    const uint64_t start = MonotonicTicks();
    const uint32_t end = RzOSDelayTicks(2);
    EXPECT_GE(end - static_cast<uint32_t>(start), 2u);
    EXPECT_GE(MonotonicTicks(), start + 2);
    // Started 8 ms into a tick, a one-tick delay ends at the next boundary,
    // about 8.7 ms later; a delay measured as a span would take 16.7 ms. The
    // best of a few tries keeps a busy machine from failing the test.
    double best = 1e9;
    for (int i = 0; i < 5; ++i) {
        RzOSDelayTicks(1);
        usleep(8000);
        const double start = MonotonicMs();
        RzOSDelayTicks(1);
        best = std::min(best, MonotonicMs() - start);
    }
    EXPECT_LT(best, 14.0);
}

namespace {

const char kDosAttrib[] = "user.DOSATTRIB";

// Samba's record of version 5: the attribute word, creation time 1..8.
Blob DosAttrib(uint32_t attributes) {
    Blob r = {0, 0, 5, 0, 5, 0, 0, 0, 0x11, 0, 0, 0};
    for (int i = 0; i < 4; ++i) r.push_back(static_cast<unsigned char>(attributes >> (8 * i)));
    for (unsigned char b = 1; b <= 8; ++b) r.push_back(b);
    return r;
}

Blob WithAfpAttributes(Blob record, uint16_t attributes) {
    RzMetadataSetAfpAttributes(record.data(), record.size(), attributes);
    return record;
}

// Sets or clears the kernel's immutable flag; false when not permitted.
bool SetImmutable(const std::string& path, bool on) {
    const int fd = open(path.c_str(), O_RDONLY);
    int flags = 0;
    bool done = fd >= 0 && ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    flags = on ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    done = done && ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    if (fd >= 0) close(fd);
    return done;
}

}  // namespace

TEST(RzOS, LockedIsAnyOfThreeStores) {
    RzTempDir t;
    const Blob record = Record(kTEXT, kttxt, kIsInvisible);  // AFP attributes 0x0001
    Blob rejected = WithAfpAttributes(record, 0x0021);
    rejected[7] = 2;  // version 0x00020002
    const struct {
        const char* what;
        Blob dos, meta;
        bool locked;
        Blob dosAfter, metaAfter;  // what clearing leaves
    } cases[] = {
        {"nothing", {}, {}, false, {}, {}},
        {"AFP WriteInhibit with the others",
         {},
         WithAfpAttributes(record, 0x01A1),
         true,
         {},
         record},
        {"AFP RenameInhibit alone is no lock",
         {},
         WithAfpAttributes(record, 0x0081),
         false,
         {},
         WithAfpAttributes(record, 0x0081)},
        {"AFP record the servers reject", {}, rejected, false, {}, rejected},
        {"both", DosAttrib(0x01), WithAfpAttributes(record, 0x0021), true, DosAttrib(0x00), record},
    };
    int n = 0;
    for (const auto& c : cases) {
        const std::string f = t / ("f" + std::to_string(n++));
        RzPutFile(f);
        SetAttr(f, kDosAttrib, c.dos);
        SetAttr(f, kMetadata, c.meta);
        bool locked = !c.locked;
        EXPECT_EQ(RzOSGetNodeLocked(f.c_str(), locked), noErr) << c.what;
        EXPECT_EQ(locked, c.locked) << c.what;
        EXPECT_EQ(RzOSClearNodeLocked(f.c_str()), noErr) << c.what;
        EXPECT_EQ(RzOSGetNodeLocked(f.c_str(), locked), noErr) << c.what;
        EXPECT_FALSE(locked) << c.what;
        EXPECT_EQ(Attr(f, kDosAttrib), c.dosAfter) << c.what;
        EXPECT_EQ(Attr(f, kMetadata), c.metaAfter) << c.what;
    }

    bool locked = true;
    EXPECT_EQ(RzOSGetNodeLocked((t / "missing").c_str(), locked), fnfErr);
    EXPECT_FALSE(locked);
    EXPECT_EQ(RzOSClearNodeLocked((t / "missing").c_str()), fnfErr);
}

TEST(RzOS, ImmutableFlagIsALockClearedFirst) {
    RzTempDir t;
    const std::string f = t / "f";
    RzPutFile(f);
    SetAttr(f, kDosAttrib, DosAttrib(0x21));
    if (!SetImmutable(f, true))
        GTEST_SKIP() << "setting the immutable flag needs CAP_LINUX_IMMUTABLE";
    struct Unset {
        std::string path;
        ~Unset() { SetImmutable(path, false); }
    } unset{f};
    bool locked = false;
    EXPECT_EQ(RzOSGetNodeLocked(f.c_str(), locked), noErr);
    EXPECT_TRUE(locked);
    // The DOS record can only be changed once the flag is gone.
    EXPECT_EQ(RzOSClearNodeLocked(f.c_str()), noErr);
    EXPECT_EQ(RzOSGetNodeLocked(f.c_str(), locked), noErr);
    EXPECT_FALSE(locked);
    EXPECT_EQ(Attr(f, kDosAttrib), DosAttrib(0x20));
    EXPECT_TRUE(RzPutFile(f, "writable again"));
}
