// Wildcard matching for RzString.h.
//
// The matcher is defined by a recursive walk over pattern and text in which a
// budget counts how many text characters the stars may still absorb; a branch
// whose budget has run out while text remains fails. Following that walk
// literally takes exponential time on patterns with many stars, so both entry
// points compute the same answer another way:
//
// - With StrMatch's own budget (text length + stars - pattern length), the
//   budget at any point of the walk is exactly the number of characters the
//   remaining stars must still absorb for a match, so it prunes only branches
//   that cannot match; the walk's shortcuts (same pointer, equal suffixes) also
//   only answer true where a match exists. The answer is therefore plain glob
//   matching, computed with the usual single-backtrack loop.
// - With any other budget, the budget at a point of the walk still depends only
//   on the pattern and text positions, so the walk's answer is a function of
//   those two positions and is computed by dynamic programming over them.
#include <Rz/RzCore/RzString.h>

#include <stdint.h>
#include <string.h>

#include <vector>

namespace {

bool Glob(const char* p, const char* t) {
    const char* star = nullptr;  // last star seen in the pattern
    const char* resume = t;      // text position that star absorbs up to
    while (*t) {
        if (*p == '*') {
            star = p++;
            resume = t;
        } else if (*p == '?' || (*p && *p == *t)) {
            ++p;
            ++t;
        } else if (star) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    while (*p == '*') ++p;
    return *p == 0;
}

}  // namespace

bool StrMatch(const char* pattern, const char* text) {
    if (pattern == text) return true;
    if (!pattern || !text) return false;
    return Glob(pattern, text);
}

bool StrMatchMax(const char* pattern, const char* text, int32_t budget) {
    if (pattern == text) return true;
    if (!pattern || !text) return false;
    const size_t plen = strlen(pattern), tlen = strlen(text);

    // starsBefore[i]: stars in pattern[0, i).
    std::vector<int64_t> starsBefore(plen + 1, 0);
    for (size_t i = 0; i < plen; ++i) starsBefore[i + 1] = starsBefore[i] + (pattern[i] == '*');

    // Equal suffixes can only start on the diagonal j = i + (tlen - plen).
    const int64_t shift = static_cast<int64_t>(tlen) - static_cast<int64_t>(plen);
    std::vector<char> suffixEqual(plen + 1, 0);
    suffixEqual[plen] = 1;  // both suffixes empty
    for (size_t i = plen; i-- > 0;) {
        const int64_t j = static_cast<int64_t>(i) + shift;
        suffixEqual[i] = j >= 0 && suffixEqual[i + 1] && pattern[i] == text[j];
    }

    // next[j] holds the answer at (i + 1, j), row[j] at (i, j).
    std::vector<char> next(tlen + 2, 0), row(tlen + 2, 0);
    for (size_t i = plen + 1; i-- > 0;) {
        for (size_t j = tlen + 1; j-- > 0;) {
            bool answer;
            if (pattern + i == text + j) {
                answer = true;
            } else if (pattern[i] == 0) {
                answer = text[j] == 0;
            } else if (text[j] == 0) {
                answer = pattern[i] == '*' && next[j];
            } else if (budget - static_cast<int64_t>(j) + static_cast<int64_t>(i) - starsBefore[i] <
                       0) {
                answer = false;
            } else if (static_cast<int64_t>(j) == static_cast<int64_t>(i) + shift &&
                       suffixEqual[i]) {
                answer = true;
            } else if (pattern[i] == '*') {
                answer = next[j] || row[j + 1];
            } else {
                answer = (pattern[i] == '?' || pattern[i] == text[j]) && next[j + 1];
            }
            row[j] = answer;
        }
        row.swap(next);
    }
    return next[0];
}
