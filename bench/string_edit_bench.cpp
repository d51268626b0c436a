// RzString's searching, word reading, splitting and replacing next to the
// obvious std::string code for the same job, in the same binary and run.
// Each job runs at two sizes a factor of ten apart, so that linear scaling
// shows as a tenfold time.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"

#include <algorithm>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <Rz/RzCore/RzString.h>
#include <Rz/RzData/RzArray.h>

namespace {

const char* const kVocabulary[] = {
    "colour", "profile", "measurement", "data",       "of",  "the",    "display", "value",  "entry",
    "gamma",  "white",   "point",       "calibrated", "RGB", "swatch", "it8",     "target", "D50"};
const size_t kVocabularySize = sizeof kVocabulary / sizeof kVocabulary[0];

// `words` words from the vocabulary joined by `separator`.
const std::string& WordText(int64_t words, char separator) {
    static std::map<std::pair<int64_t, char>, std::string> cache;
    std::string& text = cache[{words, separator}];
    if (text.empty()) {
        std::mt19937 rng(42);
        for (int64_t i = 0; i < words; ++i) {
            if (i) text += separator;
            text += kVocabulary[rng() % kVocabularySize];
        }
    }
    return text;
}

// About `bytes` of comma-separated fields of 1 to 30 characters.
const std::string& FieldText(int64_t bytes) {
    static std::map<int64_t, std::string> cache;
    std::string& text = cache[bytes];
    if (text.empty()) {
        std::mt19937 rng(43);
        text.reserve(static_cast<size_t>(bytes) + 32);
        while (static_cast<int64_t>(text.size()) < bytes) {
            const int n = 1 + static_cast<int>(rng() % 30);
            for (int i = 0; i < n; ++i) text += static_cast<char>('a' + rng() % 26);
            text += ',';
        }
    }
    return text;
}

// About `bytes` of words with `occurrences` placeholders spread evenly.
const char kPlaceholder[] = "$(NAME)";
const char kReplacement[] = "Calibrated Display";
const std::string& PlaceholderText(int64_t bytes, int64_t occurrences) {
    static std::map<int64_t, std::string> cache;
    std::string& text = cache[bytes];
    if (text.empty()) {
        std::mt19937 rng(44);
        const int64_t gap = bytes / occurrences;
        for (int64_t i = 0; i < occurrences; ++i) {
            const size_t end = text.size() + static_cast<size_t>(gap);
            while (text.size() + sizeof kPlaceholder < end) {
                text += kVocabulary[rng() % kVocabularySize];
                text += ' ';
            }
            text += kPlaceholder;
        }
    }
    return text;
}

RzString ToRz(const std::string& s) {
    return RzString(s.data(), static_cast<int32_t>(s.size()), false);
}

// --- ReadStrings: words separated by white space ----------------------------------

void BM_ReadStrings_Rz(benchmark::State& state) {
    const RzString text = ToRz(WordText(state.range(0), ' '));
    for (auto _ : state) {
        RzArray<RzString> words;
        text.ReadStrings(words, RzString());
        benchmark::DoNotOptimize(words.data);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadStrings_Rz)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_ReadStrings_StdIstringstream(benchmark::State& state) {
    const std::string& text = WordText(state.range(0), ' ');
    for (auto _ : state) {
        std::vector<std::string> words;
        std::istringstream in(text);
        std::string word;
        while (in >> word) words.push_back(word);
        benchmark::DoNotOptimize(words.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ReadStrings_StdIstringstream)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

// --- Split at a separator character ---------------------------------------------------

void BM_Split_Rz(benchmark::State& state) {
    const RzString text = ToRz(FieldText(state.range(0) << 20));
    for (auto _ : state) {
        RzArray<RzString> pieces;
        text.Split(pieces, ',');
        benchmark::DoNotOptimize(pieces.data);
    }
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_Split_Rz)->Arg(10)->Arg(100)->MinTime(3)->Unit(benchmark::kMillisecond);

void BM_Split_StdFind(benchmark::State& state) {
    const std::string& text = FieldText(state.range(0) << 20);
    for (auto _ : state) {
        std::vector<std::string> pieces;
        for (size_t i = 0; i < text.size();) {
            size_t next = text.find(',', i);
            if (next == std::string::npos) next = text.size();
            pieces.push_back(text.substr(i, next - i));
            i = next + 1;
        }
        benchmark::DoNotOptimize(pieces.data());
    }
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_Split_StdFind)->Arg(10)->Arg(100)->MinTime(3)->Unit(benchmark::kMillisecond);

// --- Replace every occurrence: 10,000 per MB ------------------------------------------------

void BM_Replace_Rz(benchmark::State& state) {
    const int64_t bytes = state.range(0) << 20;
    const RzString text = ToRz(PlaceholderText(bytes, 10000 * state.range(0)));
    const RzString search(kPlaceholder), replacement(kReplacement);
    for (auto _ : state) {
        RzString target = text;
        benchmark::DoNotOptimize(Replace(search, replacement, target));
    }
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_Replace_Rz)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

void BM_Replace_StdFind(benchmark::State& state) {
    const int64_t bytes = state.range(0) << 20;
    const std::string& text = PlaceholderText(bytes, 10000 * state.range(0));
    const std::string search(kPlaceholder), replacement(kReplacement);
    for (auto _ : state) {
        std::string out;
        size_t pos = 0;
        for (size_t p; (p = text.find(search, pos)) != std::string::npos; pos = p + search.size()) {
            out.append(text, pos, p - pos);
            out += replacement;
        }
        out.append(text, pos, std::string::npos);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_Replace_StdFind)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

// --- find: a 16-byte needle at the very end of 1 MB and 16 MB of words ------------------

const char kNeedle[] = "Needle At TheEnd";  // 16 bytes

const std::string& NeedleText(int64_t megabytes) {
    static std::map<int64_t, std::string> cache;
    std::string& text = cache[megabytes];
    if (text.empty()) {
        const std::string& words = WordText(megabytes << 18, ' ');  // over 6 bytes a word
        text = words.substr(0, static_cast<size_t>(megabytes << 20) - 16) + kNeedle;
    }
    return text;
}

void BM_Find_Rz(benchmark::State& state) {
    const RzString text = ToRz(NeedleText(state.range(0)));
    const RzString needle(kNeedle);
    for (auto _ : state) benchmark::DoNotOptimize(text.find(needle, 0, false));
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_Find_Rz)->Arg(1)->Arg(16)->Unit(benchmark::kMicrosecond);

void BM_Find_StdString(benchmark::State& state) {
    const std::string& text = NeedleText(state.range(0));
    const std::string needle(kNeedle);
    for (auto _ : state) benchmark::DoNotOptimize(text.find(needle));
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_Find_StdString)->Arg(1)->Arg(16)->Unit(benchmark::kMicrosecond);

// A needle of common lower-case letters, whose first byte occurs every few
// bytes.
const char kCommonNeedle[] = "tea tree oil set";  // 16 bytes

void BM_FindCommon_Rz(benchmark::State& state) {
    RzString text = ToRz(NeedleText(state.range(0)));
    text.Get(nullptr)[(state.range(0) << 20) - 16] = 0;
    text += kCommonNeedle;
    const RzString needle(kCommonNeedle);
    for (auto _ : state) benchmark::DoNotOptimize(text.find(needle, 0, false));
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_FindCommon_Rz)->Arg(1)->Arg(16)->Unit(benchmark::kMicrosecond);

void BM_FindCommon_StdString(benchmark::State& state) {
    std::string text = NeedleText(state.range(0));
    text.replace(text.size() - 16, 16, kCommonNeedle);
    const std::string needle(kCommonNeedle);
    for (auto _ : state) benchmark::DoNotOptimize(text.find(needle));
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_FindCommon_StdString)->Arg(1)->Arg(16)->Unit(benchmark::kMicrosecond);

// Case-insensitive: the same needle in lower case, against std::search with
// a folding comparison.
void BM_FindIgnoreCase_Rz(benchmark::State& state) {
    const RzString text = ToRz(NeedleText(state.range(0)));
    const RzString needle("needle at theend");
    for (auto _ : state) benchmark::DoNotOptimize(text.find(needle, 0, true));
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_FindIgnoreCase_Rz)->Arg(1)->Arg(16)->Unit(benchmark::kMicrosecond);

void BM_FindIgnoreCase_StdSearch(benchmark::State& state) {
    const std::string& text = NeedleText(state.range(0));
    const std::string needle("needle at theend");
    const auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    for (auto _ : state)
        benchmark::DoNotOptimize(std::search(text.begin(), text.end(), needle.begin(), needle.end(),
                                             [&](char a, char b) { return fold(a) == fold(b); }));
    state.SetBytesProcessed(state.iterations() * (state.range(0) << 20));
}
BENCHMARK(BM_FindIgnoreCase_StdSearch)->Arg(1)->Arg(16)->Unit(benchmark::kMicrosecond);

}  // namespace
