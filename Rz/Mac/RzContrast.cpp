#include <Rz/Mac/RzContrast.h>

#include <stdio.h>

#include <charconv>
#include <string>
#include <system_error>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/Mac/RzMacToolsOSX.h>
#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzDataBase.h>
#include <Rz/internal/RzOS.h>

namespace {

// The folder of the framework's own preferences, inside the user's
// preferences folder, and the file of the accessibility preferences there.
const char kFolderName[] = "rz";
const char kFileName[] = "com.apple.universalaccess";
const char kContrastKey[] = "contrast";

// What the desktop's high-contrast setting reads as.
const double kHighContrast = 1.0;

// The file's path; null when there is no preferences folder. With `create`
// the folders on the way are made when missing.
RzString ContrastFile(bool create) {
    short volume = 0;
    int32_t folderID = 0;
    if (RzOSFindFolder(kRzUserDomain, kRzPreferencesFolderType, create, volume, folderID) != noErr)
        return RzString();
    if (create) {
        FSRef preferences;
        if (RzOSFolderMakeRef(volume, folderID, preferences) == noErr)
            RzOSCreateDirectory(preferences, kFolderName);  // dupFNErr when it is there
    }
    const RzString folder = RzMacGetPosixPath(volume, folderID);
    if (folder.length() == 0) return RzString();
    return folder + RzString(kFolderName) + RzString("/") + RzString(kFileName);
}

// The settings in the file, as far as they can be read; an empty database
// when there is no file. Read with the C library: a preference is read
// often, and a file stream would resolve the path on the way.
void ReadSettings(const RzString& file, RzDataBase& settings) {
    if (file.length() == 0) return;
    FILE* in = fopen(file.c_str(), "rb");
    if (!in) return;
    std::string text;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, in)) > 0) text.append(buffer, n);
    fclose(in);
    if (text.size() > 0x7FFFFFFF) return;
    try {
        settings.ReadFromString(RzString(text.data(), static_cast<int32_t>(text.size()), false));
    } catch (const RzError&) {
        // A damaged file holds the entries before the damage.
    }
}

// A stored text as a number: the whole text, blanks around it allowed, in
// the C locale's form whatever the process's locale is, so that every
// program of the user reads what another wrote.
bool ParseNumber(const RzString& text, double& value) {
    const char* p = text.c_str();
    const char* end = p + text.length();
    while (p < end && (*p == ' ' || *p == '\t')) ++p;
    while (end > p && (end[-1] == ' ' || end[-1] == '\t')) --end;
    if (p < end && *p == '+') ++p;
    const std::from_chars_result r = std::from_chars(p, end, value);
    return r.ec == std::errc() && r.ptr == end && end > p;
}

// The shortest text that reads back as exactly `value`.
RzString FormatNumber(double value) {
    char text[64];
    const std::to_chars_result r = std::to_chars(text, text + sizeof text, value);
    return RzString(text, static_cast<int32_t>(r.ptr - text), false);
}

double CurrentValue(RzDataBase& settings) {
    const int i = settings.GetIndex(RzString(kContrastKey));
    if (i < 0) return RzOSDesktopHighContrast() ? kHighContrast : 0.0;
    double value = 0.0;
    return ParseNumber(settings.GetIndexedValue(i), value) ? value : 0.0;
}

}  // namespace

double GetMacContrastEnhancement() {
    RzDataBase settings;
    ReadSettings(ContrastFile(false), settings);
    return CurrentValue(settings);
}

bool SetMacContrastEnhancement(double value) {
    try {
        RzDataBase settings;
        ReadSettings(ContrastFile(false), settings);
        if (CurrentValue(settings) == value) return false;
        const RzString file = ContrastFile(true);
        if (file.length() == 0) return false;
        settings.SetString(RzString(kContrastKey), FormatNumber(value));
        settings.WriteToFile(RzFileSpec(file));  // replaced whole, crash-safe
        return true;
    } catch (const RzError&) {
        return false;
    }
}
