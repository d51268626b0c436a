// File streams against the C library they are built on: copying a 256 MB
// file with RzCopyStream between two RzFile streams against a plain
// fread/fwrite loop (both with chunks of 100,000 bytes, as the system
// services copy), and reading a 100 MB file whole with ReadString against
// fread into a std::string. The files live in a temporary folder that is
// removed at exit; all of them stay in the page cache, so the figures
// compare the code paths, not the disk.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <Rz/RzIO/RzFile.h>

namespace {

const uint32_t kChunk = 100000;
const long kCopySize = 256L << 20;
const long kReadSize = 100L << 20;

struct Fixture {
    Fixture() {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/rz-file-bench-XXXXXX";
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back(0);
        dir = mkdtemp(buffer.data());
        source = dir + "/source.bin";
        copy = dir + "/copy.bin";
        whole = dir + "/whole.bin";
        Fill(source, kCopySize);
        Fill(whole, kReadSize);
    }
    ~Fixture() {
        unlink(source.c_str());
        unlink(copy.c_str());
        unlink(whole.c_str());
        rmdir(dir.c_str());
    }
    static void Fill(const std::string& path, long size) {
        std::vector<char> block(1 << 20);
        for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 131 + (i >> 9));
        FILE* f = fopen(path.c_str(), "wb");
        for (long done = 0; done < size; done += static_cast<long>(block.size()))
            fwrite(block.data(), 1, block.size(), f);
        fclose(f);
    }
    std::string dir, source, copy, whole;
};

Fixture& Files() {
    static Fixture f;
    return f;
}

RzFileSpec Spec(const std::string& path) {
    return RzFileSpec(RzString(path.c_str()));
}

void BM_RzCopyStream(benchmark::State& state) {
    Fixture& files = Files();
    for (auto _ : state) {
        RzFile from(Spec(files.source), eRzFileRead);
        RzFile to(Spec(files.copy), eRzFileWrite);
        RzCopyStream(from, to, 0, kChunk);
    }
    state.SetBytesProcessed(state.iterations() * kCopySize);
}
BENCHMARK(BM_RzCopyStream)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

void BM_freadfwriteCopy(benchmark::State& state) {
    Fixture& files = Files();
    std::vector<char> buffer(kChunk);
    for (auto _ : state) {
        FILE* from = fopen(files.source.c_str(), "rb");
        FILE* to = fopen(files.copy.c_str(), "wb");
        for (size_t n; (n = fread(buffer.data(), 1, kChunk, from)) > 0;)
            fwrite(buffer.data(), 1, n, to);
        fclose(from);
        fclose(to);
    }
    state.SetBytesProcessed(state.iterations() * kCopySize);
}
BENCHMARK(BM_freadfwriteCopy)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

void BM_RzFileReadString(benchmark::State& state) {
    Fixture& files = Files();
    for (auto _ : state) {
        RzFile file(Spec(files.whole), eRzFileRead);
        RzString s = file.ReadString();
        benchmark::DoNotOptimize(s.c_str());
    }
    state.SetBytesProcessed(state.iterations() * kReadSize);
}
BENCHMARK(BM_RzFileReadString)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_freadIntoStdString(benchmark::State& state) {
    Fixture& files = Files();
    for (auto _ : state) {
        FILE* f = fopen(files.whole.c_str(), "rb");
        fseek(f, 0, SEEK_END);
        std::string s(static_cast<size_t>(ftell(f)), '\0');
        fseek(f, 0, SEEK_SET);
        benchmark::DoNotOptimize(fread(&s[0], 1, s.size(), f));
        fclose(f);
        benchmark::DoNotOptimize(s.data());
    }
    state.SetBytesProcessed(state.iterations() * kReadSize);
}
BENCHMARK(BM_freadIntoStdString)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
