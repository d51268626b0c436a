// System versions in the framework's binary-coded decimal form: two digits of
// major version and one each of minor and patch version (0x1049 for 10.4.9).
#ifndef RZ_INTERNAL_RZBCDVERSION_H
#define RZ_INTERNAL_RZBCDVERSION_H

#include <stdint.h>

// The BCD form of a version, each field clamped to what its digits hold:
// 0..99, 0..9 and 0..9.
int32_t RzBCDVersion(long major, long minor, long patch);

// The BCD form of a release text such as "6.1.0-18-amd64": up to three
// numbers separated by '.', missing ones counting as 0. 0 when the text does
// not start with a digit (or is null).
int32_t RzBCDVersionFromRelease(const char* release);

#endif
