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

#include "support/RzChild.h"
#include "support/RzStubPrograms.h"
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
        {59, 983},
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
        {1000, 16, {1}, int32_t(Ms(1001))},
        {1000, 17, {2}, int32_t(Ms(1002))},
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

TEST(RzSystem, CopyFileCopiesOnlyTheData) {
    RzTempDir t;
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
    RzTempDir t;
    chmod(t.path().c_str(), 0755);
    mkdir((t / "open").c_str(), 0777);
    chmod((t / "open").c_str(), 0777);
    mkdir((t / "readonly").c_str(), 0555);
    RzPutFile(t / "open/readonly.txt", "content");
    chmod((t / "open/readonly.txt").c_str(), 0444);
    const std::string result = AsUnprivileged([&] {
        if (access((t / "readonly").c_str(), W_OK) == 0) return std::string("skip");
        // A new file the umask leaves unreadable is created by the open and
        // fails it; it must not stay.
        umask(0277);
        return Joined(RzSystem::FileIsWritable(Spec(t / "readonly/f")),
                      RzSystem::FileIsWritable(Spec(t / "open/readonly.txt")),
                      FileText(t / "open/readonly.txt"),
                      RzSystem::FileIsWritable(Spec(t / "open/new")),
                      RzOSItemExists((t / "open/new").c_str()));
    });
    if (result == "skip") GTEST_SKIP() << "this user may write a read-only folder";
    EXPECT_EQ(result, "false|false|content|false|false");
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

// A stand-in for the desktop's opener, alone on PATH: it records its
// arguments, each ending in a zero byte, then lingers as a real opener may.
struct StubOpener : RzStubPrograms {
    StubOpener() {
        Add("xdg-open",
            "for a in \"$@\"; do printf '%s\\0' \"$a\"; done >\"$STUBS/part\"\n"
            "/bin/mv \"$STUBS/part\" \"$STUBS/launched\"\n"
            "/bin/sleep 1");
    }
};

TEST(RzSystem, LaunchingHandsTheOpenerOneRawArgumentAndDoesNotWait) {
    StubOpener opener;
    mkdir((opener.dir / "A B").c_str(), 0700);
    RzPutFile(opener.dir / "A B/x y.txt");
    RzSystem::LaunchFile(Spec(opener.dir / "A B/x y.txt"));
    EXPECT_FALSE(RzHasChildren()) << "the opener is nobody's zombie here";
    EXPECT_EQ(opener.Wait("launched"), "file://" + opener.dir / "A B/x y.txt" + '\0');
    remove((opener.dir / "launched").c_str());

    const std::string url = "http://example.com/?a=1&b=$(/usr/bin/touch " + opener.dir / "pwned" +
                            ");`/usr/bin/touch " + opener.dir / "pwned2" + "` *";
    const uint64_t start = MonotonicTicks();
    RzSystem::LaunchURL(url.c_str());
    EXPECT_LT(MonotonicTicks() - start, 30u) << "returns while the opener still runs";
    EXPECT_FALSE(RzHasChildren());
    EXPECT_EQ(opener.Wait("launched"), url + '\0');
    EXPECT_EQ(FolderNames(opener.dir.path(), "pwned").size(), 0u);
}

TEST(RzSystem, LaunchingWithoutAnOpenerOrAFile) {
    RzTempDir empty;
    RzEnvGuard env;
    env.Set("PATH", empty.path().c_str());
    RzSystem::LaunchURL("http://example.com/");
    EXPECT_FALSE(RzHasChildren());
    const RzError e = CatchRzError([&] { RzSystem::LaunchFile(Spec(empty / "no/such/file.txt")); });
    EXPECT_EQ(Joined(e.GetErr(), e.GetErrName()), Joined(uint32_t(-43), "err"));
}

// --- The desktop without a display --------------------------------------------
//
// The process's own clipboard, the presentation mode, the bell's rings and
// pauses, how often activity is passed on, and the keyboard; the desktop
// itself is checked by tests/interop/desktop_*.sh.

std::string Str(const RzString& s) {
    return std::string(s.c_str(), static_cast<size_t>(s.length()));
}

// No display of either kind while it lives.
struct NoDisplay {
    NoDisplay() {
        env.Set("DISPLAY", nullptr);
        env.Set("WAYLAND_DISPLAY", nullptr);
    }
    RzEnvGuard env;
};

TEST(RzSystemDesktop, OwnClipboardWithoutADesktop) {
    const struct {
        const char* what;
        const char* display;  // a display without a program to reach its clipboard
        std::string text;
    } cases[] = {
        {"zero bytes", nullptr, std::string("a\0b\0", 4)},
        {"empty", nullptr, ""},
        {"large", nullptr, std::string(1 << 20, '\xAB')},
        {"X11 without programs", "DISPLAY", "no xclip"},
        {"Wayland without programs", "WAYLAND_DISPLAY", "no wl-copy"},
    };
    for (const auto& c : cases) {
        NoDisplay none;
        RzStubPrograms empty;  // PATH without any program
        if (c.display) none.env.Set(c.display, "9");
        RzSystem::CopyToClipboard(
            RzString(c.text.data(), static_cast<int32_t>(c.text.size()), false));
        EXPECT_TRUE(RzSystem::ClipboardHasData()) << c.what;
        EXPECT_EQ(Str(RzSystem::CopyFromClipboard()), c.text) << c.what;
    }
    // Only the length() bytes: a string shortened with SetLength.
    NoDisplay none;
    RzString longer("abcdef");
    longer.SetLength(3);
    RzSystem::CopyToClipboard(longer);
    EXPECT_EQ(Str(RzSystem::CopyFromClipboard()), "abc");
}

TEST(RzSystemDesktop, ShowMenuBarAnswersWhetherTheMenuBarWasShown) {
    RzSystem::ShowMenuBar(true);
    const struct {
        bool show, wasShown;
    } steps[] = {{true, true}, {false, true}, {false, false}, {true, false}, {true, true}};
    for (const auto& s : steps) EXPECT_EQ(RzSystem::ShowMenuBar(s.show), s.wasShown);
}

// Beep in a child whose controlling terminal is a pseudo-terminal (or that
// has none): the bells reach the terminal, and the pauses the tick clock.
TEST(RzSystemDesktop, BeepRingsTheTerminalBellWithPauses) {
    const struct {
        int mode;
        bool terminal;
        const char* rings;
        std::vector<uint32_t> pauses;
    } cases[] = {
        {0, true, "\a", {}},
        {1, true, "\a\a\a", {40, 40, 40}},
        {1, false, "", {40, 40, 40}},
    };
    for (const auto& c : cases) {
        NoDisplay none;
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_GE(master, 0);
        ASSERT_EQ(grantpt(master) | unlockpt(master), 0);
        const std::string slave = ptsname(master);
        int report[2];
        ASSERT_EQ(pipe(report), 0);
        const pid_t child = fork();
        if (child == 0) {
            setsid();
            if (c.terminal) open(slave.c_str(), O_RDWR);  // becomes the controlling terminal
            FakeClock clock(1000);
            RzSystem::Beep(c.mode);
            const std::string pauses(gFakeDelays.begin(), gFakeDelays.end());
            _exit(write(report[1], pauses.data(), pauses.size()) < 0);
        }
        close(report[1]);
        char buffer[64];
        std::string pauses;
        ssize_t n;
        while ((n = read(report[0], buffer, sizeof buffer)) > 0) pauses.append(buffer, n);
        int status;
        waitpid(child, &status, 0);
        std::string rings;
        fcntl(master, F_SETFL, O_NONBLOCK);
        while ((n = read(master, buffer, sizeof buffer)) > 0) rings.append(buffer, n);
        close(report[0]);
        close(master);
        EXPECT_EQ(rings, c.rings) << "mode " << c.mode;
        EXPECT_EQ(pauses, std::string(c.pauses.begin(), c.pauses.end())) << "mode " << c.mode;
    }
}

// Activity reaches the session bus's screen saver through dbus-send (or
// gdbus), at most once in five seconds, and only with a session bus.
TEST(RzSystemDesktop, SystemActiveTellsTheSessionBusNowAndThen) {
    const std::string dbusSend =
        "--session|--type=method_call|--dest=org.freedesktop.ScreenSaver|"
        "/org/freedesktop/ScreenSaver|org.freedesktop.ScreenSaver.SimulateUserActivity|\n";
    const std::string gdbus =
        "call|--session|--dest|org.freedesktop.ScreenSaver|--object-path|"
        "/org/freedesktop/ScreenSaver|--method|org.freedesktop.ScreenSaver.SimulateUserActivity|\n";
    const struct {
        const char* bus;
        std::vector<const char*> clients;
        std::string perCall;
    } cases[] = {
        {"unix:path=/nowhere", {"dbus-send", "gdbus"}, dbusSend},
        {"unix:path=/nowhere", {"gdbus"}, gdbus},
        {nullptr, {"dbus-send"}, ""},
    };
    static uint32_t start = 1000000;  // far from every earlier report
    for (const auto& c : cases) {
        NoDisplay none;
        RzStubPrograms stubs;
        stubs.env.Set("DBUS_SESSION_BUS_ADDRESS", c.bus);
        for (const char* client : c.clients)
            stubs.Add(client,
                      // one write per call: calls run side by side
                      "line=$(printf '%s|' \"$@\")\n"
                      "printf '%s\\n' \"$line\" >>\"$STUBS/calls\"");
        start += 100000;
        FakeClock clock(start);
        const struct {
            uint32_t at;
            bool active;
        } calls[] = {{0, true}, {100, true}, {299, true}, {300, false}, {300, true}, {599, true}};
        for (const auto& call : calls) {
            gFakeTicks = start + call.at;
            RzSystem::SystemActive(call.active);
        }
        EXPECT_FALSE(RzHasChildren()) << "nobody waits for the bus";
        const std::string twice = c.perCall + c.perCall;
        for (int i = 0; i < 300 && stubs.Text("calls").size() < twice.size(); ++i) usleep(10000);
        usleep(100000);  // a third call would be there by now
        EXPECT_EQ(stubs.Text("calls"), twice) << (c.bus ? c.bus : "no bus");
    }
}

TEST(RzSystemDesktop, NoKeyDownWithoutAKeyboardState) {
    RzStubPrograms stubs;
    const struct {
        const char *wayland, *display;
    } cases[] = {
        {nullptr, nullptr}, {"wayland-9", ":9"},  // the X server beside a compositor does not count
    };
    for (const auto& c : cases) {
        stubs.env.Set("WAYLAND_DISPLAY", c.wayland);
        stubs.env.Set("DISPLAY", c.display);
        EXPECT_EQ(Joined(RzSystem::GetNativeKey(), RzSystem::TestKey(0, 0), RzSystem::TestKey(3, 0),
                         RzSystem::TestKey(0, 9), RzSystem::KeyBreak(), RzSystem::TestKey(-1, 0),
                         RzSystem::TestKey(128, 0), RzSystem::TestKey(0, 100000)),
                  Joined(-1, true, false, false, false, false, false, false));
    }
}

}  // namespace
