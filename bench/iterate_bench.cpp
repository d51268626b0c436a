// Walking a folder tree: RzIterateDir over 100,000 files in 1,000 folders,
// with each item's dates, size and Finder codes, next to nftw over the same
// tree with stat data; a bare descriptor walk (getdents64 and statx, nothing
// else) as the floor of any walk that reports birth times; and the bare walk
// reading each file's Finder information by path, as the file layer does
// for a single file (RzOSReadFinderInfo), which the walk avoids. The tree
// lives in a temporary folder on the real disk (TMPDIR, else /tmp), in the
// page cache after the first pass, and is removed at exit.
#include <benchmark/benchmark.h>

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <Rz/FileSpec/RzIterateDir.h>
#include <Rz/internal/RzOS.h>

namespace {

const int kFolders = 1000, kFilesPerFolder = 100;

struct Tree {
    Tree() {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/rz-walk-bench-XXXXXX";
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back(0);
        root = mkdtemp(buffer.data());
        for (int d = 0; d < kFolders; ++d) {
            const std::string folder = root + "/folder" + std::to_string(d);
            mkdir(folder.c_str(), 0755);
            for (int f = 0; f < kFilesPerFolder; ++f) {
                const std::string file = folder + "/image" + std::to_string(f) + ".tif";
                const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
                if (fd >= 0) {
                    // Sizes without data blocks: the tree costs inodes only.
                    if (ftruncate(fd, 1000 + f) != 0) perror("ftruncate");
                    close(fd);
                }
            }
        }
    }
    ~Tree() {
        nftw(
            root.c_str(),
            [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); }, 64,
            FTW_DEPTH | FTW_PHYS);
    }
    std::string root;
};

Tree& Shared() {
    static Tree tree;
    return tree;
}

// Uses what a listing tells about each item, as an application would.
class Sum : public RzIterateDir {
public:
    void ProcessFile(const RzFileInfo& info) override {
        total += info.GetSize() + static_cast<uint64_t>(info.GetModificationDate().Day2Long()) +
                 static_cast<uint64_t>(info.GetCreationDate().SecondOfDay()) + info.GetTypeID();
        ++items;
    }
    uint64_t total = 0, items = 0;
};

void BM_RzIterateDir(benchmark::State& state) {
    const RzFileSpec folder(RzString(Shared().root.c_str()));
    for (auto _ : state) {
        Sum walk;
        walk.Start(folder, 0);
        benchmark::DoNotOptimize(walk.total);
        if (walk.items != kFolders * (kFilesPerFolder + 1)) state.SkipWithError("items missing");
    }
    state.SetItemsProcessed(state.iterations() * kFolders * (kFilesPerFolder + 1));
}
BENCHMARK(BM_RzIterateDir)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void BM_RzIterateDirGetFiles(benchmark::State& state) {
    const RzFileSpec folder(RzString(Shared().root.c_str()));
    for (auto _ : state) {
        RzIterateDirGetFiles walk;
        walk.Start(folder, 0);
        benchmark::DoNotOptimize(walk.GetCount());
    }
    state.SetItemsProcessed(state.iterations() * kFolders * (kFilesPerFolder + 1));
}
BENCHMARK(BM_RzIterateDirGetFiles)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

uint64_t gTotal;
int SumStat(const char*, const struct stat* st, int, struct FTW*) {
    gTotal += static_cast<uint64_t>(st->st_size) + static_cast<uint64_t>(st->st_mtime) +
              static_cast<uint64_t>(st->st_ctime);
    return 0;
}

void BM_nftw(benchmark::State& state) {
    const std::string root = Shared().root;
    for (auto _ : state) {
        gTotal = 0;
        nftw(root.c_str(), SumStat, 64, FTW_PHYS);
        benchmark::DoNotOptimize(gTotal);
    }
    state.SetItemsProcessed(state.iterations() * kFolders * (kFilesPerFolder + 1));
}
BENCHMARK(BM_nftw)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

// getdents64 and one statx per item, relative to the folder: a walk that
// reports sizes and birth times cannot do less.
uint64_t BareWalk(int fd, const std::string& path, bool finderInfo) {
    uint64_t total = 0;
    std::vector<char> buffer(32768);
    for (ssize_t n; (n = getdents64(fd, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t at = 0; at < n;) {
            const struct dirent64* e = reinterpret_cast<const struct dirent64*>(&buffer[at]);
            at += e->d_reclen;
            const char* name = e->d_name;
            if (name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2]))) continue;
            struct statx sx;
            if (statx(fd, name, AT_SYMLINK_NOFOLLOW,
                      STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_BTIME, &sx) != 0)
                continue;
            total += sx.stx_size + static_cast<uint64_t>(sx.stx_mtime.tv_sec) +
                     static_cast<uint64_t>(sx.stx_btime.tv_sec);
            if (S_ISDIR(sx.stx_mode)) {
                const int sub = openat(fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
                if (sub >= 0) total += BareWalk(sub, path + "/" + name, finderInfo);
            } else if (finderInfo) {
                uint32_t type = 0, creator = 0;
                uint16_t flags = 0;
                RzOSReadFinderInfo((path + "/" + name).c_str(), type, creator, flags, nullptr);
                total += type + creator;
            }
        }
    }
    close(fd);
    return total;
}

void BM_BareStatxWalk(benchmark::State& state) {
    const std::string root = Shared().root;
    const bool finderInfo = state.range(0) != 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            BareWalk(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), root, finderInfo));
    state.SetItemsProcessed(state.iterations() * kFolders * (kFilesPerFolder + 1));
}
BENCHMARK(BM_BareStatxWalk)
    ->ArgName("finderInfoByPath")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MinTime(2);

}  // namespace
