// The Mac OS file layer: file specs turned into the system's
// references and open files. Everything that touches the system goes through
// the operating-system seam (Rz/internal/RzOS.h); this unit holds only the
// logic the layer has on every system.
#include <Rz/Mac/RzMacToolsOSX.h>

#include <stdio.h>
#include <string.h>

#include <string>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/internal/RzFinderCodes.h>
#include <Rz/internal/RzOS.h>
#include <Rz/internal/RzPaths.h>
#include <Rz/internal/RzRaise.h>
#include <Rz/internal/RzTextEncoding.h>

static const char kRzUnit[] = "RzMacToolsOSX";

namespace {

// FSPathMakeFSSpec: the FSSpec of the existing item at `path`.
OSErr PathMakeFSSpec(const char* path, FSSpec& fsspec) {
    FSRef ref;
    const OSErr err = RzOSPathMakeRef(path, ref, nullptr);
    return err != noErr ? err : RzOSRefMakeFSSpec(ref, fsspec);
}

// An FSSpec for `name` inside the folder that `folder` names. The Mac builds
// the relative path ":folder:name" from the folder's parent; the root folder
// has no name of its own here, so an item in it is asked for from the root
// directly. '/' stands for ':' in the parts of such a path (RzHFSName).
OSErr MakeSpecInFolder(const FSSpec& folder, const RzString& name, FSSpec& fsspec) {
    std::string relative = ":";
    int32_t parent = folder.parID;
    if (folder.name[0] == 0) {
        parent = kRzRootFolderID;
    } else {
        relative += RzHFSName(RzString(folder.name).c_str()) + ":";
    }
    relative += RzHFSName(name.c_str());
    unsigned char pascal[256];
    RzString(relative.c_str()).p_str(pascal);
    return RzOSMakeFSSpec(folder.vRefNum, parent, pascal, fsspec);
}

// Type 0 and creator 0. With type 0 no table row pairs a creator with it, so
// SetCreatorID(0) leaves the creator 0.
void ClearCodes(RzFileSpec& spec) {
    spec.SetTypeID(0);
    spec.SetCreatorID(0);
}

}  // namespace

// --- From a file spec -------------------------------------------------

int32_t RzFileSpecToFSRef(FSRef& ref, const RzFileSpec& spec) {
    OSErr err = RzOSPathMakeRef(spec.GetFullName().c_str(), ref, nullptr);
    if (err != noErr) {
        RzString name = spec.GetName();
        if (name.length() == 0) return err;
        // The item may still lie in an existing folder under a name the path
        // route could not reach; a missing item gives fnfErr from here.
        FSSpec folder, item;
        err = PathMakeFSSpec(spec.GetPath().c_str(), folder);
        if (err != noErr) return err;
        err = MakeSpecInFolder(folder, name, item);
        if (err != noErr) return err;
        err = RzOSSpecMakeRef(item, ref);
        if (err != noErr) return err;
    }
    return RzOSResolveAlias(ref, nullptr, nullptr);
}

void RzFileSpecToFSSpec(FSSpec& fsspec, const RzFileSpec& spec) {
    if (PathMakeFSSpec(spec.GetFullName().c_str(), fsspec) == noErr) {
        RzOSResolveAliasSpec(fsspec);
        return;
    }
    RzString name = spec.GetName();
    FSSpec folder;
    if (name.length() > 0 && PathMakeFSSpec(spec.GetPath().c_str(), folder) == noErr) {
        // A missing item still gets a usable FSSpec: its folder and name.
        MakeSpecInFolder(folder, name, fsspec);
        RzOSResolveAliasSpec(fsspec);
        return;
    }
    unsigned char pascal[256];
    RzOSMakeFSSpec(0, 0, name.p_str(pascal), fsspec);
}

RzString RzMacGetFullPathName(const RzFileSpec& spec) {
    return spec.GetFullName();
}

// --- To a file spec -----------------------------------------------------

void FSRefToRzFileSpec(RzFileSpec& spec, const FSRef& ref) {
    FSRef resolved = ref;
    RzOSResolveAlias(resolved, nullptr, nullptr);
    RzString path;
    if (RzOSRefMakePath(resolved, path) != noErr) path = RzString();
    spec.SetNativeFullName(path);
    ClearCodes(spec);
    RzMacFSRefToCreatorType(spec, ref);
}

void FSSpecToRzFileSpec(RzFileSpec& spec, const FSSpec& fsspec) {
    FSSpec resolved = fsspec;
    RzOSResolveAliasSpec(resolved);
    FSRef ref;
    RzString path;
    if (RzOSSpecMakeRef(resolved, ref) == noErr && RzOSRefMakePath(ref, path) == noErr) {
        spec.SetNativeFullName(path);
        ClearCodes(spec);
        RzMacFSRefToCreatorType(spec, ref);
        return;
    }
    // Typically a file that does not exist yet: its folder and its name.
    spec.SetNativeFullName(RzMacGetPosixPath(resolved.vRefNum, resolved.parID));
    spec.SetName(RzString(resolved.name));
    ClearCodes(spec);
    RzMacReadCreatorType(spec);
}

RzString RzMacGetPosixPath(short volume, int32_t folderID) {
    FSRef ref;
    RzString path;
    if (RzOSFolderMakeRef(volume, folderID, ref) != noErr || RzOSRefMakePath(ref, path) != noErr)
        return RzString();
    int32_t n = path.length();
    if (n > 0 && path.c_str()[n - 1] != '/') path += '/';
    return path;
}

// --- Type and creator ------------------------------------------------------------

int32_t RzMacFSRefToCreatorType(RzFileSpec& spec, const FSRef& ref) {
    uint32_t type = 0, creator = 0;
    uint16_t flags = 0;
    bool isFolder = false;
    OSErr err = RzOSReadFinderInfo(ref.path.c_str(), type, creator, flags, &isFolder);
    if (err != noErr) return err;
    if (isFolder) type = creator = 0;  // a folder's first bytes are its window
    RzTakeFinderCodes(spec, type, creator);
    return noErr;
}

void RzTakeFinderCodes(RzFileSpec& spec, uint32_t type, uint32_t creator) {
    // A known extension wins over the Finder type; the Finder creator always
    // wins, also when it is 0.
    spec.SetType(eRzTypeUnknown);
    if (spec.GetType() == eRzTypeUnknown) spec.SetTypeID(type);
    spec.creatorID = creator;
}

void RzStampFinderCodes(const RzFileSpec& spec) {
    FSRef ref;
    uint32_t type = 0, creator = 0;
    uint16_t flags = 0;
    bool isFolder = true;
    if (RzFileSpecToFSRef(ref, spec) == noErr &&
        RzOSReadFinderInfo(ref.path.c_str(), type, creator, flags, &isFolder) == noErr && !isFolder)
        RzOSWriteFinderInfo(ref.path.c_str(), spec.GetTypeID(), spec.GetCreatorID());
}

int32_t RzMacReadCreatorType(RzFileSpec& spec) {
    FSRef ref;
    int32_t err = RzFileSpecToFSRef(ref, spec);
    if (err != noErr) return static_cast<OSErr>(err);
    return RzMacFSRefToCreatorType(spec, ref);
}

int32_t RzMacGetFinderInfo(const RzFileSpec& spec, uint32_t& type, uint32_t& creator,
                           uint16_t& flags) {
    type = creator = 0;
    flags = 0;
    FSRef ref;
    int32_t err = RzFileSpecToFSRef(ref, spec);
    if (err != noErr) return err;
    bool isFolder = false;
    err = RzOSReadFinderInfo(ref.path.c_str(), type, creator, flags, &isFolder);
    if (err != noErr) flags = 0;
    if (err != noErr || isFolder) type = creator = 0;  // a folder's first bytes are its window
    return err;
}

int32_t RzMacWriteCreatorType(const RzFileSpec& spec, uint32_t type, uint32_t creator) {
    FSRef ref;
    int32_t err = RzFileSpecToFSRef(ref, spec);
    if (err != noErr) return err;
    uint32_t storedType = 0, storedCreator = 0;
    uint16_t flags = 0;
    bool isFolder = false;
    err = RzOSReadFinderInfo(ref.path.c_str(), storedType, storedCreator, flags, &isFolder);
    if (err != noErr) return err;
    if (isFolder) return notAFileErr;
    return RzOSWriteFinderInfo(ref.path.c_str(), type, creator);
}

// --- Folders and files -------------------------------------------------------------

void RzMacSetPath(RzFileSpec& spec, RzFolderType folder) {
    RzString name = spec.GetName();
    int value = static_cast<int>(folder);
    if (value < eRzFolderNone || value > eRzFolderAppSupportCommon) RZ_RAISE(kRzArgErr);
    if (folder == eRzFolderNone) {
        spec.SetFullName(name);
        return;
    }
    if (folder == eRzFolderKeep) return;

    // Lookup results are not checked: a folder that cannot be had leaves
    // volume and ID 0, so the spec keeps only its name.
    short volume = 0;
    int32_t id = 0;
    switch (folder) {
        case eRzFolderProfiles:
            // A user who may not create or write the shared folder gets his own.
            if (RzOSColorSyncFolder(kRzLocalDomain, true, volume, id) != noErr)
                RzOSColorSyncFolder(kRzUserDomain, true, volume, id);
            break;
        case eRzFolderLocalProfiles:
            RzOSColorSyncFolder(kRzLocalDomain, true, volume, id);
            break;
        case eRzFolderUserProfiles:
            RzOSColorSyncFolder(kRzUserDomain, true, volume, id);
            break;
        case eRzFolderPreferences:
            RzOSFindFolder(kRzOnSystemDisk, kRzPreferencesFolderType, true, volume, id);
            break;
        case eRzFolderDocuments:
            RzOSFindFolder(kRzOnSystemDisk, kRzDocumentsFolderType, true, volume, id);
            break;
        case eRzFolderTemporary:
            RzOSFindFolder(kRzOnSystemDisk, kRzTemporaryFolderType, true, volume, id);
            break;
        default:  // the three application support values
            RzOSFindFolder(kRzOnSystemDisk, kRzApplicationSupportFolderType, true, volume, id);
            break;
    }
    spec.SetNativeFullName(RzMacGetPosixPath(volume, id));
    spec.SetName(name);
}

int32_t RzMacCreateDir(const RzFileSpec& spec) {
    RzFileSpec parent = spec;
    parent.SetName(RzString());
    FSRef ref;
    int32_t err = RzFileSpecToFSRef(ref, parent);
    if (err != noErr) return err;
    // The name is given in the Mac traditional Chinese encoding (text
    // encoding 2), as the framework always did; a zero byte cannot be part of
    // a file system name.
    unsigned char pascal[256];
    spec.GetName().p_str(pascal);
    if (memchr(pascal + 1, 0, pascal[0])) return bdNamErr;
    RzString name;
    const OSErr converted = RzMacChineseTradToUTF8(pascal, name);
    if (converted != noErr) return converted;
    return RzOSCreateDirectory(ref, name.c_str());
}

int32_t RzMacMoveFile(const RzFileSpec& source, const RzFileSpec& destination) {
    return static_cast<OSErr>(
        rename(source.GetFullName().c_str(), destination.GetFullName().c_str()));
}

int32_t RzMacSetVisible(const RzFileSpec& spec, bool visible) {
    FSRef ref;
    int32_t err = RzFileSpecToFSRef(ref, spec);
    if (err != noErr) return err;
    return RzOSChangeFinderFlags(ref.path.c_str(), !visible, kIsInvisible);
}

FILE* RzMacOpenFile(RzFileSpec& spec, eRzFileAccess access) {
    if (access == eRzFileRead) {
        FSRef ref;
        RzString path;
        RzFileSpecToFSRef(ref, spec);
        if (RzOSRefMakePath(ref, path) != noErr) path = RzString();
        FILE* file = fopen(path.c_str(), "rb");
        if (file) return file;
        RzRaise(kRzFileNotOpen,
                (RzString("FileNotOpen (for reading): ") + spec.GetFullName()).c_str(), nullptr, 0);
    }
    if (access != eRzFileWrite && access != eRzFileReadWrite) return nullptr;

    spec.SetType(eRzTypeUnknown);  // type and creator follow the extension
    RzString path = spec.GetFullName();
    FILE* file;
    if (access == eRzFileWrite) {
        file = fopen(path.c_str(), "wb");
    } else {
        file = fopen(path.c_str(), "rb+");
        if (!file) {
            // Created without truncating ("ab", where the classic code said
            // "wb"): a missing file becomes the same empty file, and a file
            // that another process created in the meantime keeps what it
            // wrote (log files are opened this way by several processes).
            if (FILE* created = fopen(path.c_str(), "ab")) fclose(created);
            file = fopen(path.c_str(), "rb+");
        }
    }

    // Stamp type and creator, whether or not the open succeeded; a zero code
    // keeps what the file has. Failures (a file system without Finder
    // information, for one) are ignored.
    RzStampFinderCodes(spec);

    if (file) return file;
    RzRaise(kRzFileNotOpen, (RzString("FileNotOpen: (for writing)") + spec.GetFullName()).c_str(),
            nullptr, 0);
}

int32_t RzMacSetWorkingDir(int besideExecutable) {
    const std::string folder = RzApplicationFolder(RzOSExecutablePath().c_str(), besideExecutable);
    return folder.empty() ? -1 : RzOSChangeWorkingDir(folder.c_str());
}
