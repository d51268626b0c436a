// System services against their nearest standard or bare equivalents: the
// tick clock against std::chrono::steady_clock, copying a file against
// std::filesystem::copy_file on the same real files, and the lock query
// against the bare system calls it makes after resolving the path.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <Rz/RzSystem/RzSystem.h>
#include <Rz/internal/RzAppleDouble.h>

namespace {

// Files in a fresh folder under /tmp, removed at exit: an 8 MB source, and a
// file an SMB client made read-only (Samba's record) with a Finder record.
struct Fixture {
    Fixture() {
        char pattern[] = "/tmp/rz-bench-XXXXXX";
        dir = mkdtemp(pattern);
        source = dir + "/source.bin";
        destination = dir + "/destination.bin";
        locked = dir + "/locked.txt";
        std::vector<char> data(8 << 20);
        for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 31);
        FILE* f = fopen(source.c_str(), "wb");
        fwrite(data.data(), 1, data.size(), f);
        fclose(f);
        fclose(fopen(locked.c_str(), "wb"));
        const unsigned char dos[] = {0,    0, 5, 0, 5, 0, 0, 0, 0x11, 0, 0, 0,
                                     0x21, 0, 0, 0, 1, 2, 3, 4, 5,    6, 7, 8};
        setxattr(locked.c_str(), "user.DOSATTRIB", dos, sizeof dos, 0);
        unsigned char fi[32] = {'T', 'E', 'X', 'T', 't', 't', 'x', 't'};
        unsigned char record[kRzMetadataSize];
        RzMetadataBuild(record, fi, 0);
        setxattr(locked.c_str(), "user.org.netatalk.Metadata", record, sizeof record, 0);
    }
    ~Fixture() {
        unlink(source.c_str());
        unlink(destination.c_str());
        unlink(locked.c_str());
        rmdir(dir.c_str());
    }
    std::string dir, source, destination, locked;
};

Fixture& Shared() {
    static Fixture f;
    return f;
}

void BM_RzSystemTickCount(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(RzSystem::TickCount());
}
BENCHMARK(BM_RzSystemTickCount);

void BM_SteadyClockNow(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(std::chrono::steady_clock::now());
}
BENCHMARK(BM_SteadyClockNow);

void BM_RzSystemCopyFile(benchmark::State& state) {
    const RzFileSpec from(RzString(Shared().source.c_str()));
    const RzFileSpec to(RzString(Shared().destination.c_str()));
    for (auto _ : state) RzSystem::CopyFile(from, to);
    state.SetBytesProcessed(int64_t(state.iterations()) * (8 << 20));
}
BENCHMARK(BM_RzSystemCopyFile)->Unit(benchmark::kMillisecond);

void BM_StdFilesystemCopyFile(benchmark::State& state) {
    const std::filesystem::path from(Shared().source), to(Shared().destination);
    for (auto _ : state)
        std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
    state.SetBytesProcessed(int64_t(state.iterations()) * (8 << 20));
}
BENCHMARK(BM_StdFilesystemCopyFile)->Unit(benchmark::kMillisecond);

void BM_RzSystemIsFileLocked(benchmark::State& state) {
    const RzFileSpec spec(RzString(Shared().locked.c_str()));
    for (auto _ : state) benchmark::DoNotOptimize(RzSystem::IsFileLocked(spec));
}
BENCHMARK(BM_RzSystemIsFileLocked);

// What the query asks the system once the path is known: the immutable flag
// and the two records.
void BM_LockSystemCalls(benchmark::State& state) {
    const char* path = Shared().locked.c_str();
    unsigned char buffer[402];
    for (auto _ : state) {
        struct statx sx;
        benchmark::DoNotOptimize(statx(AT_FDCWD, path, 0, STATX_TYPE, &sx));
        benchmark::DoNotOptimize(getxattr(path, "user.DOSATTRIB", buffer, 256));
        benchmark::DoNotOptimize(
            getxattr(path, "user.org.netatalk.Metadata", buffer, sizeof buffer));
    }
}
BENCHMARK(BM_LockSystemCalls);

}  // namespace
