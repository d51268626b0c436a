// Walking real folder trees, each in a fresh temporary folder.
#include <Rz/FileSpec/RzIterateDir.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/internal/RzAppleDouble.h>

#include "support/RzChild.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

RzFileSpec Spec(const std::string& path) {
    return RzFileSpec(RzString(path.c_str()));
}

// Records every item handed over: its path below the walked folder, with a
// '/' behind a folder's.
class Recorder : public RzIterateDir {
public:
    explicit Recorder(const std::string& root_) : root(root_ + "/") {}
    void ProcessFile(const RzFileInfo& info) override {
        std::string path = info.GetFullName().c_str();
        if (path.compare(0, root.size(), root) == 0) path = path.substr(root.size());
        items.push_back(path + (info.IsFile() ? "" : "/"));
        infos.push_back(info);
        if (onItem) onItem(*this, info);
    }
    std::string root;
    std::vector<std::string> items;
    std::vector<RzFileInfo> infos;
    std::function<void(Recorder&, const RzFileInfo&)> onItem;
};

std::set<std::string> AsSet(const std::vector<std::string>& v) {
    return std::set<std::string>(v.begin(), v.end());
}

// Every folder's contents come right after the folder.
bool DepthFirst(const std::vector<std::string>& items) {
    for (size_t i = 0; i < items.size(); ++i) {
        const std::string& folder = items[i];
        if (folder.back() != '/') continue;
        size_t j = i + 1;
        while (j < items.size() && items[j].compare(0, folder.size(), folder) == 0) ++j;
        for (; j < items.size(); ++j)
            if (items[j].compare(0, folder.size(), folder) == 0) return false;
    }
    return true;
}

void MakeTree(const RzTempDir& t, const std::vector<std::string>& items) {
    for (const std::string& item : items) {
        if (item.back() == '/')
            mkdir((t / item).c_str(), 0755);
        else
            RzPutFile(t / item, item);
    }
}

std::string Date(const RzDate& d) {
    return d.GetString().c_str();
}

// The date gmtime gives for a time, in RzDate's text form.
std::string GmDate(time_t seconds) {
    struct tm tm;
    gmtime_r(&seconds, &tm);
    return Date(
        RzDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec));
}

std::vector<unsigned char> Fi(const char* type, const char* creator) {
    std::vector<unsigned char> fi(32, 0);
    RzPutBE32(&fi[0], RzString(type).ToSig());
    RzPutBE32(&fi[4], RzString(creator).ToSig());
    return fi;
}

int OpenDescriptors() {
    int n = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (readdir(dir)) ++n;
        closedir(dir);
    }
    return n;
}

}  // namespace

TEST(RzIterateDir, DepthOrderAndWhatReachesTheHandler) {
    RzTempDir t;
    MakeTree(t, {"a.txt", ".DS_Store", "empty/", "sub/", "sub/b.jpg", "sub/.DS_Store",
                 "sub/deeper/", "sub/deeper/c.txt", ".DS_Store.d/", ".DS_Store.d/x"});
    const std::set<std::string> one{"a.txt", "empty/", "sub/", ".DS_Store.d/"};
    std::set<std::string> two = one, whole;
    two.insert({"sub/b.jpg", "sub/deeper/", ".DS_Store.d/x"});
    whole = two;
    whole.insert("sub/deeper/c.txt");
    struct Case {
        std::string folder;  // a trailing '/' names the same folder
        int depth;
        std::set<std::string> items;
    } cases[] = {{t.path(), 0, whole}, {t.path(), -1, whole}, {t.path(), 3, whole},
                 {t.path(), 2, two},   {t.path(), 1, one},    {t.path() + "/", 1, one}};
    for (const Case& c : cases) {
        Recorder walk(t.path());
        EXPECT_EQ(walk.Start(Spec(c.folder), c.depth), 0);
        EXPECT_EQ(AsSet(walk.items), c.items) << c.depth;
        EXPECT_EQ(walk.items.size(), c.items.size());
        EXPECT_TRUE(DepthFirst(walk.items)) << c.depth;
    }
}

TEST(RzIterateDir, GetFilesCollectsAndAppendsAcrossWalks) {
    RzTempDir t;
    MakeTree(t, {"a.txt", ".DS_Store", "sub/", "sub/b.jpg"});
    RzIterateDirGetFiles files;
    EXPECT_EQ(files.Start(Spec(t.path()), 0), 0);
    EXPECT_EQ(Joined(files.GetCount(), files.GetFolderCount(), files.GetFolder(0).GetFullName()),
              Joined(2, 1, t / "sub"));
    const std::set<std::string> found{files.GetFileSpec(0).GetFullName().c_str(),
                                      files.GetFileSpec(1).GetFullName().c_str()};
    EXPECT_EQ(found, (std::set<std::string>{t / "a.txt", t / "sub/b.jpg"}));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Joined(files.GetFileList()[i].GetFullName(), files.GetFileList()[i].GetTypeID()),
                  Joined(files.GetFileSpec(i).GetFullName(), files.GetFileSpec(i).GetTypeID()));
    EXPECT_RZ_ERROR(files.GetFileSpec(2), 7, "RzIndexError");

    // Failures report the file layer's code and add nothing; a second walk
    // appends.
    EXPECT_EQ(files.Start(Spec(t / "missing"), 0), fnfErr);
    EXPECT_EQ(files.Start(Spec(t / "a.txt"), 0), errFSNotAFolder);
    EXPECT_EQ(Joined(files.GetCount(), files.GetFolderCount()), "2|1");
    EXPECT_EQ(files.Start(Spec(t / "sub"), 0), 0);
    EXPECT_EQ(Joined(files.GetCount(), files.GetFolderCount(), files.GetFileList().GetCount(),
                     files.GetFolderList().GetCount()),
              "3|1|3|1");
}

TEST(RzIterateDir, StopEndsTheWalkAtTheNextItem) {
    RzTempDir t;
    MakeTree(t, {"a/", "a/1", "a/2", "b/", "b/3", "c", "d"});
    // Stop on the first item, on a folder (nothing inside it follows), and
    // on every item after the second.
    for (const std::string& at : {std::string(), std::string("a/"), std::string("b/")}) {
        Recorder walk(t.path());
        walk.onItem = [&](Recorder& r, const RzFileInfo&) {
            if (at.empty() || r.items.back() == at) r.Stop();
        };
        EXPECT_EQ(walk.Start(Spec(t.path()), 0), 0);
        EXPECT_TRUE(walk.GetStop());
        if (at.empty())
            EXPECT_EQ(walk.items.size(), 1u);
        else
            EXPECT_EQ(walk.items.back(), at);  // nothing from inside the folder
        // Starting again clears the flag.
        walk.onItem = nullptr;
        walk.items.clear();
        EXPECT_EQ(walk.Start(Spec(t.path()), 0), 0);
        EXPECT_EQ(walk.items.size(), 7u);
    }
}

TEST(RzIterateDir, FilesCarrySizesAndUTCDatesFoldersNothing) {
    RzTempDir t;
    const time_t instants[] = {
        0,         -1, 951825600 /* 2000-02-29 12:00 */, 1204880700, 2147483648 /* past 32 bits */,
        4107542400 /* 2100-03-01 */};
    for (size_t i = 0; i < sizeof instants / sizeof instants[0]; ++i) {
        const std::string path = t / ("f" + std::to_string(i));
        RzPutFile(path, std::string(i * 1000, 'x'));
        struct timespec times[2] = {{instants[i], 0}, {instants[i], 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }
    const std::string big = t / "big";  // 5 GB, sparse
    ASSERT_EQ(truncate((RzPutFile(big, ""), big).c_str(), 5LL << 30), 0);
    mkdir((t / "folder").c_str(), 0755);

    Recorder walk(t.path());
    ASSERT_EQ(walk.Start(Spec(t.path()), 0), 0);
    ASSERT_EQ(walk.infos.size(), 8u);
    for (const RzFileInfo& info : walk.infos) {
        const std::string path = info.GetFullName().c_str();
        struct statx sx;
        ASSERT_EQ(statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME | STATX_SIZE, &sx), 0);
        if (path == t / "folder") {
            EXPECT_EQ(Joined(info.IsFile(), info.GetSize(), Date(info.GetCreationDate()),
                             Date(info.GetModificationDate())),
                      "false|0|0-1-1 0:00:00|0-1-1 0:00:00");
            continue;
        }
        // Without a birth time the creation date is the modification date.
        const time_t born = sx.stx_mask & STATX_BTIME ? sx.stx_btime.tv_sec : sx.stx_mtime.tv_sec;
        EXPECT_EQ(Joined(info.IsFile(), info.GetSize(), Date(info.GetModificationDate()),
                         Date(info.GetCreationDate())),
                  Joined(true, static_cast<uint32_t>(sx.stx_size), GmDate(sx.stx_mtime.tv_sec),
                         GmDate(born)))
            << path;
    }
    uint32_t bigSize = 0;
    for (const RzFileInfo& info : walk.infos)
        if (info.GetFullName() == RzString(big.c_str())) bigSize = info.GetSize();
    EXPECT_EQ(bigSize, 1u << 30);  // the low 32 bits of 5 GB
}

TEST(RzIterateDir, TypeAndCreatorAreTheFileLayers) {
    RzTempDir t;
    const char kMetadata[] = "user.org.netatalk.Metadata";
    // Every store of Finder information, on names with a known, an unknown
    // and no extension.
    for (const char* name : {"r.txt", "r.dat", "r", "s.icc", "s.xyz", "a.jpg", "a.q", "c.tif", "c",
                             "n.txt", "n.xyz", "n", "folder.icc/"}) {
        std::string path = t / name;
        if (path.back() == '/') {
            mkdir(path.c_str(), 0755);
            path.pop_back();
        } else {
            RzPutFile(path);
        }
        const std::vector<unsigned char> fi = Fi("ABCD", "WXYZ");
        switch (name[0]) {
            case 'r': {
                std::vector<unsigned char> record(kRzMetadataSize);
                RzMetadataBuild(record.data(), fi.data(), 0);
                setxattr(path.c_str(), kMetadata, record.data(), record.size(), 0);
                break;
            }
            case 's': {
                std::vector<unsigned char> stream(61, 0);
                memcpy(stream.data(), "AFP\0\0\0\1\0", 8);
                memcpy(&stream[16], fi.data(), 32);
                setxattr(path.c_str(), "user.DosStream.AFP_AfpInfo:$DATA", stream.data(),
                         stream.size(), 0);
                break;
            }
            case 'a':
                setxattr(path.c_str(), "user.com.apple.FinderInfo", fi.data(), fi.size(), 0);
                break;
            case 'c': {  // a "._" file beside it, as a Mac writes one
                std::vector<unsigned char> f(50, 0);
                RzPutBE32(&f[0], kRzAppleDoubleMagic), RzPutBE32(&f[4], kRzAppleDoubleVersion2);
                f[25] = 1;
                RzPutBE32(&f[26], 9), RzPutBE32(&f[30], 50), RzPutBE32(&f[34], 32);
                f.insert(f.end(), fi.begin(), fi.end());
                RzPutFile(t / (std::string("._") + name), std::string(f.begin(), f.end()));
                break;
            }
            case 'f':
                setxattr(path.c_str(), "user.com.apple.FinderInfo", fi.data(), fi.size(), 0);
                break;
        }
        setxattr(path.c_str(), "user.other", "x", 1, 0);  // attributes of no interest
    }
    Recorder walk(t.path());
    ASSERT_EQ(walk.Start(Spec(t.path()), 1), 0);
    ASSERT_EQ(walk.infos.size(), 15u);  // the "._c" file is an item too
    auto codes = [](const RzFileSpec& s) {
        auto text = [](uint32_t c) { return c ? std::string(RzString().FromSig(c).c_str()) : "0"; };
        return text(s.GetTypeID()) + "/" + text(s.GetCreatorID());
    };
    // The extension's type wins, the creator is the Finder's, and an unknown
    // extension leaves the Finder type.
    const std::map<std::string, std::string> some{
        {"r.txt", "TEXT/WXYZ"}, {"r.dat", "ABCD/WXYZ"}, {"r", "ABCD/WXYZ"},      {"c", "ABCD/WXYZ"},
        {"n.txt", "TEXT/0"},    {"n.xyz", "0/0"},       {"folder.icc", "prof/0"}};
    for (const RzFileInfo& info : walk.infos) {
        FSRef ref;
        ASSERT_EQ(RzFileSpecToFSRef(ref, info), noErr);
        RzFileSpec layer;
        FSRefToRzFileSpec(layer, ref);
        EXPECT_EQ(codes(info), codes(layer)) << info.GetFullName().c_str();
        auto spelled = some.find(info.GetName().c_str());
        if (spelled != some.end()) {
            EXPECT_EQ(codes(info), spelled->second) << spelled->first;
        }
    }
}

TEST(RzIterateDir, LinksAreDescribedByTheirTargetsAndNotWalkedInto) {
    RzTempDir t;
    MakeTree(t, {"real/", "real/inside", "file"});
    ASSERT_EQ(truncate((t / "file").c_str(), 1234), 0);
    symlink("file", (t / "to-file").c_str());
    symlink("real", (t / "to-folder").c_str());
    symlink("missing", (t / "to-nothing").c_str());
    symlink(".", (t / "real/loop").c_str());
    Recorder walk(t.path());
    ASSERT_EQ(walk.Start(Spec(t.path()), 0), 0);
    EXPECT_EQ(AsSet(walk.items), (std::set<std::string>{"real/", "real/inside", "real/loop/",
                                                        "file", "to-file", "to-folder/"}));
    uint32_t size = 0;
    for (const RzFileInfo& info : walk.infos)
        if (info.GetName() == "to-file") size = info.GetSize();
    EXPECT_EQ(size, 1234u);
}

TEST(RzIterateDir, FoldersThatMayNotBeReadEndQuietly) {
    RzTempDir t;
    chmod(t.path().c_str(), 0755);
    MakeTree(t, {"open/", "open/a", "closed/", "closed/hidden", "z"});
    chmod((t / "closed").c_str(), 0);
    const std::string result = AsUnprivileged([&] {
        Recorder walk(t.path()), closed(t / "closed");
        const int32_t err = walk.Start(Spec(t.path()), 0);
        const int32_t top = closed.Start(Spec(t / "closed"), 0);
        std::set<std::string> items = AsSet(walk.items);
        std::string text;
        for (const std::string& item : items) text += item + " ";
        return Joined(err, text, top, closed.items.size());
    });
    chmod((t / "closed").c_str(), 0755);
    EXPECT_EQ(result, "0|closed/ open/ open/a z |0|0");
}

TEST(RzIterateDir, HandlerExceptionsPassThroughAndCloseEveryFolder) {
    RzTempDir t;
    std::string deep;
    for (int i = 0; i < 300; ++i) deep += "d/";
    ASSERT_EQ(system(("mkdir -p " + t / deep).c_str()), 0);
    RzPutFile(t / (deep + "leaf"));
    const int before = OpenDescriptors();

    Recorder walk(t.path());
    EXPECT_EQ(walk.Start(Spec(t.path()), 0), 0);
    EXPECT_EQ(Joined(walk.items.size(), walk.items.back()), Joined(301, deep + "leaf"));
    Recorder limited(t.path());
    EXPECT_EQ(limited.Start(Spec(t.path()), 120), 0);
    EXPECT_EQ(limited.items.size(), 120u);

    Recorder throwing(t.path());
    throwing.onItem = [](Recorder& r, const RzFileInfo&) {
        if (r.items.size() == 200) throw RzError(42, "RzGeneralErr", "test", 1);
    };
    EXPECT_RZ_ERROR(throwing.Start(Spec(t.path()), 0), 42, "RzGeneralErr");
    EXPECT_EQ(OpenDescriptors(), before);
}
