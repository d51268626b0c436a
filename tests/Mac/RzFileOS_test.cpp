// The Linux file layer on a real disk, each test in a fresh temporary folder.
#include <Rz/internal/RzFileOS.h>

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/xattr.h>

#include <string>
#include <vector>

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
    RzPutBE32(&fi[0], type);
    RzPutBE32(&fi[4], creator);
    RzPutBE16(&fi[8], flags);
    return fi;
}

Blob Record(uint32_t type, uint32_t creator, uint16_t flags) {
    Blob r(kRzMetadataSize);
    RzMetadataBuild(r.data(), Fi(type, creator, flags).data(), 0);
    return r;
}

Blob Stream(uint32_t type, uint32_t creator) {  // with the trailing zero
    Blob s(61, 0), fi = Fi(type, creator, 0);
    memcpy(s.data(), "AFP\0\0\0\1\0", 8);
    memcpy(&s[16], fi.data(), 32);
    return s;
}

// A "._name" file as a Mac writes it: Finder information at 50.
std::string Sidecar(uint32_t type, uint32_t creator) {
    Blob f(50, 0), fi = Fi(type, creator, 0);
    RzPutBE32(&f[0], kRzAppleDoubleMagic);
    RzPutBE32(&f[4], kRzAppleDoubleVersion2);
    memcpy(&f[8], "Mac OS X        ", 16);
    f[25] = 2;
    RzPutBE32(&f[26], 9), RzPutBE32(&f[30], 50), RzPutBE32(&f[34], 32);
    RzPutBE32(&f[38], 2), RzPutBE32(&f[42], 82);
    f.insert(f.end(), fi.begin(), fi.end());
    return std::string(f.begin(), f.end());
}

uint32_t SidecarType(const std::string& path) {
    unsigned char b[54] = {0};
    FILE* in = fopen(path.c_str(), "rb");
    if (in && fread(b, 1, sizeof b, in) != sizeof b) b[50] = 0xFF;
    if (in) fclose(in);
    return RzGetBE32(b + 50);
}

Blob Attr(const std::string& path, const char* name) {
    Blob v(1024);
    ssize_t n = getxattr(path.c_str(), name, v.data(), v.size());
    v.resize(n < 0 ? 0 : static_cast<size_t>(n));
    return v;
}

void SetAttr(const std::string& path, const char* name, const Blob& v) {
    ASSERT_EQ(setxattr(path.c_str(), name, v.data(), v.size(), 0), 0) << strerror(errno);
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

}  // namespace

TEST(RzFileOS, ReferencesResolveLinks) {
    RzTempDir t;
    mkdir((t / "dir").c_str(), 0755);
    RzPutFile(t / "dir/f");
    symlink("dir/f", (t / "link").c_str());
    symlink("dir", (t / "dirlink").c_str());
    symlink("missing", (t / "dangling").c_str());
    struct Case {
        std::string path, resolved;  // "" for fnfErr
        bool isDirectory;
    } cases[] = {{t / "dirlink/../dir/./f", t / "dir/f", false},
                 {t / "dirlink", t / "dir", true},
                 {"/", "/", true},
                 {t / "dangling", "", false}};
    for (const Case& c : cases) {
        FSRef ref;
        bool isDirectory = !c.isDirectory;
        RzString path;
        ASSERT_EQ(RzOSPathMakeRef(c.path.c_str(), ref, &isDirectory),
                  c.resolved.empty() ? fnfErr : noErr)
            << c.path;
        if (c.resolved.empty()) continue;
        EXPECT_EQ(RzOSRefMakePath(ref, path), noErr);
        EXPECT_EQ(path.c_str(), c.resolved);
        EXPECT_EQ(isDirectory, c.isDirectory) << c.path;
    }
    // A reference names the item, not the path: once it is gone, it says so.
    FSRef ref;
    RzString path;
    ASSERT_EQ(RzOSPathMakeRef((t / "link").c_str(), ref, nullptr), noErr);
    unlink((t / "dir/f").c_str());
    EXPECT_EQ(RzOSRefMakePath(ref, path), fnfErr);
    EXPECT_EQ(RzOSResolveAlias(ref, nullptr, nullptr), fnfErr);
    EXPECT_EQ(RzOSRefMakePath(FSRef(), path), paramErr);
}

TEST(RzFileOS, FolderIDsMapBackToPaths) {
    RzTempDir t;
    mkdir((t / "a").c_str(), 0755);
    RzPutFile(t / "a/f");
    EXPECT_EQ(PathOf(0, kRzRootFolderID), "/");
    FSRef ref;
    EXPECT_EQ(RzOSFolderMakeRef(-99, kRzRootFolderID, ref), nsvErr);
    for (int32_t id : {0, 1, 15, -5})
        EXPECT_EQ(RzOSFolderMakeRef(kRzRootVolume, id, ref), dirNFErr) << id;

    FSSpec spec, again;
    ASSERT_EQ(RzOSPathMakeFSSpec((t / "a/f").c_str(), spec), noErr);
    EXPECT_EQ(PathOf(spec.vRefNum, spec.parID, spec.name), t / "a/f");
    // An ID names the folder it was handed out for, never another one.
    rename((t / "a").c_str(), (t / "b").c_str());
    mkdir((t / "a").c_str(), 0755);
    EXPECT_EQ(RzOSFolderMakeRef(spec.vRefNum, spec.parID, ref), dirNFErr);
    ASSERT_EQ(RzOSPathMakeFSSpec((t / "b/./f").c_str(), again), noErr);
    EXPECT_EQ(again.parID, spec.parID);  // found again under its new name
    EXPECT_EQ(PathOf(spec.vRefNum, spec.parID), t / "b");

    ASSERT_EQ(RzOSPathMakeFSSpec("/", spec), noErr);
    EXPECT_EQ(spec.parID, kRzRootParentID);
    ASSERT_EQ(RzOSSpecMakeRef(spec, ref), noErr);
    EXPECT_STREQ(ref.path.c_str(), "/");
}

TEST(RzFileOS, MakeFSSpecNamesAndRelativePaths) {
    RzTempDir t;
    mkdir((t / "top").c_str(), 0755);
    mkdir((t / "top/sub").c_str(), 0755);
    RzPutFile(t / "top/sub/file");
    RzPutFile(t / "top/a:b");
    FSSpec top;
    ASSERT_EQ(RzOSPathMakeFSSpec((t / "top/sub").c_str(), top), noErr);
    struct Case {
        const char* name;
        OSErr err;
        std::string path;
    } cases[] = {
        {"\x03"
         "a:b",
         noErr, t / "top/a:b"},              // a plain name keeps its colons
        {"\x04:a/b", noErr, t / "top/a:b"},  // in a relative path '/' stands for ':'
        {"\x09:sub:file", noErr, t / "top/sub/file"},
        {"\x05:sub:", noErr, t / "top/sub"},
        {"\x08:sub:new", fnfErr, t / "top/sub/new"},
        {"\x00", noErr, t / "top"},
        {"\x02::", noErr, t.path()},
        {"\x06:sub::", noErr, t / "top"},
        {"\x0a:none:file", dirNFErr, ""},
    };
    for (const Case& c : cases) {
        FSSpec spec;
        FSRef ref;
        EXPECT_EQ(RzOSMakeFSSpec(kRzRootVolume, top.parID, P(c.name), spec), c.err) << c.name + 1;
        if (c.err == dirNFErr) {
            EXPECT_EQ(spec.parID, 0);
            continue;
        }
        EXPECT_EQ(PathOf(spec.vRefNum, spec.parID, spec.name), c.path) << c.name + 1;
        EXPECT_EQ(RzOSSpecMakeRef(spec, ref), c.err) << c.name + 1;
    }

    // Volume 0, folder 0: the working directory.
    FSSpec spec;
    char cwd[PATH_MAX];
    ASSERT_TRUE(getcwd(cwd, sizeof cwd) && chdir((t / "top/sub").c_str()) == 0);
    OSErr err = RzOSMakeFSSpec(0, 0,
                               P("\x04"
                                 "file"),
                               spec);
    ASSERT_EQ(chdir(cwd), 0);
    EXPECT_EQ(err, noErr);
    EXPECT_EQ(PathOf(spec.vRefNum, spec.parID, spec.name), t / "top/sub/file");
}

TEST(RzFileOS, FinderInfoFallbacksInOrder) {
    RzTempDir t;
    Blob rejected = Record(kTEXT, kttxt, 0);
    rejected[7] = 2;  // version 0x00020002
    struct Case {
        const char* what;
        Blob record, stream, apple;
        bool sidecar;  // a "._" file with 'prof'/'sync'
        const char* read;
    } cases[] = {
        {"nothing", {}, {}, {}, false, "0/0 0"},
        {"record", Record(kTEXT, kttxt, 0x4000), {}, {}, false, "TEXT/ttxt 4000"},
        {"stream", {}, Stream(kprof, ksync), {}, false, "prof/sync 0"},
        {"apple", {}, {}, Fi(kprof, kttxt, 1), false, "prof/ttxt 1"},
        {"sidecar", {}, {}, {}, true, "prof/sync 0"},
        {"record first", Record(kTEXT, kttxt, 0), Stream(kprof, ksync), {}, false, "TEXT/ttxt 0"},
        {"stream next", {}, Stream(kprof, ksync), Fi(kTEXT, kttxt, 0), true, "prof/sync 0"},
        {"apple next", {}, {}, Fi(kTEXT, kttxt, 0), true, "TEXT/ttxt 0"},
        {"rejected record", rejected, Stream(kprof, ksync), {}, false, "prof/sync 0"},
        {"record too long", Blob(403, 0), {}, {}, true, "prof/sync 0"},
    };
    for (const Case& c : cases) {
        std::string name = c.what, path = t / name;
        RzPutFile(path);
        if (!c.record.empty()) SetAttr(path, kMetadata, c.record);
        if (!c.stream.empty()) SetAttr(path, kStream, c.stream);
        if (!c.apple.empty()) SetAttr(path, kApple, c.apple);
        if (c.sidecar) RzPutFile(t / ("._" + name), Sidecar(kprof, ksync));
        EXPECT_EQ(Read(path), c.read) << c.what;
    }
    mkdir((t / "folder").c_str(), 0755);
    SetAttr(t / "folder", kMetadata, Record(0, 0, 0x4000));
    EXPECT_EQ(Read(t / "folder"), "dir 0/0 4000");
    EXPECT_EQ(Read(t / "missing"), "error -43");
}

TEST(RzFileOS, WritingFinderInfo) {
    RzTempDir t;
    std::string f = t / "f.txt";
    RzPutFile(f);
    EXPECT_EQ(RzOSWriteFinderInfo(f.c_str(), 0, 0), noErr);  // nothing to record
    EXPECT_EQ(RzOSChangeFinderFlags(f.c_str(), false, kIsInvisible), noErr);
    EXPECT_TRUE(Attr(f, kMetadata).empty());

    // A fresh record is the servers' own, dated by the file's modification.
    struct timespec times[2] = {{946684800, 0}, {946684800, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, f.c_str(), times, 0), 0);
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
    RzPutFile(t / "g");
    SetAttr(t / "g", kMetadata, used);
    EXPECT_EQ(RzOSWriteFinderInfo((t / "g").c_str(), kTEXT, 0), noErr);
    EXPECT_EQ(RzOSChangeFinderFlags((t / "g").c_str(), true, kIsInvisible), noErr);
    RzPutBE32(&used[122], kTEXT);
    used[130] = 0x40;
    used[373] = 0x21;
    EXPECT_EQ(Attr(t / "g", kMetadata), used);

    // A record the servers would delete is replaced; the other copies follow
    // the change, and none is made where there was none.
    RzPutFile(t / "h");
    ASSERT_EQ(utimensat(AT_FDCWD, (t / "h").c_str(), times, 0), 0);
    Blob rejected = Record(kprof, ksync, 0);
    rejected[7] = 2;
    SetAttr(t / "h", kMetadata, rejected);
    SetAttr(t / "h", kStream, Stream(kprof, ksync));
    SetAttr(t / "h", kApple, Fi(kprof, ksync, 0));
    RzPutFile(t / "._h", Sidecar(kprof, ksync));
    EXPECT_EQ(RzOSWriteFinderInfo((t / "h").c_str(), kTEXT, 0), noErr);
    EXPECT_EQ(Attr(t / "h", kMetadata), Record(kTEXT, ksync, 0));
    EXPECT_EQ(RzGetBE32(&Attr(t / "h", kStream)[16]), kTEXT);
    EXPECT_EQ(Attr(t / "h", kApple), Fi(kTEXT, ksync, 0));
    EXPECT_EQ(SidecarType(t / "._h"), kTEXT);
    EXPECT_TRUE(Attr(f, kStream).empty() && Attr(f, kApple).empty());
    EXPECT_NE(access((t / "._f.txt").c_str(), F_OK), 0);

    EXPECT_EQ(RzOSChangeFinderFlags((t / "none").c_str(), true, kIsInvisible), fnfErr);
}

TEST(RzFileOS, FileSystemWithoutUserAttributes) {
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
    RzPutFile(m.point + "/._f", Sidecar(kprof, ksync));
    EXPECT_EQ(Read(f), "prof/sync 0");
    EXPECT_EQ(RzOSWriteFinderInfo(f.c_str(), kTEXT, 0), noErr);
    EXPECT_EQ(SidecarType(m.point + "/._f"), kTEXT);
}

TEST(RzFileOS, WellKnownFolders) {
    RzTempDir t;
    RzEnvGuard env;
    env.Set("HOME", t.path().c_str());
    env.Set("XDG_CONFIG_HOME", nullptr);
    env.Set("XDG_DATA_HOME", "relative/data");  // relative: ignored
    env.Set("TMPDIR", (t / "tmp").c_str());
    struct Case {
        uint32_t type;
        std::string path;
    } cases[] = {{kRzPreferencesFolderType, t / ".config"},
                 {kRzApplicationSupportFolderType, t / ".local/share"},
                 {kRzDocumentsFolderType, t / "Documents"},
                 {kRzTemporaryFolderType, t / "tmp"}};
    short v = 1;
    int32_t id = 1;
    for (const Case& c : cases) {
        EXPECT_EQ(RzOSFindFolder(kRzOnSystemDisk, c.type, false, v, id), fnfErr) << c.path;
        EXPECT_EQ(v | id, 0);
        ASSERT_EQ(RzOSFindFolder(kRzOnSystemDisk, c.type, true, v, id), noErr) << c.path;
        EXPECT_EQ(PathOf(v, id), c.path);
    }
    EXPECT_EQ(RzOSFindFolder(kRzOnSystemDisk, 0x78787878, true, v, id), fnfErr);
    EXPECT_EQ(RzOSColorSyncFolder(kRzNetworkDomain, true, v, id), fnfErr);

    RzPutFile(t / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");
    EXPECT_EQ(RzOSKnownFolderPath(kRzDocumentsFolderType).c_str(), t / "Papers");
    struct Text {
        const char* text;
        const char* folder;
    } texts[] = {
        {"# c\n  XDG_DOCUMENTS_DIR = \"/srv/docs/\"\n", "/srv/docs"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/My \\\"Docs\\\"\"", "/h/My \"Docs\""},
        {"XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DOCUMENTS_DIR=\"/b\"", "/b"},
        {"XDG_DOCUMENTS_DIR=\"relative/x\"\nXDG_DOCUMENTS_DIR=\"$HOMEx\"", ""},
        {"XDG_DOCUMENTS_DIRS=\"/x\"\nXDG_DOCUMENTS_DIR=/y\nXDG_DOCUMENTS_DIR=\"/z", ""},
    };
    for (const Text& c : texts)
        EXPECT_STREQ(RzOSUserDirFromText(c.text, "XDG_DOCUMENTS_DIR", "/h").c_str(), c.folder);
}

TEST(RzFileOS, SharedFolderMustBeWritable) {
    NoXattrMount m;
    if (!m.mounted) GTEST_SKIP() << m.reason;
    std::string icc = m.point + "/icc";
    mkdir(icc.c_str(), 0755);
    ASSERT_EQ(mount(nullptr, m.point.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    short v;
    int32_t id;
    EXPECT_EQ(RzOSFolderID(icc.c_str(), true, v, id), vLckdErr);
    EXPECT_EQ(RzOSFolderID(icc.c_str(), false, v, id), noErr);
}

TEST(RzFileOS, FolderNamesFromMacChineseTrad) {
    struct Case {
        const char* name;  // Pascal string
        OSErr err;
        const char* utf8;
    } cases[] = {
        {"\x05\xA4\xA4\xA5\x5C"
         "a",
         noErr,
         "\xE4\xB8\xAD\xE5\x8A\x9F"
         "a"},  // '\\' as second byte
        {"\x05\xFD\xFE\xFF\x80\xA0", noErr, "\xC2\xA9\xE2\x84\xA2\xE2\x80\xA6\\\xC2\xA0"},
        {"\x01\xA4", kTextMalformedInputErr, nullptr},  // first byte alone
        {"\x02\xC7\xA1", kTextMalformedInputErr, nullptr},
        {"\x02\xA3\xC0", kTextUndefinedElementErr, nullptr},
        {"\x00", bdNamErr, nullptr},
        {"\x02..", bdNamErr, nullptr},
        {"\x03"
         "a\0b",
         bdNamErr, nullptr},
    };
    RzTempDir t;
    FSRef parent;
    ASSERT_EQ(RzOSPathMakeRef(t.path().c_str(), parent, nullptr), noErr);
    for (const Case& c : cases) {
        EXPECT_EQ(RzOSCreateDirectory(parent, P(c.name)), c.err) << c.name + 1;
        struct stat st;
        if (c.utf8) {
            EXPECT_TRUE(stat((t / c.utf8).c_str(), &st) == 0 && S_ISDIR(st.st_mode));
        }
    }
    EXPECT_EQ(RzOSCreateDirectory(parent, P("\x01q")), noErr);
    EXPECT_EQ(RzOSCreateDirectory(parent, P("\x01q")), dupFNErr);
    parent.path = (t / "none").c_str();
    EXPECT_EQ(RzOSCreateDirectory(parent, P("\x01x")), fnfErr);
}

TEST(RzFileOS, WorkingDirectory) {
    struct Case {
        const char* exe;
        int beside;
        const char* folder;
    } cases[] = {
        {"/opt/T.app/Contents/MacOS/t", 0, "/opt"},
        {"/opt/T.app/Contents/MacOS/t", 1, "/opt/T.app/Contents/MacOS"},
        {"/T.app/Contents/MacOS/t", 0, "/"},
        {"/opt/.app/Contents/MacOS/t", 0, "/opt/.app/Contents/MacOS"},
        {"t", 0, ""},
    };
    for (const Case& c : cases)
        EXPECT_STREQ(RzOSWorkingDirFor(c.exe, c.beside).c_str(), c.folder) << c.exe << c.beside;
}
