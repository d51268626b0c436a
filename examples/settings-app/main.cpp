// What a colour application does with its settings when it starts and quits:
// it loads them (a first run finds none), reads every setting with a typed
// getter that stores the default it hands out (so the saved file lists every
// setting the application knows), changes a few, and saves the file, which a
// crash at any moment leaves with the old settings or the new ones.
//
//     settings-app [FILE [DOCUMENT]]
//
// FILE defaults to colorapp.settings in the preferences folder (~/.config);
// DOCUMENT, when given, goes to the front of the recent files.
#include <Rz/Rz.h>

#include <stdio.h>

namespace {

const int kRecentFiles = 4;

// Puts `document` first in the list of recent files ("recent/1" ...), without
// repeating it, keeping at most kRecentFiles.
void AddRecent(RzDataBase* prefs, const RzString& document) {
    RzDataBase* recent = prefs->GetDB("recent", true);
    RzString kept[kRecentFiles];
    int count = 0;
    kept[count++] = document;
    const int stored = prefs->GetInt("recent/count", 0, false);
    for (int i = 1; i <= stored && count < kRecentFiles; ++i) {
        const RzString key = RzString().Printf("%d", i);
        const RzString file = recent->GetString(key, "", false);
        if (file.length() > 0 && file != document) kept[count++] = file;
    }
    recent->Clear();
    recent->SetInt("count", count);
    for (int i = 0; i < count; ++i) recent->SetString(RzString().Printf("%d", i + 1), kept[i]);
}

}  // namespace

int main(int argc, char** argv) {
    RzFileSpec file(RzString("colorapp.settings"));
    if (argc > 1)
        file = RzFileSpec(RzString(argv[1]));
    else
        file.SetPath(eRzFolderPreferences);

    RzDataBase* prefs = new RzDataBase;
    int status = 0;
    try {
        // A settings file that is there but cannot be read is an error: the
        // application must not replace it with its defaults.
        if (RzSystem::FileExists(file)) prefs->ReadFromFile(file);

        const int launches = prefs->GetInt("app/launches", 0, true);
        const double gamma = prefs->GetDouble("display/main/gamma", 2.2, true);
        const bool softproof = prefs->GetBoolean("display/softproof", false, true);
        const RzString intent = prefs->GetString("proofing/intent", "perceptual", true);
        prefs->GetInt("window/width", 1024, true);
        prefs->GetInt("window/height", 768, true);

        prefs->SetInt("app/launches", launches + 1);
        prefs->SetString("app/lastrun", RzSystem::GetDate().GetString());
        if (argc > 2) AddRecent(prefs, RzString(argv[2]));

        prefs->WriteToFile(file);
        printf("launch %d: gamma %g, soft proof %s, intent %s; saved %s\n", launches + 1, gamma,
               softproof ? "on" : "off", intent.c_str(), file.GetFullName().c_str());
    } catch (const RzError& e) {
        // Code 12 names the file it could not open; the others say what failed.
        fprintf(stderr, "settings-app: %s: %s\n", e.what(), e.GetErrName());
        status = 1;
    }
    prefs->Delete();
    return status;
}
