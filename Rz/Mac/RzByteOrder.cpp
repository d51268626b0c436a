#include <Rz/Mac/RzByteOrder.h>

#include <Rz/internal/RzOS.h>

namespace {

// Values computed on first use and kept once valid. Races only compute the
// same value twice.
int32_t gEndian = -1;
int32_t gSystemVersion = 0;
int32_t gPlatform = 0;

}  // namespace

short SwapShort(short value) {
    return static_cast<short>(SwapUShort(static_cast<unsigned short>(value)));
}

unsigned short SwapUShort(unsigned short value) {
    return static_cast<unsigned short>((value >> 8) | (value << 8));
}

int32_t SwapLong(int32_t value) {
    return static_cast<int32_t>(SwapULong(static_cast<uint32_t>(value)));
}

uint32_t SwapULong(uint32_t value) {
    return (value >> 24) | ((value >> 8) & 0x0000FF00u) | ((value << 8) & 0x00FF0000u) |
           (value << 24);
}

short* SwapShortPtr(short* values, int32_t count) {
    if (!values) return values;
    for (int32_t i = 0; i < count; ++i) values[i] = SwapShort(values[i]);
    return values;
}

int32_t* SwapLongPtr(int32_t* values, int32_t count) {
    if (!values) return values;
    for (int32_t i = 0; i < count; ++i) values[i] = SwapLong(values[i]);
    return values;
}

int32_t RzGetEndian() {
    if (gEndian < 0) {
        const uint16_t one = 1;
        gEndian = *reinterpret_cast<const unsigned char*>(&one) != 0 ? 1 : 0;
    }
    return gEndian;
}

int32_t RzGetSystemVersion() {
    if (gSystemVersion == 0) gSystemVersion = RzOSSystemVersion();
    return gSystemVersion;
}

int32_t RzGetPlatform() {
    if (gPlatform == 0) {
        gPlatform = RzOSPlatform();
        if (gPlatform == 0) {
            // Mac OS: the family follows from the version.
            const int32_t version = RzGetSystemVersion();
            if (version > 0x0FFF)
                gPlatform = kRzPlatformMacOSX;
            else if (version >= 0x0900)
                gPlatform = kRzPlatformMacOS9;
            else
                gPlatform = kRzPlatformMacOSClassic;
        }
    }
    return gPlatform;
}

bool RzPlatformIsUnix(int32_t platform) {
    return platform == kRzPlatformMacOSX || platform == kRzPlatformLinux;
}
