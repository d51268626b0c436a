// RzSystem: operating-system services beside files and streams, as static
// members of a class that is never instantiated.
#ifndef RZ_RZSYSTEM_RZSYSTEM_H
#define RZ_RZSYSTEM_RZSYSTEM_H

class RzFileSpec;

class RzSystem {
public:
    // True when the file can be opened for reading. A file that exists but
    // cannot be read counts as absent.
    static bool FileExists(const RzFileSpec& spec);

private:
    RzSystem();
};

#endif
