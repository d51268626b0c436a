// Walking real folder trees, each in a fresh temporary folder.
#include <Rz/FileSpec/RzIterateDir.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/internal/RzAppleDouble.h>

#include "support/RzChild.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

const auto Spec = FileSpecAt;

// Walks and records every item handed over: its path below `root`, with a
// '/' behind a folder's.
struct Recorder : RzIterateDir {
    explicit Recorder(const std::string& root_) : root(root_ + "/") {}
    void ProcessFile(const RzFileInfo& info) override {
        items.push_back(std::string(info.GetFullName().c_str()).substr(root.size()) +
                        (info.IsFile() ? "" : "/"));
        infos.push_back(info);
        if (onItem) onItem(*this);
    }
    std::set<std::string> Items() const { return {items.begin(), items.end()}; }
    std::string root;
    std::vector<std::string> items;
    std::vector<RzFileInfo> infos;
    std::function<void(Recorder&)> onItem;
};

// Every folder's contents come right after the folder.
bool DepthFirst(const std::vector<std::string>& items) {
    for (size_t i = 0; i < items.size(); ++i) {
        const std::string& folder = items[i];
        size_t j = i + 1;
        while (folder.back() == '/' && j < items.size() && items[j].rfind(folder, 0) == 0) ++j;
        for (; folder.back() == '/' && j < items.size(); ++j)
            if (items[j].rfind(folder, 0) == 0) return false;
    }
    return true;
}

std::string GmDate(time_t seconds) {
    struct tm tm;
    gmtime_r(&seconds, &tm);
    return RzDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec)
        .GetString()
        .c_str();
}

// Type and creator as "TYPE/crea", a zero code as "0".
std::string Codes(const RzFileSpec& s) {
    auto text = [](uint32_t c) { return c ? std::string(RzString().FromSig(c).c_str()) : "0"; };
    return text(s.GetTypeID()) + "/" + text(s.GetCreatorID());
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
    MakeFiles(t, {"a.txt", ".DS_Store", "empty/", "sub/", "sub/b.jpg", "sub/.DS_Store",
                  "sub/deeper/", "sub/deeper/c.txt", ".DS_Store.d/", ".DS_Store.d/x"});
    const std::set<std::string> one{"a.txt", "empty/", "sub/", ".DS_Store.d/"};
    std::set<std::string> two = one, whole;
    two.insert({"sub/b.jpg", "sub/deeper/", ".DS_Store.d/x"});
    (whole = two).insert("sub/deeper/c.txt");
    struct Case {
        std::string folder;  // a trailing '/' names the same folder
        int depth;
        std::set<std::string> items;
    } cases[] = {
        {t.path(), 0, whole}, {t.path(), -1, whole}, {t.path(), 2, two}, {t.path() + "/", 1, one}};
    for (const Case& c : cases) {
        Recorder walk(t.path());
        EXPECT_EQ(walk.Start(Spec(c.folder), c.depth), 0);
        EXPECT_EQ(walk.Items(), c.items) << c.depth;
        EXPECT_EQ(Joined(walk.items.size(), DepthFirst(walk.items)), Joined(c.items.size(), true));
    }
}

TEST(RzIterateDir, GetFilesCollectsAndAppendsAcrossWalks) {
    RzTempDir t;
    MakeFiles(t, {"a.jpg", ".DS_Store", "sub/", "sub/b.jpg"});
    RzIterateDirGetFiles files;
    EXPECT_EQ(files.Start(Spec(t.path()), 0), 0);
    const std::set<std::string> found{files.GetFileSpec(0).GetFullName().c_str(),
                                      files.GetFileList()[1].GetFullName().c_str()};
    EXPECT_EQ(found, (std::set<std::string>{t / "a.jpg", t / "sub/b.jpg"}));
    EXPECT_EQ(Joined(files.GetCount(), files.GetFolderCount(), files.GetFolder(0).GetFullName(),
                     files.GetFileSpec(1).GetType()),
              Joined(2, 1, t / "sub", eRzTypeJPEG));
    // Failures report the file layer's codes and add nothing; walks append.
    EXPECT_EQ(files.Start(Spec(t / "a.jpg"), 0), errFSNotAFolder);
    EXPECT_EQ(files.GetCount(), 2);
    EXPECT_EQ(files.Start(Spec(t / "sub"), 0), 0);
    EXPECT_EQ(Joined(files.GetFileList().GetCount(), files.GetFolderList().GetCount()), "3|1");
}

TEST(RzIterateDir, StopEndsTheWalkAtTheNextItem) {
    RzTempDir t;
    MakeFiles(t, {"a/", "a/1", "a/2", "b/", "b/3", "c", "d"});
    // On the first item, and on a folder: nothing inside it follows.
    for (const std::string at : {"", "a/"}) {
        Recorder walk(t.path());
        walk.onItem = [&](Recorder& r) {
            if (at.empty() || r.items.back() == at) r.Stop();
        };
        EXPECT_EQ(walk.Start(Spec(t.path()), 0), 0);
        EXPECT_EQ(Joined(walk.GetStop(), walk.items.back(), at.empty() ? walk.items.size() : 1),
                  Joined(true, at.empty() ? walk.items[0] : at, 1));
        walk.onItem = nullptr;  // starting again clears the flag
        walk.items.clear();
        EXPECT_EQ(walk.Start(Spec(t.path()), 0), 0);
        EXPECT_EQ(walk.items.size(), 7u);
    }
}

TEST(RzIterateDir, FilesCarrySizesAndUTCDatesFoldersNothing) {
    RzTempDir t;
    const time_t instants[] = {0, -1, 951825600 /* 2000-02-29 12:00 */, 2147483648,
                               4107542400 /* 2100-03-01 */};
    for (time_t when : instants) {
        const std::string path = t / ("f" + std::to_string(when));
        RzPutFile(path, std::to_string(when));
        struct timespec times[2] = {{when, 0}, {when, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }
    RzPutFile(t / "big", "");
    // Sparse; reports 1 GB, the low 32 bits.
    ASSERT_EQ(truncate((t / "big").c_str(), 5LL << 30), 0);
    mkdir((t / "folder").c_str(), 0755);

    Recorder walk(t.path());
    ASSERT_EQ(walk.Start(Spec(t.path()), 0), 0);
    ASSERT_EQ(walk.infos.size(), 7u);
    for (const RzFileInfo& info : walk.infos) {
        const std::string path = info.GetFullName().c_str();
        struct statx sx;
        ASSERT_EQ(statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME | STATX_SIZE, &sx), 0);
        // Without a birth time the creation date is the modification date.
        const time_t born = sx.stx_mask & STATX_BTIME ? sx.stx_btime.tv_sec : sx.stx_mtime.tv_sec;
        EXPECT_EQ(Joined(info.IsFile(), info.GetSize(), info.GetModificationDate().GetString(),
                         info.GetCreationDate().GetString()),
                  path == t / "folder" ? "false|0|0-1-1 0:00:00|0-1-1 0:00:00"
                                       : Joined(true, static_cast<uint32_t>(sx.stx_size),
                                                GmDate(sx.stx_mtime.tv_sec), GmDate(born)))
            << path;
    }
}

// The walk reads type and creator where the file layer reads them (the
// servers' record, the Mac's own attribute, a "._" file) and gives what the
// file layer gives: the file layer's tests say what that is.
TEST(RzIterateDir, TypeAndCreatorAreTheFileLayers) {
    RzTempDir t;
    std::vector<unsigned char> fi(32, 0), record(kRzMetadataSize), sidecar(50, 0);
    RzPutBE32(&fi[0], RzString("ABCD").ToSig()), RzPutBE32(&fi[4], RzString("WXYZ").ToSig());
    RzMetadataBuild(record.data(), fi.data(), 0);
    RzPutBE32(&sidecar[0], kRzAppleDoubleMagic), RzPutBE32(&sidecar[4], kRzAppleDoubleVersion2);
    sidecar[25] = 1;  // one entry: Finder information at 50
    RzPutBE32(&sidecar[26], 9), RzPutBE32(&sidecar[30], 50), RzPutBE32(&sidecar[34], 32);
    sidecar.insert(sidecar.end(), fi.begin(), fi.end());
    // With a known, an unknown and no extension.
    const std::set<std::string> names{"r.txt", "r.dat", "a", "c.tif",
                                      "c.q",   "n.txt", "n", "f.icc/"};
    for (const std::string& name : names) {
        const std::string path = t / name;
        name.back() == '/' ? mkdir(path.c_str(), 0755) : RzPutFile(path);
        if (name[0] == 'r')
            setxattr(path.c_str(), "user.org.netatalk.Metadata", record.data(), record.size(), 0);
        if (name[0] == 'a' || name[0] == 'f')
            setxattr(path.c_str(), "user.com.apple.FinderInfo", fi.data(), fi.size(), 0);
        if (name[0] == 'c')
            RzPutFile(t / ("._" + name), std::string(sidecar.begin(), sidecar.end()));
        setxattr(path.c_str(), "user.other", "x", 1, 0);  // an attribute of no interest
    }
    Recorder walk(t.path());
    ASSERT_EQ(walk.Start(Spec(t.path()), 1), 0);
    ASSERT_EQ(walk.infos.size(), names.size() + 2);  // with the "._" files
    std::string codes, layers;
    for (size_t i = 0; i < walk.infos.size(); ++i) {
        FSRef ref;
        RzFileSpec layer;
        ASSERT_EQ(RzFileSpecToFSRef(ref, walk.infos[i]), noErr);
        FSRefToRzFileSpec(layer, ref);
        codes += walk.items[i] + " " + Codes(walk.infos[i]) + ", ";
        layers += walk.items[i] + " " + Codes(layer) + ", ";
    }
    EXPECT_EQ(codes, layers);
    EXPECT_NE(codes.find("c.q ABCD/WXYZ"), std::string::npos) << codes;
}

TEST(RzIterateDir, LinksAreDescribedByTheirTargetsAndNotWalkedInto) {
    RzTempDir t;
    MakeFiles(t, {"real/", "real/inside", "file"});
    ASSERT_EQ(truncate((t / "file").c_str(), 1234), 0);
    const std::vector<std::pair<std::string, std::string>> links{
        {"to-file", "file"}, {"to-folder", "real"}, {"to-nothing", "none"}, {"real/loop", "."}};
    for (const auto& link : links)
        ASSERT_EQ(symlink(link.second.c_str(), (t / link.first).c_str()), 0);
    Recorder walk(t.path());
    walk.onItem = [](Recorder& r) {
        if (r.items.back() == "to-file") {
            EXPECT_EQ(r.infos.back().GetSize(), 1234u);
        }
    };
    ASSERT_EQ(walk.Start(Spec(t.path()), 0), 0);
    EXPECT_EQ(walk.Items(), (std::set<std::string>{"real/", "real/inside", "real/loop/", "file",
                                                   "to-file", "to-folder/"}));
}

TEST(RzIterateDir, FoldersThatMayNotBeReadEndQuietly) {
    RzTempDir t;
    chmod(t.path().c_str(), 0755);
    MakeFiles(t, {"open/", "open/a", "closed/", "closed/hidden", "z"});
    chmod((t / "closed").c_str(), 0);
    const std::string result = AsUnprivileged([&] {
        Recorder walk(t.path()), closed(t / "closed");
        const int32_t all = walk.Start(Spec(t.path()), 0),
                      none = closed.Start(Spec(t / "closed"), 0);
        std::string text = Joined(all, none, closed.items.size());
        for (const std::string& item : walk.Items()) text += " " + item;
        return text;
    });
    chmod((t / "closed").c_str(), 0755);
    EXPECT_EQ(result, "0|0|0 closed/ open/ open/a z");
}

TEST(RzIterateDir, HandlerExceptionsPassThroughAndCloseEveryFolder) {
    RzTempDir t;
    std::string deep;
    for (int i = 0; i < 300; ++i) deep += "d/";
    ASSERT_EQ(system(("mkdir -p " + t / deep).c_str()), 0);
    RzPutFile(t / (deep + "leaf"));
    const int before = OpenDescriptors();
    Recorder walk(t.path()), limited(t.path()), throwing(t.path());
    EXPECT_EQ(walk.Start(Spec(t.path()), 0), 0);
    EXPECT_EQ(limited.Start(Spec(t.path()), 120), 0);
    EXPECT_EQ(Joined(walk.items.size(), walk.items.back(), limited.items.size()),
              Joined(301, deep + "leaf", 120));
    throwing.onItem = [](Recorder& r) {
        if (r.items.size() == 200) throw RzError(42, "RzGeneralErr", "test", 1);
    };
    EXPECT_RZ_ERROR(throwing.Start(Spec(t.path()), 0), 42, "RzGeneralErr");
    EXPECT_EQ(OpenDescriptors(), before);
}
