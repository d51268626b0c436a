// Global replacement against the loop it is defined by: rebuild head +
// replacement + tail for each occurrence and resume behind the replacement.
// Both results must read alike (bytes, length, binary flag, capacity), also
// after one more append, which shows whether the length was left counted.
//
// Input: records of a flags byte and three texts (search, replacement,
// target), each a length byte and that many bytes, zero bytes included.
// Flags: bits 0-1 the target's form (binary; text; text with the binary
// bytes appended behind it, so that its length covers zero bytes), bit 2 a
// binary search, bit 3 a binary replacement.
#include <stdint.h>
#include <stdlib.h>

#include <string>

#include <Rz/RzCore/RzString.h>

#include "support/RzContainerTestSupport.h"

namespace {

int LiteralReplace(const RzString& search, const RzString& replacement, RzString& target) {
    int count = 0;
    for (int32_t pos = 0;; ++count) {
        const int32_t p = target.find(search, pos, false);
        if (p == -1) return count;
        RzString head = target.substr(0, p);
        RzString tail = target.substr(p + search.length(), target.length());
        target = head + replacement + tail;
        pos = (head + replacement).length();
    }
}

struct Input {
    const uint8_t* p;
    size_t n;
    std::string Text() {
        size_t length = n ? *p : 0;
        if (n) ++p, --n;
        if (length > n) length = n;
        const std::string text(reinterpret_cast<const char*>(p), length);
        p += length;
        n -= length;
        return text;
    }
};

RzString Make(const std::string& bytes, bool binary) {
    return binary ? RzString(bytes.data(), static_cast<int32_t>(bytes.size()), true)
                  : RzString(bytes.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in{data, size};
    while (in.n > 0) {
        const uint8_t flags = *in.p++;
        --in.n;
        const std::string s = in.Text(), w = in.Text(), t = in.Text();
        RzString target = Make(t, (flags & 3) == 0);
        if ((flags & 3) >= 2) target += Make(t, true);
        const RzString search = Make(s, (flags & 4) != 0), with = Make(w, (flags & 8) != 0);
        if (search.length() == 0) continue;
        RzString fast = target, slow = target;
        if (Replace(search, with, fast) != LiteralReplace(search, with, slow)) abort();
        if (StringState(fast) != StringState(slow)) abort();
        fast += "z";
        slow += "z";
        if (StringState(fast) != StringState(slow)) abort();
    }
    return 0;
}
