#include <Rz/RzSystem/RzSystem.h>

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include <Rz/internal/RzOS.h>
#include <Rz/internal/RzTickClock.h>

#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

// --- Timing ------------------------------------------------------------------

// A tick clock the test sets; a delay advances it and is recorded.
uint32_t gFakeTicks = 0;
std::vector<uint32_t> gFakeDelays;

struct FakeClock {
    explicit FakeClock(uint32_t ticks) {
        gFakeTicks = ticks;
        gFakeDelays.clear();
        const RzTickClock fake = {
            [] { return gFakeTicks; },
            [](uint32_t n) { return gFakeDelays.push_back(n), gFakeTicks += n; }};
        saved = RzSetTickClock(&fake);
    }
    ~FakeClock() { RzSetTickClock(&saved); }
    RzTickClock saved;
};

// Ticks to milliseconds with the 32-bit wrap of the product, computed apart
// from the library.
uint32_t Ms(uint64_t ticks) {
    return static_cast<uint32_t>((ticks * 1000) % 4294967296u) / 60;
}

uint64_t MonotonicTicks() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return uint64_t(now.tv_sec) * 60 + uint64_t(now.tv_nsec) * 60 / 1000000000;
}

TEST(RzSystem, MillisecondsFromTicksWrapWithTheProduct) {
    const struct {
        uint32_t ticks, ms;
    } cases[] = {
        {0, 0},
        {1, 16},
        {59, 983},
        {60, 1000},
        {4294967, 71582783},  // the last tick before the product wraps
        {4294968, 11},        // (4294968000 - 2^32) / 60
        {4294967295u, 71582771},
    };
    for (const auto& c : cases) {
        FakeClock clock(c.ticks);
        EXPECT_EQ(
            Joined(RzSystem::TickCount(), RzSystem::CPUTime(), RzSystem::StartTimeMeasurement()),
            Joined(c.ms, c.ms, c.ms))
            << c.ticks;
    }
}

TEST(RzSystem, DelayRoundsUpToTicksAndReturnsTheClockAtItsEnd) {
    const struct {
        uint32_t start;
        int32_t ms;
        std::vector<uint32_t> delays;  // ticks asked of the clock
        int32_t result;
    } cases[] = {
        {1000, 0, {}, 0},
        {1000, -5, {}, 0},
        {1000, 1, {1}, int32_t(Ms(1001))},
        {1000, 16, {1}, int32_t(Ms(1001))},
        {1000, 17, {2}, int32_t(Ms(1002))},
        {1000, 1000, {60}, int32_t(Ms(1060))},
        {1000, 1001, {61}, int32_t(Ms(1061))},
        // The tick count needs no 32-bit product: ten hours and more.
        {1000, INT32_MAX, {128849019}, int32_t(Ms(1000 + 128849019))},
        // Across the wrap the result falls back, as TickCount does.
        {4294966, 1000, {60}, 978},
    };
    for (const auto& c : cases) {
        FakeClock clock(c.start);
        EXPECT_EQ(RzSystem::Delay(c.ms), c.result) << c.ms;
        EXPECT_EQ(gFakeDelays, c.delays) << c.ms;
    }
}

TEST(RzSystem, TickCountIsTheMonotonicClockInMilliseconds) {
    const uint64_t before = MonotonicTicks();
    const uint32_t ms = RzSystem::TickCount();
    const uint64_t after = MonotonicTicks();
    bool found = false;
    for (uint64_t t = before; t <= after; ++t) found = found || Ms(t) == ms;
    EXPECT_TRUE(found) << Joined(before, ms, after);
}

// --- The program -------------------------------------------------------------

TEST(RzSystem, TheRunningProgram) {
    char exe[PATH_MAX];
    ASSERT_NE(realpath("/proc/self/exe", exe), nullptr);
    EXPECT_STREQ(RzSystem::GetProcessFile().GetFullName().c_str(), exe);
    RzFileSpec spec("/tmp/a.txt");
    EXPECT_RZ_ERROR(RzSystem::SetWorkingDir(spec), 1, "RzUndefProc");
    EXPECT_RZ_ERROR(RzSystem::ExecuteCommandLine("ls", spec, nullptr), 1, "RzUndefProc");
    EXPECT_RZ_ERROR(RzSystem::GetFileVersion(spec, nullptr), 1, "RzUndefProc");
}

// --- Files -------------------------------------------------------------------

RzFileSpec Spec(const std::string& path) {
    return RzFileSpec(RzString(path.c_str()));
}

int OpenDescriptors() {
    int n = 0;
    DIR* d = opendir("/proc/self/fd");
    while (d && readdir(d)) ++n;
    if (d) closedir(d);
    return n;
}

TEST(RzSystem, RemoveAndMoveRaiseTheSystemsResult) {
    RzTempDir t;
    mkdir((t / "d").c_str(), 0700);
    RzPutFile(t / "f");
    RzSystem::RemoveFile(Spec(t / "f"));
    RzSystem::RemoveFile(Spec(t / "d"));  // an empty folder
    EXPECT_FALSE(RzOSItemExists((t / "f").c_str()) || RzOSItemExists((t / "d").c_str()));
    mkdir((t / "full").c_str(), 0700);
    RzPutFile(t / "full/x");
    for (const char* name : {"f", "full"}) {
        const RzError e = CatchRzError([&] { RzSystem::RemoveFile(Spec(t / name)); });
        EXPECT_EQ(Joined(e.GetErr(), e.GetErrName(), e.GetFileName()), "4294967295|err|RzSystem");
    }

    RzPutFile(t / "a", "moved");
    RzSystem::MoveFile(Spec(t / "a"), Spec(t / "full/b"));
    EXPECT_EQ(FileText(t / "full/b"), "moved");
    const RzError e = CatchRzError([&] { RzSystem::MoveFile(Spec(t / "a"), Spec(t / "c")); });
    EXPECT_EQ(Joined(e.GetErr(), e.GetErrName()), "4294967295|err");
}

TEST(RzSystem, CopyFileCopiesTheDataInChunks) {
    RzTempDir t;
    const size_t sizes[] = {0, 1, 99999, 100000, 100001, 250000};
    for (size_t size : sizes) {
        std::string data(size, '\0');
        for (size_t i = 0; i < size; ++i) data[i] = static_cast<char>(i * 7 + i / 251);
        RzPutFile(t / "src", data);
        RzPutFile(t / "dst", std::string(300000, 'x'));  // truncated by the copy
        RzSystem::CopyFile(Spec(t / "src"), Spec(t / "dst"));
        EXPECT_TRUE(FileText(t / "dst") == data) << size;
    }

    // Only the data: the Finder information stays behind; the copy gets what
    // its own name gives it.
    RzPutFile(t / "p.icc", "profile");
    RzOSWriteFinderInfo((t / "p.icc").c_str(), 0x70726F66, 0x73796E63);  // 'prof' 'sync'
    RzOSChangeFinderFlags((t / "p.icc").c_str(), true, kIsInvisible);
    RzSystem::CopyFile(Spec(t / "p.icc"), Spec(t / "copy.txt"));
    EXPECT_EQ(FileText(t / "copy.txt"), "profile");
    uint32_t type = 0, creator = 0;
    uint16_t flags = 1;
    RzOSReadFinderInfo((t / "copy.txt").c_str(), type, creator, flags, nullptr);
    EXPECT_EQ(Joined(type, creator, flags), Joined(0x54455854, 0x74747874, 0));  // 'TEXT' 'ttxt'

    // A file copied onto itself is opened for writing after it was opened
    // for reading: it ends up empty, and the copy ends.
    RzSystem::CopyFile(Spec(t / "copy.txt"), Spec(t / "copy.txt"));
    EXPECT_EQ(FileText(t / "copy.txt"), "");
}

TEST(RzSystem, CopyFileClosesBothFilesAndPassesErrorsOn) {
    RzTempDir t;
    RzPutFile(t / "src", "data");
    RzPutFile(t / "dst", "kept");
    const int descriptors = OpenDescriptors();
    const struct {
        std::string source, destination, name;
    } cases[] = {
        {t / "missing", t / "dst", "FileNotOpen (for reading): " + t / "missing"},
        {t / "src", t / "no/dst", "FileNotOpen: (for writing)" + t / "no/dst"},
        {t / "src", t.path(), "FileNotOpen: (for writing)" + t.path()},
    };
    for (const auto& c : cases) {
        const RzError e =
            CatchRzError([&] { RzSystem::CopyFile(Spec(c.source), Spec(c.destination)); });
        EXPECT_EQ(Joined(e.GetErr(), e.GetErrName()), Joined(12, c.name));
        EXPECT_EQ(OpenDescriptors(), descriptors) << c.name;
    }
    EXPECT_EQ(FileText(t / "dst"), "kept") << "a missing source leaves the destination alone";
}

TEST(RzSystem, CopyFileCopiesAFileOfTwoGigabytesWhole) {
    // The source's length has no 32-bit form; the 32-bit system copied such
    // a file until it ran dry. Sparse here, and read into a pipe that counts;
    // in memory where there is a tmpfs, which reads holes without filling
    // pages.
    RzEnvGuard env;
    if (access("/dev/shm", W_OK) == 0) env.Set("TMPDIR", "/dev/shm");
    RzTempDir t;
    const off_t size = (off_t(1) << 31) + 5;
    const int fd = open((t / "big").c_str(), O_CREAT | O_WRONLY, 0600);
    ASSERT_TRUE(fd >= 0 && ftruncate(fd, size) == 0 && pwrite(fd, "tail!", 5, size - 5) == 5);
    close(fd);
    ASSERT_EQ(mkfifo((t / "pipe").c_str(), 0600), 0);
    off_t counted = 0;
    std::string last;
    std::thread reader([&] {
        const int in = open((t / "pipe").c_str(), O_RDONLY);
        if (in < 0) return;
        fcntl(in, F_SETPIPE_SZ, 1 << 20);
        std::vector<char> buffer(1 << 20);
        ssize_t n;
        while ((n = read(in, buffer.data(), buffer.size())) > 0) {
            counted += n;
            last.append(buffer.data(), size_t(n));
            last.erase(0, last.size() > 5 ? last.size() - 5 : 0);
        }
        close(in);
    });
    try {
        RzSystem::CopyFile(Spec(t / "big"), Spec(t / "pipe"));
    } catch (const RzError& e) {
        ADD_FAILURE() << e.GetErrName();  // the pipe was opened: the reader ends
    }
    reader.join();
    EXPECT_EQ(Joined(int64_t(counted), last), Joined(int64_t(size), "tail!"));
}

TEST(RzSystem, FileIsWritableLeavesNothingBehind) {
    RzTempDir t;
    RzPutFile(t / "existing", "content");
    mkdir((t / "folder").c_str(), 0700);
    const struct {
        std::string name;
        bool writable, existsAfter;
    } cases[] = {
        {"missing", true, false},
        {"existing", true, true},
        {"folder", false, true},
        {"no/such/folder/f", false, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(RzSystem::FileIsWritable(Spec(t / c.name)), c.writable) << c.name;
        EXPECT_EQ(RzOSItemExists((t / c.name).c_str()), c.existsAfter) << c.name;
    }
    EXPECT_EQ(FileText(t / "existing"), "content");
}

TEST(RzSystem, FileIsWritableWithoutPermission) {
    // Root may write anything, so the checks run in a child as nobody.
    RzTempDir t;
    chmod(t.path().c_str(), 0755);
    mkdir((t / "open").c_str(), 0777);
    chmod((t / "open").c_str(), 0777);
    mkdir((t / "readonly").c_str(), 0555);
    RzPutFile(t / "open/readonly.txt", "content");
    chmod((t / "open/readonly.txt").c_str(), 0444);
    const pid_t child = fork();
    if (child == 0) {
        if (getuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(2);
        if (access((t / "readonly").c_str(), W_OK) == 0) _exit(3);
        int failed = 0;
        if (RzSystem::FileIsWritable(Spec(t / "readonly/f"))) failed |= 4;
        if (RzSystem::FileIsWritable(Spec(t / "open/readonly.txt"))) failed |= 8;
        if (FileText(t / "open/readonly.txt") != "content") failed |= 16;
        // A new file the umask leaves unreadable is created by the open and
        // fails it; it must not stay.
        umask(0277);
        if (RzSystem::FileIsWritable(Spec(t / "open/new"))) failed |= 32;
        if (RzOSItemExists((t / "open/new").c_str())) failed |= 64;
        _exit(failed);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 3) GTEST_SKIP() << "this user may write a read-only folder";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(RzSystem, LockedAndUnlocked) {
    RzTempDir t;
    RzPutFile(t / "f");
    symlink("f", (t / "link").c_str());
    // Made read-only by an SMB client (Samba's old text form).
    ASSERT_EQ(setxattr((t / "f").c_str(), "user.DOSATTRIB", "0x21", 5, 0), 0);
    EXPECT_TRUE(RzSystem::IsFileLocked(Spec(t / "f")));
    EXPECT_TRUE(RzSystem::IsFileLocked(Spec(t / "link")));
    RzSystem::UnLockFile(Spec(t / "link"));
    EXPECT_FALSE(RzSystem::IsFileLocked(Spec(t / "f")));
    EXPECT_FALSE(RzSystem::IsFileLocked(Spec(t / "missing")));
    RzSystem::UnLockFile(Spec(t / "missing"));
}

// --- Launching ---------------------------------------------------------------

// A stand-in for the desktop's opener, first on PATH: it records its
// arguments, each ending in a zero byte, in "launched" beside itself, then
// lingers a while as a real opener may.
class StubOpener {
public:
    StubOpener() {
        mkdir(bin().c_str(), 0700);
        RzPutFile(bin() + "/xdg-open",
                  "#!/bin/sh\n"
                  "out=\"$(dirname \"$0\")/launched\"\n"
                  "for a in \"$@\"; do printf '%s\\0' \"$a\"; done >\"$out.part\"\n"
                  "mv \"$out.part\" \"$out\"\n"
                  "sleep 1\n");
        chmod((bin() + "/xdg-open").c_str(), 0700);
        const char* path = getenv("PATH");
        env.Set("PATH", (bin() + ":" + (path ? path : "/usr/bin:/bin")).c_str());
    }
    std::string bin() const { return dir / "bin"; }
    // What the opener was given, once it has run (waits up to 10 s).
    std::string Launched() const {
        for (int i = 0; i < 1000 && !RzOSItemExists((bin() + "/launched").c_str()); ++i)
            usleep(10000);
        return FileText(bin() + "/launched");
    }
    RzTempDir dir;

private:
    RzEnvGuard env;
};

bool HasChildren() {
    int status;
    return !(waitpid(-1, &status, WNOHANG) == -1 && errno == ECHILD);
}

TEST(RzSystem, LaunchFilePassesTheRawPathAsOneArgument) {
    StubOpener opener;
    mkdir((opener.dir / "A B").c_str(), 0700);
    RzPutFile(opener.dir / "A B/x y.txt");
    RzSystem::LaunchFile(Spec(opener.dir / "A B/x y.txt"));
    EXPECT_FALSE(HasChildren()) << "the opener is nobody's zombie here";
    EXPECT_EQ(opener.Launched(), "file://" + opener.dir / "A B/x y.txt" + '\0');
}

TEST(RzSystem, LaunchURLReachesNoShellAndDoesNotWait) {
    StubOpener opener;
    const std::string url = "http://example.com/?a=1&b=$(touch " + opener.dir / "pwned" +
                            ");`touch " + opener.dir / "pwned2" + "` *";
    const uint64_t start = MonotonicTicks();
    RzSystem::LaunchURL(url.c_str());
    EXPECT_LT(MonotonicTicks() - start, 30u) << "returns while the opener still runs";
    EXPECT_FALSE(HasChildren());
    EXPECT_EQ(opener.Launched(), url + '\0');
    EXPECT_FALSE(RzOSItemExists((opener.dir / "pwned").c_str()) ||
                 RzOSItemExists((opener.dir / "pwned2").c_str()));
}

TEST(RzSystem, LaunchingWithoutAnOpenerOrAFile) {
    RzTempDir empty;
    RzEnvGuard env;
    env.Set("PATH", empty.path().c_str());
    RzSystem::LaunchURL("http://example.com/");
    EXPECT_FALSE(HasChildren());

    for (const std::string& missing : {empty / "missing.txt", empty / "no/such/file.txt"}) {
        const RzError e = CatchRzError([&] { RzSystem::LaunchFile(Spec(missing)); });
        EXPECT_EQ(Joined(e.GetErr(), e.GetErrName()), Joined(uint32_t(-43), "err")) << missing;
    }
}

}  // namespace
