// Unlocks the file PATH with RzSystem::UnLockFile, for the interoperability
// check with a real SMB server (finderinfo_samba.sh), where the rz tool
// stamps and reads the Finder information. Exits 2 on a usage error.
#include <stdio.h>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/RzSystem/RzSystem.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: rz_unlock PATH\n");
        return 2;
    }
    RzFileSpec spec{RzString(argv[1])};
    RzSystem::UnLockFile(spec);
    return 0;
}
