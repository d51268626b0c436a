// RzSystem: operating-system services beside files and streams, as static
// members of a class that is never instantiated.
#ifndef RZ_RZSYSTEM_RZSYSTEM_H
#define RZ_RZSYSTEM_RZSYSTEM_H

#include <Rz/RzSystem/RzDate.h>

class RzFileSpec;

class RzSystem {
public:
    // True when the file can be opened for reading. A file that exists but
    // cannot be read counts as absent.
    static bool FileExists(const RzFileSpec& spec);

    // The local wall-clock time to the second, through RzDate's clamping (a
    // leap second reads as 59). "RzUndefProc" (1) when the clock cannot be
    // read or broken down.
    static RzDate GetDate();

private:
    RzSystem();
};

#endif
