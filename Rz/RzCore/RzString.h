// RzString: the framework's one string type.
//
// An RzString is a single pointer to a shared, reference-counted buffer
// (RzStringData) that is copied only when a holder is about to write into it
// (copy on write): copying, passing and returning strings by value costs one
// increment. A null pointer is the normal empty string; some operations give a
// non-null buffer of length 0 instead, and both behave alike for every read.
//
// A buffer holds either text (zero-terminated; its length is counted with
// strlen when first asked after a write) or binary data (the length is
// authoritative and zero bytes are allowed). Positions and lengths are signed
// 32-bit; searches return -1 for "none".
//
// Strings are not thread-safe: the count is a plain integer and even length()
// may update the shared header, so a string and its copies belong to one
// thread at a time.
#ifndef RZ_RZCORE_RZSTRING_H
#define RZ_RZCORE_RZSTRING_H

#include <stddef.h>
#include <stdint.h>

#include <Rz/RzCore/RzDefs.h>

// The shared buffer: header and characters in one block from the global
// operator new. chars[capacity] is always zero.
struct RzStringData {
    int32_t refCount;  // strings sharing the buffer; 1 after creation
    int32_t capacity;  // character bytes the buffer can hold, terminator excluded
    int32_t length;    // characters in use; -1: unknown, counted when next asked
    bool isBinary;     // binary content: length is authoritative, never recounted
    // Bookkeeping of this implementation, not part of the buffer's meaning:
    // set while `length` is known and no zero byte lies before it, so that
    // appending need not count the text again.
    bool lengthIsCounted;
    // Bookkeeping: character bytes the block really holds (>= capacity).
    // Appending keeps spare room here so that growing the capacity by its
    // documented steps seldom has to copy. Buffers come from NewStringData
    // and CatStringData only.
    int32_t room;
    char chars[1];  // room + 1 bytes in the real block
};

// A new buffer with refCount 1, capacity n and chars[n] = 0. With a source, n
// bytes are copied and the length is n; without one a binary buffer has length
// n (content undefined) and a text buffer is empty. Raises "RzArgErr" (3) for
// a negative n.
RzStringData* NewStringData(const char* source, int32_t n, bool isBinary);

// Appends n bytes of `source` and returns the buffer that now holds the result
// (the old one is freed when a larger one was needed). A null `data` gives
// NewStringData(source, n, false). Capacity grows to 3/2 of the old one when
// that is enough, else to exactly what is needed, never below 10. Raises
// "RzUnexpectedErr" (2) for a shared buffer and "RzGeneralErr" (42) for a
// binary buffer of unknown length. `source` may point into `data` itself.
RzStringData* CatStringData(RzStringData* data, const char* source, int32_t n);

class RzString {
public:
    // The null string.
    RzString() : data(nullptr) {}
    // n = 0: the null string; otherwise an empty text with room for n
    // characters, or a binary block of n undefined bytes.
    RzString(int32_t n, bool isBinary);
    // Adopts `data` as it is, without touching its reference count.
    explicit RzString(RzStringData* data_) : data(data_) {}
    // A copy of n bytes (n = 0: the null string).
    RzString(const void* p, int32_t n, bool isBinary);
    // A one-character text; for c = 0 the length is still 1.
    RzString(char c);
    // A copy of a C string; null gives the null string, "" a non-null empty one.
    RzString(const char* s);
    // A copy of a Pascal string (length byte, then the characters).
    RzString(const unsigned char* pascal);
    RzString(const RzString& other) : data(other.data) {
        if (data) ++data->refCount;
    }
    RzString(RzString&& other) noexcept : data(other.data) { other.data = nullptr; }
    ~RzString() { Release(data); }

    RzString& operator=(const RzString& other);
    RzString& operator=(RzString&& other) noexcept;
    RzString& operator=(const char* s);
    RzString& operator=(const unsigned char* pascal);
    RzString& operator=(char c);

    // Replaces the content with a text copy of n bytes; n = 0 gives the null
    // string.
    void Set(const void* p, int32_t n);

    // --- Access ---------------------------------------------------------

    // Number of characters: 0 for the null string; a text of unknown length is
    // counted (and the count stored in the shared header).
    int32_t length() const {
        if (!data) return 0;
        if (data->length < 0 && !data->isBinary) CountLength();
        return data->length;
    }
    // The characters, or "" for the null string. Valid until the next change.
    const char* c_str() const { return data ? data->chars : ""; }
    // Writes a Pascal string (at most 255 characters) into `out`; returns out.
    unsigned char* p_str(unsigned char* out) const;
    // A writable pointer to the characters after WriteAccess, or null for the
    // null string (then *lengthOut is untouched). Stores the length when
    // lengthOut is given.
    char* Get(int32_t* lengthOut);
    // Sets the length without writing a terminator; a negative n makes it
    // unknown. Raises "RzIndexError" (7) for the null string or n > capacity.
    // A shared buffer is first made private, keeping its capacity.
    void SetLength(int n);
    // Makes the buffer private before a write: a null string gets an empty
    // buffer of capacity 0, a shared one is copied (capacity = length), and a
    // text's length becomes unknown because the caller may change characters.
    void WriteAccess();

    // Indexing is bounded by the capacity, not the length. Raises
    // "RzIndexError" (7) for the null string, a negative index or i >= capacity.
    // The writable forms call WriteAccess first and check against the
    // capacity of the buffer they then hold.
    char operator[](int i) const;
    char operator[](long i) const;
    char& operator[](int i);
    char& operator[](long i);

    // --- Concatenation (amortised linear: capacity grows by half) ---------

    RzString& operator+=(const char* s);
    RzString& operator+=(const unsigned char* pascal);
    RzString& operator+=(char c) {
        RzStringData* d = data;
        if (d && d->refCount == 1 && d->length >= 0 && d->length < d->capacity &&
            (d->isBinary || (d->lengthIsCounted && c != 0))) {
            d->chars[d->length] = c;
            d->chars[++d->length] = 0;
            return *this;
        }
        return Append(&c, 1);
    }
    RzString& operator+=(const RzString& s);

    // --- Comparison (byte-wise strcmp on c_str()) -------------------------

    int cmp(const RzString& other) const;
    // Raises "RzArgErr" (3) for null.
    int cmp(const char* other) const;
    // Folds only 'A'..'Z'; bytes read as signed (see Rzstricmp).
    int cmpIgnoreCase(const RzString& other) const;
    // Raises "RzArgErr" (3) for null.
    int cmpIgnoreCase(const char* other) const;

    // --- Numbers and four-character codes ---------------------------------

    // C library atol (saturated to 32 bits) and atof of c_str().
    int32_t atol() const;
    double atof() const;
    // These set *this and return a copy of the result.
    RzString ltoa(int32_t v);                     // "%ld"
    RzString ftoa(double v, const char* format);  // format, "%f" when null
    RzString Printf(const char* format, ...) RZ_PRINTF_FORMAT(2, 3);
    // Four characters, most significant byte first, zero bytes as blanks.
    RzString FromSig(uint32_t sig);
    // The inverse: up to four characters, padded with blanks; "" gives 0.
    uint32_t ToSig() const;

private:
    static void Release(RzStringData* d) {
        if (d && --d->refCount == 0) ::operator delete(d);
    }
    void CountLength() const;
    // WriteAccess for the framework's own writers that do not hand out the
    // characters: a counted text keeps its length.
    void MakeWritable();
    RzString& Append(const char* source, int32_t n);

    RzStringData* data;
};

RzString operator+(const RzString& a, char b);
RzString operator+(char a, const RzString& b);
RzString operator+(const RzString& a, const RzString& b);

bool operator==(const RzString& a, const RzString& b);
bool operator!=(const RzString& a, const RzString& b);
// Raises "RzArgErr" (3) when b is null.
bool operator==(const RzString& a, const char* b);
bool operator!=(const RzString& a, const char* b);
// Does not check a; a null a compares as "".
bool operator==(const char* a, const RzString& b);
bool operator!=(const char* a, const RzString& b);
bool operator<(const RzString& a, const RzString& b);
bool operator>(const RzString& a, const RzString& b);
bool operator<=(const RzString& a, const RzString& b);
bool operator>=(const RzString& a, const RzString& b);

// Case-insensitive comparison: bytes are read as signed 8-bit values and only
// 'A'..'Z' are folded (to lower case), so bytes 128..255 order below ASCII
// here, unlike cmp. Returns the difference of the first differing folded pair.
int Rzstricmp(const char* a, const char* b);
// The same over at most n characters; n <= 0 gives 0.
int Rzstrincmp(const char* a, const char* b, int n);

// Wildcard matching, pattern first: '*' matches any run of characters (also
// none), '?' exactly one, every other byte itself; no escapes, case-sensitive.
// Null never matches (unless both pointers are the same). Runs in time
// proportional to pattern length times text length at worst.
bool StrMatch(const char* pattern, const char* text);
// The same with a budget: the number of text characters that the stars may
// absorb before the text ends. StrMatch uses strlen(text) + stars -
// strlen(pattern), which prunes only hopeless branches.
bool StrMatchMax(const char* pattern, const char* text, int32_t budget);

#endif
