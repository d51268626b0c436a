// The Mac OS file types and result codes the framework's file layer works
// with, as the framework defines them for itself.
//
// FSRef names an existing file or folder; FSSpec names a file or folder by
// volume, parent folder and name, also one that does not exist yet; OSErr is a
// File Manager result code. Applications written against the Mac OS file layer
// keep compiling and comparing codes; the content of the types is this
// framework's own (see docs/platform.md):
//
// - An FSRef holds the item's absolute path with every symbolic link resolved,
//   the way the Mac resolves aliases. It does not follow the item when it is
//   moved: a reference to a moved or deleted item reports fnfErr.
// - An FSSpec holds a volume reference number, the ID of the parent folder
//   and the item's name as a Pascal string of up to 255 bytes (any name the
//   file system can hold; the classic record kept 63). Folder IDs are handed
//   out by the framework for the lifetime of the process; the whole file tree
//   is one volume (kRzRootVolume), whose root folder has the ID 2 and whose
//   root's parent, the ID 1.
#ifndef RZ_MAC_RZMACTYPES_H
#define RZ_MAC_RZMACTYPES_H

#include <stdint.h>

#include <Rz/RzCore/RzString.h>

// A File Manager result code: 0 for success, negative for an error.
typedef int16_t OSErr;

// The result codes the file layer returns.
enum {
    noErr = 0,
    dskFulErr = -34,                      // no space left, or the quota is exhausted
    nsvErr = -35,                         // no such volume
    ioErr = -36,                          // any other input/output failure
    bdNamErr = -37,                       // a name the file system cannot hold
    tmfoErr = -42,                        // too many files open
    fnfErr = -43,                         // file not found
    fLckdErr = -45,                       // the item is locked (immutable) or not a file or folder
    vLckdErr = -46,                       // the volume is read-only
    fBsyErr = -47,                        // the item is busy, or a folder is not empty
    dupFNErr = -48,                       // an item of that name exists already
    paramErr = -50,                       // a bad argument
    permErr = -54,                        // permission denied
    memFullErr = -108,                    // out of memory
    dirNFErr = -120,                      // folder not found (or a path part is no folder)
    wrgVolTypErr = -123,                  // the volume cannot do this (no Finder information there)
    notAFileErr = -1302,                  // a folder where a file was expected
    errFSNotAFolder = -1407,              // a file where a folder was expected
    kTextUnsupportedEncodingErr = -8738,  // the system has no converter for the encoding
    kTextMalformedInputErr = -8739,       // bytes that do not form a character
    kTextUndefinedElementErr = -8740      // a character the encoding does not define
};

// Finder flags (the 16-bit word at offset 8 of the Finder information).
enum {
    kIsInvisible = 0x4000  // the Finder does not show the item
};

// The one volume the framework presents, and the IDs of its root folder and
// of the root's parent.
enum { kRzRootVolume = -100, kRzRootFolderID = 2, kRzRootParentID = 1 };

// The well-known folders a file spec can be placed in
// (RzFileSpec::SetPath, RzMacSetPath).
enum RzFolderType {
    eRzFolderNone = 0,              // no folder: the spec keeps only its name
    eRzFolderProfiles = 1,          // colour profiles: the local folder, else the user's
    eRzFolderLocalProfiles = 2,     // colour profiles of the local domain
    eRzFolderUserProfiles = 3,      // colour profiles of the user
    eRzFolderPreferences = 4,       // preferences
    eRzFolderDocuments = 5,         // the user's documents
    eRzFolderTemporary = 6,         // temporary items
    eRzFolderKeep = 7,              // the spec is left as it is
    eRzFolderAppSupport = 8,        // application support
    eRzFolderAppSupportUser = 9,    // the same as eRzFolderAppSupport
    eRzFolderAppSupportCommon = 10  // the same as eRzFolderAppSupport
};

struct FSRef {
    RzString path;  // absolute, links resolved; empty: refers to nothing
};

struct FSSpec {
    short vRefNum;            // volume reference number
    int32_t parID;            // ID of the folder that holds the item
    unsigned char name[256];  // Pascal string: the item's name as the file system spells it
};

#endif
