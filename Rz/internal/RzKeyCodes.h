// The Mac's virtual key codes for the keys of a Linux keyboard. A Mac
// program asks for keys by their place on an Apple keyboard; an Apple
// keyboard under Linux reports each key as a Linux input code (Command as
// the left Super key, Option as Alt), and X numbers its keys by the input
// code plus 8. docs/platform.md lists the whole table.
#ifndef RZ_INTERNAL_RZKEYCODES_H
#define RZ_INTERNAL_RZKEYCODES_H

#include <stdint.h>

// The Mac virtual key code (0..127) of the Linux input code `code`, or -1 for
// a key the Mac's key map has no place for.
int RzMacKeyOfLinuxKey(uint32_t code);

// Translates an X key map (32 bytes, bit k % 8 of byte k / 8 set while the
// key with X key code k is down) into the Mac's key map (16 bytes, the same
// layout for virtual key codes 0..127). Keys without a Mac code are left out;
// two keys with one Mac code (Insert and Help) set the same bit.
void RzMacKeysFromXKeys(const uint8_t xKeys[32], uint8_t macKeys[16]);

#endif
