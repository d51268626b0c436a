// Byte-level readers and writers for the containers that carry Finder
// information outside the Mac: AppleDouble headers (the 402-byte metadata
// record Linux file servers keep in an extended attribute, and "._name" files
// beside an item) and the 60-byte AFP information stream that SMB clients
// exchange. Pure functions over memory; the file system side is in the
// operating-system seam. Every number is big-endian, on every host.
#ifndef RZ_INTERNAL_RZAPPLEDOUBLE_H
#define RZ_INTERNAL_RZAPPLEDOUBLE_H

#include <stddef.h>
#include <stdint.h>

enum {
    kRzFinderInfoSize = 32,  // FileInfo/FolderInfo + the extended part
    kRzMetadataSize = 402,   // the servers' AppleDouble record, exactly
    kRzAfpInfoSize = 60,     // the AFP information stream
    kRzAppleDoubleMagic = 0x00051607,
    kRzAppleDoubleVersion2 = 0x00020000,
    kRzAppleDoubleVersion1 = 0x00010000
};

// Entry IDs of an AppleDouble header.
enum {
    kRzEntryComment = 4,
    kRzEntryFileDates = 8,
    kRzEntryFinderInfo = 9,
    kRzEntryAfpFileInfo = 14,
    kRzEntryPrivateDevice = 0x80444556,  // the servers' own bookkeeping: kept, never made
    kRzEntryPrivateInode = 0x80494E4F,
    kRzEntryPrivateSyncStamp = 0x8053594E,
    kRzEntryPrivateNodeID = 0x8053567E
};

// AFP attributes (the 16-bit word at offset 2 of the AFP file information):
// invisible, kept in step with the Finder's invisible flag; and the three
// inhibit bits an AFP server enforces for a locked file (it refuses to open
// a file with WriteInhibit for writing).
enum {
    kRzAfpAttributeInvisible = 0x0001,
    kRzAfpAttributeWriteInhibit = 0x0020,
    kRzAfpAttributeRenameInhibit = 0x0080,
    kRzAfpAttributeDeleteInhibit = 0x0100
};

// Big-endian fields.
uint16_t RzGetBE16(const unsigned char* p);
uint32_t RzGetBE32(const unsigned char* p);
void RzPutBE16(unsigned char* p, uint16_t v);
void RzPutBE32(unsigned char* p, uint32_t v);

// Finder information fields: type at 0, creator at 4, Finder flags at 8.
inline uint32_t RzFinderInfoType(const unsigned char* fi) {
    return RzGetBE32(fi);
}
inline uint32_t RzFinderInfoCreator(const unsigned char* fi) {
    return RzGetBE32(fi + 4);
}
inline uint16_t RzFinderInfoFlags(const unsigned char* fi) {
    return RzGetBE16(fi + 8);
}

// Finds entry `id` in an AppleDouble header (version 1 or 2). `header` holds
// the first `headerSize` bytes of a container of `totalSize` bytes; the
// descriptor table must lie in `header`, the entry's data within `totalSize`.
// False for a bad magic or version, a truncated table, an entry out of bounds
// or a missing entry.
bool RzAppleDoubleFindEntry(const unsigned char* header, size_t headerSize, size_t totalSize,
                            uint32_t id, uint32_t* offset, uint32_t* length);

// True when `blob` is a metadata record the servers accept: exactly 402
// bytes, magic, version 2, eight entries (comment, dates, Finder info, AFP
// file info and the four private ones) each inside the record and none with
// data in the header, Finder info of 32 bytes and AFP file info of at least
// 4. The servers delete anything else.
bool RzMetadataIsValid(const unsigned char* blob, size_t size);

// Copies the Finder information of a valid record into `fi`; false (and `fi`
// untouched) when the record is not valid.
bool RzMetadataGetFinderInfo(const unsigned char* blob, size_t size, unsigned char* fi);

// Writes `fi` into a valid record and sets the AFP invisible attribute from
// the Finder flag kIsInvisible; every other byte is kept. False for an invalid
// record (left unchanged).
bool RzMetadataSetFinderInfo(unsigned char* blob, size_t size, const unsigned char* fi);

// The AFP attributes of a valid record; false (`attributes` untouched) for an
// invalid one.
bool RzMetadataGetAfpAttributes(const unsigned char* blob, size_t size, uint16_t* attributes);
// Replaces the AFP attributes of a valid record, every other byte kept; false
// (unchanged) for an invalid record.
bool RzMetadataSetAfpAttributes(unsigned char* blob, size_t size, uint16_t attributes);

// Builds a fresh 402-byte record as the servers write one: the eight entries
// in ascending ID order at their fixed offsets, comment and private entries
// empty, `date` (seconds since 2000) as creation, modification and access
// date with the backup date unknown, and the AFP invisible attribute from the
// Finder flags of `fi`.
void RzMetadataBuild(unsigned char* blob, const unsigned char* fi, uint32_t date);

// Seconds since 2000-01-01 00:00:00 UTC as the records store them (signed
// 32-bit, wrapping), from seconds since 1970.
uint32_t RzMetadataDate(int64_t unixSeconds);

// The Finder information in an AFP information stream: 60 bytes (61 with the
// trailing zero some servers store), "AFP\0" and version 0x00000100.
bool RzAfpInfoGetFinderInfo(const unsigned char* data, size_t size, unsigned char* fi);
// Writes `fi` into a valid stream; false (unchanged) otherwise.
bool RzAfpInfoSetFinderInfo(unsigned char* data, size_t size, const unsigned char* fi);

#endif
