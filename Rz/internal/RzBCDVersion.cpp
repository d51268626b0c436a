#include <Rz/internal/RzBCDVersion.h>

#include <ctype.h>
#include <stdlib.h>

namespace {

long Clamp(long v, long hi) {
    return v < 0 ? 0 : (v > hi ? hi : v);
}

}  // namespace

int32_t RzBCDVersion(long major, long minor, long patch) {
    major = Clamp(major, 99);
    minor = Clamp(minor, 9);
    patch = Clamp(patch, 9);
    return static_cast<int32_t>(((major / 10) << 12) | ((major % 10) << 8) | (minor << 4) | patch);
}

int32_t RzBCDVersionFromRelease(const char* release) {
    if (!release || !isdigit(static_cast<unsigned char>(release[0]))) return 0;
    long fields[3] = {0, 0, 0};
    const char* p = release;
    for (int i = 0; i < 3; ++i) {
        char* end = nullptr;
        fields[i] = strtol(p, &end, 10);
        if (end == p) break;
        p = end;
        if (*p != '.' || !isdigit(static_cast<unsigned char>(p[1]))) break;
        ++p;
    }
    return RzBCDVersion(fields[0], fields[1], fields[2]);
}
