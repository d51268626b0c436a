// Linux implementation of the operating-system seam.
#include <Rz/internal/RzOS.h>

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/fs.h>
#include <pwd.h>
#include <signal.h>
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
    // Everything the children use is prepared here: between fork and exec
    // only async-signal-safe calls are allowed.
    char opener[] = "xdg-open";
    char* const argv[] = {opener, const_cast<char*>(url), nullptr};
    struct rlimit files;
    const int lastFd = getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < 65536
                           ? static_cast<int>(files.rlim_cur) - 1
                           : 65535;
    sigset_t none;
    sigemptyset(&none);

    // An intermediate child starts the opener and leaves at once, so the
    // opener is adopted by init (or the nearest subreaper) and this process
    // only has to reap the intermediate, which takes no time.
    const pid_t child = fork();
    if (child < 0) return RzOSErrFromErrno(errno);
    if (child == 0) {
        setsid();  // a session of its own: closing the application's terminal leaves it alone
        const pid_t grandchild = fork();
        if (grandchild == 0) {
            sigprocmask(SIG_SETMASK, &none, nullptr);
            const int devNull = open("/dev/null", O_RDONLY);
            if (devNull > 0) dup2(devNull, 0);
            // The opener, and the application it starts, must not hold the
            // application's files, sockets and pipes open.
            if (close_range(3, ~0U, 0) != 0)
                for (int fd = 3; fd <= lastFd; ++fd) close(fd);
            execvp(opener, argv);
            _exit(127);
        }
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
