// The file layer's rules for an item's Finder type and creator, defined with
// the layer (Rz/Mac/RzMacToolsOSX.cpp) and used wherever the framework reads
// or stamps the codes outside it: the folder walk (RzIterateDir) reads them
// for every item listed, and saving settings (RzDataBase::WriteToFile)
// stamps a file it replaces as opening it for writing would.
#ifndef RZ_INTERNAL_RZFINDERCODES_H
#define RZ_INTERNAL_RZFINDERCODES_H

#include <stdint.h>

class RzFileSpec;

// A four-character code as the Finder stores it: the first character in the
// most significant byte ("TEXT" is 0x54455854).
constexpr uint32_t RzFourCharCode(const char (&c)[5]) {
    return static_cast<uint32_t>(static_cast<unsigned char>(c[0])) << 24 |
           static_cast<uint32_t>(static_cast<unsigned char>(c[1])) << 16 |
           static_cast<uint32_t>(static_cast<unsigned char>(c[2])) << 8 |
           static_cast<uint32_t>(static_cast<unsigned char>(c[3]));
}

// Sets the codes of `spec`, whose name is set, from the Finder information
// read for its item: a known extension gives the type, and only an unknown
// one leaves the Finder type; the creator is the Finder creator as it is, 0
// and 'MACS' included. A folder's codes are passed as 0.
void RzTakeFinderCodes(RzFileSpec& spec, uint32_t type, uint32_t creator);

// Stamps the spec's type and creator, each where it is not 0, on the file the
// spec names, when that is a file and not a folder. Errors are ignored (a
// file system without extended attributes simply keeps no codes).
void RzStampFinderCodes(const RzFileSpec& spec);

#endif
