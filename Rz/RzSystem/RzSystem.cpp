#include <Rz/RzSystem/RzSystem.h>

#include <stdio.h>
#include <time.h>

#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/RzIO/RzFile.h>
#include <Rz/RzIO/RzStream.h>
#include <Rz/internal/RzOS.h>
#include <Rz/internal/RzRaise.h>
#include <Rz/internal/RzTickClock.h>

static const char kRzUnit[] = "RzSystem";

// Process-wide: the tick clock the timing services read. The operating
// system's, replaced only by the unit tests through RzSetTickClock.
static RzTickClock gTickClock = {RzOSTickCount, RzOSDelayTicks};

// Process-wide: the presentation mode, normal (0) until ShowMenuBar hides
// everything (3). Changed only by ShowMenuBar.
static int gPresentationMode = 0;

// Process-wide: the clipboard of a process that cannot reach the desktop's,
// and whether anything was ever put there. Changed only by CopyToClipboard.
static RzString gOwnClipboard;
static bool gOwnClipboardFilled = false;

// Process-wide: when SystemActive last passed activity on (in ticks), so
// that a caller in a tight loop does not start a process each time. Changed
// only by SystemActive.
static bool gActivityReported = false;
static uint32_t gActivityReportedAt = 0;

RzTickClock RzSetTickClock(const RzTickClock* clock) {
    const RzTickClock previous = gTickClock;
    static const RzTickClock system = {RzOSTickCount, RzOSDelayTicks};
    gTickClock = clock ? *clock : system;
    return previous;
}

namespace {

const uint32_t kCopyChunkSize = 100000;

// Ticks to milliseconds as the framework has always counted them: the
// product wraps at 2^32 before the division.
uint32_t TicksToMilliseconds(uint32_t ticks) {
    return ticks * 1000u / 60u;
}

// An operating-system result passed on as the error "err", the 16-bit code
// widened with its sign.
[[noreturn]] void RaiseOSResult(int32_t result, int line) {
    RzRaise(static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(result))), "err",
            kRzUnit, line);
}

// The source's length for the copy. A file of 2 GB or more has no 32-bit
// length; on the 32-bit system its length came back as -1, which copies
// until the source runs dry, and so it does here. A source that cannot tell
// its length at all (a pipe) raises as before.
int32_t CopyLength(RzFile& source) {
    try {
        return source.Length();
    } catch (const RzError& e) {
        if (e.GetErr() != kRzFileLengthFailed) throw;
        bool seekable = true;
        try {
            source.SetPosition(0, eRzSeekFromCurrent);
        } catch (const RzError&) {
            seekable = false;
        }
        if (!seekable) throw;
        return -1;
    }
}

// The presentation modes of the Mac's menu bar.
const int kModeNormal = 0;
const int kModeAllHidden = 3;

// The bell: three rings with a pause of 40 ticks after each, or one.
const int kBeepRings = 3;
const uint32_t kBeepPauseTicks = 40;

// Activity is passed on at most once in this many ticks (five seconds):
// screen savers count minutes.
const uint32_t kActivityInterval = 300;

// The Mac virtual key codes of the named keys 1..10 (index 0 unused).
const int kNamedKeys[11] = {-1, 53, 55, 56, 60, 57, 58, 58, 61, 59, 62};
const int kNamedKeyCount = 10;
const int kCommandKey = 2;  // named
const int kPeriodKey = 47;  // virtual key code
const int kMacKeyCount = 128;

// The key map, read when a key code first needs it.
class KeyMap {
public:
    KeyMap() : read(false) {}
    bool Down(int code) {
        if (code == 0) return true;
        const int key = code >= 1 && code <= kNamedKeyCount ? kNamedKeys[code] : code;
        if (key < 0 || key >= kMacKeyCount) return false;
        if (!read) RzOSGetKeys(keys), read = true;
        return (keys[key / 8] >> (key % 8)) & 1;
    }

private:
    bool read;
    uint8_t keys[16];
};

}  // namespace

// --- Timing ----------------------------------------------------------------

int32_t RzSystem::Delay(int32_t milliseconds) {
    if (milliseconds <= 0) return 0;
    // Rounded up to whole ticks; in 64 bits, because the 32-bit product
    // would overflow for waits above ten hours.
    const uint32_t ticks =
        static_cast<uint32_t>((static_cast<int64_t>(milliseconds) * 60 + 999) / 1000);
    return static_cast<int32_t>(TicksToMilliseconds(gTickClock.delay(ticks)));
}

uint32_t RzSystem::TickCount() {
    return TicksToMilliseconds(gTickClock.ticks());
}

uint32_t RzSystem::CPUTime() {
    return TickCount();
}

uint32_t RzSystem::StartTimeMeasurement() {
    return TickCount();
}

void RzSystem::EndTimeMeasurement(int32_t start, const RzString& label) {
    const int32_t elapsed = static_cast<int32_t>(TickCount() - static_cast<uint32_t>(start));
    RzString text;
    text.Printf("'%s' duration: %6.3fs", label.c_str(), elapsed / 1000.0);
    // The text is not written anywhere.
}

// --- The program and its folders ---------------------------------------------

RzFileSpec RzSystem::GetProcessFile() {
    return RzFileSpec(RzOSExecutablePath());
}

RzFileSpec RzSystem::GetWorkingDir() {
    return RzFileSpec(RzString());
}

void RzSystem::SetWorkingDir(const RzFileSpec&) {
    RZ_RAISE(kRzUndefProc);
}

void RzSystem::ExecuteCommandLine(const RzString&, const RzFileSpec&, RzStream*) {
    RZ_RAISE(kRzUndefProc);
}

void RzSystem::GetFileVersion(const RzFileSpec&, int*) {
    RZ_RAISE(kRzUndefProc);
}

void RzSystem::InstallICCProfile(const RzFileSpec&) {}

// --- Files -------------------------------------------------------------------

int32_t RzSystem::CreateDir(const RzFileSpec& spec) {
    return RzMacCreateDir(spec);
}

bool RzSystem::IsFileLocked(const RzFileSpec& spec) {
    FSRef ref;
    bool locked = false;
    return RzFileSpecToFSRef(ref, spec) == noErr &&
           RzOSGetNodeLocked(ref.path.c_str(), locked) == noErr && locked;
}

void RzSystem::UnLockFile(const RzFileSpec& spec) {
    FSRef ref;
    if (RzFileSpecToFSRef(ref, spec) == noErr) RzOSClearNodeLocked(ref.path.c_str());
}

void RzSystem::RemoveFile(const RzFileSpec& spec) {
    const int result = remove(spec.GetNativeFullName().c_str());
    if (result != 0) RzRaise(static_cast<uint32_t>(result), "err", kRzUnit, __LINE__);
}

void RzSystem::CopyFile(const RzFileSpec& source, const RzFileSpec& destination) {
    RzFile in(source, eRzFileRead);
    RzFile out(destination, eRzFileWrite);
    try {
        in.Open(eRzFileRead, false);
        out.Open(eRzFileWrite, false);
        RzCopyStream(in, out, CopyLength(in), kCopyChunkSize);
        in.Close();
        out.Close();
    } catch (...) {
        in.Close();
        out.Close();
        throw;
    }
}

void RzSystem::MoveFile(const RzFileSpec& source, const RzFileSpec& destination) {
    const int32_t result = RzMacMoveFile(source, destination);
    if (result != 0) RaiseOSResult(result, __LINE__);
}

int32_t RzSystem::SetFileVisible(const RzFileSpec& spec, bool visible) {
    return RzMacSetVisible(spec, visible);
}

bool RzSystem::FileExists(const RzFileSpec& spec) {
    // Existence as the C library sees it: a file that cannot be read counts
    // as absent, a folder as whatever fopen makes of it.
    FILE* file = fopen(spec.GetNativeFullName().c_str(), "r");
    if (!file) return false;
    fclose(file);
    return true;
}

bool RzSystem::FileIsWritable(const RzFileSpec& spec) {
    const bool existed = FileExists(spec);
    // FileExists does not see a file that cannot be read; a failed open must
    // not remove such a file, only one the open itself created.
    const RzString name = spec.GetNativeFullName();
    const bool present = RzOSItemExists(name.c_str());
    try {
        RzFile file;
        file.SetSpec(spec);
        file.Open(eRzFileReadWrite, false);
        file.Close();
    } catch (...) {
        if (!present && RzOSItemExists(name.c_str())) remove(name.c_str());
        return false;
    }
    if (!existed) {
        try {
            RemoveFile(spec);
        } catch (...) {
            // The answer stays true.
        }
    }
    return true;
}

// --- Launching ---------------------------------------------------------------

void RzSystem::LaunchURL(const RzString& url) {
    RzOSOpenURL(url.c_str());
}

void RzSystem::LaunchFile(const RzFileSpec& spec) {
    FSSpec fsspec;
    RzFileSpecToFSSpec(fsspec, spec);
    FSRef ref;
    RzString path;
    OSErr err = RzOSSpecMakeRef(fsspec, ref);
    if (err == noErr) err = RzOSRefMakePath(ref, path);
    if (err != noErr) RaiseOSResult(err, __LINE__);
    LaunchURL(RzString("file://") + path);
}

// --- The desktop ---------------------------------------------------------------

void RzSystem::Beep(int mode) {
    const int rings = mode == 1 ? kBeepRings : 1;
    for (int i = 0; i < rings; ++i) {
        RzOSBeep();
        if (mode == 1) gTickClock.delay(kBeepPauseTicks);
    }
}

void RzSystem::SystemActive(bool active) {
    if (!active) return;
    const uint32_t now = gTickClock.ticks();
    if (gActivityReported && now - gActivityReportedAt < kActivityInterval) return;
    gActivityReported = true;
    gActivityReportedAt = now;
    RzOSReportUserActivity();
}

bool RzSystem::ShowMenuBar(bool show) {
    const int previous = gPresentationMode;
    gPresentationMode = show ? kModeNormal : kModeAllHidden;
    return previous == kModeNormal;
}

void RzSystem::CopyToClipboard(const RzString& text) {
    if (RzOSClipboardPut(text.c_str(), static_cast<size_t>(text.length()))) return;
    // Exactly the length() bytes, as the desktop's clipboard would keep them.
    gOwnClipboard.Set(text.c_str(), text.length());
    gOwnClipboardFilled = true;
}

RzString RzSystem::CopyFromClipboard() {
    RzString text;
    if (RzOSClipboardGet(text)) return text;
    return gOwnClipboard;
}

bool RzSystem::ClipboardHasData() {
    bool hasText = false;
    if (RzOSClipboardHasText(hasText)) return hasText;
    return gOwnClipboardFilled;
}

int32_t RzSystem::GetNativeKey() {
    uint8_t keys[16];
    RzOSGetKeys(keys);
    for (int key = 0; key < kMacKeyCount; ++key)
        if ((keys[key / 8] >> (key % 8)) & 1) return key;
    return -1;
}

bool RzSystem::TestKey(int key1, int key2) {
    KeyMap keys;
    if (!keys.Down(key1)) return false;
    return key2 == 0 || keys.Down(key2);
}

bool RzSystem::KeyBreak() {
    return TestKey(kCommandKey, kPeriodKey);
}

// --- Date ----------------------------------------------------------------------

RzDate RzSystem::GetDate() {
    const time_t now = time(nullptr);
    if (now == static_cast<time_t>(-1)) RZ_RAISE(kRzUndefProc);
    struct tm local;
    if (!localtime_r(&now, &local)) RZ_RAISE(kRzUndefProc);
    return RzDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                  local.tm_min, local.tm_sec);
}
