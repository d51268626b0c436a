#include <Rz/RzSystem/RzSystem.h>

#include <stdio.h>
#include <time.h>

#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzSystem";

#include <Rz/FileSpec/RzFileSpec.h>

bool RzSystem::FileExists(const RzFileSpec& spec) {
    // Existence as the C library sees it: a file that cannot be read counts
    // as absent, a folder as whatever fopen makes of it.
    FILE* file = fopen(spec.GetNativeFullName().c_str(), "r");
    if (!file) return false;
    fclose(file);
    return true;
}

RzDate RzSystem::GetDate() {
    const time_t now = time(nullptr);
    if (now == static_cast<time_t>(-1)) RZ_RAISE(kRzUndefProc);
    struct tm local;
    if (!localtime_r(&now, &local)) RZ_RAISE(kRzUndefProc);
    return RzDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                  local.tm_min, local.tm_sec);
}
