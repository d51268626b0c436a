// The settings database as applications see it: the default allocator and a
// heap trimmed before every pass, as a fresh process starts. Reading, writing
// and destroying a 5.3 MB text of three levels, next to the floor (one memchr
// pass over the same bytes) and to GLib's key-file parser on the equivalent
// key file; and lookups by path on a large level next to the linear scan of
// string comparisons they replace.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include <Rz/RzData/RzDataBase.h>

#if RZ_BENCH_GLIB
#include <glib.h>
#endif

namespace {

const int kGroups = 4000, kSections = 4, kKeys = 8;

// The value of key k of a section: every third one holds blanks, double
// quotes and a backslash, so that it is written quoted with escapes.
std::string Value(int g, int s, int k) {
    char text[96];
    if ((g + s + k) % 3 == 0)
        snprintf(text, sizeof text, "say \"%d\" to C:\\dir%d", g * 7 + k, s);
    else
        snprintf(text, sizeof text, "%d.%03d,%d,%d,units", g, k * 125, s * 17, g % 97);
    return text;
}

// The settings text, as the writer writes it: "group0001 = ..." at the top,
// four sections below each group, eight keys below each section.
const RzString& SettingsText() {
    static const RzString text = [] {
        RzDataBase db;
        char key[32];
        for (int g = 0; g < kGroups; ++g) {
            snprintf(key, sizeof key, "group%04d", g);
            RzDataBase* group = db.GetDB(RzString(key), true);
            db.SetString(RzString(key), RzString("printer profile"));
            for (int s = 0; s < kSections; ++s) {
                snprintf(key, sizeof key, "section%d", s);
                RzDataBase* section = group->GetDB(RzString(key), true);
                for (int k = 0; k < kKeys; ++k) {
                    snprintf(key, sizeof key, "parameter_%d", k);
                    section->SetString(RzString(key), RzString(Value(g, s, k).c_str()));
                }
            }
        }
        return db.WriteToString();
    }();
    return text;
}

// The same settings as a GLib key file: one group per section, named by its
// path, and each value escaped as key files escape it.
const std::string& KeyFileText() {
    static const std::string text = [] {
        std::string s;
        char line[128];
        for (int g = 0; g < kGroups; ++g) {
            for (int sec = 0; sec < kSections; ++sec) {
                snprintf(line, sizeof line, "[group%04d/section%d]\n", g, sec);
                s += line;
                for (int k = 0; k < kKeys; ++k) {
                    std::string v;
                    for (char c : Value(g, sec, k)) {
                        if (c == '\\') v += '\\';
                        v += c;
                    }
                    snprintf(line, sizeof line, "parameter_%d=%s\n", k, v.c_str());
                    s += line;
                }
            }
        }
        return s;
    }();
    return text;
}

void BM_Settings_ReadFromString(benchmark::State& state) {
    const RzString& text = SettingsText();
    rzbench::TimeReadIntoNewDatabase(state, text.length(),
                                     [&](RzDataBase& db) { db.ReadFromString(text); });
}
BENCHMARK(BM_Settings_ReadFromString)->Unit(benchmark::kMillisecond);

void BM_Settings_WriteToString(benchmark::State& state) {
    RzDataBase db;
    db.ReadFromString(SettingsText());
    int64_t bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        state.ResumeTiming();
        RzString text = db.WriteToString();
        benchmark::DoNotOptimize(text.c_str());
        state.PauseTiming();
        bytes += text.length();
        text = RzString();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_Settings_WriteToString)->Unit(benchmark::kMillisecond);

// Destroying the tree that reading the text built.
void BM_Settings_Destroy(benchmark::State& state) {
    const RzString& text = SettingsText();
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        RzDataBase* db = new RzDataBase;
        db->ReadFromString(text);
        state.ResumeTiming();
        db->Delete();
    }
    state.SetBytesProcessed(state.iterations() * text.length());
}
BENCHMARK(BM_Settings_Destroy)->Unit(benchmark::kMillisecond);

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

#if RZ_BENCH_GLIB
void BM_Settings_GLibKeyFile_Load(benchmark::State& state) {
    const std::string& text = KeyFileText();
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        GKeyFile* file = g_key_file_new();
        state.ResumeTiming();
        if (!g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
            state.SkipWithError("GLib could not read the key file");
        state.PauseTiming();
        g_key_file_free(file);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_Settings_GLibKeyFile_Load)->Unit(benchmark::kMillisecond);

void BM_Settings_GLibKeyFile_Write(benchmark::State& state) {
    const std::string& text = KeyFileText();
    GKeyFile* file = g_key_file_new();
    g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr);
    int64_t bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        state.ResumeTiming();
        gsize length = 0;
        gchar* data = g_key_file_to_data(file, &length, nullptr);
        benchmark::DoNotOptimize(data);
        state.PauseTiming();
        bytes += static_cast<int64_t>(length);
        g_free(data);
        state.ResumeTiming();
    }
    g_key_file_free(file);
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_Settings_GLibKeyFile_Write)->Unit(benchmark::kMillisecond);

void BM_Settings_GLibKeyFile_Free(benchmark::State& state) {
    const std::string& text = KeyFileText();
    for (auto _ : state) {
        state.PauseTiming();
        rzbench::TrimHeap();
        GKeyFile* file = g_key_file_new();
        g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr);
        state.ResumeTiming();
        g_key_file_free(file);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_Settings_GLibKeyFile_Free)->Unit(benchmark::kMillisecond);
#endif

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
