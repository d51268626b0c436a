// The desktop services against the plain ways to do the same:
//   - pasting through xclip (CopyFromClipboard) against popen("xclip -o")
//     and fread, with the process small and with 1 GB of it resident (a
//     colour application with images in memory);
//   - the keyboard state (GetNativeKey: XQueryKeymap and the translation)
//     against XQueryKeymap alone on a connection of the benchmark's own;
//   - reading the display contrast (GetMacContrastEnhancement: the
//     preferences folder found, the settings file read and parsed) against
//     std::ifstream and strtod of the same file, its path given.
// The clipboard and keyboard cases need $DISPLAY with xclip (run them under
// Xvfb); without it they are skipped.
#include <benchmark/benchmark.h>

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include <Rz/Mac/RzContrast.h>
#include <Rz/RzSystem/RzSystem.h>

namespace {

const char kText[] = "Ein Text von einigen Wörtern, wie er kopiert wird.\n";

bool HaveDisplay() {
    const char* display = getenv("DISPLAY");
    return display && *display && system("command -v xclip >/dev/null 2>&1") == 0;
}

// Memory the process keeps resident while it pastes: 0 or 1 GB.
std::vector<char>& Resident(size_t bytes) {
    static std::vector<char> memory;
    if (memory.size() != bytes) {
        memory.assign(bytes, 0);
        for (size_t i = 0; i < bytes; i += 4096) memory[i] = 1;
    }
    return memory;
}

void BM_PasteRz(benchmark::State& state) {
    if (!HaveDisplay()) return state.SkipWithError("needs $DISPLAY and xclip");
    Resident(static_cast<size_t>(state.range(0)) << 20);
    RzSystem::CopyToClipboard(kText);
    for (auto _ : state) benchmark::DoNotOptimize(RzSystem::CopyFromClipboard());
}
BENCHMARK(BM_PasteRz)->Arg(0)->Arg(1024)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PastePopen(benchmark::State& state) {
    if (!HaveDisplay()) return state.SkipWithError("needs $DISPLAY and xclip");
    Resident(static_cast<size_t>(state.range(0)) << 20);
    RzSystem::CopyToClipboard(kText);
    for (auto _ : state) {
        FILE* p = popen("xclip -selection clipboard -out", "r");
        std::string text;
        char buffer[4096];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, p)) > 0) text.append(buffer, n);
        pclose(p);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_PastePopen)->Arg(0)->Arg(1024)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_KeysRz(benchmark::State& state) {
    if (!HaveDisplay()) return state.SkipWithError("needs $DISPLAY");
    Resident(0);
    for (auto _ : state) benchmark::DoNotOptimize(RzSystem::GetNativeKey());
}
BENCHMARK(BM_KeysRz)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_KeysXlib(benchmark::State& state) {
    if (!HaveDisplay()) return state.SkipWithError("needs $DISPLAY");
    void* x11 = dlopen("libX11.so.6", RTLD_LAZY);
    auto open = reinterpret_cast<void* (*)(const char*)>(dlsym(x11, "XOpenDisplay"));
    auto query = reinterpret_cast<int (*)(void*, char*)>(dlsym(x11, "XQueryKeymap"));
    auto close = reinterpret_cast<int (*)(void*)>(dlsym(x11, "XCloseDisplay"));
    void* display = open(nullptr);
    char keys[32];
    for (auto _ : state) {
        query(display, keys);
        benchmark::DoNotOptimize(keys);
    }
    close(display);
}
BENCHMARK(BM_KeysXlib)->Unit(benchmark::kMicrosecond)->UseRealTime();

// A preferences folder of the benchmark's own holding a stored contrast.
struct ContrastFile {
    ContrastFile() {
        char pattern[] = "/tmp/rz-bench-XXXXXX";
        dir = mkdtemp(pattern);
        setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
        SetMacContrastEnhancement(0.25);
        file = dir + "/rz/com.apple.universalaccess";
    }
    ~ContrastFile() {
        unlink(file.c_str());
        rmdir((dir + "/rz").c_str());
        rmdir(dir.c_str());
    }
    std::string dir, file;
};

ContrastFile& Contrast() {
    static ContrastFile f;
    return f;
}

void BM_ContrastRz(benchmark::State& state) {
    Contrast();
    for (auto _ : state) benchmark::DoNotOptimize(GetMacContrastEnhancement());
}
BENCHMARK(BM_ContrastRz)->Unit(benchmark::kMicrosecond);

void BM_ContrastIfstream(benchmark::State& state) {
    const std::string& file = Contrast().file;
    for (auto _ : state) {
        std::ifstream in(file);
        std::string line;
        double value = 0.0;
        while (std::getline(in, line))
            if (line.compare(0, 11, "contrast = ") == 0) value = strtod(line.c_str() + 11, nullptr);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_ContrastIfstream)->Unit(benchmark::kMicrosecond);

}  // namespace
