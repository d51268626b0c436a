// Character-set conversions that the framework's units share: the tables and
// decoders behind RzString's conversions and the Mac traditional Chinese
// encoding in which new folder names are given.
#ifndef RZ_INTERNAL_RZTEXTENCODING_H
#define RZ_INTERNAL_RZTEXTENCODING_H

#include <Rz/Mac/RzMacTypes.h>
#include <Rz/RzCore/RzString.h>

// `pascal` read as Mac traditional Chinese (text encoding 2), written to
// `utf8`. ASCII is unchanged; the encoding's own single bytes above ASCII map
// to their Unicode characters and double bytes go through the C library's
// Big5 converter. kTextMalformedInputErr for a byte that starts no character
// or a lead byte without its second byte, kTextUndefinedElementErr for a pair
// the encoding does not define, kTextUnsupportedEncodingErr when the C
// library has no Big5 converter (only for names that need one). `utf8` is
// unchanged on error.
OSErr RzMacChineseTradToUTF8(const unsigned char* pascal, RzString& utf8);

#endif
