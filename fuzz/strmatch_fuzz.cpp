// Checks StrMatch and StrMatchMax against a literal transcription of the
// recursive matcher they are defined by, on inputs short enough for it.
//
// Input: byte 0 picks the budget for StrMatchMax, byte 1 where the pattern
// ends; the rest is pattern then text. Most bytes are mapped onto a small
// alphabet with stars and question marks, so that interesting cases are dense.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include <Rz/RzCore/RzString.h>

namespace {

bool Reference(const char* p, const char* t, long budget) {
    if (p == t) return true;
    if (!p || !t) return false;
    if (*p == 0) return *t == 0;
    if (*t == 0) return *p == '*' && Reference(p + 1, t, budget);
    if (budget < 0) return false;
    if (strcmp(p, t) == 0) return true;
    if (*p == '*') return Reference(p + 1, t, budget) || Reference(p, t + 1, budget - 1);
    if (*p == '?' || *p == *t) return Reference(p + 1, t + 1, budget);
    return false;
}

bool ReferenceMatch(const char* pattern, const char* text) {
    if (pattern == text) return true;
    if (!pattern || !text) return false;
    if (strcmp(pattern, text) == 0) return true;
    long stars = 0;
    for (const char* p = pattern; *p; ++p) stars += *p == '*';
    const long budget = long(strlen(text)) + stars - long(strlen(pattern));
    return Reference(pattern, text, budget);
}

char Map(uint8_t b) {
    static const char alphabet[] = "ab*?ab*a";
    return b < 0xC0 ? alphabet[b % 8] : char(b == 0xC0 ? 1 : b);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const long budget = long(int8_t(data[0]));
    std::string all;
    for (size_t i = 2; i < size && all.size() < 24; ++i) all += Map(data[i]);
    const size_t split = all.empty() ? 0 : data[1] % (all.size() + 1);
    const std::string pattern = all.substr(0, split), text = all.substr(split);
    // The transcription is exponential in the number of stars; keep it small.
    size_t stars = 0;
    for (char c : pattern) stars += c == '*';
    if (stars > 8) return 0;

    if (StrMatch(pattern.c_str(), text.c_str()) != ReferenceMatch(pattern.c_str(), text.c_str()))
        abort();
    if (StrMatchMax(pattern.c_str(), text.c_str(), int32_t(budget)) !=
        Reference(pattern.c_str(), text.c_str(), budget))
        abort();
    // Pattern and text in one buffer: the walk may meet the same position.
    const char* shared = all.c_str();
    if (StrMatchMax(shared, shared + split, int32_t(budget)) !=
        Reference(shared, shared + split, budget))
        abort();
    return 0;
}
