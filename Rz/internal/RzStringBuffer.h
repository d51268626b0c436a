// The rules of the string buffer (RzStringData) that more than one unit
// follows: its layout, its largest capacity, how its capacity grows, the
// folding of case-insensitive comparisons, and the one way a unit outside the
// string sources makes a text buffer and fills it. Private to the library.
#ifndef RZ_INTERNAL_RZSTRINGBUFFER_H
#define RZ_INTERNAL_RZSTRINGBUFFER_H

#include <stddef.h>
#include <stdint.h>

#include <Rz/RzCore/RzString.h>

// Bytes in front of the characters.
const size_t kRzStringHeaderSize = offsetof(RzStringData, chars);

// The largest capacity: header, characters, terminator and the room field
// behind it (see RzStringData::hasRoom) stay below 2^31 bytes. A larger
// request fails as an allocation failure (std::bad_alloc).
const int64_t kRzStringMaxCapacity = INT32_MAX - static_cast<int64_t>(kRzStringHeaderSize) - 1 - 4;

// The capacity a buffer of `capacity` has once `needed` characters are
// appended to it: unchanged when they fit; otherwise half as much again when
// that is enough, else exactly `needed`, and never below 10.
inline int64_t RzStringGrownCapacity(int64_t capacity, int64_t needed) {
    if (needed <= capacity) return capacity;
    const int64_t grown = 2 * needed < 3 * capacity ? 3 * capacity / 2 : needed;
    return grown < 10 ? 10 : grown;
}

// The capacity that appending characters one at a time to a buffer of
// `capacity` ends with once `length` characters are in it.
inline int64_t RzStringCapacityAfterChars(int64_t capacity, int64_t length) {
    while (capacity < length) capacity = RzStringGrownCapacity(capacity, capacity + 1);
    return capacity;
}

// The case folding of the case-insensitive comparisons and searches: only
// 'A'..'Z' become 'a'..'z'.
inline char RzFoldAscii(char c) {
    const unsigned char u = static_cast<unsigned char>(c);
    return static_cast<char>(static_cast<unsigned char>(u - 'A') < 26 ? u + 32 : u);
}

// A folded byte as the comparisons order it: a signed 8-bit value, so that
// bytes 128..255 order below ASCII.
inline int RzFoldedValue(char c) {
    return static_cast<signed char>(RzFoldAscii(c));
}

// A new, empty text buffer of exactly `capacity` (count 1). Raises
// std::bad_alloc above kRzStringMaxCapacity. Fill chars[0, n) and hand it
// to RzFinishText.
RzStringData* RzNewTextBuffer(int64_t capacity);

// Text buffers made in bulk, for a reader that makes many small strings at
// once: they share blocks taken with the global operator new, which saves an
// allocation per string and keeps them close together. A block is freed when
// its last buffer is, so one string kept alive keeps its block (256 KB)
// alive (2 MB for a slab of megabytes, whose blocks are large pages where the
// system has them). The buffers behave as any other; the slab itself may go
// first.
class RzStringSlab {
public:
    // `expected`: about how many bytes the strings will take in all, so that
    // a small text does not take a large block.
    explicit RzStringSlab(size_t expected);
    ~RzStringSlab();
    RzStringSlab(const RzStringSlab&) = delete;
    RzStringSlab& operator=(const RzStringSlab&) = delete;

    // As RzNewTextBuffer: an empty text buffer of exactly `capacity`; large
    // ones are made alone.
    RzStringData* NewText(int64_t capacity);

private:
    void NewBlock(size_t bytes);

    void* block;  // the block being filled
    char* next;
    char* end;
    size_t blockSize;
    bool largePages;
};

// Completes a buffer from RzNewTextBuffer that holds n characters: sets the
// length and the terminator. `noZeroByte` tells that the n characters hold
// no zero byte, so that the length never has to be counted.
inline RzString RzFinishText(RzStringData* d, int32_t n, bool noZeroByte) {
    d->chars[n] = 0;
    d->length = n;
    d->lengthIsCounted = noZeroByte;
    return RzString(d);
}

#endif
