// Word reading and quoting on arbitrary text and separators.
//
// Input: byte 0 holds the number of separator bytes (bits 0-1, 0 meaning the
// defaults) and whether the text is binary (bit 2); the separators follow,
// and the rest is the text. Checks that word reading always advances, agrees
// with CountWords and builds each word as one append per character would
// (length, binary flag and capacity, zero bytes in a word included); that
// searching for the first words finds what a
// plain comparison at every position finds; that UnQuoteString fails only
// with RzError 19; that quoting and unquoting give back the text up to its
// first zero byte; and that splitting and merging give back a plain text.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzData/RzArray.h>

#include "support/RzContainerTestSupport.h"

namespace {

void Check(bool ok) {
    if (!ok) abort();
}

// The first position at which `what` compares equal over its length, as
// strncmp (or Rzstrincmp) sees it.
int32_t PlainFind(const RzString& text, const RzString& what, bool ignoreCase) {
    const int32_t n = text.length(), m = what.length();
    for (int32_t p = 0; p <= n - m; ++p) {
        const char* at = text.c_str() + p;
        if ((ignoreCase ? Rzstrincmp(at, what.c_str(), m) : strncmp(at, what.c_str(), m)) == 0)
            return p;
    }
    return -1;
}

// ReadString as defined: one append per character.
RzString LiteralReadString(const RzString& s, int32_t& pos, bool quotes, const RzString& seps) {
    const int32_t n = s.length();
    char c = 0;
    bool found = false;
    while (pos < n && !found) found = !RzString::IsWhiteSpace(c = s.c_str()[pos++], seps);
    if (!found) return RzString();
    RzString word(10, false);
    word += c;
    const bool quoted = quotes && c == '"';
    for (bool escaped = false; pos < n;) {
        c = s.c_str()[pos++];
        if (!quoted) {
            if (RzString::IsWhiteSpace(c, seps)) break;
            word += c;
        } else if (c == 0 || ((word += c), !escaped && c == '"')) {
            break;
        } else {
            escaped = !escaped && c == '\\';
        }
    }
    return word;
}

void ReadAllWords(const RzString& text, bool quotes, const RzString& separators) {
    int32_t pos = 0, literalPos = 0, words = 0;
    for (;;) {
        const int32_t before = pos;
        const RzString word = text.ReadString(pos, quotes, separators);
        const RzString literal = LiteralReadString(text, literalPos, quotes, separators);
        Check(StringState(word) == StringState(literal) && pos == literalPos);
        if (word.length() == 0) break;
        Check(pos > before && pos <= text.length());
        Check(word.length() <= pos - before);
        if (words < 4) {
            Check(text.find(word, 0, false) == PlainFind(text, word, false));
            Check(text.find(word, 0, true) == PlainFind(text, word, true));
        }
        ++words;
    }
    Check(pos == text.length());
    Check(text.CountWords(quotes, separators) == words);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const size_t separatorBytes = data[0] & 3;
    const bool binary = (data[0] & 4) != 0;
    if (size < 1 + separatorBytes) return 0;
    const char* bytes = reinterpret_cast<const char*>(data);
    const RzString separators(bytes + 1, static_cast<int32_t>(separatorBytes), false);
    const int32_t n = static_cast<int32_t>(size - 1 - separatorBytes);
    const RzString text(bytes + 1 + separatorBytes, n, binary);

    ReadAllWords(text, false, separators);
    ReadAllWords(text, true, separators);

    try {
        const RzString plain = text.UnQuoteString();
        Check(plain.length() <= text.length());
    } catch (const RzError& e) {
        Check(e.GetErr() == kRzFormatErr);
    }

    const RzString quoted = text.QuoteString();
    const RzString back = quoted.UnQuoteString();
    Check(strcmp(back.c_str(), text.c_str()) == 0);
    Check(back.length() == static_cast<int32_t>(strlen(text.c_str())));

    // A plain text (no zero byte) survives splitting and merging, except for
    // a trailing separator, which gives no piece.
    const RzString plainText(text.c_str());
    RzArray<RzString> pieces;
    plainText.Split(pieces, ',');
    RzString merged;
    merged.MergeStrings(pieces, ",");
    const int32_t length = plainText.length();
    const bool trailing = length > 0 && plainText.c_str()[length - 1] == ',';
    Check(merged.length() == length - (trailing ? 1 : 0));
    Check(strncmp(merged.c_str(), plainText.c_str(), static_cast<size_t>(merged.length())) == 0);
    return 0;
}
