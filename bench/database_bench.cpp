// The settings database read and written, next to a floor measured on the
// same bytes (one memchr pass for the line ends), and lookups by path on a
// large level next to the linear scan of string comparisons they replace.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"
#include <string.h>

#include <string>
#include <vector>

#include <Rz/RzData/RzDataBase.h>

namespace {

// About 10 MB: a few thousand groups of key/value lines, two levels deep.
const RzString& SettingsText() {
    static const RzString text = [] {
        std::string s;
        char line[160];
        for (int g = 0; s.size() < (10u << 20); ++g) {
            snprintf(line, sizeof line, "\"group %d\" = \n{\n", g);
            s += line;
            for (int k = 0; k < 24; ++k) {
                snprintf(line, sizeof line, "\tsetting%d = value %d of group %d\n", k, k * g, g);
                s += line;
            }
            s += "\tcolors = \n\t{\n";
            for (int k = 0; k < 8; ++k) {
                snprintf(line, sizeof line, "\t\t\"channel %d\" = \"0.%d \\\"lin\\\"\"\n", k,
                         g + k);
                s += line;
            }
            s += "\t}\n}\n";
        }
        RzDataBase db;
        db.ReadFromString(RzString(s.c_str()));
        return db.WriteToString();
    }();
    return text;
}

void BM_Settings_ReadFromString(benchmark::State& state) {
    const RzString& text = SettingsText();
    for (auto _ : state) {
        RzDataBase* db = new RzDataBase;
        db->ReadFromString(text);
        benchmark::DoNotOptimize(db->GetCount());
        state.PauseTiming();  // releasing the tree is not part of reading it
        db->Delete();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * text.length());
}
BENCHMARK(BM_Settings_ReadFromString)->Unit(benchmark::kMillisecond);

void BM_Settings_WriteToString(benchmark::State& state) {
    RzDataBase db;
    db.ReadFromString(SettingsText());
    int64_t bytes = 0;
    for (auto _ : state) {
        RzString text = db.WriteToString();
        bytes += text.length();
        benchmark::DoNotOptimize(text.c_str());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_Settings_WriteToString)->Unit(benchmark::kMillisecond);

void BM_Settings_Floor_MemchrLines(benchmark::State& state) {
    const RzString& text = SettingsText();
    for (auto _ : state) {
        const char* p = text.c_str();
        const char* end = p + text.length();
        int64_t lines = 0;
        while ((p = static_cast<const char*>(memchr(p, '\n', static_cast<size_t>(end - p))))) {
            ++p;
            ++lines;
        }
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(state.iterations() * text.length());
}
BENCHMARK(BM_Settings_Floor_MemchrLines)->Unit(benchmark::kMillisecond);

// A level of 100,000 entries, looked up by path.
const int kLevelSize = 100000;

RzDataBase& LargeLevel() {
    static RzDataBase* db = [] {
        RzDataBase* d = new RzDataBase;
        RzDataBase* level = d->GetDB(RzString("profiles"), true);
        for (int i = 0; i < kLevelSize; ++i) {
            RzString key;
            key.Printf("profile-%06d", i);
            level->SetString(key, RzString("x"));
        }
        return d;
    }();
    return *db;
}

void BM_LargeLevel_GetStringByPath(benchmark::State& state) {
    RzDataBase& db = LargeLevel();
    std::vector<RzString> paths;
    for (int i = 0; i < 1000; ++i) {
        RzString p;
        p.Printf("profiles/profile-%06d", (i * 7919) % kLevelSize);
        paths.push_back(p);
    }
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(db.GetString(paths[i], RzString(), false).c_str());
        i = (i + 1) % paths.size();
    }
}
BENCHMARK(BM_LargeLevel_GetStringByPath);

// What each lookup cost before the index: a scan comparing every key.
void BM_LargeLevel_LinearScan(benchmark::State& state) {
    RzDataBase& db = LargeLevel();
    RzDataBase* level = db.GetDB(RzString("profiles"), false);
    std::vector<RzString> keys;
    for (int i = 0; i < level->GetCount(); ++i) keys.push_back(level->GetIndexedName(i));
    std::vector<RzString> wanted;
    for (int i = 0; i < 1000; ++i) wanted.push_back(keys[(i * 7919) % kLevelSize]);
    size_t i = 0;
    for (auto _ : state) {
        int found = -1;
        for (size_t k = 0; k < keys.size(); ++k)
            if (keys[k] == wanted[i]) {
                found = static_cast<int>(k);
                break;
            }
        benchmark::DoNotOptimize(found);
        i = (i + 1) % wanted.size();
    }
}
BENCHMARK(BM_LargeLevel_LinearScan);

}  // namespace
