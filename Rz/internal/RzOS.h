// The operating-system seam: everything the framework needs from the system
// beyond the C library, and nothing else. It is implemented by exactly one
// file per system (RzOS_linux.cpp here, chosen by CMake), so that a new system
// is one new file; the logic above the seam, and the rules that hold on every
// system (Rz/internal/RzPaths.h, RzUserDirs.h, RzBCDVersion.h,
// RzAppleDouble.h), never test for a platform. docs/platform.md maps each call
// to what Linux does.
//
// The calls are grouped by concern; a new call goes into the section of its
// concern:
//   - result codes: the system's errors as File Manager codes;
//   - the system: version and platform, and the system's clocks;
//   - the process: its executable, its working directory, and the programs
//     it starts;
//   - streams: what the C library's streams cannot say themselves;
//   - items: references to files and folders, FSSpecs, folder IDs, and
//     operations on whole items;
//   - attributes of items: Finder information and other flags kept beside
//     an item's contents;
//   - folders: well-known folders and creating folders;
//   - saving files safely: the steps of replacing a file whole so that a
//     crash leaves the old or the new file, never a mix;
//   - walking folders: listing a folder tree through folder descriptors.
// Calls of the desktop (clipboard, keyboard, bell, screen saver, contrast)
// have a section of their own at the end.
//
// The file calls stand in for the File Manager calls the Mac OS file layer is
// written against and keep their contracts: they return File Manager result
// codes (OSErr) and throw nothing. Paths are POSIX paths in the file
// system's own bytes (UTF-8 by convention).
#ifndef RZ_INTERNAL_RZOS_H
#define RZ_INTERNAL_RZOS_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <Rz/Mac/RzMacTypes.h>
#include <Rz/RzCore/RzString.h>

// --- Result codes ------------------------------------------------------------

// The File Manager code for an errno value; 0 gives noErr, anything unlisted
// ioErr (the table is in docs/platform.md).
OSErr RzOSErrFromErrno(int err);

// --- The system --------------------------------------------------------------

// The system version in the framework's BCD form (RzBCDVersion.h), or 0 when
// it cannot be read.
int32_t RzOSSystemVersion();

// The platform code of this system (kRzPlatform...), or 0 when it is to be
// derived from the system version (Mac OS).
int32_t RzOSPlatform();

// TickCount: the system's tick clock, 60 ticks a second since the system
// started, not counting time asleep, in 32 bits (it wraps after 2^32 ticks,
// about 828 days).
uint32_t RzOSTickCount();

// Delay(count, &final): blocks until the tick clock has advanced `count`
// ticks from now and returns the tick count then. The wait ends on a tick
// boundary (an absolute deadline, never early), so repeated short delays do
// not drift; 0 returns at once. Signals do not cut it short.
uint32_t RzOSDelayTicks(uint32_t count);

// --- The process ---------------------------------------------------------------

// The running executable's absolute path, links resolved; "" when it cannot
// be read.
RzString RzOSExecutablePath();

// Makes `folder` the working directory: 0, or -1 when that fails.
int RzOSChangeWorkingDir(const char* folder);

// ICLaunchURL: hands `url` to the desktop's opener, which opens it in the
// user's default application, and returns at once. The opener runs as a
// process of its own that this process never waits for and that never
// becomes its zombie; it gets the URL as its one argument (no shell reads
// it). noErr once the opener has been started on its way; a mapped errno
// when no process could be started. Whether the opener exists and what it
// makes of the URL is not reported.
OSErr RzOSOpenURL(const char* url);

// --- Streams -------------------------------------------------------------------

// Makes every later write to the open stream go to the end of its file in
// one piece, also when other processes append to the same file: the
// descriptor is put in append mode and the stream unbuffered, so that each
// fwrite is one append. Must be called before any other operation on the
// stream. Returns false when the descriptor cannot be changed (the stream
// then writes where it is positioned).
bool RzOSAppendEveryWrite(FILE* stream);

// --- Memory ------------------------------------------------------------------

// The size of the system's large pages, a power of two, or 0 without them.
size_t RzOSLargePageSize();

// A hint that the large pages lying wholly inside the block [p, p + n) are
// to be backed by large pages when first touched, so that filling megabytes
// takes a few page faults instead of one per small page. Changes no content
// and may do nothing.
void RzOSPreferLargePages(void* p, size_t n);

// --- Items ---------------------------------------------------------------------

// FSPathMakeRef: a reference to the existing item at `path` (absolute, or
// relative to the working directory), every symbolic link resolved.
// `isDirectory`, when given, tells whether it is a folder. fnfErr when the
// item (or a link's target) does not exist, paramErr for a null path.
OSErr RzOSPathMakeRef(const char* path, FSRef& ref, bool* isDirectory);

// FSResolveAliasFile: resolves the reference again (aliases are symbolic
// links here, already resolved by RzOSPathMakeRef; a reference never names a
// link). fnfErr when the item is gone. `isFolder` and `wasAliased` are set
// when given; wasAliased is true when the stored path was not the resolved one.
OSErr RzOSResolveAlias(FSRef& ref, bool* isFolder, bool* wasAliased);

// FSRefMakePath: the reference's path. fnfErr when the item no longer exists,
// paramErr for an empty reference. No length limit beyond the system's.
OSErr RzOSRefMakePath(const FSRef& ref, RzString& path);

// PBMakeFSRefSync with an empty name: a reference to the folder `dirID` of
// volume `vRefNum` (0 stands for kRzRootVolume). nsvErr for another volume,
// dirNFErr for an ID that names no folder (0 and 1 included) or a folder that
// has been moved or deleted since its ID was handed out.
OSErr RzOSFolderMakeRef(short vRefNum, int32_t dirID, FSRef& ref);

// FSMakeFSSpec: the item `name` (a Pascal string, read as RzHFSPathParts
// reads it: empty for the folder itself, one plain name, or a ':' relative
// path) of the folder `dirID`. vRefNum 0 and dirID 0 stand for the working
// directory's volume and folder. Returns noErr when the item exists, fnfErr
// when only its folder exists (the FSSpec is still filled in and usable to
// create the item), dirNFErr or nsvErr when the folder cannot be found (then
// the FSSpec holds vRefNum 0, parID 0 and the last part of the name). The
// item's name in the FSSpec is not resolved: a link is named as the link.
OSErr RzOSMakeFSSpec(short vRefNum, int32_t dirID, const unsigned char* name, FSSpec& spec);

// FSGetCatalogInfo asking for the FSSpec: the FSSpec of an existing item (its
// parent folder's ID and its name). The root folder is {kRzRootVolume,
// kRzRootParentID, ""}. fnfErr when the item is gone, paramErr for an empty
// reference.
OSErr RzOSRefMakeFSSpec(const FSRef& ref, FSSpec& spec);

// FSpMakeFSRef: a reference to the item an FSSpec names. fnfErr when it does
// not exist, dirNFErr/nsvErr when its folder cannot be found.
OSErr RzOSSpecMakeRef(const FSSpec& spec, FSRef& ref);

// ResolveAliasFile on an FSSpec: when the item is a symbolic link, the FSSpec
// is replaced by that of its final target. fnfErr (FSSpec unchanged) when the
// item or the target does not exist.
OSErr RzOSResolveAliasSpec(FSSpec& spec);

// Whether anything is at `path` itself: a file, a folder, or a symbolic link
// (also one whose target is missing), readable or not.
bool RzOSItemExists(const char* path);

// --- Attributes of items -------------------------------------------------------
//
// Finder information is kept in extended attributes where Linux file servers
// keep it (layout in docs/platform.md). Read, in this order: the servers'
// AppleDouble record "user.org.netatalk.Metadata", the SMB stream
// "user.DosStream.AFP_AfpInfo:$DATA", "user.com.apple.FinderInfo", and a
// "._name" AppleDouble file beside the item. Writes go to the first
// (read-modify-write of a valid record, otherwise a fresh one) and to
// whichever of the others exist; none of the others is created. `path` is
// taken as it is (links followed).

// FSGetCatalogInfo with node flags and Finder information: the item's type,
// creator and Finder flags (0 each when nothing records them, also on a file
// system without user extended attributes), and whether it is a folder (then
// type and creator are the first eight bytes of its window rectangle). fnfErr
// for a missing item; a mapped errno when an attribute cannot be read.
OSErr RzOSReadFinderInfo(const char* path, uint32_t& type, uint32_t& creator, uint16_t& flags,
                         bool* isDirectory);

// FSSetCatalogInfo with Finder information, as the layer stamps files: sets
// the type and the creator, each only where it is non-zero. Nothing is
// written when nothing changes. wrgVolTypErr when the file system keeps no
// user extended attributes (and no "._" file was there to update); callers
// that stamp ignore errors.
OSErr RzOSWriteFinderInfo(const char* path, uint32_t type, uint32_t creator);

// FSChangeFinderFlags: sets (`set` true) or clears the Finder flags in
// `flagBits`, keeping the AFP invisible attribute in step with kIsInvisible.
// noErr without writing when the flags are already so; wrgVolTypErr when
// they would need a write the file system cannot take.
OSErr RzOSChangeFinderFlags(const char* path, bool set, uint16_t flagBits);

// The Finder's Locked box, the Mac's user-immutable flag (kFSNodeLockedMask
// of the node flags), has three counterparts here, and an item is locked when
// any of them is set:
//   - the DOS read-only attribute Samba keeps in "user.DOSATTRIB" (what a Mac
//     sees as Locked over SMB; layout in Rz/internal/RzDosAttrib.h);
//   - the AFP WriteInhibit attribute in the servers' record (what netatalk
//     enforces and a Mac sees as Locked over AFP);
//   - the kernel's immutable flag (chattr +i), which holds for everybody.
// `path` is taken as it is (links followed).

// FSGetCatalogInfo with node flags, the locked bit: `locked` tells whether
// any of the three is set. fnfErr for a missing item (then `locked` is
// false); a store that cannot be read, or one Samba or the servers would
// reject, counts as not set.
OSErr RzOSGetNodeLocked(const char* path, bool& locked);

// FSSetCatalogInfo with the locked bit cleared: clears each of the three that
// is set, the immutable flag first (it forbids changing the others): the
// read-only bit of "user.DOSATTRIB"; and, where the record has WriteInhibit,
// that bit with RenameInhibit and DeleteInhibit, which an AFP server sets
// with it. Each store is rewritten with only those bits changed; neither
// store is created. Clearing the immutable flag needs
// the CAP_LINUX_IMMUTABLE capability. noErr when nothing was set; otherwise
// the first error met, each step being tried regardless.
OSErr RzOSClearNodeLocked(const char* path);

// --- Folders -------------------------------------------------------------------

// Domains and folder types as the Mac passes them.
enum {
    kRzOnSystemDisk = -32768,
    kRzSystemDomain = -32766,
    kRzLocalDomain = -32765,
    kRzNetworkDomain = -32764,
    kRzUserDomain = -32763
};
enum {
    kRzPreferencesFolderType = 0x70726566,        // 'pref'
    kRzDocumentsFolderType = 0x646F6373,          // 'docs'
    kRzTemporaryFolderType = 0x74656D70,          // 'temp'
    kRzApplicationSupportFolderType = 0x61737570  // 'asup'
};

// FindFolder: the volume and folder ID of a well-known folder, created (with
// its missing parents, mode 0700) when `create` is set:
//   'pref' $XDG_CONFIG_HOME, else ~/.config
//   'docs' XDG_DOCUMENTS_DIR of $XDG_CONFIG_HOME/user-dirs.dirs, else ~/Documents
//   'temp' $TMPDIR, else /tmp
//   'asup' $XDG_DATA_HOME, else ~/.local/share
// The domain is not consulted (every one of these belongs to the user).
// fnfErr for another folder type or a missing folder without `create`; a
// mapped errno when it cannot be created. vRefNum and dirID are 0 on error.
OSErr RzOSFindFolder(short domain, uint32_t folderType, bool create, short& vRefNum,
                     int32_t& dirID);

// CMGetColorSyncFolderSpec: the colour profile folder of a domain, created
// (mode 0755) when missing and `create` is set. The local, system and
// system-disk domains use /usr/share/color/icc, the user domain
// $XDG_DATA_HOME/icc (else ~/.local/share/icc); others give fnfErr. With
// `create` the folder must also be writable by this process (permErr or
// vLckdErr otherwise), so that a user who may not write the shared folder
// falls back to his own. vRefNum and dirID are 0 on error.
OSErr RzOSColorSyncFolder(short domain, bool create, short& vRefNum, int32_t& dirID);

// FSCreateDirectoryUnicode: creates the folder `name`, spelled as the file
// system spells it, in the folder `parent` (mode 0777 less the umask).
// dupFNErr when it exists, bdNamErr for a null or empty name, ".", "..", or
// a name holding '/', paramErr for an empty reference.
OSErr RzOSCreateDirectory(const FSRef& parent, const char* name);

// --- Saving files safely ----------------------------------------------------------
//
// The system's part in replacing a file whole so that a crash at any moment
// leaves either the old or the new contents: the new contents are written to a
// temporary file in the same folder, flushed to disk and renamed over the
// file, and the folder is flushed after the rename. The order of the steps and
// what to do when one fails belong to the caller (RzDataBase::WriteToFile).

// The file that writing to `path` writes to: symbolic links naming the file
// are followed, a chain of them included (a relative target is read from the
// link's folder); the folders on the way are taken as they are. The target
// need not exist. fnfErr for a loop of links, paramErr for a null path.
OSErr RzOSWriteTarget(const char* path, RzString& target);

// Whether the file at `path` (no link, see RzOSWriteTarget) may be replaced
// by a new file: noErr for a regular file this process may write, fnfErr when
// there is nothing at `path`, notAFileErr for anything but a regular file (a
// folder, a device, a pipe), and the mapped errno when this process may not
// write the file (permErr, fLckdErr for an immutable file, vLckdErr).
OSErr RzOSCheckReplaceable(const char* path);

// A temporary file being written; owned by the caller until it is committed
// or discarded.
struct RzOSTempFile;

// Creates a new, empty file `<folder>/<prefix>` followed by six letters or
// digits that make the name unique. It is created exclusively (never an
// existing file) and held locked while it is open, so that
// RzOSRemoveAbandonedTempFiles leaves it alone. With `like` (an existing
// file) it is created readable by its owner only and then takes what `like`
// has: its owner where this process may set it (the group alone, or nothing,
// where it may not), its permission bits, and its extended attributes (access
// control lists and Finder information among them; an attribute the system
// does not let this process set is left out). Without `like` it gets the
// permissions a new file gets (0666 less the umask, and the folder's default
// access control list). Returns the mapped errno of a failure, and then
// leaves nothing behind; dskFulErr when the file system is full.
OSErr RzOSCreateTempFile(const char* folder, const char* prefix, const char* like,
                         RzOSTempFile*& temp);

// Appends `n` bytes. The mapped errno of a failed write (dskFulErr for a full
// file system).
OSErr RzOSWriteTempFile(RzOSTempFile* temp, const void* bytes, size_t n);

// Flushes the file's contents and attributes to the disk (fsync) and closes
// it; errors of the flush and of the close (which reports a network file
// system's failed writes) are returned mapped.
OSErr RzOSSyncTempFile(RzOSTempFile* temp);

// Renames the flushed temporary file over `target` in one step (rename), and
// releases `temp` on success; on failure `temp` stays the caller's.
OSErr RzOSCommitTempFile(RzOSTempFile* temp, const char* target);

// Closes (if still open) and removes the temporary file, and releases `temp`.
void RzOSDiscardTempFile(RzOSTempFile* temp);

// Flushes the folder's entries to the disk, so that a rename in it survives a
// power failure. noErr also where the file system cannot flush folders, or
// the folder cannot be opened to be flushed.
OSErr RzOSSyncFolder(const char* folder);

// Removes the files `<folder>/<prefix>` + six letters or digits that
// RzOSCreateTempFile made for a process that ended before it committed or
// discarded them (their lock is free). Files still being written are kept.
void RzOSRemoveAbandonedTempFiles(const char* folder, const char* prefix);

// Flushes a C stream's buffer and then the file's contents to the disk
// (fflush, fsync). The mapped errno of a failure.
OSErr RzOSSyncStream(FILE* stream);

// --- Walking folders -------------------------------------------------------------
//
// A folder is listed through its own descriptor: its entries are read whole
// when it is opened, and each item, and each sub-folder opened from it, is
// looked up relative to that descriptor, so that no path is resolved again per
// item.

// An open folder being listed.
struct RzOSFolder;

// Opens the folder at `path` (links followed) and reads its entries.
// permErr when it may not be read, errFSNotAFolder when `path` names a file,
// the mapped errno otherwise.
OSErr RzOSOpenFolder(const char* path, RzOSFolder*& folder);

// Opens the entry `name` of an open folder as a folder (a symbolic link is not
// followed: errFSNotAFolder) and reads its entries. permErr when it may not be
// read, fnfErr when it is gone.
OSErr RzOSOpenSubFolder(RzOSFolder* parent, const char* name, RzOSFolder*& folder);

// Closes the folder and releases it.
void RzOSCloseFolder(RzOSFolder* folder);

// The name of the folder's next entry in the order the system lists them
// ("." and ".." left out), or null after the last. Valid until the folder is
// closed; it becomes the entry RzOSFolderItemInfo describes.
const char* RzOSNextFolderEntry(RzOSFolder* folder);

// What a folder listing knows about an item.
struct RzOSItemInfo {
    bool isFolder;
    bool isLink;       // a symbolic link, described by what it points to
    uint64_t size;     // bytes of data
    int64_t modified;  // seconds since 1970-01-01 00:00:00 UTC
    int64_t created;   // the same, when hasCreated
    bool hasCreated;   // the file system records when the item was made
    bool finderRead;   // files: the Finder information could be read
    uint32_t type;     // Finder type and creator when finderRead (0 when
    uint32_t creator;  //   none is recorded), else 0
};

// The entry RzOSNextFolderEntry returned last. A symbolic link is described
// by what it points to; a folder listed as one has only isFolder set. For a
// file, Finder type and creator are what RzOSReadFinderInfo reads for it.
// fnfErr when the item is gone (a link to nothing included), the mapped errno
// when it cannot be looked up.
OSErr RzOSFolderItemInfo(RzOSFolder* folder, RzOSItemInfo& info);

// --- The desktop ---------------------------------------------------------------
//
// What a program without a window of its own gets from the user's desktop,
// called from the application's main thread. None of these raises or blocks
// for long, and each works, or does nothing, without a desktop. Programs the
// desktop calls need (clipboard programs, the session bus client) are
// started with argument vectors, never through a shell, in a session of
// their own, with none of this process's descriptors beyond the three
// standard ones; every one is reaped or handed to init.

// How long a clipboard program may stay silent before it counts as failed
// and is killed: no byte moved and no exit within this many milliseconds.
enum { kRzOSToolSilenceLimit = 2000 };

// The desktop's clipboard, plain text as bytes, zero bytes included. Each
// returns false when this process cannot reach a clipboard of the desktop
// (no display, or no program that reaches it), so that the caller keeps one
// of its own; otherwise true, whatever came of it.
//
// ClearCurrentScrap + PutScrapFlavor('TEXT'): a program of the desktop takes
// the text and keeps serving it after this process has ended. Failures are
// not reported.
bool RzOSClipboardPut(const char* bytes, size_t n);
// GetScrapFlavorData('TEXT'): the text on the clipboard; empty when there is
// none or it cannot be had in time.
bool RzOSClipboardGet(RzString& text);
// GetScrapFlavorFlags('TEXT'): whether the clipboard offers text (an empty
// text counts where the desktop can tell).
bool RzOSClipboardHasText(bool& hasText);

// GetKeys: the keys held down now, as the Mac's key map (bit k % 8 of byte
// k / 8 for virtual key code k, Rz/internal/RzKeyCodes.h). All zero where the
// system gives no process the state of the whole keyboard.
void RzOSGetKeys(uint8_t keys[16]);

// SysBeep: rings the desktop's bell once (the terminal's without a desktop;
// nothing without either).
void RzOSBeep();

// UpdateSystemActivity: tells the desktop that the user is active, so that
// the screen saver and the screen's power saving count their idle time from
// now. Returns without waiting for any answer.
void RzOSReportUserActivity();

// Whether the desktop's accessibility settings ask for high contrast; false
// when it has none or cannot be asked in time.
bool RzOSDesktopHighContrast();

#endif
