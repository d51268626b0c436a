// The desktop calls of the operating-system seam with stand-in clipboard
// programs (the real ones are checked by tests/interop/desktop_*.sh).
#include <Rz/internal/RzOS.h>

#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/RzStubPrograms.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

std::string Str(const RzString& s) {
    return std::string(s.c_str(), static_cast<size_t>(s.length()));
}

long Milliseconds() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

// A stub that records its arguments (each followed by a zero byte) in
// "<name>.args" and its input in "<name>.in" when it is a copying program,
// and prints "<name>.out" otherwise.
std::string Recorder(const std::string& name, bool copies) {
    return "for a in \"$@\"; do printf '%s\\0' \"$a\"; done >\"$STUBS/" + name + ".args\"\n" +
           (copies ? "/bin/cat >\"$STUBS/" + name + ".in\""
                   : "/bin/cat \"$STUBS/" + name + ".out\"");
}

// A stand-in for xclip: copying with the argument that says so, else
// printing.
std::string Xclip() {
    return "case \"$3\" in -in) " + Recorder("xclip", true) + ";; *) " + Recorder("xclip", false) +
           ";; esac";
}

std::string Args(std::initializer_list<const char*> args) {
    std::string joined;
    for (const char* a : args) joined += std::string(a) + '\0';
    return joined;
}

// Without wl-paste, the X server beside the compositor is used; the argument
// vectors it is given, and what counts as text among the offered types. The
// programs chosen when each is installed are driven for real by
// tests/interop/desktop_*.sh.
TEST(RzOSDesktop, ClipboardThroughXclipBesideACompositor) {
    const std::string text("a\0b $(touch pwned) *\n", 21);
    RzStubPrograms stubs;
    stubs.env.Set("WAYLAND_DISPLAY", "wl-9");
    stubs.env.Set("DISPLAY", ":9");
    stubs.Add("wl-copy", Recorder("wl-copy", true));
    stubs.Add("xclip", Xclip());

    EXPECT_TRUE(RzOSClipboardPut(text.data(), text.size()));
    EXPECT_EQ(stubs.Text("xclip.args"), Args({"-selection", "clipboard", "-in"}));
    EXPECT_EQ(stubs.Text("xclip.in"), text) << "bytes as they are, through no shell";
    EXPECT_FALSE(RzOSItemExists("pwned"));

    RzPutFile(stubs.dir / "xclip.out", text);
    RzString pasted("old");
    EXPECT_TRUE(RzOSClipboardGet(pasted));
    EXPECT_EQ(Str(pasted), text);
    EXPECT_EQ(stubs.Text("xclip.args"), Args({"-selection", "clipboard", "-out"}));

    const struct {
        const char* offered;
        bool text;
    } offers[] = {
        {"TARGETS\nUTF8_STRING\n", true},
        {"text/plain;charset=utf-8\n", true},
        {"STRING", true},
        {"TARGETS\nimage/png\n", false},
    };
    for (const auto& o : offers) {
        RzPutFile(stubs.dir / "xclip.out", o.offered);
        bool has = !o.text;
        EXPECT_TRUE(RzOSClipboardHasText(has));
        EXPECT_EQ(has, o.text) << o.offered;
    }
    EXPECT_EQ(stubs.Text("xclip.args"),
              Args({"-selection", "clipboard", "-out", "-target", "TARGETS"}));
}

// A program that fails, stalls, or leaves early: the caller gets an empty
// clipboard in bounded time, and no process of it is left behind.
TEST(RzOSDesktop, ClipboardProgramsThatMisbehave) {
    const std::string big(4 << 20, 'x');
    const struct {
        const char* what;
        const char* script;
        bool put;  // exercised by putting `big` (else by getting)
        const char* pasted;
        long atLeast, atMost;  // milliseconds
    } cases[] = {
        {"stalls", "/bin/sleep 30 & echo $! >\"$STUBS/pid\"; printf early; wait", false, "",
         kRzOSToolSilenceLimit - 100, kRzOSToolSilenceLimit + 1500},
        {"stalls before reading", "/bin/sleep 30 & echo $! >\"$STUBS/pid\"; wait", true, "",
         kRzOSToolSilenceLimit - 100, kRzOSToolSilenceLimit + 1500},
        {"leaves without reading", "exit 0", true, "", 0, 1500},
        {"leaves a helper holding its output",
         "/bin/sleep 30 & echo $! >\"$STUBS/pid\"; printf 'the text'", false, "the text", 0, 1500},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        RzStubPrograms stubs;
        stubs.env.Set("WAYLAND_DISPLAY", nullptr);
        stubs.env.Set("DISPLAY", ":9");
        stubs.Add("xclip", c.script);
        sigset_t pending;
        const long start = Milliseconds();
        RzString text;
        if (c.put)
            RzOSClipboardPut(big.data(), big.size());
        else
            RzOSClipboardGet(text);
        const long took = Milliseconds() - start;
        EXPECT_GE(took, c.atLeast);
        EXPECT_LE(took, c.atMost);
        EXPECT_EQ(Str(text), c.pasted);
        EXPECT_FALSE(RzHasChildren());
        sigpending(&pending);
        EXPECT_FALSE(sigismember(&pending, SIGPIPE));
        const std::string pid = stubs.Text("pid");
        if (!pid.empty() && c.atLeast > 0) {
            bool gone = false;
            for (int i = 0; i < 100 && !(gone = RzProcessGone(atoi(pid.c_str()))); ++i)
                usleep(10000);
            EXPECT_TRUE(gone) << "what the stalled program started is killed with it";
        } else if (!pid.empty()) {
            kill(atoi(pid.c_str()), SIGKILL);
        }
    }
}

// An application that leaves its children to the system (SIGCHLD ignored)
// still gets the text, and one that blocks SIGPIPE keeps its mask.
TEST(RzOSDesktop, ClipboardUnderTheApplicationsSignalSettings) {
    RzStubPrograms stubs;
    stubs.env.Set("WAYLAND_DISPLAY", nullptr);
    stubs.env.Set("DISPLAY", ":9");
    stubs.Add("xclip", "printf 'pasted'");
    struct sigaction ignore, previous;
    memset(&ignore, 0, sizeof ignore);
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGCHLD, &ignore, &previous);
    RzString text;
    RzOSClipboardGet(text);
    sigaction(SIGCHLD, &previous, nullptr);
    EXPECT_EQ(Str(text), "pasted");

    sigset_t pipe, before, after;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    sigprocmask(SIG_BLOCK, &pipe, &before);
    RzOSClipboardGet(text);
    sigprocmask(SIG_SETMASK, &before, &after);
    EXPECT_TRUE(sigismember(&after, SIGPIPE));
}

TEST(RzOSDesktop, HighContrastFromGsettings) {
    const struct {
        const char* script;
        bool high;
    } cases[] = {
        {"[ \"$*\" = 'get org.gnome.desktop.a11y.interface high-contrast' ] && echo true", true},
        {"echo false", false},
        {"echo true; exit 1", false},  // no such schema
        {"exec /bin/sleep 30", false},
    };
    for (const auto& c : cases) {
        RzStubPrograms stubs;
        stubs.Add("gsettings", c.script);
        EXPECT_EQ(RzOSDesktopHighContrast(), c.high) << c.script;
    }
}

}  // namespace
