// Linux implementation of the operating-system seam.
#include <Rz/internal/RzOS.h>

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/fs.h>
#include <poll.h>
#include <pthread.h>
#include <pwd.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <dirent.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include <Rz/Mac/RzByteOrder.h>
#include <Rz/internal/RzAppleDouble.h>
#include <Rz/internal/RzBCDVersion.h>
#include <Rz/internal/RzDosAttrib.h>
#include <Rz/internal/RzKeyCodes.h>
#include <Rz/internal/RzPaths.h>
#include <Rz/internal/RzUserDirs.h>

namespace {

// --- Folder IDs ------------------------------------------------------------
//
// Process-wide: the folders the framework has handed out an ID for. Changed
// only by FolderIDFor (under the lock); IDs are never reused, so an FSSpec
// stays meaningful for the whole run. An entry keeps the device and inode it
// was handed out for, so that an ID whose folder was moved or deleted reports
// "folder not found" instead of naming whatever took its place.
struct Folder {
    std::string path;
    dev_t device;
    ino_t inode;
};
std::mutex gFolderLock;
std::vector<Folder> gFolders;  // ID kFirstFolderID + i
std::map<std::pair<dev_t, ino_t>, int32_t> gFolderIDs;
const int32_t kFirstFolderID = 16;  // below: reserved, as on the Mac

// --- Attribute calls relative to a folder ----------------------------------
//
// Process-wide: whether the kernel has getxattrat and listxattrat (Linux 6.13
// and later). Starts true where the calls are known; set false for good by
// FolderItem the first time one of them reports that it does not exist (or
// is refused by a system call filter), after which attributes of listed items
// are read by path.
#if !defined(SYS_listxattrat) &&                                                                  \
    ((defined(__x86_64__) && !defined(__ILP32__)) || defined(__i386__) || defined(__aarch64__) || \
     defined(__arm__) || defined(__riscv) || defined(__loongarch__))
#define SYS_getxattrat 464  // the same number on every architecture listed
#define SYS_listxattrat 465
#endif
#ifdef SYS_listxattrat
std::atomic<bool> gXattrAtCalls{true};
#else
std::atomic<bool> gXattrAtCalls{false};
#endif

// --- The X display -----------------------------------------------------------
//
// Process-wide: libX11, loaded on first use, and the one connection to the
// display that the keyboard, the bell and the screen saver share. Changed
// only by LoadX and XConnection, and marked broken by the I/O error handlers
// (all on the application's main thread, where the desktop calls are made).
struct XDisplay;  // Xlib's Display, opaque here
typedef int (*XIOHandler)(XDisplay*);
typedef void (*XIOExitHandler)(XDisplay*, void*);
struct XFunctions {
    XDisplay* (*openDisplay)(const char*);
    int (*closeDisplay)(XDisplay*);
    int (*queryKeymap)(XDisplay*, char*);
    int (*bell)(XDisplay*, int);
    int (*resetScreenSaver)(XDisplay*);
    int (*flush)(XDisplay*);
    unsigned long (*internAtom)(XDisplay*, const char*, int);
    unsigned long (*getSelectionOwner)(XDisplay*, unsigned long);
    XIOHandler (*setIOErrorHandler)(XIOHandler);
    void (*setIOErrorExitHandler)(XDisplay*, XIOExitHandler, void*);
};
struct XState {
    bool loadTried = false;
    void* handle = nullptr;  // libX11, never unloaded
    XFunctions call = {};
    XDisplay* display = nullptr;
    std::string displayName;  // the $DISPLAY it was opened for
    std::string failedName;   // a $DISPLAY that could not be opened
    bool broken = false;      // the server went away; closed on the next call
    bool handlerInstalled = false;
    XIOHandler previousIOHandler = nullptr;
};
XState gX;

std::string ToStd(const RzString& s) {
    return std::string(s.c_str(), static_cast<size_t>(s.length()));
}

RzString FromStd(const std::string& s) {
    return s.empty() ? RzString("") : RzString(s.data(), static_cast<int32_t>(s.size()), false);
}

std::string FromPascal(const unsigned char* p) {
    return p ? std::string(reinterpret_cast<const char*>(p + 1), p[0]) : std::string();
}

void ToPascal(const std::string& s, unsigned char* out) {
    size_t n = s.size() > 255 ? 255 : s.size();
    out[0] = static_cast<unsigned char>(n);
    memcpy(out + 1, s.data(), n);
}

// The ID of the folder at `path` (resolved, existing: st describes it).
int32_t FolderIDFor(const std::string& path, const struct stat& st) {
    struct stat root;
    if (stat("/", &root) == 0 && root.st_dev == st.st_dev && root.st_ino == st.st_ino)
        return kRzRootFolderID;
    std::lock_guard<std::mutex> lock(gFolderLock);
    auto key = std::make_pair(st.st_dev, st.st_ino);
    auto found = gFolderIDs.find(key);
    if (found != gFolderIDs.end()) {
        gFolders[static_cast<size_t>(found->second - kFirstFolderID)].path = path;
        return found->second;
    }
    int32_t id = kFirstFolderID + static_cast<int32_t>(gFolders.size());
    gFolders.push_back(Folder{path, st.st_dev, st.st_ino});
    gFolderIDs[key] = id;
    return id;
}

// The path of folder `dirID`; dirNFErr when it names none (any more).
OSErr FolderPath(short vRefNum, int32_t dirID, std::string& path) {
    if (vRefNum != 0 && vRefNum != kRzRootVolume) return nsvErr;
    if (dirID == kRzRootFolderID) {
        path = "/";
        return noErr;
    }
    Folder folder;
    {
        std::lock_guard<std::mutex> lock(gFolderLock);
        if (dirID < kFirstFolderID ||
            dirID - kFirstFolderID >= static_cast<int64_t>(gFolders.size()))
            return dirNFErr;
        folder = gFolders[static_cast<size_t>(dirID - kFirstFolderID)];
    }
    struct stat st;
    if (stat(folder.path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_dev != folder.device ||
        st.st_ino != folder.inode)
        return dirNFErr;
    path = folder.path;
    return noErr;
}

// realpath into a std::string; errno is kept on failure.
bool Resolve(const std::string& path, std::string& resolved) {
    char* r = realpath(path.c_str(), nullptr);
    if (!r) return false;
    resolved = r;
    free(r);
    return true;
}

// The FSSpec of an existing item at a resolved path.
OSErr SpecOfResolved(const std::string& resolved, FSSpec& spec) {
    struct stat st;
    if (resolved == "/") {
        spec.vRefNum = kRzRootVolume;
        spec.parID = kRzRootParentID;
        spec.name[0] = 0;
        return noErr;
    }
    std::string parent = RzPathFolder(resolved);
    if (stat(parent.c_str(), &st) != 0) return RzOSErrFromErrno(errno);
    spec.vRefNum = kRzRootVolume;
    spec.parID = FolderIDFor(parent, st);
    ToPascal(RzPathLeaf(resolved), spec.name);
    return noErr;
}

// The path an FSSpec names (the item need not exist).
OSErr SpecPath(const FSSpec& spec, std::string& path) {
    std::string name = FromPascal(spec.name);
    if (spec.parID == kRzRootParentID && name.empty() &&
        (spec.vRefNum == 0 || spec.vRefNum == kRzRootVolume)) {
        path = "/";
        return noErr;
    }
    std::string folder;
    OSErr err = FolderPath(spec.vRefNum, spec.parID, folder);
    if (err == noErr) path = name.empty() ? folder : RzPathJoin(folder, name);
    return err;
}

void ClearSpec(FSSpec& spec, const std::string& name) {
    spec.vRefNum = 0;
    spec.parID = 0;
    ToPascal(name, spec.name);
}

// --- Extended attributes ---------------------------------------------------

const char kMetadataName[] = "user.org.netatalk.Metadata";
const char kAfpStreamName[] = "user.DosStream.AFP_AfpInfo:$DATA";
const char kFinderInfoName[] = "user.com.apple.FinderInfo";

enum AttrResult { kAttrFound, kAttrAbsent, kAttrUnsupported, kAttrTooLarge, kAttrError };

// Reads attribute `name` into `buffer` (at most `size` bytes).
AttrResult ReadAttr(const char* path, const char* name, unsigned char* buffer, size_t size,
                    size_t* got, int* err) {
    ssize_t n = getxattr(path, name, buffer, size);
    if (n >= 0) {
        *got = static_cast<size_t>(n);
        return kAttrFound;
    }
    *err = errno;
    if (errno == ENODATA) return kAttrAbsent;
    if (errno == ENOTSUP) return kAttrUnsupported;
    if (errno == ERANGE) return kAttrTooLarge;
    return kAttrError;
}

// What the item's stores hold. Each store is remembered so that a write can
// update exactly the ones that exist.
struct Stores {
    bool attrsSupported = true;
    bool metadataValid = false;
    unsigned char metadata[kRzMetadataSize];
    bool streamValid = false;
    size_t streamSize = 0;
    unsigned char stream[kRzAfpInfoSize + 1];
    bool appleValid = false;
    unsigned char apple[kRzFinderInfoSize];
    bool sidecarValid = false;
    std::string sidecarPath;
    uint32_t sidecarOffset = 0;
    unsigned char sidecar[kRzFinderInfoSize];
};

std::string SidecarPath(const std::string& path) {
    const std::string name = RzPathLeaf(path);
    if (name.empty() || name == "." || name == "..") return "";
    const std::string folder = RzPathFolder(path);
    return folder.empty() ? "._" + name : RzPathJoin(folder, "._" + name);
}

// The Finder information of a "._" file open as `fd` (closed here), if it has
// a valid one.
bool ReadSidecar(Stores& s, int fd) {
    if (fd < 0) return false;
    bool ok = false;
    struct stat st;
    unsigned char header[4096];
    ssize_t n =
        fstat(fd, &st) == 0 && S_ISREG(st.st_mode) ? pread(fd, header, sizeof header, 0) : -1;
    uint32_t offset = 0, length = 0;
    if (n > 0 &&
        RzAppleDoubleFindEntry(header, static_cast<size_t>(n), static_cast<size_t>(st.st_size),
                               kRzEntryFinderInfo, &offset, &length) &&
        length >= kRzFinderInfoSize &&
        pread(fd, s.sidecar, kRzFinderInfoSize, offset) == kRzFinderInfoSize) {
        s.sidecarOffset = offset;
        ok = true;
    }
    close(fd);
    return ok;
}

// An item whose stores are reached by its path (links followed).
struct PathItem {
    const char* path;
    AttrResult Attr(const char* name, unsigned char* buffer, size_t size, size_t* got, int* err) {
        return ReadAttr(path, name, buffer, size, got, err);
    }
    // The "._" file open for reading, or -1; its path is kept for writing.
    int OpenSidecar(Stores& s) {
        s.sidecarPath = SidecarPath(path);
        return s.sidecarPath.empty()
                   ? -1
                   : open(s.sidecarPath.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
};

// Reads the stores in order; `fi` gets the first valid one's Finder
// information (all zero when none has any). A plain read stops at the first
// valid store; `all` reads every one, so that a write can update each that
// exists. Returns noErr or the error that stopped reading. `item` reads the
// attributes and opens the "._" file (PathItem, or a folder listing's item).
template <class Item>
OSErr ReadStores(Item& item, Stores& s, unsigned char* fi, bool all) {
    memset(fi, 0, kRzFinderInfoSize);
    size_t got = 0;
    int err = 0;
    AttrResult r = item.Attr(kMetadataName, s.metadata, sizeof s.metadata, &got, &err);
    if (r == kAttrUnsupported) {
        s.attrsSupported = false;
    } else if (r == kAttrError) {
        return RzOSErrFromErrno(err);
    } else {
        // A record the servers would reject (too long included) counts as none.
        s.metadataValid = r == kAttrFound && RzMetadataIsValid(s.metadata, got);
        if (s.metadataValid && !all) {
            RzMetadataGetFinderInfo(s.metadata, kRzMetadataSize, fi);
            return noErr;
        }
        r = item.Attr(kAfpStreamName, s.stream, sizeof s.stream, &got, &err);
        if (r == kAttrError) return RzOSErrFromErrno(err);
        s.streamSize = got;
        s.streamValid = r == kAttrFound && RzAfpInfoGetFinderInfo(s.stream, got, nullptr);
        r = item.Attr(kFinderInfoName, s.apple, sizeof s.apple, &got, &err);
        if (r == kAttrError) return RzOSErrFromErrno(err);
        s.appleValid = r == kAttrFound && got == kRzFinderInfoSize;
    }
    s.sidecarValid = ReadSidecar(s, item.OpenSidecar(s));

    if (s.metadataValid)
        RzMetadataGetFinderInfo(s.metadata, kRzMetadataSize, fi);
    else if (s.streamValid)
        RzAfpInfoGetFinderInfo(s.stream, s.streamSize, fi);
    else if (s.appleValid)
        memcpy(fi, s.apple, kRzFinderInfoSize);
    else if (s.sidecarValid)
        memcpy(fi, s.sidecar, kRzFinderInfoSize);
    return noErr;
}

bool IsZero(const unsigned char* p, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (p[i]) return false;
    return true;
}

// Writes `fi` to every store that exists, and to the servers' record whether
// or not it exists (a fresh one when there is none, unless there is nothing to
// record). The result is that of the record's write; a file system without
// extended attributes counts as written when a "._" file took the change.
OSErr WriteStores(const char* path, const struct stat& st, Stores& s, const unsigned char* fi) {
    OSErr result = noErr;
    bool sidecarWritten = false;
    if (s.sidecarValid && memcmp(s.sidecar, fi, kRzFinderInfoSize) != 0) {
        int fd = open(s.sidecarPath.c_str(), O_WRONLY | O_CLOEXEC);
        if (fd >= 0) {
            sidecarWritten =
                pwrite(fd, fi, kRzFinderInfoSize, s.sidecarOffset) == kRzFinderInfoSize;
            close(fd);
        }
    }
    if (!s.attrsSupported) return sidecarWritten ? noErr : wrgVolTypErr;

    unsigned char record[kRzMetadataSize];
    if (s.metadataValid) {
        memcpy(record, s.metadata, kRzMetadataSize);
        RzMetadataSetFinderInfo(record, kRzMetadataSize, fi);
    } else if (!IsZero(fi, kRzFinderInfoSize)) {
        RzMetadataBuild(record, fi, RzMetadataDate(st.st_mtime));
    }
    bool needRecord = s.metadataValid ? memcmp(record, s.metadata, kRzMetadataSize) != 0
                                      : !IsZero(fi, kRzFinderInfoSize);
    if (needRecord && setxattr(path, kMetadataName, record, kRzMetadataSize, 0) != 0)
        result = errno == ENOTSUP && sidecarWritten ? static_cast<OSErr>(noErr)
                                                    : RzOSErrFromErrno(errno);

    // The copies other tools keep are updated so that none disagrees.
    if (s.streamValid) {
        unsigned char stream[kRzAfpInfoSize + 1];
        memcpy(stream, s.stream, s.streamSize);
        RzAfpInfoSetFinderInfo(stream, s.streamSize, fi);
        if (memcmp(stream, s.stream, s.streamSize) != 0)
            setxattr(path, kAfpStreamName, stream, s.streamSize, 0);
    }
    if (s.appleValid && memcmp(s.apple, fi, kRzFinderInfoSize) != 0)
        setxattr(path, kFinderInfoName, fi, kRzFinderInfoSize, 0);
    return result;
}

// ReadStores on an existing item, whose stat goes to `st`.
OSErr ReadItem(const char* path, struct stat& st, Stores& s, unsigned char* fi, bool all) {
    if (!path) return paramErr;
    if (stat(path, &st) != 0) return RzOSErrFromErrno(errno);
    PathItem item{path};
    return ReadStores(item, s, fi, all);
}

// Read-modify-write of the Finder information through `change`.
template <typename Change>
OSErr UpdateFinderInfo(const char* path, Change change) {
    struct stat st;
    Stores s;
    unsigned char before[kRzFinderInfoSize], after[kRzFinderInfoSize];
    const OSErr err = ReadItem(path, st, s, before, true);
    if (err != noErr) return err;
    memcpy(after, before, sizeof after);
    change(after);
    bool recordInStep = true;
    if (s.metadataValid) {
        unsigned char patched[kRzMetadataSize];
        memcpy(patched, s.metadata, sizeof patched);
        RzMetadataSetFinderInfo(patched, sizeof patched, after);
        recordInStep = memcmp(patched, s.metadata, sizeof patched) == 0;
    }
    if (memcmp(before, after, sizeof after) == 0 && recordInStep) return noErr;
    return WriteStores(path, st, s, after);
}

// --- Clock -----------------------------------------------------------------

// The monotonic clock (which, like the Mac's tick count, stands still while
// the system sleeps) in 60ths of a second, in 64 bits.
uint64_t MonotonicTicks() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 60 +
           static_cast<uint64_t>(now.tv_nsec) * 60 / 1000000000;
}

// --- Locked ----------------------------------------------------------------

const char kDosAttribName[] = "user.DOSATTRIB";
const uint16_t kAfpInhibitBits =
    kRzAfpAttributeWriteInhibit | kRzAfpAttributeRenameInhibit | kRzAfpAttributeDeleteInhibit;

// A descriptor for the kernel's flags (FS_IOC_GETFLAGS), opened without side
// effects: regular files and folders only, never a device or a pipe.
int OpenForFlags(const char* path, mode_t mode) {
    if (!S_ISREG(mode) && !S_ISDIR(mode)) {
        errno = EPERM;  // what setting flags on such an item gives
        return -1;
    }
    return open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

// Whether the kernel's immutable flag is set. statx reports it without
// opening the item; where the file system does not report it there, the
// flags are read from the opened item (an item that cannot be opened counts
// as not immutable). A missing item is an error.
OSErr ImmutableFlag(const char* path, bool& immutable, mode_t& mode) {
    immutable = false;
    struct statx sx;
    if (statx(AT_FDCWD, path, 0, STATX_TYPE, &sx) != 0) return RzOSErrFromErrno(errno);
    mode = sx.stx_mode;
    if (sx.stx_attributes_mask & STATX_ATTR_IMMUTABLE) {
        immutable = (sx.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
        return noErr;
    }
    const int fd = OpenForFlags(path, mode);
    if (fd < 0) return noErr;
    int flags = 0;  // the kernel reads and writes an int, whatever the ioctl's name says
    if (ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0) immutable = (flags & FS_IMMUTABLE_FL) != 0;
    close(fd);
    return noErr;
}

OSErr ClearImmutable(const char* path, mode_t mode) {
    const int fd = OpenForFlags(path, mode);
    if (fd < 0) return RzOSErrFromErrno(errno);
    int flags = 0;
    OSErr err = noErr;
    if (ioctl(fd, FS_IOC_GETFLAGS, &flags) != 0) {
        err = RzOSErrFromErrno(errno);
    } else if (flags & FS_IMMUTABLE_FL) {
        flags &= ~FS_IMMUTABLE_FL;
        if (ioctl(fd, FS_IOC_SETFLAGS, &flags) != 0) err = RzOSErrFromErrno(errno);
    }
    close(fd);
    return err;
}

// "user.DOSATTRIB" as Samba reads it: at most kRzDosAttribMaxSize bytes (a
// longer one Samba cannot read either).
bool ReadDosAttrib(const char* path, std::string& record) {
    unsigned char buffer[kRzDosAttribMaxSize];
    size_t got = 0;
    int err = 0;
    if (ReadAttr(path, kDosAttribName, buffer, sizeof buffer, &got, &err) != kAttrFound)
        return false;
    record.assign(reinterpret_cast<const char*>(buffer), got);
    return true;
}

// The servers' record, when there is a valid one, and its AFP attributes.
bool ReadAfpAttributes(const char* path, unsigned char* record, uint16_t& attributes) {
    size_t got = 0;
    int err = 0;
    return ReadAttr(path, kMetadataName, record, kRzMetadataSize, &got, &err) == kAttrFound &&
           RzMetadataGetAfpAttributes(record, got, &attributes);
}

// --- Home and XDG folders ---------------------------------------------------

std::string Home() {
    const char* home = getenv("HOME");
    if (home && home[0] == '/') return home;
    struct passwd* pw = getpwuid(getuid());
    return pw && pw->pw_dir && pw->pw_dir[0] == '/' ? pw->pw_dir : "";
}

// An XDG variable when set to an absolute path (relative ones are to be
// ignored), else the home-relative default; "" without a home.
std::string XdgDir(const char* variable, const char* underHome) {
    const char* value = getenv(variable);
    if (value && value[0] == '/') return value;
    std::string home = Home();
    return home.empty() ? "" : RzPathJoin(home, underHome);
}

bool ReadWholeFile(const std::string& path, std::string& text) {
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return false;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, f)) > 0) text.append(buffer, n);
    fclose(f);
    return true;
}

// mkdir -p; errno is kept on failure.
bool MakeFolders(const std::string& path, mode_t mode) {
    struct stat st;
    if (stat(path.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode)) return true;
        errno = ENOTDIR;
        return false;
    }
    if (errno != ENOENT) return false;
    std::string parent = RzPathFolder(path);
    if (!parent.empty() && parent != path && !MakeFolders(parent, mode)) return false;
    return mkdir(path.c_str(), mode) == 0 || errno == EEXIST;
}

// The path of a well-known folder; "" for an unknown type or without a home.
std::string KnownFolderPath(uint32_t folderType) {
    std::string path;
    switch (folderType) {
        case kRzPreferencesFolderType:
            path = XdgDir("XDG_CONFIG_HOME", ".config");
            break;
        case kRzApplicationSupportFolderType:
            path = XdgDir("XDG_DATA_HOME", ".local/share");
            break;
        case kRzTemporaryFolderType: {
            const char* tmp = getenv("TMPDIR");
            path = tmp && tmp[0] == '/' ? tmp : "/tmp";
            break;
        }
        case kRzDocumentsFolderType: {
            const std::string home = Home();
            if (home.empty()) break;
            std::string text;
            const std::string config = XdgDir("XDG_CONFIG_HOME", ".config");
            if (ReadWholeFile(RzPathJoin(config, "user-dirs.dirs"), text))
                path = RzUserDirFromText(text.c_str(), "XDG_DOCUMENTS_DIR", home.c_str());
            if (path.empty()) path = RzPathJoin(home, "Documents");
            break;
        }
        default:
            break;
    }
    RzPathTrimSlashes(path);
    return path;
}

// The colour profile folder of a domain; "" for another domain or without a
// home.
std::string ColorSyncFolderPath(short domain) {
    switch (domain) {
        case kRzLocalDomain:
        case kRzSystemDomain:
        case kRzOnSystemDisk:
            return "/usr/share/color/icc";
        case kRzUserDomain: {
            const std::string data = XdgDir("XDG_DATA_HOME", ".local/share");
            return data.empty() ? "" : RzPathJoin(data, "icc");
        }
        default:
            return "";
    }
}

// The folder at `path`, created first when asked, as volume and folder ID.
// A folder that is not there (or a path part that is no folder) is fnfErr.
OSErr FolderResult(const std::string& path, bool create, mode_t mode, bool mustBeWritable,
                   short& vRefNum, int32_t& dirID) {
    vRefNum = 0;
    dirID = 0;
    if (path.empty()) return fnfErr;
    OSErr err = noErr;
    std::string resolved;
    struct stat st;
    if (create && !MakeFolders(path, mode))
        err = RzOSErrFromErrno(errno);
    else if (!Resolve(path, resolved) || stat(resolved.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
        err = fnfErr;
    else if (mustBeWritable && access(resolved.c_str(), W_OK) != 0)
        err = RzOSErrFromErrno(errno);
    if (err != noErr) return err == dirNFErr ? static_cast<OSErr>(fnfErr) : err;
    vRefNum = kRzRootVolume;
    dirID = FolderIDFor(resolved, st);
    return noErr;
}

// --- Programs this process starts -------------------------------------------
//
// A program is started from a ChildPlan, which says what the child is to be
// when the program begins: in a session of its own (closing the
// application's terminal, or a Ctrl-C there, leaves it alone), with default
// signal handling and nothing blocked (ignored signals would stay ignored
// across exec), the planned standard descriptors and none of the
// application's others (the program, and whatever it starts, must not hold
// the application's files, sockets and pipes open).
//
// A program this process waits for is started with posix_spawn, which does
// not copy the process: a fork costs time in proportion to the memory the
// application has resident (about 50 ms per gigabyte), and an application
// with its images in memory pastes often. A program left to run on its own
// needs an intermediate process that runs code of ours (StartDetached), so
// that one is forked; its child makes only async-signal-safe calls on data
// prepared before the fork.

// What a child needs before it becomes the program. A descriptor of -1 keeps
// the process's own; the others are at 3 or above (MoveAboveStandard), so
// that putting one in place never overwrites another.
struct ChildPlan {
    const char* program;  // a path, or a name execvp looks up on PATH
    char* const* argv;
    int input, output, error;
    int lastFd;  // the highest descriptor to close where close_range is missing
    sigset_t noSignals;
};

ChildPlan PlanChild(const char* program, char* const* argv, int input, int output, int error) {
    ChildPlan plan;
    plan.program = program;
    plan.argv = argv;
    plan.input = input;
    plan.output = output;
    plan.error = error;
    struct rlimit files;
    plan.lastFd = getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < 65536
                      ? static_cast<int>(files.rlim_cur) - 1
                      : 65535;
    sigemptyset(&plan.noSignals);
    return plan;
}

// In a forked child: becomes the program as planned.
[[noreturn]] void BecomeProgram(const ChildPlan& plan) {
    setsid();
    struct sigaction byDefault;
    memset(&byDefault, 0, sizeof byDefault);
    byDefault.sa_handler = SIG_DFL;
    for (int s = 1; s < NSIG; ++s)
        if (s != SIGKILL && s != SIGSTOP) sigaction(s, &byDefault, nullptr);
    sigprocmask(SIG_SETMASK, &plan.noSignals, nullptr);
    if (plan.input >= 0) dup2(plan.input, 0);
    if (plan.output >= 0) dup2(plan.output, 1);
    if (plan.error >= 0) dup2(plan.error, 2);
    if (close_range(3, ~0U, 0) != 0)
        for (int fd = 3; fd <= plan.lastFd; ++fd) close(fd);
    if (strchr(plan.program, '/'))
        execv(plan.program, plan.argv);
    else
        execvp(plan.program, plan.argv);
    _exit(127);
}

// Starts the program as a child of this process, which must reap it; -1
// (errno set) when it could not be started.
pid_t StartProgram(const ChildPlan& plan) {
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 34)
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    if (plan.input >= 0) posix_spawn_file_actions_adddup2(&actions, plan.input, 0);
    if (plan.output >= 0) posix_spawn_file_actions_adddup2(&actions, plan.output, 1);
    if (plan.error >= 0) posix_spawn_file_actions_adddup2(&actions, plan.error, 2);
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    sigset_t all;
    sigfillset(&all);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setsigmask(&attributes, &plan.noSignals);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    pid_t child = -1;
    const int err =
        strchr(plan.program, '/')
            ? posix_spawn(&child, plan.program, &actions, &attributes, plan.argv, environ)
            : posix_spawnp(&child, plan.program, &actions, &attributes, plan.argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (err != 0) {
        errno = err;
        return -1;
    }
    return child;
#else
    const pid_t child = fork();
    if (child == 0) BecomeProgram(plan);
    return child;
#endif
}

// Starts the program so that this process never waits for it and it never
// becomes this process's zombie: an intermediate child starts it and leaves
// at once, so that init (or the nearest subreaper) adopts it, and the
// intermediate is reaped here straight away. noErr once the program is on its
// way; a mapped errno when no process could be made.
OSErr StartDetached(const ChildPlan& plan) {
    const pid_t child = fork();
    if (child < 0) return RzOSErrFromErrno(errno);
    if (child == 0) {
        const pid_t grandchild = fork();
        if (grandchild == 0) BecomeProgram(plan);
        _exit(grandchild < 0 ? 1 : 0);
    }
    int status = 0;
    pid_t waited;
    while ((waited = waitpid(child, &status, 0)) < 0 && errno == EINTR) {
    }
    // ECHILD: the application reaps children itself (SIGCHLD ignored or
    // handled); the intermediate is gone either way.
    if (waited == child && !(WIFEXITED(status) && WEXITSTATUS(status) == 0)) return ioErr;
    return noErr;
}

// A descriptor moved to 3 or above (close-on-exec), so that it can be put in
// place of a standard one in the child; the old one is closed. -1 stays -1.
int MoveAboveStandard(int fd) {
    if (fd < 0 || fd > 2) return fd;
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, 3);
    close(fd);
    return moved;
}

// The program `name` as execvp would find it on PATH ("" when it is not
// there), so that a missing one can be told apart before anything starts.
// Empty entries (the working directory) are not searched.
std::string FindProgram(const char* name) {
    const char* path = getenv("PATH");
    std::string folders = path ? path : "/bin:/usr/bin";
    size_t start = 0;
    while (start <= folders.size()) {
        size_t end = folders.find(':', start);
        if (end == std::string::npos) end = folders.size();
        if (end > start) {
            const std::string candidate = folders.substr(start, end - start) + "/" + name;
            struct stat st;
            if (stat(candidate.c_str(), &st) == 0 && S_ISREG(st.st_mode) &&
                access(candidate.c_str(), X_OK) == 0)
                return candidate;
        }
        start = end + 1;
    }
    return "";
}

int64_t MonotonicMilliseconds() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// The longest a bounded program may run at all, however steadily it
// delivers; it ends one that dribbles.
const int64_t kToolRunLimit = 30000;
// The most a program may deliver; the largest string.
const size_t kToolOutputLimit = 0x7FFFFFFF;

// A child started by RunBounded, ended and reaped whatever happens.
class BoundedChild {
public:
    explicit BoundedChild(pid_t pid) : pid(pid), handle(-1), reaped(false), status(0) {
#ifdef SYS_pidfd_open
        handle = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
#endif
    }
    ~BoundedChild() {
        if (!reaped) {
            Kill();
            Reap(true);
        }
        if (handle >= 0) close(handle);
    }
    BoundedChild(const BoundedChild&) = delete;
    BoundedChild& operator=(const BoundedChild&) = delete;

    // A descriptor that polls readable once the child has exited; -1 where
    // the kernel has none (then Exited is asked).
    int ExitHandle() const {
        return handle;
    }
    // Whether the child has exited (or was reaped by someone else).
    bool Exited() {
        if (reaped) return true;
        siginfo_t info;
        info.si_pid = 0;
        if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0)
            return errno == ECHILD;
        return info.si_pid == pid;
    }
    // Reaps the child; `block` waits for it. Status 0 when someone else
    // reaped it (SIGCHLD ignored): its outcome is unknown then.
    void Reap(bool block) {
        if (reaped) return;
        int st = 0;
        pid_t waited;
        while ((waited = waitpid(pid, &st, block ? 0 : WNOHANG)) < 0 && errno == EINTR) {
        }
        if (waited == pid) {
            status = st;
            reaped = true;
        } else if (waited < 0) {
            reaped = true;
        }
    }
    // Kills the child and whatever it started in its session's process
    // group. Only while it is unreaped: until then its process group ID
    // cannot name anybody else's processes.
    void Kill() {
        if (reaped) return;
        siginfo_t info;
        info.si_pid = 0;
        if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0) return;
        kill(-pid, SIGKILL);
        kill(pid, SIGKILL);
    }
    bool Succeeded() const {
        return reaped && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    pid_t pid;
    int handle;
    bool reaped;
    int status;
};

// Runs `program` (a path) with `args` (args[0] included), feeding it `input`
// (standard input from /dev/null without it) and collecting its standard
// output into `output` (to /dev/null without it); its standard error goes to
// /dev/null. True when it exited with status 0. A program that moves no byte
// and does not exit for kRzOSToolSilenceLimit milliseconds, or runs longer
// than kToolRunLimit, is killed, with whatever it started, and reaped; it
// counts as failed. Once the program has exited, what it has written is read
// and nothing more is waited for, even if a helper it started still holds
// its output open. SIGPIPE is blocked while the input is written, so that a
// program that exits without reading all of it cannot end this process.
bool RunBounded(const std::string& program, const std::vector<std::string>& args,
                const std::string* input, std::string* output) {
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);

    int devNull = MoveAboveStandard(open("/dev/null", O_RDWR | O_CLOEXEC));
    int toChild[2] = {-1, -1}, fromChild[2] = {-1, -1};
    bool ready = devNull >= 0;
    if (ready && input) {
        ready = pipe2(toChild, O_CLOEXEC) == 0;
        toChild[0] = MoveAboveStandard(toChild[0]);
        toChild[1] = MoveAboveStandard(toChild[1]);
    }
    if (ready && output) {
        ready = pipe2(fromChild, O_CLOEXEC) == 0;
        fromChild[0] = MoveAboveStandard(fromChild[0]);
        fromChild[1] = MoveAboveStandard(fromChild[1]);
    }
    ready = ready && (!input || (toChild[0] >= 0 && toChild[1] >= 0)) &&
            (!output || (fromChild[0] >= 0 && fromChild[1] >= 0));

    sigset_t pipeSignal, previousMask, pendingBefore;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previousMask);
    sigpending(&pendingBefore);
    bool brokenPipe = false;
    bool succeeded = false;

    pid_t pid = -1;
    if (ready) {
        const ChildPlan plan = PlanChild(program.c_str(), argv.data(), input ? toChild[0] : devNull,
                                         output ? fromChild[1] : devNull, devNull);
        pid = StartProgram(plan);
    }
    for (int* fd : {&toChild[0], &fromChild[1], &devNull})
        if (*fd >= 0) close(*fd), *fd = -1;

    if (pid > 0) {
        BoundedChild child(pid);
        int writeEnd = toChild[1], readEnd = fromChild[0];
        toChild[1] = fromChild[0] = -1;
        if (writeEnd >= 0) fcntl(writeEnd, F_SETFL, O_NONBLOCK);
        if (readEnd >= 0) fcntl(readEnd, F_SETFL, O_NONBLOCK);
        size_t written = 0;
        const int64_t start = MonotonicMilliseconds();
        int64_t lastProgress = start;
        bool exited = false, failed = false;
        if (writeEnd >= 0 && input->empty()) close(writeEnd), writeEnd = -1;

        while (!failed) {
            if (!exited) exited = child.Exited();
            if (exited && writeEnd >= 0) close(writeEnd), writeEnd = -1;
            if (exited && readEnd < 0) break;
            struct pollfd fds[3];
            nfds_t count = 0;
            if (writeEnd >= 0) fds[count++] = {writeEnd, POLLOUT, 0};
            if (readEnd >= 0) fds[count++] = {readEnd, POLLIN, 0};
            const bool watchExit = !exited && child.ExitHandle() >= 0;
            if (watchExit) fds[count++] = {child.ExitHandle(), POLLIN, 0};
            const int64_t now = MonotonicMilliseconds();
            int64_t wait =
                std::min(lastProgress + kRzOSToolSilenceLimit, start + kToolRunLimit) - now;
            if (wait <= 0 && !exited) {
                failed = true;
                break;
            }
            // Once the program has exited, only what it already wrote is read.
            if (exited)
                wait = 0;
            else if (!watchExit)
                wait = std::min<int64_t>(wait, 10);
            const int events = poll(fds, count, static_cast<int>(wait));
            if (events < 0 && errno != EINTR) {
                failed = true;
                break;
            }
            bool progress = false, drained = exited;
            for (nfds_t i = 0; events > 0 && i < count; ++i) {
                if (!fds[i].revents) continue;
                if (fds[i].fd == writeEnd) {
                    const ssize_t n =
                        write(writeEnd, input->data() + written, input->size() - written);
                    if (n > 0) {
                        written += static_cast<size_t>(n);
                        progress = true;
                    } else if (n < 0 && errno != EAGAIN && errno != EINTR) {
                        brokenPipe = brokenPipe || errno == EPIPE;
                        written = input->size();  // the program takes no more
                    }
                    if (written == input->size()) close(writeEnd), writeEnd = -1;
                } else if (fds[i].fd == readEnd) {
                    char buffer[65536];
                    const ssize_t n = read(readEnd, buffer, sizeof buffer);
                    if (n > 0) {
                        if (output->size() + static_cast<size_t>(n) > kToolOutputLimit) {
                            failed = true;
                            break;
                        }
                        output->append(buffer, static_cast<size_t>(n));
                        progress = true;
                        drained = false;
                    } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
                        close(readEnd), readEnd = -1;
                    }
                }
            }
            if (progress) lastProgress = MonotonicMilliseconds();
            if (exited && drained && readEnd >= 0) close(readEnd), readEnd = -1;
        }
        if (writeEnd >= 0) close(writeEnd);
        if (readEnd >= 0) close(readEnd);
        if (failed) child.Kill();
        child.Reap(true);
        succeeded = !failed && child.Succeeded();
    }
    for (int fd : {toChild[1], fromChild[0]})
        if (fd >= 0) close(fd);

    // A SIGPIPE this exchange raised is taken back before the old mask
    // returns; one that was pending before stays.
    if (brokenPipe && !sigismember(&pendingBefore, SIGPIPE)) {
        const struct timespec none = {0, 0};
        sigtimedwait(&pipeSignal, nullptr, &none);
    }
    pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
    return succeeded;
}

// --- The X display -----------------------------------------------------------
//
// libX11 is loaded when first needed (no build or run-time dependency on it
// otherwise), and one connection to the display is opened and kept (gX at
// the top of this file). Xlib ends the process when a connection breaks
// unless told otherwise: an I/O error handler that returns for this
// connection and an exit handler (libX11 1.7 and later) keep the application
// alive, and the connection is then dropped. Without the exit handler no
// connection is opened at all.

bool LoadX() {
    if (gX.loadTried) return gX.handle != nullptr;
    gX.loadTried = true;
    void* handle = dlopen("libX11.so.6", RTLD_LAZY | RTLD_LOCAL);
    if (!handle) return false;
    XFunctions f;
    bool complete = true;
    auto find = [&](const char* name) {
        void* symbol = dlsym(handle, name);
        complete = complete && symbol;
        return symbol;
    };
    f.openDisplay = reinterpret_cast<XDisplay* (*)(const char*)>(find("XOpenDisplay"));
    f.closeDisplay = reinterpret_cast<int (*)(XDisplay*)>(find("XCloseDisplay"));
    f.queryKeymap = reinterpret_cast<int (*)(XDisplay*, char*)>(find("XQueryKeymap"));
    f.bell = reinterpret_cast<int (*)(XDisplay*, int)>(find("XBell"));
    f.resetScreenSaver = reinterpret_cast<int (*)(XDisplay*)>(find("XResetScreenSaver"));
    f.flush = reinterpret_cast<int (*)(XDisplay*)>(find("XFlush"));
    f.internAtom =
        reinterpret_cast<unsigned long (*)(XDisplay*, const char*, int)>(find("XInternAtom"));
    f.getSelectionOwner =
        reinterpret_cast<unsigned long (*)(XDisplay*, unsigned long)>(find("XGetSelectionOwner"));
    f.setIOErrorHandler = reinterpret_cast<XIOHandler (*)(XIOHandler)>(find("XSetIOErrorHandler"));
    f.setIOErrorExitHandler = reinterpret_cast<void (*)(XDisplay*, XIOExitHandler, void*)>(
        find("XSetIOErrorExitHandler"));
    if (!complete) {
        dlclose(handle);
        return false;
    }
    gX.handle = handle;
    gX.call = f;
    return true;
}

int OnXIOError(XDisplay* display) {
    if (display == gX.display) {
        gX.broken = true;
        return 0;
    }
    // The application's own connections are handled as it chose (by default
    // Xlib's handler, which ends the process).
    return gX.previousIOHandler ? gX.previousIOHandler(display) : 0;
}

void OnXIOErrorExit(XDisplay* display, void*) {
    if (display == gX.display) gX.broken = true;
}

// The kept connection to the display $DISPLAY names, opened on first use;
// null without a display or libX11. A connection that broke is closed and
// opened once more; a display that could not be opened is not tried again
// until $DISPLAY changes, so that a caller in a loop never waits on it
// twice.
XDisplay* XConnection() {
    const char* name = getenv("DISPLAY");
    if (!name || !*name) return nullptr;
    if (gX.display && !gX.broken && gX.displayName == name) return gX.display;
    if (gX.display) {
        gX.call.closeDisplay(gX.display);
        gX.display = nullptr;
        gX.broken = false;
    }
    if (gX.failedName == name || !LoadX()) return nullptr;
    XDisplay* display = gX.call.openDisplay(name);
    if (!display) {
        gX.failedName = name;
        return nullptr;
    }
    if (!gX.handlerInstalled) {
        gX.previousIOHandler = gX.call.setIOErrorHandler(OnXIOError);
        gX.handlerInstalled = true;
    }
    gX.call.setIOErrorExitHandler(display, OnXIOErrorExit, nullptr);
    gX.display = display;
    gX.displayName = name;
    gX.failedName.clear();
    return display;
}

bool UnderWayland() {
    const char* wayland = getenv("WAYLAND_DISPLAY");
    return wayland && *wayland;
}

// --- The clipboard -------------------------------------------------------------
//
// A Mac program's clipboard outlives it; so does a selection held by a
// clipboard program of the desktop, which forks a helper that serves the
// text until another program takes the clipboard. Under Wayland that is
// wl-copy and wl-paste; under X11 xclip, else xsel (which ends a text at its
// first zero byte).

struct ClipboardPrograms {
    std::vector<std::string> put, get, list;  // argument vectors; list may be empty
    bool listsTypes;                          // `list` prints the offered types
    bool ownsAfterExit = false;               // `put` exits before its helper takes the clipboard
};

bool FindClipboardPrograms(ClipboardPrograms& p) {
    if (UnderWayland()) {
        const std::string copy = FindProgram("wl-copy"), paste = FindProgram("wl-paste");
        if (!copy.empty() && !paste.empty()) {
            p.put = {copy, "--type", "text/plain"};
            p.get = {paste, "--no-newline", "--type", "text"};
            p.list = {paste, "--list-types"};
            p.listsTypes = true;
            return true;
        }
    }
    const char* display = getenv("DISPLAY");
    if (!display || !*display) return false;
    const std::string xclip = FindProgram("xclip");
    if (!xclip.empty()) {
        p.put = {xclip, "-selection", "clipboard", "-in"};
        p.get = {xclip, "-selection", "clipboard", "-out"};
        p.list = {xclip, "-selection", "clipboard", "-out", "-target", "TARGETS"};
        p.listsTypes = true;
        return true;
    }
    const std::string xsel = FindProgram("xsel");
    if (!xsel.empty()) {
        p.put = {xsel, "--clipboard", "--input"};
        p.get = {xsel, "--clipboard", "--output"};
        p.listsTypes = false;
        p.ownsAfterExit = true;
        return true;
    }
    return false;
}

// The window that owns the X clipboard (0 for none) through the kept
// connection; false without one.
bool XClipboardOwner(unsigned long& owner) {
    XDisplay* display = XConnection();
    if (!display) return false;
    owner = gX.call.getSelectionOwner(display, gX.call.internAtom(display, "CLIPBOARD", 0));
    return !gX.broken;
}

// Waits, at most half a second, until the X clipboard has another owner
// than `before`: xsel's helper takes it only after xsel has exited, and a
// paste right after the copy must find the new text.
void WaitForNewXClipboardOwner(unsigned long before) {
    const struct timespec step = {0, 2000000};
    unsigned long owner = before;
    for (int i = 0; i < 250 && XClipboardOwner(owner) && owner == before; ++i)
        nanosleep(&step, nullptr);
}

// Whether one of the types a clipboard offers (one a line) is text: a MIME
// text type under Wayland, the X selection targets for text under X11.
bool OffersText(const std::string& types) {
    size_t start = 0;
    while (start < types.size()) {
        size_t end = types.find('\n', start);
        if (end == std::string::npos) end = types.size();
        const std::string type = types.substr(start, end - start);
        if (type.compare(0, 5, "text/") == 0 || type == "UTF8_STRING" || type == "STRING" ||
            type == "TEXT" || type == "COMPOUND_TEXT")
            return true;
        start = end + 1;
    }
    return false;
}

}  // namespace

// --- Result codes ------------------------------------------------------------

OSErr RzOSErrFromErrno(int err) {
    switch (err) {
        case 0:
            return noErr;
        case ENOENT:
        case ELOOP:
            return fnfErr;
        case ENOTDIR:
            return dirNFErr;
        case EACCES:
            return permErr;
        case EPERM:
        case ETXTBSY:
            return fLckdErr;
        case EROFS:
            return vLckdErr;
        case ENOSPC:
        case EDQUOT:
            return dskFulErr;
        case ENOTSUP:
            return wrgVolTypErr;  // EOPNOTSUPP is the same value on Linux
        case EEXIST:
            return dupFNErr;
        case ENAMETOOLONG:
            return bdNamErr;
        case EINVAL:
        case E2BIG:
        case ERANGE:
        case EFAULT:
            return paramErr;
        case EBUSY:
        case ENOTEMPTY:
            return fBsyErr;
        case EMFILE:
        case ENFILE:
            return tmfoErr;
        case ENOMEM:
            return memFullErr;
        case EISDIR:
            return notAFileErr;
        case EXDEV:
        default:
            return ioErr;
    }
}

// --- The system --------------------------------------------------------------

int32_t RzOSSystemVersion() {
    struct utsname names;
    if (uname(&names) != 0) return 0;
    return RzBCDVersionFromRelease(names.release);
}

int32_t RzOSPlatform() {
    return kRzPlatformLinux;
}

uint32_t RzOSTickCount() {
    return static_cast<uint32_t>(MonotonicTicks());
}

uint32_t RzOSDelayTicks(uint32_t count) {
    // Sleeping to the first instant of the target tick, rather than for a
    // span, keeps a row of short delays on the tick grid. The nanoseconds are
    // rounded up, so that the clock reads the target tick on waking.
    const uint64_t target = MonotonicTicks() + count;
    struct timespec deadline;
    deadline.tv_sec = static_cast<time_t>(target / 60);
    deadline.tv_nsec = static_cast<long>(((target % 60) * 1000000000 + 59) / 60);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
    }
    return RzOSTickCount();
}

// --- The process ---------------------------------------------------------------

RzString RzOSExecutablePath() {
    char buffer[PATH_MAX + 1];
    const ssize_t n = readlink("/proc/self/exe", buffer, PATH_MAX);
    return n > 0 ? RzString(buffer, static_cast<int32_t>(n), false) : RzString();
}

int RzOSChangeWorkingDir(const char* folder) {
    return chdir(folder);
}

OSErr RzOSOpenURL(const char* url) {
    if (!url) return paramErr;
    char opener[] = "xdg-open";
    char* const argv[] = {opener, const_cast<char*>(url), nullptr};
    const int devNull = MoveAboveStandard(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const OSErr err = StartDetached(PlanChild(opener, argv, devNull, -1, -1));
    if (devNull >= 0) close(devNull);
    return err;
}

// --- Streams -------------------------------------------------------------------

bool RzOSAppendEveryWrite(FILE* stream) {
    setvbuf(stream, nullptr, _IONBF, 0);
    const int fd = fileno(stream);
    const int flags = fcntl(fd, F_GETFL);
    return flags != -1 && fcntl(fd, F_SETFL, flags | O_APPEND) == 0;
}

// Transparent huge pages, where the kernel has them ("madvise" or "always").
size_t RzOSLargePageSize() {
    return size_t(2) << 20;
}

void RzOSPreferLargePages(void* p, size_t n) {
#ifdef MADV_HUGEPAGE
    const uintptr_t page = RzOSLargePageSize();
    const uintptr_t from = (reinterpret_cast<uintptr_t>(p) + page - 1) & ~(page - 1);
    const uintptr_t to = (reinterpret_cast<uintptr_t>(p) + n) & ~(page - 1);
    if (from < to) madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
#else
    (void)p;
    (void)n;
#endif
}

// --- Items ---------------------------------------------------------------------

OSErr RzOSPathMakeRef(const char* path, FSRef& ref, bool* isDirectory) {
    if (!path) return paramErr;
    std::string resolved;
    if (!Resolve(path, resolved)) return RzOSErrFromErrno(errno);
    struct stat st;
    if (stat(resolved.c_str(), &st) != 0) return RzOSErrFromErrno(errno);
    ref.path = FromStd(resolved);
    if (isDirectory) *isDirectory = S_ISDIR(st.st_mode);
    return noErr;
}

OSErr RzOSResolveAlias(FSRef& ref, bool* isFolder, bool* wasAliased) {
    if (ref.path.length() == 0) return paramErr;
    std::string stored = ToStd(ref.path);
    bool folder = false;
    OSErr err = RzOSPathMakeRef(stored.c_str(), ref, &folder);
    if (err != noErr) return err;
    if (isFolder) *isFolder = folder;
    if (wasAliased) *wasAliased = ToStd(ref.path) != stored;
    return noErr;
}

OSErr RzOSRefMakePath(const FSRef& ref, RzString& path) {
    if (ref.path.length() == 0) return paramErr;
    struct stat st;
    if (lstat(ref.path.c_str(), &st) != 0) return RzOSErrFromErrno(errno);
    path = ref.path;
    return noErr;
}

OSErr RzOSFolderMakeRef(short vRefNum, int32_t dirID, FSRef& ref) {
    std::string path;
    OSErr err = FolderPath(vRefNum, dirID, path);
    if (err == noErr) ref.path = FromStd(path);
    return err;
}

OSErr RzOSMakeFSSpec(short vRefNum, int32_t dirID, const unsigned char* name, FSSpec& spec) {
    std::string folder;
    OSErr err;
    if (dirID == 0 && (vRefNum == 0 || vRefNum == kRzRootVolume)) {
        err = Resolve(".", folder) ? noErr : dirNFErr;
    } else {
        err = FolderPath(vRefNum, dirID, folder);
    }

    const std::vector<std::string> parts = RzHFSPathParts(FromPascal(name));
    const std::string leaf = parts.empty() ? "" : parts.back();
    if (err != noErr) {
        ClearSpec(spec, leaf);
        return err;
    }

    // The folder that holds the item must exist; the item itself need not.
    std::string walk = folder;
    for (size_t i = 0; i + 1 < parts.size(); ++i) walk = RzPathJoin(walk, parts[i]);
    std::string parent;
    struct stat st;
    if (!Resolve(walk, parent) || stat(parent.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        ClearSpec(spec, leaf);
        return dirNFErr;
    }
    if (leaf.empty() || leaf == "." || leaf == "..") {
        std::string resolved;
        if (!Resolve(leaf.empty() ? parent : RzPathJoin(parent, leaf), resolved)) {
            ClearSpec(spec, leaf);
            return dirNFErr;
        }
        return SpecOfResolved(resolved, spec);
    }
    spec.vRefNum = kRzRootVolume;
    spec.parID = FolderIDFor(parent, st);
    ToPascal(leaf, spec.name);
    struct stat item;
    if (lstat(RzPathJoin(parent, leaf).c_str(), &item) != 0) return RzOSErrFromErrno(errno);
    return noErr;
}

OSErr RzOSRefMakeFSSpec(const FSRef& ref, FSSpec& spec) {
    if (ref.path.length() == 0) return paramErr;
    std::string resolved;
    if (!Resolve(ToStd(ref.path), resolved)) return RzOSErrFromErrno(errno);
    return SpecOfResolved(resolved, spec);
}

OSErr RzOSSpecMakeRef(const FSSpec& spec, FSRef& ref) {
    std::string path;
    OSErr err = SpecPath(spec, path);
    return err != noErr ? err : RzOSPathMakeRef(path.c_str(), ref, nullptr);
}

OSErr RzOSResolveAliasSpec(FSSpec& spec) {
    FSRef ref;
    std::string path;
    OSErr err = SpecPath(spec, path);
    if (err != noErr) return err;
    struct stat st;
    if (lstat(path.c_str(), &st) != 0) return RzOSErrFromErrno(errno);
    if (!S_ISLNK(st.st_mode)) return noErr;
    err = RzOSPathMakeRef(path.c_str(), ref, nullptr);
    if (err != noErr) return err;
    FSSpec target;
    err = RzOSRefMakeFSSpec(ref, target);
    if (err == noErr) spec = target;
    return err;
}

bool RzOSItemExists(const char* path) {
    struct stat st;
    return path && lstat(path, &st) == 0;
}

// --- Attributes of items -------------------------------------------------------

OSErr RzOSReadFinderInfo(const char* path, uint32_t& type, uint32_t& creator, uint16_t& flags,
                         bool* isDirectory) {
    struct stat st;
    Stores s;
    unsigned char fi[kRzFinderInfoSize];
    const OSErr err = ReadItem(path, st, s, fi, false);
    if (err != noErr) return err;
    type = RzFinderInfoType(fi);
    creator = RzFinderInfoCreator(fi);
    flags = RzFinderInfoFlags(fi);
    if (isDirectory) *isDirectory = S_ISDIR(st.st_mode);
    return noErr;
}

OSErr RzOSWriteFinderInfo(const char* path, uint32_t type, uint32_t creator) {
    return UpdateFinderInfo(path, [type, creator](unsigned char* fi) {
        if (type) RzPutBE32(fi, type);
        if (creator) RzPutBE32(fi + 4, creator);
    });
}

OSErr RzOSChangeFinderFlags(const char* path, bool set, uint16_t flagBits) {
    return UpdateFinderInfo(path, [set, flagBits](unsigned char* fi) {
        uint16_t flags = RzFinderInfoFlags(fi);
        flags = set ? static_cast<uint16_t>(flags | flagBits)
                    : static_cast<uint16_t>(flags & ~flagBits);
        RzPutBE16(fi + 8, flags);
    });
}

OSErr RzOSGetNodeLocked(const char* path, bool& locked) {
    locked = false;
    if (!path) return paramErr;
    bool immutable = false;
    mode_t mode = 0;
    const OSErr err = ImmutableFlag(path, immutable, mode);
    if (err != noErr) return err;
    std::string dos;
    uint32_t dosAttributes = 0;
    unsigned char record[kRzMetadataSize];
    uint16_t afpAttributes = 0;
    locked = immutable ||
             (ReadDosAttrib(path, dos) &&
              RzDosAttribGet(reinterpret_cast<const unsigned char*>(dos.data()), dos.size(),
                             &dosAttributes) &&
              (dosAttributes & kRzDosReadOnly)) ||
             (ReadAfpAttributes(path, record, afpAttributes) &&
              (afpAttributes & kRzAfpAttributeWriteInhibit));
    return noErr;
}

OSErr RzOSClearNodeLocked(const char* path) {
    if (!path) return paramErr;
    bool immutable = false;
    mode_t mode = 0;
    OSErr result = ImmutableFlag(path, immutable, mode);
    if (result != noErr) return result;
    auto note = [&result](OSErr err) {
        if (result == noErr) result = err;
    };
    if (immutable) note(ClearImmutable(path, mode));

    // Each store is rewritten only where it exists and only when a bit
    // changes; XATTR_REPLACE never creates one that vanished meanwhile.
    std::string dos;
    if (ReadDosAttrib(path, dos) && RzDosAttribClear(dos, kRzDosReadOnly) &&
        setxattr(path, kDosAttribName, dos.data(), dos.size(), XATTR_REPLACE) != 0)
        note(RzOSErrFromErrno(errno));
    unsigned char record[kRzMetadataSize];
    uint16_t afp = 0;
    if (ReadAfpAttributes(path, record, afp) && (afp & kRzAfpAttributeWriteInhibit)) {
        RzMetadataSetAfpAttributes(record, kRzMetadataSize,
                                   static_cast<uint16_t>(afp & ~kAfpInhibitBits));
        if (setxattr(path, kMetadataName, record, kRzMetadataSize, XATTR_REPLACE) != 0)
            note(RzOSErrFromErrno(errno));
    }
    return result;
}

// --- Folders -------------------------------------------------------------------

OSErr RzOSFindFolder(short domain, uint32_t folderType, bool create, short& vRefNum,
                     int32_t& dirID) {
    (void)domain;
    return FolderResult(KnownFolderPath(folderType), create, 0700, false, vRefNum, dirID);
}

OSErr RzOSColorSyncFolder(short domain, bool create, short& vRefNum, int32_t& dirID) {
    return FolderResult(ColorSyncFolderPath(domain), create, 0755, create, vRefNum, dirID);
}

OSErr RzOSCreateDirectory(const FSRef& parent, const char* name) {
    const std::string leaf = name ? name : "";
    if (leaf.empty() || leaf == "." || leaf == ".." || leaf.find('/') != std::string::npos)
        return bdNamErr;
    if (parent.path.length() == 0) return paramErr;
    std::string folder;
    if (!Resolve(ToStd(parent.path), folder)) return RzOSErrFromErrno(errno);
    if (mkdir(RzPathJoin(folder, leaf).c_str(), 0777) != 0) return RzOSErrFromErrno(errno);
    return noErr;
}

// --- Saving files safely ----------------------------------------------------------

struct RzOSTempFile {
    int fd;  // open and locked (flock) until committed or discarded
    std::string path;
};

namespace {

const size_t kUniqueLength = 6;

// Six letters or digits from the system's random source (the clock and the
// process ID where it has none; a name that is taken is simply drawn again).
void FillUnique(char* out) {
    static const char kChars[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    unsigned char bytes[kUniqueLength];
    if (getrandom(bytes, sizeof bytes, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof bytes)) {
        struct timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        uint64_t x = static_cast<uint64_t>(now.tv_nsec) ^ static_cast<uint64_t>(now.tv_sec) << 30 ^
                     static_cast<uint64_t>(getpid()) << 40;
        for (unsigned char& b : bytes) {
            x = x * 6364136223846793005u + 1442695040888963407u;
            b = static_cast<unsigned char>(x >> 56);
        }
    }
    for (size_t i = 0; i < kUniqueLength; ++i) out[i] = kChars[bytes[i] % 62];
}

bool IsUniqueSuffix(const char* p) {
    for (size_t i = 0; i < kUniqueLength; ++i) {
        const char c = p[i];
        if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')))
            return false;
    }
    return p[kUniqueLength] == 0;
}

// Whether the open file `fd` is the one named `name` in folder `dirfd`.
bool NamesFile(int fd, int dirfd, const char* name) {
    struct stat open, named;
    return fstat(fd, &open) == 0 && fstatat(dirfd, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

// Gives the new file `fd` what `like` (whose stat is `old`) has: owner,
// extended attributes, permission bits, in this order (a change of owner
// clears the set-ID bits, and user attributes are set while the new file is
// still writable). Attributes the system does not let this process set are
// left out; running out of room is an error.
OSErr TakeAttributes(int fd, const char* like, const struct stat& old) {
    struct stat now;
    if (fstat(fd, &now) != 0) return RzOSErrFromErrno(errno);
    if (now.st_uid != old.st_uid || now.st_gid != old.st_gid) {
        // Where the owner may not be given away the group alone may be; where
        // neither may, the file stays this process's, as any file it makes.
        const bool given = fchown(fd, old.st_uid, old.st_gid) == 0 ||
                           fchown(fd, static_cast<uid_t>(-1), old.st_gid) == 0;
        (void)given;
    }

    std::vector<char> names;
    for (ssize_t size = listxattr(like, nullptr, 0); size > 0; size = listxattr(like, nullptr, 0)) {
        names.resize(static_cast<size_t>(size));
        const ssize_t got = listxattr(like, names.data(), names.size());
        if (got >= 0) {
            names.resize(static_cast<size_t>(got));
            break;
        }
        names.clear();
        if (errno != ERANGE) break;  // changed meanwhile: ask for the size again
    }
    std::vector<char> value;
    for (size_t at = 0; at < names.size(); at += strlen(&names[at]) + 1) {
        const char* name = &names[at];
        ssize_t size = getxattr(like, name, nullptr, 0);
        if (size < 0) continue;
        value.resize(static_cast<size_t>(size) + 1);
        size = getxattr(like, name, value.data(), value.size());
        if (size < 0) continue;
        if (fsetxattr(fd, name, value.data(), static_cast<size_t>(size), 0) != 0 &&
            (errno == ENOSPC || errno == EDQUOT || errno == EIO))
            return RzOSErrFromErrno(errno);
    }
    if (fchmod(fd, old.st_mode & 07777) != 0) return RzOSErrFromErrno(errno);
    return noErr;
}

}  // namespace

OSErr RzOSWriteTarget(const char* path, RzString& target) {
    if (!path) return paramErr;
    std::string current = path;
    for (int links = 0;; ++links) {
        struct stat st;
        if (lstat(current.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) break;
        if (links == 40) return fnfErr;  // as ELOOP
        std::vector<char> buffer(static_cast<size_t>(st.st_size > 0 ? st.st_size : PATH_MAX) + 1);
        const ssize_t n = readlink(current.c_str(), buffer.data(), buffer.size());
        if (n < 0 || static_cast<size_t>(n) >= buffer.size()) break;  // changed meanwhile
        const std::string link(buffer.data(), static_cast<size_t>(n));
        const std::string folder = RzPathFolder(current);
        current = link[0] == '/' || folder.empty() ? link : RzPathJoin(folder, link);
    }
    target = FromStd(current);
    return noErr;
}

OSErr RzOSCheckReplaceable(const char* path) {
    if (!path) return paramErr;
    struct stat st;
    if (stat(path, &st) != 0) return RzOSErrFromErrno(errno);
    if (!S_ISREG(st.st_mode)) return notAFileErr;
    if (faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) != 0) return RzOSErrFromErrno(errno);
    return noErr;
}

OSErr RzOSCreateTempFile(const char* folder, const char* prefix, const char* like,
                         RzOSTempFile*& temp) {
    temp = nullptr;
    if (!folder || !prefix) return paramErr;
    struct stat old;
    if (like && stat(like, &old) != 0) return RzOSErrFromErrno(errno);
    std::string path =
        RzPathJoin(folder[0] ? folder : ".", prefix) + std::string(kUniqueLength, 'X');
    char* unique = &path[path.size() - kUniqueLength];
    for (int attempt = 0; attempt < 100; ++attempt) {
        FillUnique(unique);
        // Owner-only while it is being made: the old file's permissions
        // arrive with its other attributes. A new file is created as fopen
        // creates one.
        const int fd =
            open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, like ? 0600 : 0666);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            return RzOSErrFromErrno(errno);
        }
        // Locked first, then checked to be still in place: a cleaner that
        // took the lock before us has removed the name. Where the file
        // system has no locks, no cleaner can take one either.
        int locked;
        while ((locked = flock(fd, LOCK_EX)) != 0 && errno == EINTR) {
        }
        if (locked == 0 && !NamesFile(fd, AT_FDCWD, path.c_str())) {
            close(fd);
            continue;
        }
        std::unique_ptr<RzOSTempFile> made(new RzOSTempFile{fd, path});
        if (like) {
            const OSErr err = TakeAttributes(fd, like, old);
            if (err != noErr) {
                RzOSDiscardTempFile(made.release());
                return err;
            }
        }
        temp = made.release();
        return noErr;
    }
    return dupFNErr;
}

OSErr RzOSWriteTempFile(RzOSTempFile* temp, const void* bytes, size_t n) {
    const char* p = static_cast<const char*>(bytes);
    while (n > 0) {
        const ssize_t written = write(temp->fd, p, n < (size_t(1) << 30) ? n : size_t(1) << 30);
        if (written < 0) {
            if (errno == EINTR) continue;
            return RzOSErrFromErrno(errno);
        }
        p += written;
        n -= static_cast<size_t>(written);
    }
    return noErr;
}

OSErr RzOSSyncTempFile(RzOSTempFile* temp) {
    // The file stays open (and locked) until it is renamed into place, so that
    // no cleaner mistakes it for an abandoned one.
    return fsync(temp->fd) == 0 ? static_cast<OSErr>(noErr) : RzOSErrFromErrno(errno);
}

OSErr RzOSCommitTempFile(RzOSTempFile* temp, const char* target) {
    if (rename(temp->path.c_str(), target) != 0) return RzOSErrFromErrno(errno);
    close(temp->fd);
    delete temp;
    return noErr;
}

void RzOSDiscardTempFile(RzOSTempFile* temp) {
    if (!temp) return;
    unlink(temp->path.c_str());  // before the lock goes with the descriptor
    close(temp->fd);
    delete temp;
}

OSErr RzOSSyncFolder(const char* folder) {
    const int fd = open(folder && folder[0] ? folder : ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return noErr;
    OSErr err = noErr;
    if (fsync(fd) != 0 && errno != EINVAL && errno != EROFS && errno != ENOTSUP)
        err = RzOSErrFromErrno(errno);
    close(fd);
    return err;
}

void RzOSRemoveAbandonedTempFiles(const char* folder, const char* prefix) {
    DIR* dir = opendir(folder && folder[0] ? folder : ".");
    if (!dir) return;
    const size_t n = strlen(prefix);
    while (struct dirent* entry = readdir(dir)) {
        const char* name = entry->d_name;
        if (strncmp(name, prefix, n) != 0 || !IsUniqueSuffix(name + n)) continue;
        const int fd = openat(dirfd(dir), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) continue;
        // A free lock means the process that made the file is gone; the name
        // must still be this file (not one made since by another save).
        struct stat st;
        if (flock(fd, LOCK_EX | LOCK_NB) == 0 && fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
            NamesFile(fd, dirfd(dir), name))
            unlinkat(dirfd(dir), name, 0);
        close(fd);
    }
    closedir(dir);
}

OSErr RzOSSyncStream(FILE* stream) {
    if (fflush(stream) != 0) return RzOSErrFromErrno(errno);
    // Devices and pipes cannot be flushed to a disk; that is no failure.
    if (fsync(fileno(stream)) != 0 && errno != EINVAL && errno != EROFS && errno != ENOTSUP)
        return RzOSErrFromErrno(errno);
    return noErr;
}

// --- Walking folders -------------------------------------------------------------

struct RzOSFolder {
    int fd;
    std::string path;                 // for attribute calls by path
    std::unique_ptr<char[]> entries;  // the folder's getdents64 records
    size_t size = 0;                  // bytes of records
    size_t next = 0;                  // offset of the next record
    const struct dirent64* current = nullptr;
    std::unordered_set<std::string> sidecars;  // names of its "._" files
};

namespace {

// Reads all of a folder's entries; takes over `fd`.
OSErr ListFolder(int fd, std::string path, RzOSFolder*& folder) {
    std::unique_ptr<RzOSFolder> f(new RzOSFolder);
    f->fd = fd;
    f->path = std::move(path);
    size_t capacity = 16384;
    f->entries.reset(new char[capacity]);
    for (;;) {
        if (capacity - f->size < 4096) {
            std::unique_ptr<char[]> bigger(new char[capacity * 2]);
            memcpy(bigger.get(), f->entries.get(), f->size);
            f->entries = std::move(bigger);
            capacity *= 2;
        }
        const ssize_t n = getdents64(fd, f->entries.get() + f->size, capacity - f->size);
        if (n == 0) break;
        if (n < 0) {
            const int err = errno;
            close(fd);
            return err == EACCES ? static_cast<OSErr>(permErr) : RzOSErrFromErrno(err);
        }
        f->size += static_cast<size_t>(n);
    }
    for (size_t at = 0; at < f->size;) {
        const struct dirent64* e = reinterpret_cast<const struct dirent64*>(f->entries.get() + at);
        if (e->d_name[0] == '.' && e->d_name[1] == '_') f->sidecars.insert(e->d_name + 2);
        at += e->d_reclen;
    }
    folder = f.release();
    return noErr;
}

OSErr OpenFolderError(int err) {
    if (err == ENOTDIR || err == ELOOP) return errFSNotAFolder;
    return RzOSErrFromErrno(err);
}

// An item of an open folder whose Finder information stores are read
// (ReadStores) relative to the folder's descriptor. One listing of the
// item's attribute names spares the reads of the stores it does not have,
// which are most files' all.
struct FolderItem {
    FolderItem(RzOSFolder* f, const char* n) : folder(f), name(n) {}
    RzOSFolder* folder;
    const char* name;
    bool listed = false;
    bool haveNames = false;
    AttrResult listResult = kAttrFound;
    int listErr = 0;
    ssize_t namesSize = 0;
    char names[4096];

    std::string Path() const { return RzPathJoin(folder->path, name); }

    void List() {
        listed = true;
        ssize_t n = -1;
#ifdef SYS_listxattrat
        if (gXattrAtCalls.load(std::memory_order_relaxed)) {
            n = syscall(SYS_listxattrat, folder->fd, name, 0, names, sizeof names);
            if (n < 0 && (errno == ENOSYS || errno == EPERM))
                gXattrAtCalls.store(false, std::memory_order_relaxed);
        }
#endif
        if (!gXattrAtCalls.load(std::memory_order_relaxed))
            n = listxattr(Path().c_str(), names, sizeof names);
        if (n >= 0) {
            haveNames = true;
            namesSize = n;
        } else if (errno == ENOTSUP) {
            listResult = kAttrUnsupported;
        } else if (errno != ERANGE) {  // too many names to list: each is read
            listResult = kAttrError;
            listErr = errno;
        }
    }

    bool Holds(const char* attr) const {
        const size_t n = strlen(attr) + 1;
        for (ssize_t at = 0; at < namesSize;) {
            const size_t len = strnlen(names + at, static_cast<size_t>(namesSize - at)) + 1;
            if (len == n && memcmp(names + at, attr, n) == 0) return true;
            at += static_cast<ssize_t>(len);
        }
        return false;
    }

    AttrResult Attr(const char* attr, unsigned char* buffer, size_t size, size_t* got, int* err) {
        if (!listed) List();
        if (listResult != kAttrFound) {
            *err = listResult == kAttrUnsupported ? ENOTSUP : listErr;
            return listResult;
        }
        if (haveNames && !Holds(attr)) {
            *err = ENODATA;
            return kAttrAbsent;
        }
#ifdef SYS_getxattrat
        if (gXattrAtCalls.load(std::memory_order_relaxed)) {
            struct {
                uint64_t value;
                uint32_t size;
                uint32_t flags;
            } args = {reinterpret_cast<uintptr_t>(buffer), static_cast<uint32_t>(size), 0};
            const ssize_t n =
                syscall(SYS_getxattrat, folder->fd, name, 0, attr, &args, sizeof args);
            if (n >= 0) {
                *got = static_cast<size_t>(n);
                return kAttrFound;
            }
            *err = errno;
            if (errno == ENODATA) return kAttrAbsent;
            if (errno == ENOTSUP) return kAttrUnsupported;
            if (errno == ERANGE) return kAttrTooLarge;
            if (errno != ENOSYS && errno != EPERM) return kAttrError;
            gXattrAtCalls.store(false, std::memory_order_relaxed);
        }
#endif
        return ReadAttr(Path().c_str(), attr, buffer, size, got, err);
    }

    int OpenSidecar(Stores&) {
        if (folder->sidecars.empty() || !folder->sidecars.count(name)) return -1;
        return openat(folder->fd, (std::string("._") + name).c_str(),
                      O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
};

}  // namespace

OSErr RzOSOpenFolder(const char* path, RzOSFolder*& folder) {
    folder = nullptr;
    if (!path) return paramErr;
    const int fd = open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return OpenFolderError(errno);
    std::string resolved = path;
    RzPathTrimSlashes(resolved);
    return ListFolder(fd, resolved, folder);
}

OSErr RzOSOpenSubFolder(RzOSFolder* parent, const char* name, RzOSFolder*& folder) {
    folder = nullptr;
    const int fd = openat(parent->fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return OpenFolderError(errno);
    return ListFolder(fd, RzPathJoin(parent->path, name), folder);
}

void RzOSCloseFolder(RzOSFolder* folder) {
    if (!folder) return;
    close(folder->fd);
    delete folder;
}

const char* RzOSNextFolderEntry(RzOSFolder* folder) {
    while (folder->next < folder->size) {
        const struct dirent64* e =
            reinterpret_cast<const struct dirent64*>(folder->entries.get() + folder->next);
        folder->next += e->d_reclen;
        const char* n = e->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0))) continue;
        folder->current = e;
        return n;
    }
    folder->current = nullptr;
    return nullptr;
}

OSErr RzOSFolderItemInfo(RzOSFolder* folder, RzOSItemInfo& info) {
    info = RzOSItemInfo();
    const struct dirent64* e = folder->current;
    if (!e) return paramErr;
    // A folder needs nothing beyond what the listing says.
    if (e->d_type == DT_DIR) {
        info.isFolder = true;
        return noErr;
    }
    const unsigned mask = STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_BTIME;
    struct statx sx;
    if (statx(folder->fd, e->d_name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, mask, &sx) != 0)
        return RzOSErrFromErrno(errno);
    if (S_ISLNK(sx.stx_mode)) {
        info.isLink = true;
        if (statx(folder->fd, e->d_name, AT_NO_AUTOMOUNT, mask, &sx) != 0)
            return RzOSErrFromErrno(errno);
    }
    info.isFolder = S_ISDIR(sx.stx_mode);
    info.size = sx.stx_size;
    info.modified = sx.stx_mtime.tv_sec;
    info.hasCreated = (sx.stx_mask & STATX_BTIME) != 0;
    info.created = info.hasCreated ? static_cast<int64_t>(sx.stx_btime.tv_sec) : 0;
    if (info.isFolder) return noErr;

    FolderItem item(folder, e->d_name);
    Stores s;
    unsigned char fi[kRzFinderInfoSize];
    const OSErr err = ReadStores(item, s, fi, false);
    if (err == fnfErr) return err;  // gone since it was looked up
    info.finderRead = err == noErr;
    if (info.finderRead) {
        info.type = RzFinderInfoType(fi);
        info.creator = RzFinderInfoCreator(fi);
    }
    return noErr;
}

// --- The desktop ---------------------------------------------------------------

bool RzOSClipboardPut(const char* bytes, size_t n) {
    ClipboardPrograms programs;
    if (!FindClipboardPrograms(programs)) return false;
    const std::string text(bytes ? bytes : "", bytes ? n : 0);
    unsigned long owner = 0;
    const bool watchOwner = programs.ownsAfterExit && XClipboardOwner(owner);
    if (RunBounded(programs.put[0], programs.put, &text, nullptr) && watchOwner)
        WaitForNewXClipboardOwner(owner);
    return true;
}

bool RzOSClipboardGet(RzString& text) {
    text = RzString();
    ClipboardPrograms programs;
    if (!FindClipboardPrograms(programs)) return false;
    std::string out;
    if (RunBounded(programs.get[0], programs.get, nullptr, &out)) text = FromStd(out);
    return true;
}

bool RzOSClipboardHasText(bool& hasText) {
    hasText = false;
    ClipboardPrograms programs;
    if (!FindClipboardPrograms(programs)) return false;
    std::string out;
    if (programs.listsTypes)
        hasText = RunBounded(programs.list[0], programs.list, nullptr, &out) && OffersText(out);
    else
        hasText = RunBounded(programs.get[0], programs.get, nullptr, &out) && !out.empty();
    return true;
}

void RzOSGetKeys(uint8_t keys[16]) {
    memset(keys, 0, 16);
    // An X server under Wayland sees only the keys typed into its own
    // windows, which is no state of the keyboard.
    if (UnderWayland()) return;
    XDisplay* display = XConnection();
    if (!display) return;
    char xKeys[32] = {0};
    gX.call.queryKeymap(display, xKeys);
    if (gX.broken) return;
    RzMacKeysFromXKeys(reinterpret_cast<const uint8_t*>(xKeys), keys);
}

void RzOSBeep() {
    if (XDisplay* display = XConnection()) {
        gX.call.bell(display, 0);  // the bell's own volume
        gX.call.flush(display);
        if (!gX.broken) return;
    }
    // The terminal the application runs in, if it has one.
    const int tty = open("/dev/tty", O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (tty < 0) return;
    ssize_t written;
    while ((written = write(tty, "\a", 1)) < 0 && errno == EINTR) {
    }
    close(tty);
}

void RzOSReportUserActivity() {
    if (XDisplay* display = XConnection()) {
        gX.call.resetScreenSaver(display);
        gX.call.flush(display);
    }
    // The session's screen saver service, where a session bus is known (a
    // client would otherwise try to start one). Nobody waits for the answer.
    const char* bus = getenv("DBUS_SESSION_BUS_ADDRESS");
    if (!bus || !*bus) return;
    std::string client = FindProgram("dbus-send");
    std::vector<std::string> args;
    if (!client.empty()) {
        args = {client,
                "--session",
                "--type=method_call",
                "--dest=org.freedesktop.ScreenSaver",
                "/org/freedesktop/ScreenSaver",
                "org.freedesktop.ScreenSaver.SimulateUserActivity"};
    } else if (!(client = FindProgram("gdbus")).empty()) {
        args = {client,
                "call",
                "--session",
                "--dest",
                "org.freedesktop.ScreenSaver",
                "--object-path",
                "/org/freedesktop/ScreenSaver",
                "--method",
                "org.freedesktop.ScreenSaver.SimulateUserActivity"};
    } else {
        return;
    }
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    const int devNull = MoveAboveStandard(open("/dev/null", O_RDWR | O_CLOEXEC));
    if (devNull < 0) return;
    StartDetached(PlanChild(argv[0], argv.data(), devNull, devNull, devNull));
    close(devNull);
}

bool RzOSDesktopHighContrast() {
    // GNOME's accessibility setting (also what its Settings' High Contrast
    // switch changes); read through gsettings, which needs no running desktop.
    const std::string gsettings = FindProgram("gsettings");
    if (gsettings.empty()) return false;
    std::string out;
    return RunBounded(gsettings,
                      {gsettings, "get", "org.gnome.desktop.a11y.interface", "high-contrast"},
                      nullptr, &out) &&
           out.compare(0, 4, "true") == 0;
}
