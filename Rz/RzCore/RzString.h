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
//
// Buffers come from the global operator new: an allocation failure, and a
// buffer beyond 2^31 - 1 bytes, propagate as std::bad_alloc, not as an
// RzError.
#ifndef RZ_RZCORE_RZSTRING_H
#define RZ_RZCORE_RZSTRING_H

#include <stddef.h>
#include <stdint.h>

#include <Rz/RzCore/RzDefs.h>
#include <Rz/RzCore/RzExport.h>

template <class T>
class RzArray;

// The shared buffer: header and characters in one block from the global
// operator new. chars[capacity] is always zero.
struct RzStringData {
    int32_t refCount;  // strings sharing the buffer; 1 after creation
    int32_t capacity;  // character bytes the buffer can hold, terminator excluded
    int32_t length;    // characters in use; -1: unknown, counted when next asked
    bool isBinary;     // binary content: length is authoritative, never recounted
    // Bookkeeping of this implementation, not part of the buffer's meaning,
    // packed into one byte so that the header stays 14 bytes:
    // lengthIsCounted is set while `length` is known and no zero byte lies
    // before it, so that appending need not count the text again; hasRoom is
    // set when the block holds more than capacity + 1 bytes (appending keeps
    // spare room so that growing the capacity by its documented steps
    // seldom has to copy), the room then being stored behind the terminator.
    // Buffers come from NewStringData and CatStringData only.
    bool lengthIsCounted : 1;
    bool hasRoom : 1;
    // Set only while this string is the buffer's sole owner and its text is
    // counted, so that appending one character can be done inline after a
    // single test. Sharing, writing through Get() or operator[] and anything
    // that leaves the length uncounted clears it; appending sets it again.
    bool appendable : 1;
    // Set when the buffer shares one larger block with other buffers (made
    // in bulk, as the settings reader makes its keys and values); the block
    // goes when its last buffer does. FreeStringData knows.
    bool inSlab : 1;
    char chars[1];  // capacity + 1 bytes (more with hasRoom) in the real block
};

// A new buffer with refCount 1, capacity n and chars[n] = 0. With a source, n
// bytes are copied and the length is n; without one a binary buffer has length
// n (content undefined) and a text buffer is empty. Raises "RzArgErr" (3) for
// a negative n.
RZ_API RzStringData* NewStringData(const char* source, int32_t n, bool isBinary);

// Appends n bytes of `source` and returns the buffer that now holds the result
// (the old one is freed when a larger one was needed). A null `data` gives
// NewStringData(source, n, false). Capacity grows to 3/2 of the old one when
// that is enough, else to exactly what is needed, never below 10. Raises
// "RzUnexpectedErr" (2) for a shared buffer and "RzGeneralErr" (42) for a
// binary buffer of unknown length. `source` may point into `data` itself.
RZ_API RzStringData* CatStringData(RzStringData* data, const char* source, int32_t n);

// Frees a buffer whose count has dropped to 0.
RZ_API void FreeStringData(RzStringData* data);

class RZ_API RzString {
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
        if (data) {
            ++data->refCount;
            if (data->appendable) data->appendable = false;  // shared now
        }
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
        // The common case inline: a private, counted text with room for one
        // more byte (see RzStringData::appendable).
        RzStringData* d = data;
        if (d && d->appendable && c != 0 && d->length < d->capacity) {
            const int32_t n = d->length;
            d->chars[n] = c;
            d->chars[n + 1] = 0;
            d->length = n + 1;
            return *this;
        }
        return AppendChar(c);
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

    // --- Searching --------------------------------------------------------------
    //
    // Positions count from 0; -1 means "not found". Searches compare like
    // strncmp over the length of `what`: a `what` holding a zero byte matches
    // up to and including its first zero. With ignoreCase only 'A'..'Z' are
    // folded, as in Rzstricmp. A negative `from` searches from 0. By default
    // a search starts at 0 and is case-sensitive.

    // The first position p >= from at which `what` occurs; candidates run up
    // to length() - what.length(). An empty `what` gives `from` when from <=
    // length(), else -1.
    int32_t find(const RzString& what, int32_t from = 0, bool ignoreCase = false) const;
    // The first position p, from <= p < length(), holding c.
    int32_t find(char c, int32_t from = 0) const;
    // The last position at which `what` occurs (an empty `what`: length()).
    int32_t findreverse(const RzString& what, bool ignoreCase = false) const;
    // The last position holding c.
    int32_t findreverse(char c) const;
    // The first position whose character is any character of `set` (a
    // position, not a boolean).
    int32_t containsChar(const RzString& set) const;
    // With non-empty `separators`: whether c is one of its characters. With an
    // empty or null one: whether c is one of the five default separators, zero
    // byte, tab, line feed, carriage return and space.
    static bool IsWhiteSpace(char c, const RzString& separators = RzString());

    // --- Cutting and rewriting -------------------------------------------------

    // A new string of `count` characters from `from`, keeping the binary flag.
    // A negative `from` counts as 0; count -1 (or a count reaching past the
    // end) means "to the end". `from` at or past the end, or count 0, gives a
    // non-null empty string. Counts below -1 raise "RzArgErr" (3).
    RzString substr(int32_t from, int32_t count = -1) const;
    // Every byte equal to `from` before the first zero byte becomes `to`.
    void Replace(char from, char to);
    // 'A'..'Z' to lower case (LoCase) or 'a'..'z' to upper case (HiCase) over
    // all length() characters; no other byte changes.
    void LoCase();
    void HiCase();
    // Reverses the length() characters in place.
    void Reverse();
    // For formatted decimal numbers: drops the zeros behind the first '.',
    // and the point itself when nothing is left behind it ("1.500" -> "1.5",
    // "2.000" -> "2", ".00" -> "0"). A text without '.' is left as it is;
    // otherwise the result is a new text buffer.
    void StripTrailingZeros();
    // Rewrites every line end (CR, LF or CR LF) to `lineEnd` (by default LF).
    void AdjustLineFeed(const RzString& lineEnd = RzString("\n"));
    // Removes every character of `set` from both ends, and returns a copy of
    // the result. The two flags are accepted and ignored on purpose: both
    // ends are always stripped. The null string stays null; an empty `set`
    // strips nothing. By default white space (space, tab, CR, LF) is stripped.
    RzString Strip(const RzString& set = RzString(" \t\r\n"), bool = true, bool = true);

    // --- Words ------------------------------------------------------------------
    //
    // A word is a run of characters between separators; an empty or null
    // `separators` means the five defaults of IsWhiteSpace. By default words
    // are read plain (quotes off) with the default separators.

    // Reads the word that starts at or after `pos` and moves `pos` behind the
    // separator that ends it. Returns the null string when only separators
    // remain. With `quotes`, a word that starts with '"' runs to the closing
    // '"' (separators included); a backslash escapes the next character, and
    // quotes and backslashes are kept (UnQuoteString removes them). A zero
    // byte ends a quoted word; it is consumed and not kept. A negative `pos`
    // counts as 0.
    RzString ReadString(int32_t& pos, bool quotes = false,
                        const RzString& separators = RzString()) const;
    // Word number n (from 0) as ReadString reads it from the start; the null
    // string when there are fewer words or n is negative.
    RzString ReadWord(int n, bool quotes = false, const RzString& separators = RzString()) const;
    // The number of words ReadString reads from the start.
    int32_t CountWords(bool quotes = false, const RzString& separators = RzString()) const;
    // Empties `out` and stores every word, read with quotes on. A quoted word
    // is stored as read, with its quotes and backslashes (callers that want
    // the plain text call UnQuoteString on it).
    void ReadStrings(RzArray<RzString>& out, const RzString& separators = RzString()) const;
    // Empties `out` and stores the pieces between separators: a leading or a
    // doubled separator gives an empty piece, a trailing one does not, and the
    // empty string gives none.
    void Split(RzArray<RzString>& out, char separator) const;
    // Sets this string to the elements of `list` joined by `separator`. The
    // elements are not quoted, so one holding a separator character does not
    // come back whole from ReadStrings. By default one space joins them.
    void MergeStrings(const RzArray<RzString>& list, const RzString& separator = RzString(" "));

    // --- Quoting ------------------------------------------------------------------

    // The text up to its first zero byte in double quotes, with a backslash
    // before every '"' and '\\'. Nothing else is escaped.
    RzString QuoteString() const;
    // The inverse: the text must begin and end with '"' (a lone '"' gives the
    // empty string), else "RzFormatErr" (19) is raised. Backslash-quote and
    // backslash-backslash give the second character; a backslash before any
    // other character, or last, is kept. A zero byte between the quotes ends
    // the result.
    RzString UnQuoteString() const;

    // --- Character sets, Unicode and hexadecimal text ---------------------------
    //
    // The conversions return a new string in a buffer of their own and leave
    // this one unchanged. Except where said otherwise they read this string's
    // length() bytes up to the first zero byte among them. Only the
    // hexadecimal decoders raise errors; malformed UTF-8 is decoded as it
    // comes (see UTF8ToISO8859_1). A result larger than 2^31 - 1 bytes fails
    // with std::bad_alloc.

    // A copy with the same length and binary flag in which every byte from 128
    // up before the first zero byte is taken from Mac OS Roman to ISO-8859-1.
    // Characters ISO-8859-1 lacks (dagger, bullet, the typographic quotes, ...)
    // take otherwise unused codes, mostly of the range 128..159, so that
    // ISO8859_1ToMacRoman restores every byte. Mac OS Roman 0xCD (capital O
    // with tilde) becomes 0x90, not 0xD5.
    RzString MacRomanToISO8859_1() const;
    // The inverse table: 0x90 becomes 0xCD, and 0xD5 stays 0xD5 (the right
    // single quotation mark in Mac OS Roman).
    RzString ISO8859_1ToMacRoman() const;
    // A text: bytes below 128 are copied, any other byte b becomes the two
    // bytes 0xC0 + (b >> 6), 0x80 + (b & 0x3F). Capacity 2 x length().
    RzString ISO8859_1ToUTF8() const;
    // A text of the decoded values: each value below 256 becomes that byte,
    // any other '?'. Capacity length(). Decoding: the lead byte gives the
    // sequence length (a continuation byte in lead position counts as 5) and
    // further bytes are taken while they are continuation bytes, so a cut
    // sequence yields what it has ("\xC3A" gives 3, then 'A'). Overlong
    // forms, surrogates and values above 0x10FFFF are not refused; an
    // overlong zero ends the text.
    RzString UTF8ToISO8859_1() const;
    // MacRomanToISO8859_1, then ISO8859_1ToUTF8 (capacity 2 x length()): a
    // character that Mac OS Roman carries on a code of 128..159 comes out as
    // the UTF-8 form of that code, and UTF8ToMacRoman restores it.
    RzString MacRomanToUTF8() const;
    // UTF8ToISO8859_1, then ISO8859_1ToMacRoman.
    RzString UTF8ToMacRoman() const;
    // A binary string of the decoded values (as UTF8ToISO8859_1 decodes),
    // two bytes each, most significant first on every host, cut to 16 bits
    // (no surrogate pairs), without byte-order mark or terminating unit.
    // Capacity 2 x length(); length the bytes written.
    RzString UTF8ToUTF16() const;
    // The inverse for a binary string as UTF8ToUTF16 makes: all length()
    // bytes, zero bytes included, read as big-endian 16-bit units (a trailing
    // odd byte is ignored), each written as one to three UTF-8 bytes. Unit by
    // unit: surrogates are not combined, a byte-order mark is converted like
    // any unit, a zero unit gives a zero byte (which ends the text). A text,
    // capacity 4 x length().
    RzString UTF16ToUTF8() const;

    // Sets this string to the 2 x n upper-case hexadecimal digits of the n
    // bytes at `bytes`, high nibble first, and returns a copy of it. A null
    // `bytes` or n <= 0 gives the null string.
    RzString Bin2Str(const void* bytes, int32_t n);
    // The hexadecimal text of this string's length() bytes, zero bytes of a
    // binary string included.
    RzString BinStr2Str() const;
    // Half the length of a hexadecimal text (0 for the null string). Raises
    // "RzFormatErr" (19) for an odd length.
    int32_t BinSize() const;
    // Decodes the hexadecimal text (0-9, A-F, a-f; two digits a byte, high
    // nibble first) into `out`, which must hold BinSize() bytes, up to the
    // end of the text or its first zero byte; a null `out` decodes nothing.
    // Then stores BinSize() in *sizeOut when sizeOut is given. Raises
    // "RzFormatErr" (19) for a character that is not a digit or a digit
    // without its partner (odd length); the bytes decoded before it stay in
    // `out` and *sizeOut is not written.
    void Str2Bin(void* out, int32_t* sizeOut) const;
    // The decoded bytes as a text whose length is BinSize(), zero bytes
    // included; the null string for an empty text. Raises as Str2Bin.
    RzString Str2BinStr() const;

private:
    static void Release(RzStringData* d) {
        if (d && --d->refCount == 0) FreeStringData(d);
    }
    void CountLength() const;
    // WriteAccess for the framework's own writers that do not hand out the
    // characters: a counted text keeps its length.
    void MakeWritable();
    RzString& Append(const char* source, int32_t n);
    RzString& AppendChar(char c);
    // MakeWritable, then for a text make sure the length is counted: the same
    // as WriteAccess followed by length(), without losing a counted length.
    int32_t EditAccess();

    friend int Replace(const RzString& search, const RzString& replacement, RzString& target);

    RzStringData* data;
};

RZ_API RzString operator+(const RzString& a, char b);
RZ_API RzString operator+(char a, const RzString& b);
RZ_API RzString operator+(const RzString& a, const RzString& b);

RZ_API bool operator==(const RzString& a, const RzString& b);
RZ_API bool operator!=(const RzString& a, const RzString& b);
// Raises "RzArgErr" (3) when b is null.
RZ_API bool operator==(const RzString& a, const char* b);
RZ_API bool operator!=(const RzString& a, const char* b);
// Does not check a; a null a compares as "".
RZ_API bool operator==(const char* a, const RzString& b);
RZ_API bool operator!=(const char* a, const RzString& b);
RZ_API bool operator<(const RzString& a, const RzString& b);
RZ_API bool operator>(const RzString& a, const RzString& b);
RZ_API bool operator<=(const RzString& a, const RzString& b);
RZ_API bool operator>=(const RzString& a, const RzString& b);

// Replaces every occurrence of `search` in `target` (case-sensitive) and
// returns the number of replacements. The scan resumes behind each inserted
// replacement, so it never matches inside one ("banana" with "a" -> "aa"
// gives "baanaanaa", 3). Runs in time proportional to the text. An empty
// `search` replaces nothing and returns 0. The arguments are read as they were
// on entry, also when one of them is `target` itself.
RZ_API int Replace(const RzString& search, const RzString& replacement, RzString& target);

// Case-insensitive comparison: bytes are read as signed 8-bit values and only
// 'A'..'Z' are folded (to lower case), so bytes 128..255 order below ASCII
// here, unlike cmp. Returns the difference of the first differing folded pair.
RZ_API int Rzstricmp(const char* a, const char* b);
// The same over at most n characters; n <= 0 gives 0.
RZ_API int Rzstrincmp(const char* a, const char* b, int n);

// Wildcard matching, pattern first: '*' matches any run of characters (also
// none), '?' exactly one, every other byte itself; no escapes, case-sensitive.
// Null never matches (unless both pointers are the same). Runs in time
// proportional to pattern length times text length at worst.
RZ_API bool StrMatch(const char* pattern, const char* text);
// The same with a budget: the number of text characters that the stars may
// absorb before the text ends. StrMatch uses strlen(text) + stars -
// strlen(pattern), which prunes only hopeless branches.
RZ_API bool StrMatchMax(const char* pattern, const char* text, int32_t budget);

#endif
