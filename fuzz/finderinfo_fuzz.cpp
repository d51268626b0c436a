// Finder information containers and the texts the file layer parses, from
// untrusted bytes: AppleDouble headers, server records, AFP information
// streams, user-dirs.dirs texts, ':' relative paths, kernel releases and Mac
// traditional Chinese names.
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <Rz/internal/RzAppleDouble.h>
#include <Rz/internal/RzBCDVersion.h>
#include <Rz/internal/RzPaths.h>
#include <Rz/internal/RzTextEncoding.h>
#include <Rz/internal/RzUserDirs.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint32_t offset = 0, length = 0;
    if (RzAppleDoubleFindEntry(data, size, size, kRzEntryFinderInfo, &offset, &length) &&
        (offset > size || length > size - offset))
        __builtin_trap();

    std::vector<unsigned char> copy(data, data + size);
    unsigned char fi[kRzFinderInfoSize];
    if (RzMetadataGetFinderInfo(copy.data(), copy.size(), fi)) {
        fi[8] ^= 0x40;  // toggle invisibility and write it back
        if (!RzMetadataSetFinderInfo(copy.data(), copy.size(), fi) ||
            !RzMetadataIsValid(copy.data(), copy.size()))
            __builtin_trap();
    }
    if (RzAfpInfoGetFinderInfo(copy.data(), copy.size(), fi) &&
        !RzAfpInfoSetFinderInfo(copy.data(), copy.size(), fi))
        __builtin_trap();

    std::string text(reinterpret_cast<const char*>(data), size);
    const std::string dir = RzUserDirFromText(text.c_str(), "XDG_DOCUMENTS_DIR", "/home/u");
    if (!dir.empty() && dir[0] != '/') __builtin_trap();
    // Every part names one item: none is empty, and the parts of a relative
    // path hold no '/'.
    for (const std::string& part : RzHFSPathParts(text))
        if (part.empty() || (text[0] == ':' && part.find('/') != std::string::npos))
            __builtin_trap();
    // Four decimal digits.
    const int32_t bcd = RzBCDVersionFromRelease(text.c_str());
    for (int shift = 0; shift < 16; shift += 4)
        if (((bcd >> shift) & 0xF) > 9) __builtin_trap();
    if (bcd >> 16) __builtin_trap();

    unsigned char pascal[256];
    pascal[0] = static_cast<unsigned char>(size > 255 ? 255 : size);
    memcpy(pascal + 1, data, pascal[0]);
    RzString name;
    RzMacChineseTradToUTF8(pascal, name);
    return 0;
}
