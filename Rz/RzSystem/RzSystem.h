// RzSystem: operating-system services beside files and streams, as static
// members of a class that is never instantiated: timing, the running
// program, file operations that are not stream I/O, opening URLs and files
// in their default applications, and the desktop: the bell, keeping the
// machine awake, the clipboard and the keyboard. Errors are RzErrors of the unit
// "RzSystem"; operating-system results passed on carry the name "err" with
// the result as code. docs/platform.md says what each service does on Linux.
#ifndef RZ_RZSYSTEM_RZSYSTEM_H
#define RZ_RZSYSTEM_RZSYSTEM_H

#include <stdint.h>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzSystem/RzDate.h>

class RzStream;

class RZ_API RzSystem {
public:
    // --- Timing ----------------------------------------------------------
    //
    // Times are milliseconds from the system's tick clock (60 ticks a second
    // since the system started, not counting time asleep): ticks * 1000 / 60
    // in unsigned 32-bit arithmetic. The product wraps after 4294967 ticks
    // (19 h 53 min of uptime), where the millisecond count falls back from
    // 71582788 to 0; a measurement across that moment comes out wrong, as it
    // always did.

    // Waits, then returns the tick clock in milliseconds; 0 at once for 0 or
    // less. The wait is (milliseconds * 60 + 999) / 1000 ticks and ends on a
    // tick boundary, so Delay(1) waits at most one tick (17 ms) and a row of
    // short delays does not drift.
    static int32_t Delay(int32_t milliseconds);
    // The tick clock in milliseconds. The three are the same clock
    // (CPUTime is not processor time).
    static uint32_t TickCount();
    static uint32_t CPUTime();
    static uint32_t StartTimeMeasurement();
    // Formats "'<label>' duration: %6.3fs" with the seconds since `start`
    // (the signed difference of the two millisecond counts) and drops it:
    // nothing is written anywhere.
    static void EndTimeMeasurement(int32_t start, const RzString& label);

    // --- The program and its folders --------------------------------------

    // The running executable (links resolved); an empty spec when the system
    // cannot tell.
    static RzFileSpec GetProcessFile();
    // RzFileSpec(RzString()): the spec built from an empty path.
    static RzFileSpec GetWorkingDir();
    // Not available: always "RzUndefProc" (1).
    static void SetWorkingDir(const RzFileSpec& folder);
    // Not available: always "RzUndefProc" (1); the arguments are not read.
    static void ExecuteCommandLine(const RzString& commandLine, const RzFileSpec& folder,
                                   RzStream* output);
    // Not available: always "RzUndefProc" (1).
    static void GetFileVersion(const RzFileSpec& file, int* version);
    // Does nothing.
    static void InstallICCProfile(const RzFileSpec& profile);

    // --- Files ------------------------------------------------------------

    // RzMacCreateDir(spec): 0, or a File Manager result code.
    static int32_t CreateDir(const RzFileSpec& spec);
    // Whether the item is locked (the Finder's Locked box): on Linux when an
    // SMB client made it read-only (Samba's DOS read-only attribute), an AFP
    // server inhibits writing it, or the kernel's immutable flag is set.
    // False for a missing item and on every error.
    static bool IsFileLocked(const RzFileSpec& spec);
    // Clears whatever locks the item, where this process may; every failure
    // is ignored (clearing the immutable flag needs CAP_LINUX_IMMUTABLE).
    static void UnLockFile(const RzFileSpec& spec);
    // remove() on the native full name (a file, or an empty folder). Raises
    // code -1 (0xFFFFFFFF) "err" when that fails.
    static void RemoveFile(const RzFileSpec& spec);
    // Copies the data of `source` onto `destination` (created or truncated)
    // in chunks of 100000 bytes; attributes, type and creator are not copied
    // (the destination is stamped from its own extension, as every file
    // opened for writing is). Errors of the file streams are passed on
    // unchanged ("FileNotOpen..." 12 when either cannot be opened), both
    // files closed. The source is opened first, so a missing source leaves
    // the destination alone; copying a file onto itself empties it. A source
    // of 2 GB or more is copied whole.
    static void CopyFile(const RzFileSpec& source, const RzFileSpec& destination);
    // RzMacMoveFile (rename); a failure raises its result (-1) as code with
    // the name "err". Moving to another file system fails.
    static void MoveFile(const RzFileSpec& source, const RzFileSpec& destination);
    // RzMacSetVisible(spec, visible): 0, or a File Manager result code.
    static int32_t SetFileVisible(const RzFileSpec& spec, bool visible);
    // True when the file can be opened for reading. A file that exists but
    // cannot be read counts as absent; a folder counts as present.
    static bool FileExists(const RzFileSpec& spec);
    // True when the file can be opened for reading and writing; a missing
    // file is created to find out and removed again. Never raises, and never
    // leaves behind a file it created.
    static bool FileIsWritable(const RzFileSpec& spec);

    // --- Launching --------------------------------------------------------

    // Hands the URL to the desktop's opener (the user's default application
    // for it) and returns without waiting. Text after a zero byte is not
    // passed. Every failure is ignored, a missing opener included.
    static void LaunchURL(const RzString& url);
    // LaunchURL("file://" + the file's path), the path as it is, not
    // percent-encoded (blanks stay blanks). When the file cannot be found,
    // raises its File Manager result as code with the name "err" (-43,
    // 0xFFFFFFD5, for a missing file).
    static void LaunchFile(const RzFileSpec& spec);

    // --- Date ---------------------------------------------------------------

    // The local wall-clock time to the second, through RzDate's clamping (a
    // leap second reads as 59). "RzUndefProc" (1) when the clock cannot be
    // read or broken down.
    static RzDate GetDate();

    // --- The desktop --------------------------------------------------------
    //
    // For the application's main thread. Without a desktop each of these
    // still works for the process itself, or does nothing; none raises.
    // docs/platform.md says what each asks of the desktop.

    // Rings the bell: mode 1 three times, each followed by a pause of 40
    // ticks (two thirds of a second); any other mode once.
    static void Beep(int mode);
    // With true, tells the desktop that the user is active, so that the
    // screen saver and the display's power saving count their idle time from
    // now; passed on at most once every five seconds, however often it is
    // called. With false, nothing.
    static void SystemActive(bool active);
    // Sets the presentation mode: normal (menu bar shown) with true, all
    // hidden with false. True when the mode before was normal. The mode is
    // the process's own (it starts normal); no desktop menu bar changes.
    static bool ShowMenuBar(bool show);

    // The clipboard holds plain text as bytes, zero bytes included, without
    // any character-set conversion. It is the desktop's where one can be
    // reached (and then outlives the process), else one kept in the process.
    // A clipboard that does not answer in time counts as empty.

    // Replaces the clipboard's content with the string's length() bytes.
    static void CopyToClipboard(const RzString& text);
    // The text on the clipboard; the empty string when there is none, when
    // it is empty, and on every failure.
    static RzString CopyFromClipboard();
    // True when the clipboard holds a text (also an empty one, where the
    // desktop can tell).
    static bool ClipboardHasData();

    // The keyboard at the moment of the call, by the Mac's virtual key codes
    // (the place of a key on an Apple keyboard; docs/platform.md has the
    // table). Where the system does not tell a process which keys are down
    // (under Wayland, without a display), no key is down.

    // The lowest virtual key code (0..127) of a key that is down; -1 when
    // none is.
    static int32_t GetNativeKey();
    // Whether key1 is down and, unless key2 is 0, key2 too (key2 is only
    // looked at when key1 is down). A code is a virtual key code, or one of
    // the named keys: 1 Escape, 2 Command, 3 Shift, 4 right Shift, 5 Caps
    // Lock, 6 and 7 Option, 8 right Option, 9 Control, 10 right Control.
    // 0 counts as down, so TestKey(0, 0) is true; codes outside 0..127 are
    // never down.
    static bool TestKey(int key1, int key2);
    // TestKey(2, 47): Command and period, the user's request to cancel.
    static bool KeyBreak();

private:
    RzSystem();
};

#endif
