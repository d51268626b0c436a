#include <Rz/internal/RzAppleDouble.h>

#include <string.h>

#include <Rz/Mac/RzMacTypes.h>

namespace {

const size_t kHeaderFixed = 26;  // magic, version, 16 filler bytes, entry count
const size_t kDescriptorSize = 12;

// The record as the servers lay it out: ID, data offset, length when fresh.
struct Entry {
    uint32_t id;
    uint32_t offset;
    uint32_t length;
};
const Entry kMetadataLayout[8] = {
    {kRzEntryComment, 154, 0},          {kRzEntryFileDates, 354, 16},
    {kRzEntryFinderInfo, 122, 32},      {kRzEntryAfpFileInfo, 370, 4},
    {kRzEntryPrivateDevice, 374, 0},    {kRzEntryPrivateInode, 382, 0},
    {kRzEntryPrivateSyncStamp, 390, 0}, {kRzEntryPrivateNodeID, 398, 0},
};

const uint32_t kDateUnknown = 0x80000000u;
const int64_t kSecondsFrom1970To2000 = 946684800;

const unsigned char kAfpSignature[4] = {'A', 'F', 'P', 0};
const uint32_t kAfpVersion = 0x00000100;
const size_t kAfpFinderInfoOffset = 16;

void SyncInvisible(unsigned char* blob, size_t afpOffset, const unsigned char* fi) {
    uint16_t attributes = RzGetBE16(blob + afpOffset + 2);
    if (RzFinderInfoFlags(fi) & kIsInvisible)
        attributes |= kRzAfpAttributeInvisible;
    else
        attributes &= static_cast<uint16_t>(~kRzAfpAttributeInvisible);
    RzPutBE16(blob + afpOffset + 2, attributes);
}

}  // namespace

uint16_t RzGetBE16(const unsigned char* p) {
    return static_cast<uint16_t>((p[0] << 8) | p[1]);
}

uint32_t RzGetBE32(const unsigned char* p) {
    return (static_cast<uint32_t>(p[0]) << 24) | (static_cast<uint32_t>(p[1]) << 16) |
           (static_cast<uint32_t>(p[2]) << 8) | p[3];
}

void RzPutBE16(unsigned char* p, uint16_t v) {
    p[0] = static_cast<unsigned char>(v >> 8);
    p[1] = static_cast<unsigned char>(v);
}

void RzPutBE32(unsigned char* p, uint32_t v) {
    p[0] = static_cast<unsigned char>(v >> 24);
    p[1] = static_cast<unsigned char>(v >> 16);
    p[2] = static_cast<unsigned char>(v >> 8);
    p[3] = static_cast<unsigned char>(v);
}

bool RzAppleDoubleFindEntry(const unsigned char* header, size_t headerSize, size_t totalSize,
                            uint32_t id, uint32_t* offset, uint32_t* length) {
    if (!header || headerSize < kHeaderFixed || headerSize > totalSize) return false;
    if (RzGetBE32(header) != kRzAppleDoubleMagic) return false;
    uint32_t version = RzGetBE32(header + 4);
    if (version != kRzAppleDoubleVersion2 && version != kRzAppleDoubleVersion1) return false;
    size_t count = RzGetBE16(header + 24);
    if (count > (headerSize - kHeaderFixed) / kDescriptorSize) return false;
    for (size_t i = 0; i < count; ++i) {
        const unsigned char* d = header + kHeaderFixed + i * kDescriptorSize;
        if (RzGetBE32(d) != id) continue;
        uint64_t off = RzGetBE32(d + 4), len = RzGetBE32(d + 8);
        if (off + len > totalSize) return false;
        if (offset) *offset = static_cast<uint32_t>(off);
        if (length) *length = static_cast<uint32_t>(len);
        return true;
    }
    return false;
}

bool RzMetadataIsValid(const unsigned char* blob, size_t size) {
    if (!blob || size != kRzMetadataSize) return false;
    if (RzGetBE32(blob + 4) != kRzAppleDoubleVersion2 || RzGetBE16(blob + 24) != 8) return false;
    for (const Entry& e : kMetadataLayout) {
        uint32_t offset = 0, length = 0;
        if (!RzAppleDoubleFindEntry(blob, size, size, e.id, &offset, &length)) return false;
        // Data inside the header would be overwritten by the next write.
        if (length > 0 && offset < kHeaderFixed + 8 * kDescriptorSize) return false;
        if (e.id == kRzEntryFinderInfo && length != kRzFinderInfoSize) return false;
        if (e.id == kRzEntryAfpFileInfo && length < 4) return false;
    }
    return true;
}

bool RzMetadataGetFinderInfo(const unsigned char* blob, size_t size, unsigned char* fi) {
    uint32_t offset = 0;
    if (!RzMetadataIsValid(blob, size)) return false;
    RzAppleDoubleFindEntry(blob, size, size, kRzEntryFinderInfo, &offset, nullptr);
    memcpy(fi, blob + offset, kRzFinderInfoSize);
    return true;
}

bool RzMetadataSetFinderInfo(unsigned char* blob, size_t size, const unsigned char* fi) {
    uint32_t finderOffset = 0, afpOffset = 0;
    if (!RzMetadataIsValid(blob, size)) return false;
    RzAppleDoubleFindEntry(blob, size, size, kRzEntryFinderInfo, &finderOffset, nullptr);
    RzAppleDoubleFindEntry(blob, size, size, kRzEntryAfpFileInfo, &afpOffset, nullptr);
    memmove(blob + finderOffset, fi, kRzFinderInfoSize);
    SyncInvisible(blob, afpOffset, fi);
    return true;
}

bool RzMetadataGetAfpAttributes(const unsigned char* blob, size_t size, uint16_t* attributes) {
    uint32_t afpOffset = 0;
    if (!RzMetadataIsValid(blob, size)) return false;
    RzAppleDoubleFindEntry(blob, size, size, kRzEntryAfpFileInfo, &afpOffset, nullptr);
    *attributes = RzGetBE16(blob + afpOffset + 2);
    return true;
}

bool RzMetadataSetAfpAttributes(unsigned char* blob, size_t size, uint16_t attributes) {
    uint32_t afpOffset = 0;
    if (!RzMetadataIsValid(blob, size)) return false;
    RzAppleDoubleFindEntry(blob, size, size, kRzEntryAfpFileInfo, &afpOffset, nullptr);
    RzPutBE16(blob + afpOffset + 2, attributes);
    return true;
}

void RzMetadataBuild(unsigned char* blob, const unsigned char* fi, uint32_t date) {
    memset(blob, 0, kRzMetadataSize);
    RzPutBE32(blob, kRzAppleDoubleMagic);
    RzPutBE32(blob + 4, kRzAppleDoubleVersion2);
    RzPutBE16(blob + 24, 8);
    unsigned char* d = blob + kHeaderFixed;
    for (const Entry& e : kMetadataLayout) {
        RzPutBE32(d, e.id);
        RzPutBE32(d + 4, e.offset);
        RzPutBE32(d + 8, e.length);
        d += kDescriptorSize;
    }
    memcpy(blob + 122, fi, kRzFinderInfoSize);
    RzPutBE32(blob + 354, date);  // created
    RzPutBE32(blob + 358, date);  // modified
    RzPutBE32(blob + 362, kDateUnknown);
    RzPutBE32(blob + 366, date);  // accessed
    SyncInvisible(blob, 370, fi);
}

uint32_t RzMetadataDate(int64_t unixSeconds) {
    return static_cast<uint32_t>(static_cast<uint64_t>(unixSeconds - kSecondsFrom1970To2000));
}

bool RzAfpInfoGetFinderInfo(const unsigned char* data, size_t size, unsigned char* fi) {
    if (!data || (size != kRzAfpInfoSize && !(size == kRzAfpInfoSize + 1 && data[60] == 0)))
        return false;
    if (memcmp(data, kAfpSignature, 4) != 0 || RzGetBE32(data + 4) != kAfpVersion) return false;
    if (fi) memcpy(fi, data + kAfpFinderInfoOffset, kRzFinderInfoSize);
    return true;
}

bool RzAfpInfoSetFinderInfo(unsigned char* data, size_t size, const unsigned char* fi) {
    if (!RzAfpInfoGetFinderInfo(data, size, nullptr)) return false;
    memmove(data + kAfpFinderInfoOffset, fi, kRzFinderInfoSize);
    return true;
}
