// The desktop services of RzSystem where no desktop is needed: the process's
// own clipboard, the presentation mode, the bell's rings and pauses, how
// often activity is passed on, and the keyboard without a display. The
// desktop itself is checked by tests/interop/desktop_*.sh.
#include <Rz/RzSystem/RzSystem.h>

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <Rz/internal/RzTickClock.h>

#include "support/RzStubPrograms.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

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

// A tick clock the test sets; a delay advances it and is recorded.
uint32_t gTicks = 0;
std::vector<uint32_t> gDelays;

struct FakeClock {
    explicit FakeClock(uint32_t ticks) {
        gTicks = ticks;
        gDelays.clear();
        const RzTickClock fake = {[] { return gTicks; },
                                  [](uint32_t n) { return gDelays.push_back(n), gTicks += n; }};
        saved = RzSetTickClock(&fake);
    }
    ~FakeClock() { RzSetTickClock(&saved); }
    RzTickClock saved;
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
            const std::string pauses(gDelays.begin(), gDelays.end());
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
            gTicks = start + call.at;
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
