// Searching, cutting, rewriting, word parsing and quoting for RzString.h.
//
// Several results here are defined as what a sequence of one-character
// appends (operator+=) would leave behind, capacity included. Where a loop
// of appends would be slow, the result is built in one go and the capacity
// computed as the appends would have grown it (RzStringCapacityAfterChars).
#include <Rz/RzCore/RzString.h>

#include <stddef.h>
#include <string.h>

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include <Rz/RzData/RzArray.h>
#include <Rz/internal/RzRaise.h>
#include <Rz/internal/RzStringBuffer.h>

static const char kRzUnit[] = "RzString";

namespace {

// --- Character sets ---------------------------------------------------------

class CharSet {
public:
    CharSet() { memset(bits, 0, sizeof bits); }
    void Add(char c) {
        const unsigned char u = static_cast<unsigned char>(c);
        bits[u >> 6] |= uint64_t(1) << (u & 63);
    }
    void AddAll(const char* p, int32_t n) {
        for (int32_t i = 0; i < n; ++i) Add(p[i]);
    }
    bool Has(char c) const {
        const unsigned char u = static_cast<unsigned char>(c);
        return (bits[u >> 6] >> (u & 63)) & 1;
    }

private:
    uint64_t bits[4];
};

// The characters of `set`, all length() of them.
CharSet MembersOf(const RzString& set) {
    CharSet s;
    s.AddAll(set.c_str(), set.length());
    return s;
}

// Word separators: those given, or the five defaults when none are.
CharSet SeparatorsOf(const RzString& separators) {
    if (separators.length() > 0) return MembersOf(separators);
    CharSet s;
    s.AddAll("\0\t\n\r ", 5);
    return s;
}

// --- Buffers ------------------------------------------------------------------

// A text buffer with the given capacity holding the n bytes at p. The bytes
// must not contain a zero byte.
RzString TextBuffer(int64_t capacity, const char* p, int32_t n) {
    RzStringData* d = RzNewTextBuffer(capacity);
    if (n > 0) memcpy(d->chars, p, static_cast<size_t>(n));
    return RzFinishText(d, n, true);
}

// The string that appending the n bytes at p one by one to RzString(10,
// false) gives. A zero byte appended to a text is overwritten by the next
// character (appending counts the text first), so zero bytes drop out, except
// that a text ending in zero bytes keeps one of them in its length.
RzString AppendedWord(const char* p, int32_t n) {
    if (n <= 0 || !memchr(p, 0, static_cast<size_t>(n)))
        return TextBuffer(RzStringCapacityAfterChars(10, n), p, n);
    const bool endsInZero = p[n - 1] == 0;
    int32_t kept = 0;
    for (int32_t i = 0; i < n; ++i) kept += p[i] != 0;
    const int32_t length = kept + (endsInZero ? 1 : 0);
    RzStringData* d = RzNewTextBuffer(RzStringCapacityAfterChars(10, length));
    int32_t at = 0;
    for (int32_t i = 0; i < n; ++i)
        if (p[i] != 0) d->chars[at++] = p[i];
    d->chars[at] = 0;
    if (endsInZero) d->chars[++at] = 0;
    d->length = length;
    d->lengthIsCounted = !endsInZero;
    return RzString(d);
}

// --- Searching ------------------------------------------------------------------

// How many bytes of `what` a strncmp over n bytes compares: up to and
// including the first zero byte.
int32_t ComparedLength(const char* what, int32_t n) {
    const void* zero = n > 0 ? memchr(what, 0, static_cast<size_t>(n)) : nullptr;
    return zero ? static_cast<int32_t>(static_cast<const char*>(zero) - what) + 1 : n;
}

// Written as a plain loop so that the compiler folds many bytes at a time.
void FoldInto(char* out, const char* in, size_t n) {
    for (size_t i = 0; i < n; ++i) out[i] = RzFoldAscii(in[i]);
}

bool FoldedEqual(const char* a, const char* b, int32_t n) {
    for (int32_t i = 0; i < n; ++i)
        if (RzFoldAscii(a[i]) != RzFoldAscii(b[i])) return false;
    return true;
}

// How common a byte is in typical text, 0 (rare) to 255 (most common):
// space and lower-case letters first, then line ends, digits, upper case and
// punctuation; control and high bytes are rare.
struct ByteRank {
    unsigned char rank[256] = {};
    constexpr ByteRank() {
        for (int i = 0; i < 256; ++i) rank[i] = 16;
        const char* const byUse[] = {"!#$%&*;<=>?@[]^_`{|}~",
                                     "\"'()+-/:",
                                     "ZXQJKVBPYGFWMUCDLHRSNIOATE",
                                     "0123456789",
                                     "\t\r\n,.",
                                     "zqxjkvbpygfwmucdlhrsnioate "};
        int next = 32;
        for (const char* group : byUse)
            for (const char* c = group; *c; ++c) rank[static_cast<unsigned char>(*c)] = next += 2;
    }
};
constexpr ByteRank kByteRank;

// Case-sensitive search for m >= 2 bytes. Looks for the needle's rarest byte
// with memchr and compares around each hit; when hits come so often that
// this costs more than the text it covers, memmem takes over. Checking never
// costs more than the bytes scanned, so the search stays linear.
int32_t FindBytes(const char* hay, int32_t from, int32_t last, const char* needle, int32_t m) {
    int32_t r = 0;
    for (int32_t i = 1; i < m; ++i)
        if (kByteRank.rank[static_cast<unsigned char>(needle[i])] <
            kByteRank.rank[static_cast<unsigned char>(needle[r])])
            r = i;
    const int64_t costPerHit = 64 + m;
    int64_t cost = 0;
    int32_t p = from;
    while (p <= last) {
        if (cost > int64_t(p) - from + 4096) {
            const void* hit =
                memmem(hay + p, static_cast<size_t>(last - p) + static_cast<size_t>(m), needle,
                       static_cast<size_t>(m));
            return hit ? static_cast<int32_t>(static_cast<const char*>(hit) - hay) : -1;
        }
        const void* hit = memchr(hay + p + r, needle[r], static_cast<size_t>(last - p) + 1);
        if (!hit) return -1;
        const int32_t candidate = static_cast<int32_t>(static_cast<const char*>(hit) - hay) - r;
        if (memcmp(hay + candidate, needle, static_cast<size_t>(m)) == 0) return candidate;
        cost += costPerHit;
        p = candidate + 1;
    }
    return -1;
}

// The first candidate p in [from, last] at which the m bytes of `needle`
// occur in `hay` (hay must hold last + m bytes), or -1.
int32_t FindFrom(const char* hay, int32_t from, int32_t last, const char* needle, int32_t m,
                 bool ignoreCase) {
    if (from < 0) from = 0;
    if (from > last) return -1;
    if (m == 0) return from;
    if (!ignoreCase) {
        if (m > 1) return FindBytes(hay, from, last, needle, m);
        const void* hit = memchr(hay + from, needle[0], static_cast<size_t>(last - from) + 1);
        return hit ? static_cast<int32_t>(static_cast<const char*>(hit) - hay) : -1;
    }
    // Case-insensitive: fold the needle once and the text a window at a time,
    // and let memmem search each window. Windows overlap by m - 1 bytes, so
    // every candidate is tried once, and the work stays linear in the text.
    if ((int64_t(last) - from + 1) * m <= 4096) {  // short texts: compare in place
        for (int32_t p = from; p <= last; ++p)
            if (FoldedEqual(hay + p, needle, m)) return p;
        return -1;
    }
    std::vector<char> folded(static_cast<size_t>(m));
    FoldInto(folded.data(), needle, static_cast<size_t>(m));
    const int32_t window = std::max<int32_t>(1 << 16, m);
    std::vector<char> buffer(static_cast<size_t>(window) + static_cast<size_t>(m));
    for (int64_t start = from; start <= last; start += window) {
        const int64_t end = std::min<int64_t>(last, start + window - 1);  // last candidate
        const size_t bytes = static_cast<size_t>(end - start) + static_cast<size_t>(m);
        FoldInto(buffer.data(), hay + start, bytes);
        const void* hit = memmem(buffer.data(), bytes, folded.data(), static_cast<size_t>(m));
        if (hit)
            return static_cast<int32_t>(start + (static_cast<const char*>(hit) - buffer.data()));
    }
    return -1;
}

// The last candidate p in [0, last] at which the m bytes of `needle` occur.
int32_t FindLast(const char* hay, int32_t last, const char* needle, int32_t m, bool ignoreCase) {
    if (last < 0) return -1;
    if (m == 0) return last;
    for (int32_t p = last; p >= 0; --p) {
        if (ignoreCase
                ? FoldedEqual(hay + p, needle, m)
                : (hay[p] == needle[0] && memcmp(hay + p, needle, static_cast<size_t>(m)) == 0))
            return p;
    }
    return -1;
}

// --- Words ------------------------------------------------------------------------

// Finds the word that ReadString reads from `pos` over the n characters at s:
// [start, end) are the characters it keeps. Moves pos behind the word and
// its terminating separator. False when only separators remain.
bool ScanWord(const char* s, int32_t n, int32_t& pos, bool quotes, const CharSet& separators,
              int32_t& start, int32_t& end) {
    if (pos < 0) pos = 0;
    while (pos < n && separators.Has(s[pos])) ++pos;
    if (pos >= n) return false;
    start = pos++;
    if (quotes && s[start] == '"') {
        bool escaped = false;
        while (pos < n) {
            const char c = s[pos++];
            if (c == 0) {
                end = pos - 1;
                return true;
            }
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                break;
            }
        }
        end = pos;
        return true;
    }
    while (pos < n) {
        if (separators.Has(s[pos++])) {
            end = pos - 1;
            return true;
        }
    }
    end = pos;
    return true;
}

}  // namespace

// --- Searching ------------------------------------------------------------------------

int32_t RzString::find(const RzString& what, int32_t from, bool ignoreCase) const {
    const int32_t n = length(), w = what.length();
    if (w <= 0) return from <= n ? from : -1;
    if (n < w) return -1;
    return FindFrom(c_str(), from, n - w, what.c_str(), ComparedLength(what.c_str(), w),
                    ignoreCase);
}

int32_t RzString::find(char c, int32_t from) const {
    const int32_t n = length();
    if (from < 0) from = 0;
    if (from >= n) return -1;
    const void* hit = memchr(data->chars + from, c, static_cast<size_t>(n - from));
    return hit ? static_cast<int32_t>(static_cast<const char*>(hit) - data->chars) : -1;
}

int32_t RzString::findreverse(const RzString& what, bool ignoreCase) const {
    const int32_t n = length();
    int32_t w = what.length();
    if (w < 0) w = 0;
    return FindLast(c_str(), n - w, what.c_str(), ComparedLength(what.c_str(), w), ignoreCase);
}

int32_t RzString::findreverse(char c) const {
    const char* s = c_str();
    for (int32_t p = length(); p-- > 0;)
        if (s[p] == c) return p;
    return -1;
}

int32_t RzString::containsChar(const RzString& set) const {
    const CharSet members = MembersOf(set);
    const char* s = c_str();
    const int32_t n = length();
    for (int32_t p = 0; p < n; ++p)
        if (members.Has(s[p])) return p;
    return -1;
}

bool RzString::IsWhiteSpace(char c, const RzString& separators) {
    const int32_t n = separators.length();
    if (n > 0) return memchr(separators.c_str(), c, static_cast<size_t>(n)) != nullptr;
    return c == 0 || c == '\t' || c == '\n' || c == '\r' || c == ' ';
}

// --- Cutting and rewriting -----------------------------------------------------------------

RzString RzString::substr(int32_t from, int32_t count) const {
    const int32_t n = length();
    if (from >= n || count == 0) return RzString(NewStringData(nullptr, 0, false));
    if (from < 0) from = 0;
    if (count == -1 || int64_t(from) + count > n) count = n - from;
    return RzString(NewStringData(c_str() + from, count, data && data->isBinary));
}

int32_t RzString::EditAccess() {
    MakeWritable();
    if (!data->isBinary && !data->lengthIsCounted) CountLength();
    return data->length;
}

void RzString::Replace(char from, char to) {
    MakeWritable();
    char* p = data->chars;
    bool cleared = false;
    for (; *p; ++p) {
        if (*p == from) {
            *p = to;
            cleared |= to == 0;
        }
    }
    if (data->isBinary) return;
    // The scan has counted the text; a new zero byte shortens it.
    if (cleared) {
        CountLength();
    } else {
        data->length = static_cast<int32_t>(p - data->chars);
        data->lengthIsCounted = true;
    }
}

void RzString::LoCase() {
    const int32_t n = EditAccess();
    char* s = data->chars;
    for (int32_t i = 0; i < n; ++i)
        if (s[i] >= 'A' && s[i] <= 'Z') s[i] = static_cast<char>(s[i] + 32);
}

void RzString::HiCase() {
    const int32_t n = EditAccess();
    char* s = data->chars;
    for (int32_t i = 0; i < n; ++i)
        if (s[i] >= 'a' && s[i] <= 'z') s[i] = static_cast<char>(s[i] - 32);
}

void RzString::Reverse() {
    const int32_t n = EditAccess();
    if (n > 1) std::reverse(data->chars, data->chars + n);
}

void RzString::StripTrailingZeros() {
    const int32_t n = EditAccess();
    char* s = data->chars;
    const char* point = strchr(s, '.');
    if (!point) return;
    const int32_t d = static_cast<int32_t>(point - s);
    int32_t i = n - 1;
    while (i > d && s[i] == '0') s[i--] = 0;
    // Only the point is left behind the digits: drop it, but keep a lone
    // point as "0" so that the number never becomes empty.
    if (i == d) s[d] = d == 0 ? '0' : 0;
    *this = RzString(static_cast<const char*>(s));
}

void RzString::AdjustLineFeed(const RzString& lineEnd) {
    // Built by appends into a buffer as large as the old text, so the result
    // (capacity included) is that of appending piece by piece.
    const RzString end(lineEnd);
    const int32_t n = std::max<int32_t>(length(), 0);
    const char* s = c_str();
    RzString result(NewStringData(nullptr, n, false));
    char previous = 0;
    for (int32_t i = 0; i < n; ++i) {
        const char c = s[i];
        if (c == '\r' || (c == '\n' && previous != '\r')) {
            result += end;
        } else if (c != '\n') {
            result += c;
        }
        previous = c;
    }
    *this = std::move(result);
}

RzString RzString::Strip(const RzString& set, bool, bool) {
    if (!data) return *this;
    const CharSet members = MembersOf(set);
    const char* s = data->chars;
    const int32_t n = length();
    int32_t start = 0;
    while (start < n && members.Has(s[start])) ++start;
    int32_t end = n - 1;
    while (end > start && members.Has(s[end])) --end;
    *this = substr(start, end - start + 1);
    return *this;
}

// --- Global replacement ---------------------------------------------------------------------
//
// Replacing is defined as a loop that, for each occurrence found from `pos`
// on, rebuilds the target as head + replacement + tail (head = the text
// before the occurrence, tail = the text behind it) and resumes the search at
// length(head + replacement). Run literally that is quadratic. The code below
// walks the original text once instead and gives the same string, with the
// same length, binary flag and capacity, including what the rebuilding does
// to zero bytes in a text:
//  - Appending to a text counts it first, so a head that holds a zero byte
//    is cut at that byte, and a replacement that holds one is cut there
//    before the tail is appended. The search still resumes behind the whole
//    replacement's length, that is skip = (replacement length - kept length)
//    characters into the tail.
//  - A head of length 0 is a new text buffer, so a binary target whose head
//    becomes empty turns into a text from then on.
//  - The last rebuild copies head + replacement into a buffer as large as
//    it, then appends the tail; the capacity follows from that.

namespace {

struct ReplaceWalk {
    // The target's characters and the replacement.
    const char* text;
    int32_t textLength;
    int32_t searchLength;
    const char* with;
    int32_t withLength;
    int32_t withTextLength;  // the replacement up to its first zero byte
    bool textMayHoldZero;    // the target holds a zero byte before its length

    // State after the occurrences so far.
    bool binary;
    int64_t outLength;   // characters of the result before the tail
    int64_t lastCopy;    // capacity the last rebuild copied head + replacement into
    int32_t cur;         // where the tail starts in `text`
    int32_t resumeSkip;  // how far into the tail the next search starts

    // Takes in the occurrence at p; with `out`, writes its piece there.
    void Step(int32_t p, char* out) {
        if (binary && outLength + (p - cur) == 0) binary = false;
        int32_t head = p - cur;
        if (!binary && textMayHoldZero && head > 0) {
            const void* zero = memchr(text + cur, 0, static_cast<size_t>(head));
            if (zero) head = static_cast<int32_t>(static_cast<const char*>(zero) - (text + cur));
        }
        const int32_t kept = binary ? withLength : withTextLength;
        if (out) {
            if (head > 0) memcpy(out + outLength, text + cur, static_cast<size_t>(head));
            if (kept > 0) memcpy(out + outLength + head, with, static_cast<size_t>(kept));
        }
        lastCopy = outLength + head + withLength;
        outLength += head + kept;
        cur = p + searchLength;
        resumeSkip = withLength - kept;
    }
};

}  // namespace

int Replace(const RzString& search, const RzString& replacement, RzString& target) {
    const RzString what(search), with(replacement);  // kept as they were on entry
    const int32_t w = what.length();
    const int32_t n = target.length();
    if (w <= 0 || n < w) return 0;
    const RzStringData* d = target.data;
    const int32_t compared = ComparedLength(what.c_str(), w);

    ReplaceWalk walk;
    walk.text = d->chars;
    walk.textLength = n;
    walk.searchLength = w;
    walk.with = with.c_str();
    walk.withLength = std::max<int32_t>(with.length(), 0);
    walk.withTextLength = ComparedLength(walk.with, walk.withLength);
    if (walk.withTextLength > 0 && walk.with[walk.withTextLength - 1] == 0) --walk.withTextLength;
    walk.textMayHoldZero = (d->isBinary || !d->lengthIsCounted) &&
                           memchr(d->chars, 0, static_cast<size_t>(n)) != nullptr;
    walk.binary = d->isBinary;
    walk.outLength = 0;
    walk.lastCopy = 0;
    walk.cur = 0;
    walk.resumeSkip = 0;

    // First pass: find the occurrences.
    std::vector<int32_t> hits;
    ReplaceWalk first = walk;
    for (int64_t from = 0; from <= n - w;) {
        const int32_t p =
            FindFrom(d->chars, static_cast<int32_t>(from), n - w, what.c_str(), compared, false);
        if (p < 0) break;
        hits.push_back(p);
        first.Step(p, nullptr);
        from = int64_t(first.cur) + first.resumeSkip;
    }
    if (hits.empty()) return 0;

    // The result's size, and the capacity the last rebuild leaves.
    const int32_t tail = n - first.cur;
    const int64_t length = first.outLength + tail;
    const int64_t capacity = RzStringGrownCapacity(first.lastCopy, length);
    if (capacity > kRzStringMaxCapacity) throw std::bad_alloc();

    // Second pass: copy.
    RzStringData* out = NewStringData(nullptr, static_cast<int32_t>(capacity), first.binary);
    for (int32_t p : hits) walk.Step(p, out->chars);
    if (tail > 0)
        memcpy(out->chars + walk.outLength, d->chars + walk.cur, static_cast<size_t>(tail));
    out->chars[length] = 0;
    out->length = static_cast<int32_t>(length);
    out->lengthIsCounted =
        !walk.binary && !(walk.textMayHoldZero && tail > 0 &&
                          memchr(d->chars + walk.cur, 0, static_cast<size_t>(tail)));
    target = RzString(out);
    return static_cast<int>(hits.size());
}

// --- Words --------------------------------------------------------------------------------

RzString RzString::ReadString(int32_t& pos, bool quotes, const RzString& separators) const {
    int32_t start, end;
    if (!ScanWord(c_str(), length(), pos, quotes, SeparatorsOf(separators), start, end))
        return RzString();
    return AppendedWord(c_str() + start, end - start);
}

RzString RzString::ReadWord(int n, bool quotes, const RzString& separators) const {
    const CharSet sep = SeparatorsOf(separators);
    const char* s = c_str();
    const int32_t len = length();
    int32_t pos = 0, start, end;
    for (int i = 0; i <= n; ++i) {
        if (!ScanWord(s, len, pos, quotes, sep, start, end)) return RzString();
        if (i == n) return AppendedWord(s + start, end - start);
    }
    return RzString();
}

int32_t RzString::CountWords(bool quotes, const RzString& separators) const {
    const CharSet sep = SeparatorsOf(separators);
    const char* s = c_str();
    const int32_t len = length();
    int32_t pos = 0, start, end, count = 0;
    while (ScanWord(s, len, pos, quotes, sep, start, end)) ++count;
    return count;
}

void RzString::ReadStrings(RzArray<RzString>& out, const RzString& separators) const {
    const RzString self(*this);  // `out` may hold this very string
    const CharSet sep = SeparatorsOf(separators);
    const char* s = self.c_str();
    const int32_t len = self.length();
    out.ReSize(0);
    int32_t pos = 0, start, end;
    // A quoted word is stored as read. Unquoting it here only to throw the
    // result away (it cannot fail: the word begins and ends with '"') would
    // change nothing, so it is not done.
    while (ScanWord(s, len, pos, true, sep, start, end)) {
        out.ReSize(out.count + 1);
        out[out.count - 1] = AppendedWord(s + start, end - start);
    }
}

void RzString::Split(RzArray<RzString>& out, char separator) const {
    const RzString self(*this);  // `out` may hold this very string
    const int32_t len = self.length();
    out.ReSize(0);
    for (int32_t i = 0; i < len;) {
        int32_t next = self.find(separator, i);
        if (next < 0) next = len;
        out.ReSize(out.count + 1);
        out[out.count - 1] = self.substr(i, next - i);
        i = next + 1;
    }
}

void RzString::MergeStrings(const RzArray<RzString>& list, const RzString& separator) {
    // The elements are appended as they are, never quoted: finding a separator
    // character in one and quoting it, only to throw the quoted form away,
    // would change nothing, so it is not done. The result is built aside so
    // that `separator` or an element may be this very string.
    RzString result("");
    for (int32_t i = 0; i < list.count; ++i) {
        if (i > 0) result += separator;
        result += list[i];
    }
    *this = std::move(result);
}

// --- Quoting ------------------------------------------------------------------------------

RzString RzString::QuoteString() const {
    const int64_t room = 2 * int64_t(length()) + 2;
    if (room > kRzStringMaxCapacity) throw std::bad_alloc();
    RzString result(static_cast<int32_t>(room), false);
    result += '"';
    for (const char* p = c_str(); *p; ++p) {
        if (*p == '"' || *p == '\\') result += '\\';
        result += *p;
    }
    result += '"';
    return result;
}

RzString RzString::UnQuoteString() const {
    const int32_t n = length();
    const char* s = c_str();
    if (n < 1 || s[0] != '"' || s[n - 1] != '"') RZ_RAISE(kRzFormatErr);
    const int32_t last = n - 2;  // the last content position
    RzStringData* d = NewStringData(nullptr, std::max<int32_t>(last, 0), false);
    int32_t at = 0;
    for (int32_t i = 1; i <= last; ++i) {
        if (s[i] == '\\' && i < last) {
            if (s[i + 1] != '"' && s[i + 1] != '\\') d->chars[at++] = '\\';
            ++i;
        }
        d->chars[at++] = s[i];
    }
    d->chars[at] = 0;
    const bool holdsZero = memchr(d->chars, 0, static_cast<size_t>(at)) != nullptr;
    // A zero byte between the quotes ends the text, as it ends a quoted word.
    d->length = holdsZero ? static_cast<int32_t>(strlen(d->chars)) : at;
    d->lengthIsCounted = true;
    return RzString(d);
}
