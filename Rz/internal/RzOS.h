// The operating-system seam. Everything the framework needs from the system
// that is not the C library is declared here and implemented once per system
// (RzOS_linux.cpp); the shared logic above it never tests for a platform.
#ifndef RZ_INTERNAL_RZOS_H
#define RZ_INTERNAL_RZOS_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

// The system version in the framework's BCD form, or 0 when it cannot be read.
int32_t RzOSSystemVersion();

// The platform code of this system, or 0 when it is to be derived from the
// system version (Mac OS).
int32_t RzOSPlatform();

// BCD form of a version: two digits of major, one of minor, one of patch;
// each field is clamped to 0..99, 0..9 and 0..9.
int32_t RzBCDVersion(long major, long minor, long patch);

// Reads "major.minor.patch..." from a release text such as "6.1.0-18-amd64";
// missing fields count as 0. Returns 0 when the text starts with no number.
int32_t RzBCDVersionFromRelease(const char* release);

// Makes every later write to the open stream go to the end of its file in
// one piece, also when other processes append to the same file: the
// descriptor is put in append mode and the stream unbuffered, so that each
// fwrite is one append. Must be called before any other operation on the
// stream. Returns false when the descriptor cannot be changed (the stream
// then writes where it is positioned).
bool RzOSAppendEveryWrite(FILE* stream);

// Tells the system that the n bytes at p are a large block about to be
// written through, so that it may back the block with large pages: writing
// fresh memory for the first time then takes far fewer page faults. Does
// nothing where the system cannot.
void RzOSAdviseLargeBlock(void* p, size_t n);

#endif
