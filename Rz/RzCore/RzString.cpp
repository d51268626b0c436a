#include <Rz/RzCore/RzString.h>

#include <limits.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <new>

#include <Rz/Mac/RzByteOrder.h>
#include <Rz/RzCore/RzError.h>
#include <Rz/internal/RzFormat.h>
#include <Rz/internal/RzOS.h>
#include <Rz/internal/RzRaise.h>
#include <Rz/internal/RzStringBuffer.h>

static const char kRzUnit[] = "RzString";

namespace {

// The character bytes a block holds; with spare room it is stored, as an
// unaligned 32-bit number, right behind the terminator.
int32_t RoomOf(const RzStringData* d) {
    if (!d->hasRoom) return d->capacity;
    int32_t room;
    memcpy(&room, d->chars + d->capacity + 1, sizeof room);
    return room;
}

void StoreRoom(RzStringData* d, int32_t room) {
    memcpy(d->chars + d->capacity + 1, &room, sizeof room);
}

// A buffer of the given capacity (and at least that much room) with only the
// header and terminator set.
RzStringData* AllocateStringData(int64_t capacity, bool isBinary, int64_t room = 0) {
    if (capacity > kRzStringMaxCapacity) throw std::bad_alloc();
    if (room > kRzStringMaxCapacity) room = kRzStringMaxCapacity;
    const bool spare = room > capacity;
    const size_t bytes = kRzStringHeaderSize + static_cast<size_t>(spare ? room : capacity) + 1 +
                         (spare ? sizeof(int32_t) : 0);
    RzStringData* d = static_cast<RzStringData*>(::operator new(bytes));
    // A buffer of megabytes (a file read whole, a converted or written text)
    // is filled with a few page faults instead of one per small page, when
    // the system is told before the first write.
    const size_t largePage = RzOSLargePageSize();
    if (largePage && bytes >= 4 * largePage) RzOSPreferLargePages(d, bytes);
    d->refCount = 1;
    d->capacity = static_cast<int32_t>(capacity);
    d->length = 0;
    d->isBinary = isBinary;
    d->lengthIsCounted = false;
    d->hasRoom = spare;
    d->appendable = false;
    d->inSlab = false;
    d->chars[capacity] = 0;
    if (spare) StoreRoom(d, static_cast<int32_t>(room));
    return d;
}

bool HasZeroByte(const char* p, int32_t n) {
    return n > 0 && memchr(p, 0, static_cast<size_t>(n));
}

// A copy of n bytes whose "no zero byte" property is already known.
RzStringData* CopyStringData(const char* source, int32_t n, bool isBinary, bool counted) {
    RzStringData* d = AllocateStringData(n, isBinary);
    if (n > 0) memcpy(d->chars, source, static_cast<size_t>(n));
    d->length = n;
    d->lengthIsCounted = counted && !isBinary;
    return d;
}

}  // namespace

// --- Buffer functions ---------------------------------------------------

RzStringData* NewStringData(const char* source, int32_t n, bool isBinary) {
    if (n < 0) RZ_RAISE(kRzArgErr);
    if (source) return CopyStringData(source, n, isBinary, !HasZeroByte(source, n));
    RzStringData* d = AllocateStringData(n, isBinary);
    if (isBinary) {
        d->length = n;
    } else {
        d->chars[0] = 0;
        d->length = 0;
        d->lengthIsCounted = true;
    }
    return d;
}

RzStringData* CatStringData(RzStringData* data, const char* source, int32_t n) {
    if (!data) return NewStringData(source, n, false);
    if (n < 0) RZ_RAISE(kRzArgErr);
    if (data->refCount != 1) RZ_RAISE(kRzUnexpectedErr);
    if (data->length < 0) {
        if (data->isBinary) RZ_RAISE(kRzGeneralErr);
        data->length = static_cast<int32_t>(strlen(data->chars));
        data->lengthIsCounted = true;
    }
    const bool addsZero = source && HasZeroByte(source, n);
    const int64_t needed = RzStringGrownCapacity(data->capacity, int64_t(data->length) + n);
    if (needed > data->capacity) {
        const int32_t room = RoomOf(data);
        if (needed <= room) {
            // The block already has the room: only the capacity moves.
            data->capacity = static_cast<int32_t>(needed);
            data->chars[needed] = 0;
            StoreRoom(data, room);
        } else {
            // Keep room for the next capacity step, so that every other step
            // is taken in place.
            RzStringData* grown = AllocateStringData(needed, data->isBinary, needed + needed / 2);
            memcpy(grown->chars, data->chars, static_cast<size_t>(data->length) + 1);
            grown->length = data->length;
            grown->lengthIsCounted = data->lengthIsCounted;
            // Appending a piece of the string to itself: read it from the new
            // buffer, since the old one is about to go.
            const uintptr_t from = reinterpret_cast<uintptr_t>(data->chars);
            const uintptr_t at = reinterpret_cast<uintptr_t>(source);
            if (at >= from && at <= from + static_cast<uintptr_t>(room))
                source = grown->chars + (at - from);
            FreeStringData(data);
            data = grown;
        }
    }
    if (source && n > 0) memmove(data->chars + data->length, source, static_cast<size_t>(n));
    data->length += n;
    data->chars[data->length] = 0;
    if (addsZero || !source) {
        data->lengthIsCounted = false;
        data->appendable = false;
    }
    return data;
}

// --- Buffers made in bulk ----------------------------------------------------
//
// A slab hands out text buffers from blocks of up to kSlabBlock bytes, each
// taken with the global operator new. In a block every buffer is preceded by
// its distance from the block's start (4 bytes), and the block starts with
// the number of its buffers still alive, plus one while the slab may still
// add to it. The block is freed when that number reaches 0.

namespace {

const size_t kSlabBlock = 256 * 1024;
const size_t kSlabOffset = sizeof(uint32_t);  // in front of each buffer

struct SlabBlock {
    int64_t alive;
    size_t alignment;  // of a block in large pages, else 0
};

void ReleaseBlock(SlabBlock* block) {
    if (--block->alive != 0) return;
    if (block->alignment)
        ::operator delete(block, std::align_val_t(block->alignment));
    else
        ::operator delete(block);
}

}  // namespace

void FreeStringData(RzStringData* d) {
    if (!d->inSlab) {
        ::operator delete(d);
        return;
    }
    uint32_t offset;
    memcpy(&offset, reinterpret_cast<char*>(d) - kSlabOffset, sizeof offset);
    ReleaseBlock(reinterpret_cast<SlabBlock*>(reinterpret_cast<char*>(d) - offset));
}

RzStringSlab::RzStringSlab(size_t expected)
    : block(nullptr), next(nullptr), end(nullptr), blockSize(kSlabBlock), largePages(false) {
    // Megabytes of strings go into blocks of one large page each, when the
    // system has them; a small text gets one block of about its size.
    const size_t page = RzOSLargePageSize();
    if (page && expected >= 2 * page) {
        blockSize = page;
        largePages = true;
    } else if (expected < kSlabBlock) {
        blockSize = expected < 256 ? 256 : expected;
    }
}

RzStringSlab::~RzStringSlab() {
    if (block) ReleaseBlock(static_cast<SlabBlock*>(block));
}

RzStringData* RzStringSlab::NewText(int64_t capacity) {
    // Header, characters and terminator, behind the offset; 4-byte aligned.
    const size_t bytes =
        (kSlabOffset + kRzStringHeaderSize + static_cast<size_t>(capacity) + 1 + 3) & ~size_t(3);
    if (capacity > kRzStringMaxCapacity || bytes > kSlabBlock / 8) return RzNewTextBuffer(capacity);
    if (static_cast<size_t>(end - next) < bytes) NewBlock(bytes);
    const uint32_t offset = static_cast<uint32_t>(next + kSlabOffset - static_cast<char*>(block));
    memcpy(next, &offset, sizeof offset);
    RzStringData* d = reinterpret_cast<RzStringData*>(next + kSlabOffset);
    next += bytes;
    ++static_cast<SlabBlock*>(block)->alive;
    d->refCount = 1;
    d->capacity = static_cast<int32_t>(capacity);
    d->length = 0;
    d->isBinary = false;
    d->lengthIsCounted = true;
    d->hasRoom = false;
    d->appendable = false;
    d->inSlab = true;
    d->chars[0] = 0;
    d->chars[capacity] = 0;
    return d;
}

void RzStringSlab::NewBlock(size_t bytes) {
    const size_t size = blockSize < bytes + sizeof(SlabBlock) + 4 ? 2 * bytes + 64 : blockSize;
    const bool aligned = largePages && size == blockSize;
    void* fresh = aligned ? ::operator new(size, std::align_val_t(size)) : ::operator new(size);
    if (aligned) RzOSPreferLargePages(fresh, size);
    SlabBlock* header = static_cast<SlabBlock*>(fresh);
    header->alive = 1;  // the slab's own hold, until it moves on
    header->alignment = aligned ? size : 0;
    if (block) ReleaseBlock(static_cast<SlabBlock*>(block));
    block = fresh;
    next = static_cast<char*>(fresh) + ((sizeof(SlabBlock) + 3) & ~size_t(3));
    end = static_cast<char*>(fresh) + size;
}

RzStringData* RzNewTextBuffer(int64_t capacity) {
    RzStringData* d = AllocateStringData(capacity, false);
    d->chars[0] = 0;
    d->lengthIsCounted = true;
    return d;
}

// --- Construction and assignment -----------------------------------------

RzString::RzString(int32_t n, bool isBinary) : data(nullptr) {
    if (n != 0) data = NewStringData(nullptr, n, isBinary);
}

RzString::RzString(const void* p, int32_t n, bool isBinary) : data(nullptr) {
    if (n != 0) data = NewStringData(static_cast<const char*>(p), n, isBinary);
}

RzString::RzString(char c) : data(CopyStringData(&c, 1, false, c != 0)) {}

RzString::RzString(const char* s) : data(nullptr) {
    if (s) data = CopyStringData(s, static_cast<int32_t>(strlen(s)), false, true);
}

RzString::RzString(const unsigned char* pascal) : data(nullptr) {
    if (pascal) data = NewStringData(reinterpret_cast<const char*>(pascal + 1), pascal[0], false);
}

RzString& RzString::operator=(const RzString& other) {
    if (this == &other) return *this;
    // Take the new reference before dropping the old one: `other` may live
    // in the buffer that this string releases.
    RzStringData* shared = other.data;
    if (shared) {
        ++shared->refCount;
        shared->appendable = false;
    }
    Release(data);
    data = shared;
    return *this;
}

RzString& RzString::operator=(RzString&& other) noexcept {
    RzStringData* taken = other.data;
    other.data = data;
    data = taken;
    return *this;
}

RzString& RzString::operator=(const char* s) {
    return *this = RzString(s);
}
RzString& RzString::operator=(const unsigned char* pascal) {
    return *this = RzString(pascal);
}
RzString& RzString::operator=(char c) {
    return *this = RzString(c);
}

void RzString::Set(const void* p, int32_t n) {
    *this = RzString(p, n, false);
}

// --- Access -----------------------------------------------------------------

void RzString::CountLength() const {
    data->length = static_cast<int32_t>(strlen(data->chars));
    data->lengthIsCounted = true;
}

unsigned char* RzString::p_str(unsigned char* out) const {
    if (!out) return out;
    int32_t n = length();
    if (n > 255) n = 255;
    if (n < 0) n = 0;
    out[0] = static_cast<unsigned char>(n);
    if (n > 0) memcpy(out + 1, data->chars, static_cast<size_t>(n));
    return out;
}

char* RzString::Get(int32_t* lengthOut) {
    if (!data) return nullptr;
    WriteAccess();
    // Report the length without caching it: the caller is about to write
    // through the pointer, and the next length() must count what it left.
    if (lengthOut)
        *lengthOut = data->isBinary ? data->length : static_cast<int32_t>(strlen(data->chars));
    return data->chars;
}

void RzString::SetLength(int n) {
    if (!data || n > data->capacity) RZ_RAISE(kRzIndexError);
    if (data->refCount > 1) {
        RzStringData* copy = AllocateStringData(data->capacity, data->isBinary);
        memcpy(copy->chars, data->chars, static_cast<size_t>(data->capacity) + 1);
        --data->refCount;
        data = copy;
    }
    data->length = n < 0 ? -1 : n;
    data->lengthIsCounted = false;
    data->appendable = false;
}

void RzString::WriteAccess() {
    MakeWritable();
    if (!data->isBinary) {
        // The caller may change any character through the pointer or
        // reference it gets next, so the length must be counted again.
        data->length = -1;
        data->lengthIsCounted = false;
        data->appendable = false;
    }
}

void RzString::MakeWritable() {
    if (!data) {
        data = NewStringData(nullptr, 0, false);
        return;
    }
    if (data->refCount < 2) return;
    RzStringData* old = data;
    int32_t n = length();
    if (n < 0) n = 0;  // a binary buffer whose length was made unknown
    data = CopyStringData(old->chars, n, old->isBinary, old->lengthIsCounted);
    --old->refCount;
}

char RzString::operator[](int i) const {
    if (!data || i < 0 || i >= data->capacity) RZ_RAISE(kRzIndexError);
    return data->chars[i];
}

char RzString::operator[](long i) const {
    if (!data || i < 0 || i >= data->capacity) RZ_RAISE(kRzIndexError);
    return data->chars[i];
}

char& RzString::operator[](int i) {
    return (*this)[static_cast<long>(i)];
}

char& RzString::operator[](long i) {
    if (!data || i < 0) RZ_RAISE(kRzIndexError);
    WriteAccess();
    if (i >= data->capacity) RZ_RAISE(kRzIndexError);
    return data->chars[i];
}

// --- Concatenation ----------------------------------------------------------

RzString& RzString::Append(const char* source, int32_t n) {
    MakeWritable();
    if (!data->isBinary && !data->lengthIsCounted) {
        data->length = -1;  // counted again by CatStringData
    }
    data = CatStringData(data, source, n);
    return *this;
}

RzString& RzString::AppendChar(char c) {
    Append(&c, 1);
    // Sole owner of a counted text: the next characters can go inline.
    if (data->refCount == 1 && data->lengthIsCounted && !data->isBinary) data->appendable = true;
    return *this;
}

RzString& RzString::operator+=(const char* s) {
    return Append(s, static_cast<int32_t>(strlen(s)));
}

RzString& RzString::operator+=(const unsigned char* pascal) {
    return Append(reinterpret_cast<const char*>(pascal + 1), pascal[0]);
}

RzString& RzString::operator+=(const RzString& s) {
    MakeWritable();
    // `s` may be this very string: read its characters only now.
    return Append(s.c_str(), s.length());
}

RzString operator+(const RzString& a, char b) {
    RzString result(a);
    result += b;
    return result;
}

RzString operator+(char a, const RzString& b) {
    RzString result(a);
    result += b;
    return result;
}

RzString operator+(const RzString& a, const RzString& b) {
    RzString result(a);
    result += b;
    return result;
}

// --- Comparison ---------------------------------------------------------------

int RzString::cmp(const RzString& other) const {
    return strcmp(c_str(), other.c_str());
}

int RzString::cmp(const char* other) const {
    if (!other) RZ_RAISE(kRzArgErr);
    return strcmp(c_str(), other);
}

int RzString::cmpIgnoreCase(const RzString& other) const {
    return Rzstricmp(c_str(), other.c_str());
}

int RzString::cmpIgnoreCase(const char* other) const {
    if (!other) RZ_RAISE(kRzArgErr);
    return Rzstricmp(c_str(), other);
}

bool operator==(const RzString& a, const RzString& b) {
    return a.cmp(b) == 0;
}
bool operator!=(const RzString& a, const RzString& b) {
    return !(a == b);
}
bool operator==(const RzString& a, const char* b) {
    return a.cmp(b) == 0;
}
bool operator!=(const RzString& a, const char* b) {
    return !(a == b);
}
bool operator==(const char* a, const RzString& b) {
    return strcmp(a ? a : "", b.c_str()) == 0;
}
bool operator!=(const char* a, const RzString& b) {
    return !(a == b);
}
bool operator<(const RzString& a, const RzString& b) {
    return a.cmp(b) < 0;
}
bool operator>(const RzString& a, const RzString& b) {
    return b < a;
}
bool operator<=(const RzString& a, const RzString& b) {
    return !(a > b);
}
bool operator>=(const RzString& a, const RzString& b) {
    return !(a < b);
}

int Rzstricmp(const char* a, const char* b) {
    if (!a) a = "";
    if (!b) b = "";
    for (;; ++a, ++b) {
        const int fa = RzFoldedValue(*a), fb = RzFoldedValue(*b);
        if (fa != fb) return fa - fb;
        if (fa == 0) return 0;
    }
}

int Rzstrincmp(const char* a, const char* b, int n) {
    if (!a) a = "";
    if (!b) b = "";
    for (int i = 0; i < n; ++i) {
        const int fa = RzFoldedValue(a[i]), fb = RzFoldedValue(b[i]);
        if (fa != fb) return fa - fb;
        if (fa == 0) return 0;
    }
    return 0;
}

// --- Numbers and codes ----------------------------------------------------

int32_t RzString::atol() const {
    // strtol saturates at the limits of `long`; the framework's numbers are
    // 32-bit, so saturate there as well.
    const long v = ::strtol(c_str(), nullptr, 10);
    if (v > INT32_MAX) return INT32_MAX;
    if (v < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(v);
}

double RzString::atof() const {
    return ::atof(c_str());
}

RzString RzString::ltoa(int32_t v) {
    return Printf("%ld", static_cast<long>(v));
}

RzString RzString::ftoa(double v, const char* format) {
    return Printf(format ? format : "%f", v);
}

RzString RzString::Printf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    RzFormatted formatted(format, args);
    va_end(args);
    // The text runs to its first zero byte, as the classic sprintf result.
    Set(formatted.Text(), static_cast<int32_t>(strlen(formatted.Text())));
    return *this;
}

RzString RzString::FromSig(uint32_t sig) {
    char text[4];
    for (int i = 0; i < 4; ++i) {
        const char c = static_cast<char>((sig >> (24 - 8 * i)) & 0xFF);
        text[i] = c ? c : ' ';
    }
    Set(text, 4);
    return *this;
}

uint32_t RzString::ToSig() const {
    const int32_t n = length();
    if (n <= 0) return 0;
    uint32_t sig = 0;
    for (int32_t i = 0; i < 4; ++i) {
        const unsigned char c = i < n ? static_cast<unsigned char>(data->chars[i]) : ' ';
        sig = (sig << 8) | c;
    }
    return sig;
}
