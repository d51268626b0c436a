// Typed values and files of the settings database, on real files in a fresh
// temporary folder each.
#include <Rz/RzData/RzDataBase.h>

#include <fcntl.h>
#include <limits.h>
#include <math.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <vector>

#include <Rz/Mac/RzMacToolsOSX.h>

#include "support/DataBaseSupport.h"
#include "support/RzChild.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

using rztest::ControlCharsGuard;
using rztest::Dump;

namespace {

const auto Spec = FileSpecAt;

RzString S(const char* s) {
    return RzString(s);
}

// The stored text at `path`, or "(none)".
std::string Stored(RzDataBase& db, const char* path) {
    return db.Exists(S(path)) ? db.GetString(S(path), S(""), false).c_str() : "(none)";
}

struct stat Stat(const std::string& path) {
    struct stat st = {};
    lstat(path.c_str(), &st);
    return st;
}

// A database of `entries` settings, each value marked with `mark`, so that
// two of them differ everywhere and a mix of them is seen.
void Fill(RzDataBase& db, int entries, const std::string& mark) {
    for (int i = 0; i < entries; ++i) {
        const std::string key = "group" + std::to_string(i % 7) + "/key" + std::to_string(i);
        db.SetString(RzString(key.c_str()),
                     RzString((mark + " value " + std::to_string(i)).c_str()));
    }
}

std::string Text(const RzDataBase& db) {
    const RzString text = db.WriteToString();
    return std::string(text.c_str(), static_cast<size_t>(text.length()));
}

}  // namespace

// --- Typed values ----------------------------------------------------------------

// GetInt and GetDouble are atol and atof of the stored text, SetInt and
// SetBoolean print "%d", "true" and "false": what is left to see is which
// texts are true, that an existing text is never replaced by a getter, and
// when a default is stored and SetDouble writes.
TEST(RzDataBaseTyped, GettersReadStoredTexts) {
    std::string read;
    for (const char* text :
         {"12abc", "1e3", "99999999999", "TRUE", "1", "01", "yes", " true", ""}) {
        RzDataBase db;
        db.SetString(S("a/b"), S(text));
        read += Joined(db.GetInt(S("a/b"), -1, true), db.GetDouble(S("a/b"), -1, true),
                       db.GetBoolean(S("a/b"), true, true), Stored(db, "a/b")) +
                " ";
    }
    EXPECT_EQ(
        read,
        "12|12.000000|false|12abc 1|1000.000000|false|1e3 "
        "2147483647|99999999999.000000|false|99999999999 0|0.000000|true|TRUE 1|1.000000|true|1 "
        "1|1.000000|false|01 0|0.000000|false|yes 0|0.000000|false| true "
        "0|0.000000|false| ");
    RzDataBase db;
    EXPECT_EQ(Joined(db.GetInt(S("i"), -3, false), db.GetBoolean(S("b"), true, false),
                     db.GetDouble(S("d"), 3.0, false), db.GetCount()),
              Joined(-3, true, 3.0, 0));
    EXPECT_EQ(Joined(db.GetInt(S("x/i"), -3, true), db.GetBoolean(S("b"), false, true),
                     db.GetDouble(S("d"), 3.0, true)),
              Joined(-3, false, 3.0));
    db.SetBoolean(S("t"), true);
    EXPECT_EQ(Joined(Stored(db, "x/i"), Stored(db, "b"), Stored(db, "d"), Stored(db, "t")),
              "-3|false|3|true");
}

TEST(RzDataBaseTyped, SetDoubleWritesOnlyAChangedValue) {
    struct Case {
        const char* before;  // null: no entry
        double v;
        const char* format;
        const char* after;
    } cases[] = {
        {nullptr, 0.25, nullptr, "0.25"},  // "%f" without its trailing zeros
        {nullptr, 1e20, nullptr, "100000000000000000000"},
        {nullptr, 2.5, "%.3f", "2.500"},
        {"3", 3.0, "%.2f", "3"},         // equal: nothing is written
        {"0.50", 0.5, nullptr, "0.50"},  // a hand-written value survives
        {"0.5", 0.75, "%.2f", "0.75"},
    };
    for (const Case& c : cases) {
        RzDataBase db;
        if (c.before) db.SetString(S("d"), S(c.before));
        db.SetDouble(S("d"), c.v, c.format);
        EXPECT_EQ(Stored(db, "d"), c.after) << c.v;
    }
}

// --- Reading and writing files -------------------------------------------------

TEST(RzDataBaseFile, WritesBothFormsAndReadsThemBack) {
    RzTempDir t;
    RzDataBase db, empty;
    db.ReadFromString(
        S("#written by hand\nname = Example Paper\n\"two words\" = \"a \\\"quoted\\\" value\"\n"
          "colors = \n{\n\tred = 0.5\n\tempty = \n}\n"));
    db.SetString(S("colors/lines"), S("one\r\ntwo\tthree"));
    const char* const texts[] = {
        "name = \"Example Paper\"\n\"two words\" = \"a \\\"quoted\\\" value\"\ncolors = \n{\n"
        "\tred = 0.5\n\tempty = \n\tlines = \"one\r\ntwo\tthree\"\n}\n",
        "{\n\t<\"name\" = \"Example Paper\">\n\t<\"two words\" = \"a \\\"quoted\\\" value\">\n"
        "\t<\"colors\" = \"\">\n\t{\n\t\t<\"red\" = \"0.5\">\n\t\t<\"empty\" = \"\">\n"
        "\t\t<\"lines\" = \"one\r\ntwo\tthree\">\n\t}\n}\n"};
    RzPutFile(t / "empty", "");
    for (bool protectedForm : {false, true}) {
        ControlCharsGuard form(protectedForm);
        db.WriteToFile(Spec(t / "s.txt"));
        RzDataBase back;
        back.SetString(S("old"), S("dropped"));
        back.ReadFromFile(Spec(t / "s.txt"));
        EXPECT_EQ(Joined(FileText(t / "s.txt"), Dump(back), empty.WriteToString()),
                  Joined(texts[protectedForm], Dump(db), protectedForm ? "{\n}\n" : ""));
    }
    empty.SetString(S("x"), S("1"));
    empty.ReadFromFile(Spec(t / "empty"));
    EXPECT_EQ(empty.GetCount(), 0);
}

TEST(RzDataBaseFile, ReadingChangesNeitherTheFileNorAFailedDatabase) {
    RzTempDir t;
    const std::string path = t / "s.txt", text = "a = 1\nb = 2\nbroken\nc = 3\n";
    RzPutFile(path, text);
    ASSERT_EQ(setxattr(path.c_str(), "user.rz.test", "v", 1, 0), 0);
    struct timespec past[2] = {{946684800, 0}, {946684800, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), past, 0), 0);
    const struct stat before = Stat(path);

    RzDataBase db;
    db.SetString(S("kept"), S("yes"));
    const RzError missing = CatchRzError([&] { db.ReadFromFile(Spec(t / "missing.txt")); });
    EXPECT_EQ(Joined(missing.GetErr(), missing.GetErrName(), db.GetCount(), Stored(db, "kept")),
              Joined(12, "FileNotOpen (for reading): " + t / "missing.txt", 1, "yes"));

    EXPECT_RZ_ERROR(db.ReadFromFile(Spec(path)), 19, "RzFormatErr");
    EXPECT_EQ(Joined(db.GetCount(), Stored(db, "a"), Stored(db, "b"), Stored(db, "kept")),
              "2|1|2|(none)");

    const struct stat after = Stat(path);
    char value[8] = {};
    EXPECT_EQ(Joined(FileText(path), after.st_mtime, after.st_ctime, after.st_ino,
                     getxattr(path.c_str(), "user.rz.test", value, sizeof value), value),
              Joined(text, before.st_mtime, before.st_ctime, before.st_ino, 1, "v"));
}

TEST(RzDataBaseFile, ReplacingKeepsWhatTheOldFileHad) {
    RzTempDir t;
    RzDataBase db;
    db.SetInt(S("size"), 12);
    const std::string path = t / "keep.txt";
    RzPutFile(path, "old = 1\n");
    ASSERT_EQ(chmod(path.c_str(), 0604), 0);
    ASSERT_EQ(setxattr(path.c_str(), "user.rz.note", "kept", 4, 0), 0);
    if (getuid() == 0) {
        ASSERT_EQ(chown(path.c_str(), kNobody, kNobody), 0);
    }
    const struct stat before = Stat(path);

    db.WriteToFile(Spec(path));
    const struct stat after = Stat(path);
    char note[8] = {};
    EXPECT_EQ(Joined(FileText(path), after.st_mode & 07777, after.st_uid, after.st_gid,
                     getxattr(path.c_str(), "user.rz.note", note, sizeof note), note),
              Joined("size = 12\n", 0604, before.st_uid, before.st_gid, 4, "kept"));
    EXPECT_NE(after.st_ino, before.st_ino);  // replaced, not rewritten
    EXPECT_EQ(FolderNames(t.path(), "."), std::vector<std::string>());

    // Type and creator come from the extension, as opening for writing gives
    // them, on the new file and on the replacement alike.
    for (const char* name : {"keep.txt", "new.icc"}) {
        db.WriteToFile(Spec(t / name));
        RzFileSpec read = Spec(t / name);
        ASSERT_EQ(RzMacReadCreatorType(read), 0);
        EXPECT_EQ(
            Joined(RzString().FromSig(read.GetTypeID()), RzString().FromSig(read.GetCreatorID())),
            std::string(name) == "new.icc" ? "prof|sync" : "TEXT|ttxt");
    }
    // A new file is made as fopen makes one: 0666 less the umask; a relative
    // name is saved beside the working folder's other files.
    char cwd[PATH_MAX];
    ASSERT_TRUE(getcwd(cwd, sizeof cwd) && chdir(t.path().c_str()) == 0);
    const mode_t mask = umask(022);
    db.WriteToFile(Spec("fresh.txt"));
    umask(mask);
    ASSERT_EQ(chdir(cwd), 0);
    EXPECT_EQ(Joined(FileText(t / "fresh.txt"), Stat(t / "fresh.txt").st_mode & 0777),
              Joined("size = 12\n", 0644));
}

TEST(RzDataBaseFile, ALinkStaysAndItsTargetIsReplaced) {
    RzTempDir t;
    MakeFiles(t, {"real/", "real/target.txt"}, "old = 1\n");
    ASSERT_EQ(symlink("real/target.txt", (t / "middle").c_str()), 0);
    ASSERT_EQ(symlink("middle", (t / "link.txt").c_str()), 0);
    ASSERT_EQ(symlink("real/missing.txt", (t / "dangling.txt").c_str()), 0);
    RzDataBase db;
    db.SetString(S("new"), S("2"));
    db.WriteToFile(Spec(t / "link.txt"));
    db.WriteToFile(Spec(t / "dangling.txt"));
    EXPECT_EQ(Joined(S_ISLNK(Stat(t / "link.txt").st_mode), S_ISLNK(Stat(t / "middle").st_mode),
                     S_ISLNK(Stat(t / "dangling.txt").st_mode), FileText(t / "real/target.txt"),
                     FileText(t / "real/missing.txt"), FolderNames(t / "real", ".").size()),
              Joined(true, true, true, "new = 2\n", "new = 2\n", 0));
}

TEST(RzDataBaseFile, FailuresAndRewritingInPlace) {
    RzTempDir t;
    chmod(t.path().c_str(), 0755);
    RzDataBase db;
    db.SetString(S("new"), S("1"));
    const std::string old = "old = 1\n", fresh = "new = 1\n";
    MakeFiles(
        t,
        {"folder/", "closed/", "closed/open.txt", "sticky/", "sticky/theirs.txt", "readonly.txt"},
        old);
    chmod((t / "closed/open.txt").c_str(), 0666);  // a file anybody may write, in a folder
    chmod((t / "closed").c_str(), 0555);           // nobody may add files to
    chmod((t / "sticky").c_str(), 01777);          // like /tmp
    chmod((t / "sticky/theirs.txt").c_str(), 0666);
    chmod((t / "readonly.txt").c_str(), 0444);
    const ino_t closed = Stat(t / "closed/open.txt").st_ino,
                sticky = Stat(t / "sticky/theirs.txt").st_ino;
    struct Case {
        std::string path, result, after;
    } cases[] = {
        {t / "folder", "error 12 FileNotOpen: (for writing)" + t / "folder", ""},
        {t / "none/s.txt", "error 12 FileNotOpen: (for writing)" + t / "none/s.txt", ""},
        {t / "readonly.txt", "error 12 FileNotOpen: (for writing)" + t / "readonly.txt", old},
        {t / "closed/open.txt", "ok", fresh},
        {t / "sticky/theirs.txt", "ok", fresh},  // another user's (when we are root)
    };
    for (const Case& c : cases) {
        EXPECT_EQ(AsUnprivileged([&] { return db.WriteToFile(Spec(c.path)), std::string("ok"); }),
                  c.result);
        EXPECT_EQ(FileText(c.path), c.after) << c.path;
    }
    // Rewritten in place: the same files, still their owners'.
    EXPECT_EQ(Joined(Stat(t / "closed/open.txt").st_ino, Stat(t / "sticky/theirs.txt").st_ino),
              Joined(closed, sticky));
    chmod((t / "closed").c_str(), 0755);
    for (const char* folder : {"", "/closed", "/sticky"})
        EXPECT_EQ(FolderNames(t.path() + folder, "."), std::vector<std::string>()) << folder;

    // Anything but a regular file is written in place, never replaced.
    if (getuid() == 0) {
        ASSERT_EQ(mknod((t / "null").c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
        db.WriteToFile(Spec(t / "null"));
        EXPECT_TRUE(S_ISCHR(Stat(t / "null").st_mode));
    }
}

// --- Crashes and full disks ------------------------------------------------------

// Killing a process never loses the page cache, so what a killed save leaves
// behind is what the file system shows at once; flushing to the disk only
// matters for power failures. A RAM file system (when the test may mount
// one) gives the same answers many times faster.
TEST(RzDataBaseFile, SavesKilledAtRandomMomentsLeaveTheOldOrTheNewFile) {
    TmpfsMount ram("size=64m");
    RzTempDir disk;
    const std::string folder = ram.mounted ? ram.point : disk.path();
    const std::string path = folder + "/settings.txt", prefix = ".settings.txt.rz-";
    RzDataBase a, b;
    Fill(a, 100, "old");
    Fill(b, 250, "new");
    const std::string textA = Text(a), textB = Text(b);
    a.WriteToFile(Spec(path));
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);

    // Kills land anywhere in the child's loop of saves: up to a few of them
    // after the fork.
    auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 10; ++i) (i % 2 ? a : b).WriteToFile(Spec(path));
    const auto save = (std::chrono::steady_clock::now() - start) / 10;
    std::mt19937 random(14);
    std::uniform_int_distribution<int64_t> delay(
        0, std::chrono::duration_cast<std::chrono::nanoseconds>(save).count() * 4 + 300000);

    int sawA = 0, sawB = 0, leftovers = 0;
    for (int kill = 0; kill < 1000; ++kill) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            try {
                for (;;) b.WriteToFile(Spec(path)), a.WriteToFile(Spec(path));
            } catch (...) {
            }
            _exit(1);
        }
        const int64_t ns = delay(random);
        struct timespec wait = {static_cast<time_t>(ns / 1000000000),
                                static_cast<long>(ns % 1000000000)};
        nanosleep(&wait, nullptr);
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saving child failed on its own";

        const std::string now = FileText(path);
        RzDataBase read;
        read.ReadFromFile(Spec(path));
        ASSERT_TRUE(now == textA || now == textB) << "kill " << kill << ": " << now.size();
        ASSERT_EQ(Text(read), now) << "kill " << kill;
        (now == textA ? sawA : sawB)++;
        // At most the killed save's own temporary file is left: each save
        // first removes those of saves that were killed.
        const std::vector<std::string> temps = FolderNames(folder, prefix);
        ASSERT_LE(temps.size(), 1u) << "kill " << kill;
        if (!temps.empty()) {
            ++leftovers;
            EXPECT_EQ(Stat(folder + "/" + temps[0]).st_mode & 0137, 0u);  // never wider than 0640
        }
    }
    a.WriteToFile(Spec(path));
    EXPECT_EQ(FolderNames(folder, prefix), std::vector<std::string>());
    // The kills hit saves in every phase: both contents were seen, and saves
    // killed before their rename.
    EXPECT_EQ(Joined(sawA > 0, sawB > 0, leftovers > 0), "true|true|true")
        << sawA << " old, " << sawB << " new, " << leftovers << " left over";
}

TEST(RzDataBaseFile, AFullFileSystemKeepsTheOldSettings) {
    RzDataBase big;
    Fill(big, 4000, "big");
    const std::string old = "old = 1\n";
    struct Case {
        const char *what, *options;
        bool fillData, fillNames, readOnly;
        uint32_t code;
    } cases[] = {
        {"no room for the data", "size=256k", true, false, false, 17},
        {"no room for a new file", "nr_inodes=16", false, true, false, 17},
        {"read-only", "size=256k", false, false, true, 12},
    };
    for (const Case& c : cases) {
        TmpfsMount fs(c.options);
        if (!fs.mounted) GTEST_SKIP() << fs.reason;
        const std::string path = fs / "settings.txt";
        ASSERT_TRUE(RzPutFile(path, old));
        std::vector<char> block(4096, 'x');
        if (c.fillData) {
            FILE* filler = fopen((fs / "filler").c_str(), "wb");
            while (filler && fwrite(block.data(), 1, block.size(), filler) == block.size() &&
                   fflush(filler) == 0) {
            }
            if (filler) fclose(filler);
        }
        for (int i = 0; c.fillNames && RzPutFile(fs / ("f" + std::to_string(i)), ""); ++i) {
        }
        if (c.readOnly) {
            ASSERT_EQ(mount(nullptr, fs.point.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
                      0);
        }
        const std::vector<std::string> before = FolderNames(fs.point);

        const RzError e = CatchRzError([&] { big.WriteToFile(Spec(path)); });
        const std::string name = c.code == 12 ? "FileNotOpen: (for writing)" + path : "";
        EXPECT_EQ(Joined(e.GetErr(), c.code == 12 ? e.GetErrName() : "", FileText(path)),
                  Joined(c.code, name, old))
            << c.what;
        EXPECT_EQ(FolderNames(fs.point), before) << c.what;  // no temporary file left
    }
}

TEST(RzDataBaseFile, ASaveRemovesOnlyTheTemporaryFilesOfKilledSaves) {
    RzTempDir t;
    const std::string abandoned = t / ".s.txt.rz-Ab3dE9", live = t / ".s.txt.rz-LiVe00";
    for (const std::string& name : {abandoned, live, t / ".s.txt.rz-short", t / ".other.rz-Ab3dE9"})
        RzPutFile(name);
    // A temporary file whose save still runs is locked by it.
    const int fd = open(live.c_str(), O_RDONLY);
    ASSERT_EQ(flock(fd, LOCK_EX), 0);
    const pid_t holder = fork();
    if (holder == 0) {
        pause();
        _exit(0);
    }
    close(fd);
    RzDataBase db;
    db.WriteToFile(Spec(t / "s.txt"));
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    std::vector<std::string> left = FolderNames(t.path(), ".");
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<std::string>{".other.rz-Ab3dE9", ".s.txt.rz-LiVe00",
                                              ".s.txt.rz-short"}));
}
