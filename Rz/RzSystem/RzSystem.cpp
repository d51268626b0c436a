#include <Rz/RzSystem/RzSystem.h>

#include <stdio.h>

#include <Rz/FileSpec/RzFileSpec.h>

bool RzSystem::FileExists(const RzFileSpec& spec) {
    // Existence as the C library sees it: a file that cannot be read counts
    // as absent, a folder as whatever fopen makes of it.
    FILE* file = fopen(spec.GetNativeFullName().c_str(), "r");
    if (!file) return false;
    fclose(file);
    return true;
}
