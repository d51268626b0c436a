// Calls the desktop services of RzSystem once per run, for the checks against
// a real X server and Wayland compositor (desktop_x11.sh, desktop_wayland.sh):
//   copy FILE       CopyToClipboard with the file's bytes
//   paste FILE      writes CopyFromClipboard's bytes to FILE
//   has             prints "text" or "none" (ClipboardHasData)
//   native          prints GetNativeKey
//   test K1 K2      prints "down" or "up" (TestKey)
//   break           prints "down" or "up" (KeyBreak)
//   active          prints the X server's idle time in milliseconds before and
//                   after SystemActive(true): "1234 5"
//   bell MODE       calls Beep(MODE) and prints how many rings the X server
//                   announced, and how long the call took: "3 1334"
// "active" and "bell" ask the X server themselves and exit 77 when this tool
// was built without libX11 and libXss. Exits 0 on success, 1 on a failure,
// 2 on a usage error.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <string>

#include <Rz/RzCore/RzString.h>
#include <Rz/RzSystem/RzSystem.h>

#ifdef RZ_TOOL_HAS_X11
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/scrnsaver.h>
#endif

namespace {

bool ReadFile(const char* path, std::string& bytes) {
    FILE* f = fopen(path, "rb");
    if (!f) return false;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, f)) > 0) bytes.append(buffer, n);
    return fclose(f) == 0;
}

bool WriteFile(const char* path, const char* bytes, size_t n) {
    FILE* f = fopen(path, "wb");
    if (!f) return false;
    const bool written = fwrite(bytes, 1, n, f) == n;
    return fclose(f) == 0 && written;
}

#ifdef RZ_TOOL_HAS_X11
long Milliseconds() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

unsigned long IdleTime(Display* display) {
    XScreenSaverInfo info;
    XScreenSaverQueryInfo(display, DefaultRootWindow(display), &info);
    return info.idle;
}

int Active() {
    Display* display = XOpenDisplay(nullptr);
    int event, error;
    if (!display || !XScreenSaverQueryExtension(display, &event, &error)) return 1;
    const unsigned long before = IdleTime(display);
    RzSystem::SystemActive(true);
    // The reset travels on the library's own connection; a round trip on it
    // cannot be made from here, so the answer is awaited a while.
    unsigned long after = IdleTime(display);
    for (int i = 0; i < 100 && after >= before; ++i) {
        struct timespec pause = {0, 10000000};
        nanosleep(&pause, nullptr);
        after = IdleTime(display);
    }
    printf("%lu %lu\n", before, after);
    XCloseDisplay(display);
    return 0;
}

int Bell(int mode) {
    int opcode, event, error, major = XkbMajorVersion, minor = XkbMinorVersion;
    Display* display = XkbOpenDisplay(nullptr, &event, &error, &major, &minor, &opcode);
    if (!display) return 1;
    XkbSelectEvents(display, XkbUseCoreKbd, XkbBellNotifyMask, XkbBellNotifyMask);
    XSync(display, False);
    const long start = Milliseconds();
    RzSystem::Beep(mode);
    const long took = Milliseconds() - start;
    int rings = 0;
    const long deadline = Milliseconds() + 2000;
    while (Milliseconds() < deadline) {
        while (XPending(display)) {
            XEvent e;
            XNextEvent(display, &e);
            if (e.type == event && reinterpret_cast<XkbAnyEvent&>(e).xkb_type == XkbBellNotify)
                ++rings;
        }
        struct timespec pause = {0, 20000000};
        nanosleep(&pause, nullptr);
    }
    printf("%d %ld\n", rings, took);
    XCloseDisplay(display);
    return 0;
}
#else
const int kSkip = 77;  // the script skips the check
int Active() {
    return kSkip;
}
int Bell(int) {
    return kSkip;
}
#endif

}  // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "copy" && argc == 3) {
        std::string bytes;
        if (!ReadFile(argv[2], bytes)) return 1;
        RzSystem::CopyToClipboard(
            RzString(bytes.data(), static_cast<int32_t>(bytes.size()), false));
        return 0;
    }
    if (command == "paste" && argc == 3) {
        const RzString text = RzSystem::CopyFromClipboard();
        return WriteFile(argv[2], text.c_str(), static_cast<size_t>(text.length())) ? 0 : 1;
    }
    if (command == "has" && argc == 2) {
        puts(RzSystem::ClipboardHasData() ? "text" : "none");
        return 0;
    }
    if (command == "native" && argc == 2) {
        printf("%d\n", static_cast<int>(RzSystem::GetNativeKey()));
        return 0;
    }
    if (command == "test" && argc == 4) {
        puts(RzSystem::TestKey(atoi(argv[2]), atoi(argv[3])) ? "down" : "up");
        return 0;
    }
    if (command == "break" && argc == 2) {
        puts(RzSystem::KeyBreak() ? "down" : "up");
        return 0;
    }
    if (command == "active" && argc == 2) return Active();
    if (command == "bell" && argc == 3) return Bell(atoi(argv[2]));
    fprintf(stderr,
            "usage: rz_desktop_tool copy|paste FILE | has | native | test K1 K2 | break |"
            " active | bell MODE\n");
    return 2;
}
