// The display contrast, kept in the user's preferences folder (a temporary
// one here), with a stand-in gsettings for the desktop's setting.
#include <Rz/Mac/RzContrast.h>

#include <dirent.h>
#include <locale.h>
#include <math.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/RzStubPrograms.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

// A fresh preferences folder, and a desktop that asks for high contrast or
// not (or has no setting at all).
struct Preferences {
    enum Desktop { kNoSetting, kNormal, kHigh };
    explicit Preferences(Desktop desktop) {
        stubs.env.Set("XDG_CONFIG_HOME", (stubs.dir / "config").c_str());
        if (desktop != kNoSetting)
            stubs.Add("gsettings", desktop == kHigh ? "echo true" : "echo false");
    }
    std::string File() const { return stubs.dir / "config/rz/com.apple.universalaccess"; }
    void Store(const std::string& text) const {
        mkdir((stubs.dir / "config").c_str(), 0700);
        mkdir((stubs.dir / "config/rz").c_str(), 0700);
        RzPutFile(File(), text);
    }
    std::vector<std::string> Folder() const {
        std::vector<std::string> names;
        if (DIR* d = opendir((stubs.dir / "config/rz").c_str())) {
            while (struct dirent* e = readdir(d))
                if (e->d_name[0] != '.') names.push_back(e->d_name);
            closedir(d);
        }
        return names;
    }
    RzStubPrograms stubs;
};

TEST(RzContrast, ReadsTheStoredValueElseTheDesktops) {
    const struct {
        const char* stored;  // null: no file
        Preferences::Desktop desktop;
        double value;
    } cases[] = {
        {nullptr, Preferences::kNoSetting, 0.0},
        {nullptr, Preferences::kHigh, 1.0},
        {"other = 1\n", Preferences::kHigh, 1.0},
        {"contrast = 0.25\n", Preferences::kHigh, 0.25},
        {"contrast = high\n", Preferences::kHigh, 0.0},  // no number
        {"contrast = 0.5abc\n", Preferences::kNormal, 0.0},
        {"contrast = \" 0.5 \"\n", Preferences::kNormal, 0.5},
        {"{\n<\"contrast\" = \"0.75\">\n}\n", Preferences::kNormal, 0.75},  // protected form
        {"contrast = 0.5\n\"unclosed = 1\n", Preferences::kNormal, 0.5},    // damaged after it
        {"a =\n{\n\tcontrast = 0.3\n}\n", Preferences::kHigh, 1.0},         // not at the top level
    };
    for (const auto& c : cases) {
        Preferences prefs(c.desktop);
        if (c.stored) prefs.Store(c.stored);
        EXPECT_EQ(GetMacContrastEnhancement(), c.value) << (c.stored ? c.stored : "no file");
    }
}

TEST(RzContrast, StoresANewValueOnly) {
    Preferences prefs(Preferences::kHigh);
    // What the desktop says already is no new value.
    EXPECT_FALSE(SetMacContrastEnhancement(1.0));
    EXPECT_NE(access(prefs.File().c_str(), F_OK), 0);

    const double values[] = {0.0, 1e300, 2.0 / 3.0};
    for (double v : values) {
        EXPECT_TRUE(SetMacContrastEnhancement(v)) << v;
        EXPECT_EQ(GetMacContrastEnhancement(), v) << "read back exactly";
        EXPECT_FALSE(SetMacContrastEnhancement(v)) << v;
    }
    EXPECT_EQ(FileText(prefs.File()), "contrast = 0.6666666666666666\n");
    EXPECT_EQ(prefs.Folder(), std::vector<std::string>{"com.apple.universalaccess"})
        << "no file left beside it";

    // Not a number is never the value stored, so it is always written.
    EXPECT_TRUE(SetMacContrastEnhancement(NAN));
    EXPECT_TRUE(isnan(GetMacContrastEnhancement()));
    EXPECT_TRUE(SetMacContrastEnhancement(NAN));
}

TEST(RzContrast, KeepsTheOtherEntries) {
    Preferences prefs(Preferences::kNormal);
    prefs.Store("#by hand\nname = \"a b\"\ncontrast = 0.50\nsub =\n{\n\tx = 1\n}\n");
    EXPECT_FALSE(SetMacContrastEnhancement(0.5)) << "0.50 is 0.5: nothing written";
    EXPECT_EQ(FileText(prefs.File()).substr(0, 9), "#by hand\n");
    EXPECT_TRUE(SetMacContrastEnhancement(0.125));
    EXPECT_EQ(FileText(prefs.File()), "name = \"a b\"\ncontrast = 0.125\nsub = \n{\n\tx = 1\n}\n");
}

TEST(RzContrast, WritesTheSameTextInEveryLocale) {
    Preferences prefs(Preferences::kNormal);
    const std::string saved = setlocale(LC_NUMERIC, nullptr);
    // A German locale writes 0,5; where none is installed, one is made.
    const std::string made = prefs.stubs.dir / "locales";
    mkdir(made.c_str(), 0700);
    if (!setlocale(LC_NUMERIC, "de_DE.UTF-8") &&
        system(
            ("PATH=/usr/bin:/bin localedef -i de_DE -f UTF-8 " + made + "/de_DE.UTF-8 2>/dev/null")
                .c_str()) == 0) {
        prefs.stubs.env.Set("LOCPATH", made.c_str());
    }
    if (!setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "no German locale, and localedef failed";
    const bool stored = SetMacContrastEnhancement(0.5);
    const double read = GetMacContrastEnhancement();
    setlocale(LC_NUMERIC, saved.c_str());
    EXPECT_TRUE(stored);
    EXPECT_EQ(read, 0.5);
    EXPECT_EQ(FileText(prefs.File()), "contrast = 0.5\n");
}

TEST(RzContrast, NoPreferencesFolder) {
    Preferences prefs(Preferences::kNormal);
    RzPutFile(prefs.stubs.dir / "file");
    prefs.stubs.env.Set("XDG_CONFIG_HOME", (prefs.stubs.dir / "file/config").c_str());
    EXPECT_FALSE(SetMacContrastEnhancement(0.5));
    EXPECT_EQ(GetMacContrastEnhancement(), 0.0);
}

}  // namespace
