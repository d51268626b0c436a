// Linux implementation of the operating-system seam.
#include <Rz/internal/RzOS.h>

#include <ctype.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <Rz/Mac/RzByteOrder.h>

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

int32_t RzOSSystemVersion() {
    struct utsname names;
    if (uname(&names) != 0) return 0;
    return RzBCDVersionFromRelease(names.release);
}

int32_t RzOSPlatform() {
    return kRzPlatformLinux;
}

bool RzOSAppendEveryWrite(FILE* stream) {
    setvbuf(stream, nullptr, _IONBF, 0);
    const int fd = fileno(stream);
    const int flags = fcntl(fd, F_GETFL);
    return flags != -1 && fcntl(fd, F_SETFL, flags | O_APPEND) == 0;
}

void RzOSAdviseLargeBlock(void* p, size_t n) {
    // Transparent huge pages: with the system's setting "madvise" (the usual
    // default) only advised memory gets them. Failure changes nothing.
    const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(p) + page - 1) & ~(page - 1);
    const uintptr_t end = (reinterpret_cast<uintptr_t>(p) + n) & ~(page - 1);
    if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}
