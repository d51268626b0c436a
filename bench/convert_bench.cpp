// RzString's Unicode conversions next to the C library's iconv and a plain
// copy into a fresh buffer (the floor: every conversion writes a new string),
// on 64 MB of text that is mostly ASCII with one accented letter in ten, in
// the same binary and run. Every side allocates its output in each pass with
// the default allocator, as a string conversion does.
//
// iconv's MACINTOSH is Mac OS Roman proper; MacRomanToUTF8 maps through
// ISO-8859-1 and so differs on characters ISO-8859-1 lacks, none of which the
// text holds. The speed is what is compared.
#include <benchmark/benchmark.h>

#include <iconv.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include <Rz/RzCore/RzString.h>

namespace {

const size_t kTextBytes = 64 << 20;

// Accented letters as Unicode (all below 256) and as Mac OS Roman.
const struct {
    unsigned char latin1, macRoman;
} kAccented[] = {{0xE9, 0x8E}, {0xE8, 0x8F}, {0xE0, 0x88}, {0xE7, 0x8D}, {0xFC, 0x9F},
                 {0xF6, 0x9A}, {0xE4, 0x8A}, {0xE2, 0x89}, {0xEA, 0x90}, {0xEE, 0x94},
                 {0xF4, 0x99}, {0xFB, 0x9E}, {0xF1, 0x96}, {0xC9, 0x83}, {0xDC, 0x86},
                 {0xEB, 0x91}, {0xEF, 0x95}, {0xE1, 0x87}, {0xED, 0x92}, {0xF3, 0x97}};

// Words of 2 to 9 letters, one letter in ten accented, separated by spaces
// with an occasional full stop or line end; `utf8` chooses the encoding of the
// accented letters. The same sequence in both encodings, cut at 64 MB.
const std::string& Text(bool utf8) {
    static std::string texts[2];
    std::string& text = texts[utf8];
    if (!text.empty()) return text;
    uint32_t state = 12345;
    auto next = [&state](uint32_t n) {
        state = state * 1103515245u + 12345u;
        return (state >> 8) % n;
    };
    while (text.size() < kTextBytes) {
        const uint32_t letters = 2 + next(8);
        for (uint32_t i = 0; i < letters; ++i) {
            if (next(10) == 0) {
                const auto& a = kAccented[next(20)];
                if (utf8) {
                    text += static_cast<char>(0xC0 | (a.latin1 >> 6));
                    text += static_cast<char>(0x80 | (a.latin1 & 0x3F));
                } else {
                    text += static_cast<char>(a.macRoman);
                }
            } else {
                text += static_cast<char>((i == 0 && next(8) == 0 ? 'A' : 'a') + next(26));
            }
        }
        const uint32_t end = next(16);
        text += end == 0 ? ". " : end == 1 ? ".\n" : end == 2 ? ", " : " ";
    }
    text.resize(kTextBytes);
    return text;
}

const RzString& Source(bool utf8) {
    static RzString sources[2];
    if (sources[utf8].length() == 0)
        sources[utf8] = RzString(Text(utf8).data(), static_cast<int32_t>(kTextBytes), false);
    return sources[utf8];
}

void Rz(benchmark::State& state, bool utf8, RzString (RzString::*convert)() const) {
    const RzString& source = Source(utf8);
    for (auto _ : state) {
        RzString result = (source.*convert)();
        benchmark::DoNotOptimize(result.c_str());
    }
    state.SetBytesProcessed(state.iterations() * int64_t(kTextBytes));
}

void Iconv(benchmark::State& state, bool utf8, const char* to, const char* from) {
    const std::string& text = Text(utf8);
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        state.SkipWithError("no converter");
        return;
    }
    for (auto _ : state) {
        char* out = static_cast<char*>(malloc(2 * kTextBytes));
        char* src = const_cast<char*>(text.data());
        char* dst = out;
        size_t srcLeft = kTextBytes, dstLeft = 2 * kTextBytes;
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        if (iconv(cd, &src, &srcLeft, &dst, &dstLeft) == static_cast<size_t>(-1))
            state.SkipWithError("conversion failed");
        benchmark::DoNotOptimize(out);
        free(out);
    }
    iconv_close(cd);
    state.SetBytesProcessed(state.iterations() * int64_t(kTextBytes));
}

void MemcpyFloor(benchmark::State& state, bool utf8) {
    const std::string& text = Text(utf8);
    for (auto _ : state) {
        char* out = static_cast<char*>(malloc(kTextBytes));
        memcpy(out, text.data(), kTextBytes);
        benchmark::DoNotOptimize(out);
        benchmark::ClobberMemory();
        free(out);
    }
    state.SetBytesProcessed(state.iterations() * int64_t(kTextBytes));
}

BENCHMARK_CAPTURE(Rz, MacRomanToUTF8, false, &RzString::MacRomanToUTF8)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Iconv, MacRomanToUTF8, false, "UTF-8", "MACINTOSH")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(MemcpyFloor, MacRoman, false)->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(Rz, UTF8ToUTF16, true, &RzString::UTF8ToUTF16)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Iconv, UTF8ToUTF16, true, "UTF-16BE", "UTF-8")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(MemcpyFloor, UTF8, true)->Unit(benchmark::kMillisecond);

}  // namespace
