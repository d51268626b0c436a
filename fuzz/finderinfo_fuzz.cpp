// Finder information containers and the texts the file layer parses, from
// untrusted bytes: AppleDouble headers, server records, AFP information
// streams, user-dirs.dirs texts and Mac traditional Chinese names.
#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include <Rz/internal/RzAppleDouble.h>
#include <Rz/internal/RzFileOS.h>
#include <Rz/internal/RzTextEncoding.h>

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
    RzString dir = RzOSUserDirFromText(text.c_str(), "XDG_DOCUMENTS_DIR", "/home/u");
    if (dir.length() > 0 && dir.c_str()[0] != '/') __builtin_trap();

    unsigned char pascal[256];
    pascal[0] = static_cast<unsigned char>(size > 255 ? 255 : size);
    memcpy(pascal + 1, data, pascal[0]);
    RzString name;
    RzMacChineseTradToUTF8(pascal, name);
    return 0;
}
