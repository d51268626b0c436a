// rz conv next to the C library's iconv streaming the same file, and next to
// a plain copy of it (the floor: reading the file and writing as many bytes),
// in the same binary and run: 32 MB of text in a real file in TMPDIR (mostly
// ASCII, one accented letter in ten), read in blocks of 1 MB, the result
// written to /dev/null through a C++ stream. rz conv is called as the program
// calls it (RzToolRun with the file's name), so its reading, the framework's
// conversions and its handling of zeros and block ends are all measured.
#include <benchmark/benchmark.h>

#include <iconv.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "RzTool.h"

namespace {

const size_t kTextBytes = 32 << 20;
const size_t kBlock = 1 << 20;

// Words of 2 to 9 letters, one letter in ten accented (é è à ç ü ö), in Mac
// OS Roman or UTF-8.
std::string Text(bool utf8) {
    static const unsigned char kLatin1[] = {0xE9, 0xE8, 0xE0, 0xE7, 0xFC, 0xF6};
    static const unsigned char kMacRoman[] = {0x8E, 0x8F, 0x88, 0x8D, 0x9F, 0x9A};
    std::string text;
    uint32_t state = 12345;
    auto next = [&state](uint32_t n) {
        state = state * 1103515245u + 12345u;
        return (state >> 8) % n;
    };
    while (text.size() < kTextBytes) {
        for (uint32_t i = 0, letters = 2 + next(8); i < letters; ++i) {
            if (next(10) == 0) {
                const uint32_t k = next(6);
                if (utf8) {
                    text += static_cast<char>(0xC0 | (kLatin1[k] >> 6));
                    text += static_cast<char>(0x80 | (kLatin1[k] & 0x3F));
                } else {
                    text += static_cast<char>(kMacRoman[k]);
                }
            } else {
                text += static_cast<char>('a' + next(26));
            }
        }
        text += next(12) == 0 ? ".\n" : " ";
    }
    text.resize(kTextBytes);
    // No character cut at the end.
    if (static_cast<unsigned char>(text.back()) >= 0xC0) text.back() = ' ';
    return text;
}

// The text written once to a file in TMPDIR, removed at exit.
const std::string& File(bool utf8) {
    static std::string paths[2];
    std::string& path = paths[utf8];
    if (!path.empty()) return path;
    const char* dir = getenv("TMPDIR");
    path = std::string(dir && *dir ? dir : "/tmp") + "/rz-tool-bench-XXXXXX";
    const int fd = mkstemp(&path[0]);
    const std::string text = Text(utf8);
    if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) abort();
    close(fd);
    static struct Remove {
        ~Remove() {
            for (const std::string& p : paths)
                if (!p.empty()) unlink(p.c_str());
        }
    } remove;
    return path;
}

void RzConv(benchmark::State& state, bool utf8, const char* from, const char* to) {
    const std::string& path = File(utf8);
    for (auto _ : state) {
        std::istringstream in;
        std::ofstream out("/dev/null", std::ios::binary);
        std::ostringstream err;
        RzToolIO io{in, out, err, false, nullptr};
        if (RzToolRun({"conv", "--from", from, "--to", to, path}, io) != 0) abort();
    }
    state.SetBytesProcessed(state.iterations() * int64_t(kTextBytes));
}

// Blocks of the file through `step`, each result written to /dev/null.
template <class Step>
void Stream(benchmark::State& state, bool utf8, Step step) {
    const std::string& path = File(utf8);
    std::vector<char> block(kBlock), result(4 * kBlock);
    for (auto _ : state) {
        FILE* file = fopen(path.c_str(), "rb");
        std::ofstream out("/dev/null", std::ios::binary);
        for (size_t n; (n = fread(block.data(), 1, kBlock, file)) > 0;)
            out.write(result.data(), static_cast<std::streamsize>(step(block.data(), n, result)));
        fclose(file);
    }
    state.SetBytesProcessed(state.iterations() * int64_t(kTextBytes));
}

void Iconv(benchmark::State& state, bool utf8, const char* from, const char* to) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        state.SkipWithError("iconv_open failed");
        return;
    }
    // Blocks end inside a character now and then: iconv keeps the rest for
    // the next block, as rz conv does.
    std::string rest;
    Stream(state, utf8, [&](const char* p, size_t n, std::vector<char>& result) {
        std::string in = rest + std::string(p, n);
        char* src = &in[0];
        size_t srcLeft = in.size();
        char* dst = result.data();
        size_t dstLeft = result.size();
        if (iconv(cd, &src, &srcLeft, &dst, &dstLeft) == static_cast<size_t>(-1) && errno != EINVAL)
            abort();
        rest.assign(src, srcLeft);
        return result.size() - dstLeft;
    });
    iconv_close(cd);
}

void Copy(benchmark::State& state) {
    Stream(state, false, [](const char* p, size_t n, std::vector<char>& result) {
        std::copy(p, p + n, result.data());
        return n;
    });
}

}  // namespace

BENCHMARK_CAPTURE(RzConv, MacRomanToUTF8, false, "macroman", "utf8")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Iconv, MacRomanToUTF8, false, "MACINTOSH", "UTF-8")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(RzConv, UTF8ToLatin1, true, "utf8", "latin1")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Iconv, UTF8ToLatin1, true, "UTF-8", "ISO-8859-1")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(RzConv, UTF8ToUTF16, true, "utf8", "utf16")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Iconv, UTF8ToUTF16, true, "UTF-8", "UTF-16BE")->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->Unit(benchmark::kMillisecond);
