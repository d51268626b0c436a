#include <Rz/internal/RzDosAttrib.h>

#include <stdio.h>
#include <string.h>

namespace {

// Where the parts of a record lie.
struct Layout {
    size_t textSize = 0;       // the text without its zero byte
    bool textOnly = false;     // the record ends after the text
    size_t versionOffset = 0;  // the version and its repetition, 2 bytes each
    size_t fieldsOffset = 0;   // the version's fields
    size_t attributesOffset = 0;
    uint32_t attributes = 0;
};

size_t Align(size_t offset, size_t to) {
    return (offset + to - 1) & ~(to - 1);
}

uint16_t GetLE16(const unsigned char* p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

uint32_t GetLE32(const unsigned char* p) {
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
           (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

void PutLE32(unsigned char* p, uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

// Parses a record as Samba's reader does; false where Samba rejects it.
bool Parse(const unsigned char* record, size_t size, Layout& layout) {
    if (!record) return false;
    const void* end = memchr(record, 0, size);
    if (!end) return false;
    layout.textSize = static_cast<size_t>(static_cast<const unsigned char*>(end) - record);
    size_t offset = layout.textSize + 1;
    layout.textOnly = offset >= size;
    if (layout.textOnly) {
        // The old form: the text is all there is, read as "%x" reads it.
        unsigned int value = 0;
        if (sscanf(reinterpret_cast<const char*>(record), "%x", &value) != 1) return false;
        layout.attributes = value;
        return true;
    }
    layout.versionOffset = Align(offset, 2);
    if (layout.versionOffset + 4 > size) return false;
    const uint16_t version = GetLE16(record + layout.versionOffset);
    if (GetLE16(record + layout.versionOffset + 2) != version) return false;
    static const size_t kFieldsSize[6] = {0, 40, 52, 44, 24, 16};
    if (version < 1 || version > 5) return false;
    layout.fieldsOffset = Align(layout.versionOffset + 4, 4);
    if (layout.fieldsOffset > size || size - layout.fieldsOffset < kFieldsSize[version])
        return false;
    // Version 2 ends with a zero-terminated name.
    const size_t fieldsEnd = layout.fieldsOffset + kFieldsSize[version];
    if (version == 2 && !memchr(record + fieldsEnd, 0, size - fieldsEnd)) return false;
    layout.attributesOffset = layout.fieldsOffset + (version == 1 ? 0 : 4);
    layout.attributes = GetLE32(record + layout.attributesOffset);
    return true;
}

}  // namespace

bool RzDosAttribGet(const unsigned char* record, size_t size, uint32_t* attributes) {
    Layout layout;
    if (!Parse(record, size, layout)) return false;
    *attributes = layout.attributes;
    return true;
}

bool RzDosAttribClear(std::string& record, uint32_t bits) {
    Layout layout;
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(record.data());
    if (!Parse(bytes, record.size(), layout) || !(layout.attributes & bits)) return false;
    const uint32_t attributes = layout.attributes & ~bits;

    std::string text;
    if (layout.textSize > 0 || layout.textOnly) {
        char hex[16];
        snprintf(hex, sizeof hex, "0x%x", attributes);
        text = hex;
    }
    std::string result = text;
    result.push_back('\0');
    if (!layout.textOnly) {
        // The version numbers and the fields keep their alignment relative to
        // the start; the padding before them is zeros, as Samba writes it.
        result.resize(Align(result.size(), 2), '\0');
        result.append(record, layout.versionOffset, 4);
        result.resize(Align(result.size(), 4), '\0');
        const size_t attributesOffset =
            result.size() + (layout.attributesOffset - layout.fieldsOffset);
        result.append(record, layout.fieldsOffset, std::string::npos);
        unsigned char word[4];
        PutLE32(word, attributes);
        result.replace(attributesOffset, 4, reinterpret_cast<const char*>(word), 4);
    }
    // A longer text must not push the record beyond what Samba reads.
    if (result.size() > record.size() && result.size() > kRzDosAttribMaxSize) return false;
    record.swap(result);
    return true;
}
