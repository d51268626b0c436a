// The Mac OS file layer: the seam between file specs and the
// operating system's file references, folders, Finder information and open
// files.
//
// These functions return File Manager result codes (0 for no error, -43 file
// not found, ...; see RzMacTypes.h) and throw nothing, except where a
// function says otherwise. On Linux, Finder information (type, creator,
// flags) lives in extended attributes where file servers for Mac clients keep
// it; docs/platform.md maps every operation to what Linux does.
#ifndef RZ_MAC_RZMACTOOLSOSX_H
#define RZ_MAC_RZMACTOOLSOSX_H

#include <stdint.h>
#include <stdio.h>

#include <Rz/Mac/RzMacTypes.h>
#include <Rz/RzCore/RzExport.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzIO/RzFileAccess.h>

class RzFileSpec;

// --- From a file spec -------------------------------------------------

// A reference to the existing item, links resolved; -43 when it is missing.
RZ_API int32_t RzFileSpecToFSRef(FSRef& ref, const RzFileSpec& spec);
// An old-style FSSpec, also for an item that does not exist yet.
RZ_API void RzFileSpecToFSSpec(FSSpec& fsspec, const RzFileSpec& spec);
// spec.GetFullName().
RZ_API RzString RzMacGetFullPathName(const RzFileSpec& spec);

// --- To a file spec -----------------------------------------------------

RZ_API void FSRefToRzFileSpec(RzFileSpec& spec, const FSRef& ref);
RZ_API void FSSpecToRzFileSpec(RzFileSpec& spec, const FSSpec& fsspec);
// The path of a folder the framework has handed out, ending in "/"; "/" for
// the root volume's root; "" otherwise.
RZ_API RzString RzMacGetPosixPath(short volume, int32_t folderID);

// --- Type and creator ------------------------------------------------------------

// Sets the spec's type and creator from the item's Finder
// information: a known extension wins over the Finder type, the Finder
// creator always wins (0 for a folder).
RZ_API int32_t RzMacFSRefToCreatorType(RzFileSpec& spec, const FSRef& ref);
RZ_API int32_t RzMacReadCreatorType(RzFileSpec& spec);
// The Finder information recorded for the item itself: its type, creator and
// Finder flags as stored (0 each where nothing records them, also on a file
// system without user extended attributes), whatever its extension says. A
// folder's type and creator are 0. 0, or a File Manager code: -43 for a
// missing item, the mapped errno when the attributes cannot be read.
RZ_API int32_t RzMacGetFinderInfo(const RzFileSpec& spec, uint32_t& type, uint32_t& creator,
                                  uint16_t& flags);
// Stamps `type` and `creator` on the file as given (not from its extension,
// as opening for writing does), each only where it is not 0: 0 keeps the
// stored code. Nothing is written when nothing changes. 0, or a File Manager
// code: -43 for a missing item, notAFileErr (-1302) for a folder,
// wrgVolTypErr (-123) where the file system keeps no Finder information.
RZ_API int32_t RzMacWriteCreatorType(const RzFileSpec& spec, uint32_t type, uint32_t creator);

// --- Folders and files -------------------------------------------------------------

// Moves the spec into a well-known folder, keeping its name; a
// folder that cannot be found or created leaves the name alone. Raises
// "RzArgErr" (3) for a value outside the enumeration (11 or more).
RZ_API void RzMacSetPath(RzFileSpec& spec, RzFolderType folder);
// Creates the folder that spec names in its parent folder. The name is read
// in the Mac traditional Chinese encoding (ASCII names are unchanged): bytes
// that encoding does not define give its conversion error (-8739, -8740) and
// create nothing; an empty name, ".", "..", or one holding a zero byte gives
// -37; an existing item -48; a missing parent the parent lookup's error.
RZ_API int32_t RzMacCreateDir(const RzFileSpec& spec);
// rename(); 0 or -1.
RZ_API int32_t RzMacMoveFile(const RzFileSpec& source, const RzFileSpec& destination);
// Clears or sets the Finder's invisible flag.
RZ_API int32_t RzMacSetVisible(const RzFileSpec& spec, bool visible);
// Opens a binary C stream: read "rb"; write "wb" (created or truncated);
// read/write "rb+" (created when missing, contents kept). Opening for
// writing re-derives spec's type from its extension and stamps the file's
// type and creator. Raises code 12 with the name
// "FileNotOpen (for reading): <path>" or "FileNotOpen: (for writing)<path>"
// when the file cannot be opened; returns null for any other access value.
RZ_API FILE* RzMacOpenFile(RzFileSpec& spec, eRzFileAccess access);
// Changes to the executable's folder (non-zero) or the application's folder:
// the folder that holds "<name>.app" when the executable sits in
// "<name>.app/Contents/MacOS/", else the executable's folder. 0, or -1 when
// the executable's path cannot be read or the change fails.
RZ_API int32_t RzMacSetWorkingDir(int besideExecutable);

#endif
