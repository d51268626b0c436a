// The DOS attributes Samba keeps for a file in the extended attribute
// "user.DOSATTRIB" (and the Linux kernel's SMB server in the same format).
// An SMB client that sets a file read-only sets bit 0x01 there; a Mac client
// shows that bit as the Finder's Locked box. Pure functions over memory; the
// file system side is in the operating-system seam.
//
// The record, little-endian:
//   - a zero-terminated hex text of the attributes ("0x21"), empty in the
//     versions Samba writes today; a record that ends after the text is the
//     old text-only form;
//   - at the next even offset the version (1 to 5) and the same number again;
//   - at the next multiple of 4 the version's fields: the attribute word comes
//     first in version 1 and second (after a word of flags) in versions 2 to 5.
// Version 1 holds 40 bytes of fields, 2 holds 52 and a zero-terminated name,
// 3 holds 44, 4 holds 24 and 5 holds 16. Bytes after the fields are allowed
// and kept.
#ifndef RZ_INTERNAL_RZDOSATTRIB_H
#define RZ_INTERNAL_RZDOSATTRIB_H

#include <stddef.h>
#include <stdint.h>

#include <string>

enum {
    kRzDosReadOnly = 0x01,
    kRzDosHidden = 0x02,
    kRzDosSystem = 0x04,
    kRzDosArchive = 0x20,
    kRzDosAttribMaxSize = 256  // Samba reads the attribute into 256 bytes
};

// The attribute word of a record that Samba reads: true and `*attributes`
// set, or false (`*attributes` untouched) for a record Samba rejects: no
// zero byte ending the text, a text-only record whose text is no hex number,
// a version outside 1 to 5, a second version number that differs, or fields
// cut short. The text of a text-only record is read as scanf's "%x" reads it
// (blanks, a sign and "0x" allowed; too many digits give 0xFFFFFFFF).
bool RzDosAttribGet(const unsigned char* record, size_t size, uint32_t* attributes);

// Clears `bits` in a record that RzDosAttribGet reads, as Samba would store
// the result: the attribute word changes, and a non-empty text is written
// again as "0x%x" of the new attributes (moving the rest of the record to
// its new alignment); every other field and any trailing byte is kept.
// Returns true when the record changed; a record Samba rejects, one where
// none of the bits is set, and one that the longer text would push beyond
// kRzDosAttribMaxSize are left alone.
bool RzDosAttribClear(std::string& record, uint32_t bits);

#endif
