// The Linux file layer against the bare system calls it is built on: reading
// Finder information (the record, then the fallbacks it looks for) against
// one getxattr of the record, and making a reference against realpath.
#include <benchmark/benchmark.h>

#include <stdio.h>
#include <stdlib.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <string>

#include <Rz/internal/RzAppleDouble.h>
#include <Rz/internal/RzOS.h>

namespace {

// A file with a Finder information record, removed at exit.
struct Fixture {
    Fixture() {
        char pattern[] = "/tmp/rz-bench-XXXXXX";
        dir = mkdtemp(pattern);
        file = dir + "/f.txt";
        fclose(fopen(file.c_str(), "wb"));
        unsigned char fi[32] = {'T', 'E', 'X', 'T', 't', 't', 'x', 't', 0x40};
        unsigned char record[kRzMetadataSize];
        RzMetadataBuild(record, fi, 0);
        setxattr(file.c_str(), "user.org.netatalk.Metadata", record, sizeof record, 0);
    }
    ~Fixture() {
        unlink(file.c_str());
        rmdir(dir.c_str());
    }
    std::string dir, file;
};

Fixture& Shared() {
    static Fixture f;
    return f;
}

void BM_RzOSReadFinderInfo(benchmark::State& state) {
    const char* path = Shared().file.c_str();
    uint32_t type, creator;
    uint16_t flags;
    for (auto _ : state) {
        benchmark::DoNotOptimize(RzOSReadFinderInfo(path, type, creator, flags, nullptr));
        benchmark::DoNotOptimize(type);
    }
}
BENCHMARK(BM_RzOSReadFinderInfo);

void BM_getxattr(benchmark::State& state) {
    const char* path = Shared().file.c_str();
    unsigned char record[kRzMetadataSize];
    for (auto _ : state)
        benchmark::DoNotOptimize(
            getxattr(path, "user.org.netatalk.Metadata", record, sizeof record));
}
BENCHMARK(BM_getxattr);

void BM_RzOSPathMakeRef(benchmark::State& state) {
    const char* path = Shared().file.c_str();
    FSRef ref;
    bool isDirectory;
    for (auto _ : state) benchmark::DoNotOptimize(RzOSPathMakeRef(path, ref, &isDirectory));
}
BENCHMARK(BM_RzOSPathMakeRef);

void BM_realpath(benchmark::State& state) {
    const char* path = Shared().file.c_str();
    for (auto _ : state) {
        char* r = realpath(path, nullptr);
        benchmark::DoNotOptimize(r);
        free(r);
    }
}
BENCHMARK(BM_realpath);

}  // namespace
