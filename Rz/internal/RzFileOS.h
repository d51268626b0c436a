// The file half of the operating-system seam: everything the Mac OS file
// layer needs from the system, one implementation per system
// (RzFileOS_linux.cpp). The functions stand in for the File Manager calls the
// layer is written against and keep their contracts: they return File
// Manager result codes (OSErr) and throw nothing. docs/platform.md maps each
// call to what Linux does instead.
//
// Paths are POSIX paths in the file system's own bytes (UTF-8 by convention).
#ifndef RZ_INTERNAL_RZFILEOS_H
#define RZ_INTERNAL_RZFILEOS_H

#include <stdint.h>

#include <Rz/Mac/RzMacTypes.h>
#include <Rz/RzCore/RzString.h>

// --- Result codes ------------------------------------------------------------

// The File Manager code for a C library errno value (table in
// docs/platform.md); 0 gives noErr, anything unlisted ioErr.
OSErr RzOSErrFromErrno(int err);

// --- References ----------------------------------------------------------------

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

// --- Old-style FSSpec records ------------------------------------------------

// FSMakeFSSpec. `name` (a Pascal string) is either
// - empty: the folder `dirID` itself;
// - a plain name (no leading ':'), taken whole as the item's name in folder
//   `dirID`, colons included; or
// - a relative path starting with ':' whose parts are separated by ':' (an
//   empty part goes up one folder, a final ':' names a folder); in its parts a
//   '/' stands for a ':' of the file system's name, as on the Mac.
// vRefNum 0 and dirID 0 stand for the working directory's volume and folder.
// Returns noErr when the item exists, fnfErr when only its folder exists (the
// FSSpec is still filled in and usable to create the item), dirNFErr or
// nsvErr when the folder cannot be found (then the FSSpec holds vRefNum 0,
// parID 0 and the last part of the name). The item's name in the FSSpec is
// not resolved: a link is named as the link.
OSErr RzOSMakeFSSpec(short vRefNum, int32_t dirID, const unsigned char* name, FSSpec& spec);

// FSGetCatalogInfo asking for the FSSpec: the FSSpec of an existing
// item (its parent folder's ID and its name). The root folder is
// {kRzRootVolume, kRzRootParentID, ""}. fnfErr when the item is gone.
OSErr RzOSRefMakeFSSpec(const FSRef& ref, FSSpec& spec);

// FSPathMakeFSSpec: RzOSPathMakeRef followed by RzOSRefMakeFSSpec.
OSErr RzOSPathMakeFSSpec(const char* path, FSSpec& spec);

// FSpMakeFSRef: a reference to the item an FSSpec names. fnfErr when it does
// not exist, dirNFErr/nsvErr when its folder cannot be found.
OSErr RzOSSpecMakeRef(const FSSpec& spec, FSRef& ref);

// ResolveAliasFile on an FSSpec: when the item is a symbolic link, the FSSpec
// is replaced by that of its final target. fnfErr (FSSpec unchanged) when the
// item or the target does not exist.
OSErr RzOSResolveAliasSpec(FSSpec& spec);

// A file system name in the form relative paths of RzOSMakeFSSpec take: every
// ':' becomes '/'.
RzString RzOSHFSName(const char* name);

// --- Finder information --------------------------------------------------------
//
// Kept in extended attributes where Linux file servers keep it (layout in
// docs/platform.md). Read, in this order: the servers' AppleDouble record
// "user.org.netatalk.Metadata", the SMB stream "user.DosStream.AFP_AfpInfo:$DATA",
// "user.com.apple.FinderInfo", and a "._name" AppleDouble file beside the
// item. Writes go to the first (read-modify-write of a valid record, otherwise
// a fresh one) and to whichever of the others exist; none of the others is
// created. `path` is taken as it is (links followed).

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

// --- Well-known folders --------------------------------------------------------

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

// The paths the two functions above use, without touching the disk; "" for an
// unknown folder type or domain, or when no home folder is known.
RzString RzOSKnownFolderPath(uint32_t folderType);
RzString RzOSColorSyncFolderPath(short domain);

// The folder a user-dirs.dirs text assigns to `key` ("XDG_DOCUMENTS_DIR"):
// the last line `key="$HOME/..."` or `key="/..."`, with $HOME replaced by
// `home` and backslash escapes removed; "" when there is none.
RzString RzOSUserDirFromText(const char* text, const char* key, const char* home);

// The folder ID of an existing folder, handed out if it has none yet, and
// its volume; dirNFErr when `path` is no existing folder. With
// `mustBeWritable` the folder must be writable by this process.
OSErr RzOSFolderID(const char* path, bool mustBeWritable, short& vRefNum, int32_t& dirID);

// --- Folders, names and the working directory -------------------------------

// FSCreateDirectoryUnicode after ConvertFromPStringToUnicode from the Mac
// traditional Chinese encoding (text encoding 2): creates the folder `name`
// (a Pascal string) in the folder `parent`. dupFNErr when it exists,
// bdNamErr for an empty name, ".", "..", or one holding '/' or a zero byte,
// the conversion's error for bytes the encoding does not define.
OSErr RzOSCreateDirectory(const FSRef& parent, const unsigned char* name);

// CFBundle's view of where the application lives, from the executable's
// path: with `besideExecutable` non-zero the executable's folder; with 0 the
// folder holding the application bundle when the executable sits in
// "<name>.app/Contents/MacOS/", else the executable's folder. "" for a path
// without '/'.
RzString RzOSWorkingDirFor(const char* executablePath, int besideExecutable);

// chdir to RzOSWorkingDirFor(the running executable (/proc/self/exe),
// besideExecutable); returns chdir's result, -1 when the executable's path
// cannot be read.
int RzOSSetWorkingDir(int besideExecutable);

#endif
