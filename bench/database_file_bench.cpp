// Settings files as applications see them: a 10 MB settings file of three
// levels read with ReadFromFile and saved with WriteToFile, next to reading
// and writing the same bytes with fread and fwrite, and the durable save next
// to the bare sequence it is built on (write, fsync, rename). The parse and
// the text alone (ReadFromString, WriteToString) show where the time goes.
// Default allocator, heap trimmed before every pass as a fresh process
// starts; the file lives in a temporary folder on the real disk (TMPDIR,
// else /tmp) and stays in the page cache, so reading measures code and
// saving pays for flushing to the disk.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzData/RzDataBase.h>

namespace {

const int kGroups = 7600, kSections = 4, kKeys = 8;

struct Fixture {
    Fixture() {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/rz-dbfile-bench-XXXXXX";
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back(0);
        dir = mkdtemp(buffer.data());
        path = dir + "/settings.txt";
        copy = dir + "/copy.txt";
        db = new RzDataBase;
        char key[32], value[96];
        for (int g = 0; g < kGroups; ++g) {
            snprintf(key, sizeof key, "group%04d", g);
            RzDataBase* group = db->GetDB(RzString(key), true);
            db->SetString(RzString(key), RzString("printer profile"));
            for (int s = 0; s < kSections; ++s) {
                snprintf(key, sizeof key, "section%d", s);
                RzDataBase* section = group->GetDB(RzString(key), true);
                for (int k = 0; k < kKeys; ++k) {
                    snprintf(key, sizeof key, "parameter_%d", k);
                    if ((g + s + k) % 3 == 0)
                        snprintf(value, sizeof value, "say \"%d\" to C:\\dir%d", g * 7 + k, s);
                    else
                        snprintf(value, sizeof value, "%d.%03d,%d,%d,units", g, k * 125, s * 17,
                                 g % 97);
                    section->SetString(RzString(key), RzString(value));
                }
            }
        }
        const RzString written = db->WriteToString();
        text.assign(written.c_str(), static_cast<size_t>(written.length()));
        db->WriteToFile(RzFileSpec(RzString(path.c_str())));
    }
    ~Fixture() {
        db->Delete();
        unlink(path.c_str());
        unlink(copy.c_str());
        unlink((copy + ".tmp").c_str());
        rmdir(dir.c_str());
    }
    std::string dir, path, copy, text;
    RzDataBase* db;
};

Fixture& Files() {
    static Fixture f;
    return f;
}

void BM_ReadFromFile(benchmark::State& state) {
    Fixture& f = Files();
    const RzFileSpec spec(RzString(f.path.c_str()));
    rzbench::TimeReadIntoNewDatabase(state, static_cast<int64_t>(f.text.size()),
                                     [&](RzDataBase& db) { db.ReadFromFile(spec); });
}
BENCHMARK(BM_ReadFromFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ReadFromString(benchmark::State& state) {
    Fixture& f = Files();
    const RzString text(f.text.data(), static_cast<int32_t>(f.text.size()), false);
    rzbench::TimeReadIntoNewDatabase(state, static_cast<int64_t>(f.text.size()),
                                     [&](RzDataBase& db) { db.ReadFromString(text); });
}
BENCHMARK(BM_ReadFromString)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_freadWhole(benchmark::State& state) {
    Fixture& f = Files();
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        state.ResumeTiming();
        FILE* file = fopen(f.path.c_str(), "rb");
        fseek(file, 0, SEEK_END);
        std::string s(static_cast<size_t>(ftell(file)), '\0');
        fseek(file, 0, SEEK_SET);
        benchmark::DoNotOptimize(fread(&s[0], 1, s.size(), file));
        fclose(file);
        benchmark::DoNotOptimize(s.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(f.text.size()));
}
BENCHMARK(BM_freadWhole)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WriteToFile(benchmark::State& state) {
    Fixture& f = Files();
    const RzFileSpec spec(RzString(f.copy.c_str()));
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        state.ResumeTiming();
        f.db->WriteToFile(spec);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(f.text.size()));
}
BENCHMARK(BM_WriteToFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WriteToString(benchmark::State& state) {
    Fixture& f = Files();
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        state.ResumeTiming();
        RzString text = f.db->WriteToString();
        benchmark::DoNotOptimize(text.c_str());
        state.PauseTiming();
        text = RzString();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(f.text.size()));
}
BENCHMARK(BM_WriteToString)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same bytes, written the plain way (no flush to the disk).
void BM_fwriteWhole(benchmark::State& state) {
    Fixture& f = Files();
    for (auto _ : state) {
        FILE* file = fopen(f.copy.c_str(), "wb");
        fwrite(f.text.data(), 1, f.text.size(), file);
        fclose(file);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(f.text.size()));
}
BENCHMARK(BM_fwriteWhole)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same bytes, replaced durably with the bare calls.
void BM_writeFsyncRename(benchmark::State& state) {
    Fixture& f = Files();
    const std::string temp = f.copy + ".tmp";
    for (auto _ : state) {
        const int fd = open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        benchmark::DoNotOptimize(write(fd, f.text.data(), f.text.size()));
        fsync(fd);
        close(fd);
        rename(temp.c_str(), f.copy.c_str());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(f.text.size()));
}
BENCHMARK(BM_writeFsyncRename)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
