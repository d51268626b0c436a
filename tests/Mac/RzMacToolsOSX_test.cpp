// The file layer on real files, in a fresh temporary folder each.
#include <Rz/Mac/RzMacToolsOSX.h>

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/internal/RzOS.h>

#include "support/RzChild.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

uint32_t C(const char* code) {
    return RzString(code).ToSig();
}

const auto Spec = FileSpecAt;

// What RzMacReadCreatorType gives a fresh spec: "TYPE/crea", a zero code as "0".
std::string Codes(const std::string& path) {
    RzFileSpec s = Spec(path);
    int32_t err = RzMacReadCreatorType(s);
    if (err != noErr) return "error " + std::to_string(err);
    auto text = [](uint32_t c) { return c ? std::string(RzString().FromSig(c).c_str()) : "0"; };
    return text(s.GetTypeID()) + "/" + text(s.GetCreatorID());
}

}  // namespace

TEST(RzMacToolsOSX, ReferencesAndFSSpecs) {
    RzTempDir t;
    mkdir((t / "d").c_str(), 0755);
    RzPutFile(t / "d/f.txt");
    symlink("d/f.txt", (t / "link").c_str());
    symlink("missing", (t / "dangling").c_str());
    struct Case {
        std::string path;
        int32_t err;
    } cases[] = {
        {t / "link", noErr},
        {t / "d/../link", noErr},
        {t / "dangling", fnfErr},
        {t / "d/new:x", fnfErr},           // missing in an existing folder
        {t / "none/new", fnfErr},          // the folder's own lookup fails ...
        {t / "d/f.txt/new", dirNFErr},     // ... as it may
        {"/rz-surely-not-there", fnfErr},  // the root folder has no name
    };
    for (const Case& c : cases) {
        FSRef ref;
        const int32_t err = RzFileSpecToFSRef(ref, Spec(c.path));
        EXPECT_EQ(Joined(err, err ? "" : ref.path.c_str()),
                  Joined(c.err, c.err ? "" : t / "d/f.txt"))
            << c.path;
    }
    // FSSpecs name missing items too; codes are cleared, then read.
    for (std::string path : {t / "link", t / "d/new:x.txt"}) {
        FSSpec fsspec;
        RzFileSpec back("/elsewhere/x.gif");
        RzFileSpecToFSSpec(fsspec, Spec(path));
        FSSpecToRzFileSpec(back, fsspec);
        const bool exists = path == t / "link";
        EXPECT_EQ(Joined(back.GetFullName(), back.GetTypeID(), back.GetCreatorID(),
                         RzMacGetPosixPath(fsspec.vRefNum, fsspec.parID)),
                  Joined(exists ? t / "d/f.txt" : path, exists ? C("TEXT") : 0u, 0, t / "d/"));
    }
    EXPECT_EQ(RzMacGetPosixPath(kRzRootVolume, kRzRootFolderID), "/");
}

TEST(RzMacToolsOSX, FinderInformationAsStored) {
    RzTempDir t;
    RzPutFile(t / "a.txt");
    mkdir((t / "d").c_str(), 0755);
    auto stored = [&](const std::string& name) {
        uint32_t type = 1, creator = 1;
        uint16_t flags = 1;
        const int32_t err = RzMacGetFinderInfo(Spec(t / name), type, creator, flags);
        auto text = [](uint32_t c) { return c ? std::string(RzString().FromSig(c).c_str()) : "0"; };
        return Joined(err, text(type), text(creator), flags);
    };
    // Written as given, not from the extension; 0 keeps what is stored.
    EXPECT_EQ(stored("a.txt"), "0|0|0|0");
    EXPECT_EQ(RzMacWriteCreatorType(Spec(t / "a.txt"), C("8BCO"), C("8BIM")), noErr);
    EXPECT_EQ(RzMacWriteCreatorType(Spec(t / "a.txt"), 0, C("RzTl")), noErr);
    EXPECT_EQ(RzMacSetVisible(Spec(t / "a.txt"), false), noErr);
    EXPECT_EQ(stored("a.txt"), "0|8BCO|RzTl|16384");
    EXPECT_EQ(Codes(t / "a.txt"), "TEXT/RzTl");  // the extension still gives the type

    EXPECT_EQ(RzMacWriteCreatorType(Spec(t / "d"), C("TEXT"), 0), notAFileErr);
    EXPECT_EQ(RzMacSetVisible(Spec(t / "d"), false), noErr);
    EXPECT_EQ(stored("d"), "0|0|0|16384");  // a folder has flags, no codes
    EXPECT_EQ(RzMacWriteCreatorType(Spec(t / "none"), C("TEXT"), 0), fnfErr);
    EXPECT_EQ(stored("none"), "-43|0|0|0");
    RzOSWriteFinderInfo((t / "d").c_str(), C("fold"), C("MACS"));
    EXPECT_EQ(Codes(t / "d"), "0/0");  // a folder's first bytes are its window, not codes
}

TEST(RzMacToolsOSX, OpeningFiles) {
    RzTempDir t;
    std::string missing = t / "no/x.txt";
    RzFileSpec s = Spec(missing);
    EXPECT_EQ(ErrorFields(CatchRzError([&] { RzMacOpenFile(s, eRzFileRead); })),
              "12|FileNotOpen (for reading): " + missing + "||0");
    EXPECT_STREQ(CatchRzError([&] { RzMacOpenFile(s, eRzFileReadWrite); }).GetErrName(),
                 ("FileNotOpen: (for writing)" + missing).c_str());
    EXPECT_EQ(Joined(RzMacOpenFile(s, eRzFileNone) == nullptr,
                     RzMacOpenFile(s, static_cast<eRzFileAccess>(4)) == nullptr),
              "true|true");

    // Writing creates or truncates; read/write creates or keeps; all at 0 and
    // stamped: the stored type unless zero, an explicit creator or 'ttxt'.
    RzPutFile(t / "old.txt");
    RzPutFile(t / "kept.txt", "contents");
    RzPutFile(t / "plain");
    RzOSWriteFinderInfo((t / "plain").c_str(), C("prof"), C("sync"));
    struct Case {
        const char *name, *creator;
        eRzFileAccess access;
        long size;
        const char* codes;
    } cases[] = {{"new.txt", nullptr, eRzFileWrite, 0, "TEXT/ttxt"},
                 {"old.txt", nullptr, eRzFileWrite, 0, "TEXT/ttxt"},
                 {"new2.txt", nullptr, eRzFileReadWrite, 0, "TEXT/ttxt"},
                 {"kept.txt", nullptr, eRzFileReadWrite, 8, "TEXT/ttxt"},
                 {"kept.txt", nullptr, eRzFileRead, 8, "TEXT/ttxt"},
                 {"m.cie", "RzTl", eRzFileWrite, 0, "TEXT/RzTl"},
                 {"plain", "8BIM", eRzFileReadWrite, 1, "prof/8BIM"}};
    for (const Case& c : cases) {
        RzFileSpec f = Spec(t / c.name);
        if (c.creator) f.SetCreatorID(C(c.creator));
        FILE* file = RzMacOpenFile(f, c.access);
        ASSERT_NE(file, nullptr) << c.name;
        const long at = ftell(file);
        fseek(file, 0, SEEK_END);
        const long size = ftell(file);
        fclose(file);
        EXPECT_EQ(Joined(at, size, Codes(t / c.name)), Joined(0, c.size, c.codes)) << c.name;
    }
}

TEST(RzMacToolsOSX, CreatingFoldersFromMacChineseTradNames) {
    RzTempDir t;
    struct Case {
        std::string name;
        const char* utf8;  // null: nothing created
        int32_t err;
    } cases[] = {
        {"\xA4\xA4\xA5\x5C\x61", "\xE4\xB8\xAD\xE5\x8A\x9F\x61", noErr},  // '\\' second
        {"\xFD\xFE\xFF\x80\xA0", "\xC2\xA9\xE2\x84\xA2\xE2\x80\xA6\\\xC2\xA0", noErr},
        {"\xA4", nullptr, kTextMalformedInputErr},  // first byte alone
        {"\xC7\xA1", nullptr, kTextMalformedInputErr},
        {"\xA3\xC0", nullptr, kTextUndefinedElementErr},
        {"", nullptr, bdNamErr},
        {"..", nullptr, bdNamErr},
        {std::string("a\0b", 3), nullptr, bdNamErr},
        {"q", "q", noErr},
        {"q", nullptr, dupFNErr},
    };
    for (const Case& c : cases) {
        const std::string full = t / c.name;
        RzFileSpec spec(RzString(full.data(), static_cast<int32_t>(full.size()), false));
        const int32_t err = RzMacCreateDir(spec);
        struct stat st;
        EXPECT_EQ(
            Joined(err, !c.utf8 || (stat((t / c.utf8).c_str(), &st) == 0 && S_ISDIR(st.st_mode))),
            Joined(c.err, true))
            << c.name;
    }
    EXPECT_EQ(RzMacCreateDir(Spec(t / "none/x")), fnfErr);
}

TEST(RzMacToolsOSX, WellKnownFolders) {
    RzTempDir t;
    RzEnvGuard env;
    env.Set("HOME", t.path().c_str());
    env.Set("XDG_CONFIG_HOME", nullptr);
    env.Set("XDG_DATA_HOME", "relative/data");  // relative: ignored
    env.Set("TMPDIR", (t / "tmp").c_str());
    mkdir((t / ".config").c_str(), 0755);
    RzPutFile(t / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");
    struct Case {
        int folder;
        std::string full;
    } cases[] = {
        {eRzFolderNone, "a.txt"},
        {eRzFolderKeep, "/somewhere/a.txt"},
        {eRzFolderUserProfiles, t / ".local/share/icc/a.txt"},
        {eRzFolderPreferences, t / ".config/a.txt"},
        {eRzFolderDocuments, t / "Papers/a.txt"},
        {eRzFolderTemporary, t / "tmp/a.txt"},
        {eRzFolderAppSupportCommon, t / ".local/share/a.txt"},
    };
    for (const Case& c : cases) {
        RzFileSpec s("/somewhere/a.txt");
        s.SetPath(static_cast<RzFolderType>(c.folder));
        EXPECT_EQ(s.GetFullName().c_str(), c.full) << c.folder;
    }
    RzFileSpec s("/somewhere/a.txt");
    EXPECT_STREQ(CatchRzError([&] { RzMacSetPath(s, static_cast<RzFolderType>(11)); }).GetErrName(),
                 "RzArgErr");

    // A user who may not write the shared profile folder gets his own: in a
    // child, as nobody when we are root.
    chmod(t.path().c_str(), 0777);
    const std::string profiles = AsUnprivileged([&] {
        if (access("/usr/share/color/icc", W_OK) == 0) return std::string("writable");
        setenv("XDG_DATA_HOME", (t / "user").c_str(), 1);
        RzFileSpec p("a.icc");
        RzMacSetPath(p, eRzFolderProfiles);
        return std::string(p.GetFullName().c_str());
    });
    if (profiles == "writable") GTEST_SKIP() << "the shared icc folder is writable";
    EXPECT_EQ(profiles, t / "user/icc/a.icc");
}

TEST(RzMacToolsOSX, WorkingDirectoryBesideTheExecutable) {
    char saved[PATH_MAX], now[PATH_MAX];
    ASSERT_NE(getcwd(saved, sizeof saved), nullptr);
    const int32_t result = RzMacSetWorkingDir(1);
    const bool known = getcwd(now, sizeof now) != nullptr;
    ASSERT_EQ(chdir(saved), 0);
    EXPECT_EQ(result, 0);
    ASSERT_TRUE(known);
    EXPECT_EQ(std::string(now) + "/Mac_tests", RzOSExecutablePath().c_str());
}
