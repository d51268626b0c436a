// Byte order and platform information.
//
// The swaps reverse bytes unconditionally; callers ask RzGetEndian() whether
// they need them. The functions are exported under plain C names so that code
// outside the framework can look them up by name.
#ifndef RZ_MAC_RZBYTEORDER_H
#define RZ_MAC_RZBYTEORDER_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>

// Platform codes returned by RzGetPlatform().
enum {
    kRzPlatformMacOSClassic = 0x40000,  // Mac OS before version 9
    kRzPlatformMacOS9 = 0x40001,        // Mac OS 9
    kRzPlatformMacOSX = 0x40002,        // Mac OS X
    kRzPlatformLinux = 0x40003          // Linux
};

extern "C" {

RZ_API short SwapShort(short value);
RZ_API unsigned short SwapUShort(unsigned short value);
RZ_API int32_t SwapLong(int32_t value);
RZ_API uint32_t SwapULong(uint32_t value);

// Swap `count` values in place, in ascending order, and return `values`. A
// null pointer is returned at once; a count of 0 or less swaps nothing.
RZ_API short* SwapShortPtr(short* values, int32_t count);
RZ_API int32_t* SwapLongPtr(int32_t* values, int32_t count);

// 1 on a little-endian host, 0 on a big-endian one.
RZ_API int32_t RzGetEndian();

// The operating system's version in binary-coded decimal, two digits of major
// version and one each of minor and patch version: 0x1049 for 10.4.9. On Linux
// it is the kernel release, each field clamped to what its digits can hold
// (6.1.0 gives 0x0610, 5.15.120 gives 0x0599). 0 when the version cannot be
// read; it is asked again on the next call then.
RZ_API int32_t RzGetSystemVersion();

// One of the kRzPlatform codes. On Mac OS it follows from the system version;
// every other system has a code of its own.
RZ_API int32_t RzGetPlatform();

}  // extern "C"

// True for the systems that end text lines with a single line feed and follow
// Unix conventions: Mac OS X and Linux.
RZ_API bool RzPlatformIsUnix(int32_t platform);

#endif
