#include <Rz/FileSpec/RzFileSpec.h>

#include <functional>
#include <string>

#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

namespace {

// Characters packed first one highest, without padding: "?" is 0x3F, "" is 0.
uint32_t C(const char* code) {
    uint32_t v = 0;
    while (*code) v = v << 8 | static_cast<unsigned char>(*code++);
    return v;
}

}  // namespace

TEST(RzFileSpec, TableLookupsTakeTheFirstMatchOrTheFallback) {
    // "JpG" is 'JPEG', not the later 'JFIF'; the fallback is 34.
    EXPECT_EQ(Joined(RzFileSpec::Extension2Index("JpG"), RzFileSpec::TypeID2Index(C("JFIF")),
                     RzFileSpec::Extension2Index(""), RzFileSpec::Extension2Index("zip"),
                     RzFileSpec::TypeID2Index(C("?")), RzFileSpec::TypeID2Index(0),
                     RzFileSpec::Type2Index(eRzTypeUnknown)),
              "10|12|25|34|34|34|34");
    EXPECT_EQ(
        Joined(RzFileSpec::Type2TypeID(eRzTypeJPEG2000), RzFileSpec::Type2TypeID(eRzTypeUnknown),
               RzFileSpec::Type2Extension(eRzTypeJPEG)),
        Joined(C("jp2 "), C("?"), "jpg"));
}

TEST(RzFileSpec, PathPartsAndDerivedCodes) {
    struct Case {
        const char *full, *name, *path, *extension, *base;
        uint32_t type, creator;
    } cases[] = {
        {"/tmp/a.TIFF", "a.TIFF", "/tmp/", "TIFF", "a", C("TIFF"), C("8BIM")},
        {"/tmp/README", "README", "/tmp/", "", "README", 0, 0},
        {"/tmp/a.xyz", "a.xyz", "/tmp/", "xyz", "a.xyz", C("?"), 0},
        {"/tmp/.profile", ".profile", "/tmp/", "", ".profile", C("?"), 0},
        {"/tmp/a.b.icc", "a.b.icc", "/tmp/", "icc", "a.b", C("prof"), C("sync")},
        {"a.", "a.", "", "", "a", C("BINA"), C("****")},
        {".x.y", ".x.y", "", "y", ".x.y", C("?"), 0},
        {"/a.b/file", "file", "/a.b/", "", "file", C("?"), 0},     // the folder's dot counts
        {"m.cie", "m.cie", "", "cie", "m", C("TEXT"), C("ttxt")},  // the type's first creator
        {"", "", "", "", "", 0, 0},
    };
    for (const Case& c : cases) {
        const RzFileSpec s{RzString(c.full)};
        EXPECT_EQ(Joined(s.GetName(), s.GetPath(), s.GetExtension(), s.GetBaseName(), s.GetTypeID(),
                         s.GetCreatorID()),
                  Joined(c.name, c.path, c.extension, c.base, c.type, c.creator));
    }
}

TEST(RzFileSpec, ChangingTypeNameAndCreator) {
    struct Case {
        const char* start;
        std::function<void(RzFileSpec&)> op;
        const char* full;
        const char *type, *creator;
    } cases[] = {
        {"/tmp/a.txt", [](RzFileSpec& s) { s.SetType(eRzTypeJPEG); }, "/tmp/a.jpg", "JPEG", "8BIM"},
        {"/tmp/a.txt", [](RzFileSpec& s) { s.SetType(eRzTypeBinary); }, "/tmp/a", "BINA", "****"},
        {"/a.b/c.txt", [](RzFileSpec& s) { s.SetType(eRzTypeBinary); }, "/a.b/c", "?", ""},
        {"/tmp/x.jpeg", [](RzFileSpec& s) { s.SetTypeID(C("JFIF")), s.AdjustExtension(); },
         "/tmp/x.jpg", "JPEG", "8BIM"},
        {"/tmp/a.txt", [](RzFileSpec& s) { s.SetCreatorID(C("RzTl")), s.AdjustCreatorID(); },
         "/tmp/a.txt", "TEXT", "RzTl"},
        {"/tmp/a.txt", [](RzFileSpec& s) { s.SetCreatorID(C("8BIM")), s.SetCreatorID(C("MACS")); },
         "/tmp/a.txt", "TEXT", "ttxt"},
        {"/tmp/a.txt", [](RzFileSpec& s) { s.CheckExtension("icm"); }, "/tmp/a.txt", "TEXT",
         "ttxt"},
        {"/tmp/a.txt", [](RzFileSpec& s) { s.SetPath("/x"); }, "/x/a.txt", "TEXT", "ttxt"},
        {"/tmp/a", [](RzFileSpec& s) { s.Compose("/x", "/abs/b.gif"); }, "/abs/b.gif", "GIFf",
         "8BIM"},
        {"/tmp/a", [](RzFileSpec& s) { s.Compose("/x", "s/b.gif"); }, "/x/s/b.gif", "GIFf", "8BIM"},
        {"/tmp/a", [](RzFileSpec& s) { s.Compose("", "b.gif"); }, "b.gif", "GIFf", "8BIM"},
    };
    for (const Case& c : cases) {
        RzFileSpec s{RzString(c.start)};
        c.op(s);
        EXPECT_EQ(Joined(s.GetFullName(), s.GetTypeID(), s.GetCreatorID()),
                  Joined(c.full, C(c.type), C(c.creator)))
            << c.start;
    }
}

TEST(RzFileSpec, AbsoluteNamesAndEquality) {
    struct Case {
        const char* s;
        bool absolute;
    } cases[] = {{"C:/x", true}, {"C:\\x", true}, {"C:x", false}, {":Volume", true},
                 {"\\x", true},  {"/", true},     {"x/y", false}, {"", false}};
    for (const Case& c : cases) EXPECT_EQ(RzFileSpec::IsAbsolute(c.s), c.absolute) << c.s;
    RzFileSpec a("/d/x.txt"), b("/d/x.txt");
    b.SetTypeID(C("PICT"));
    EXPECT_TRUE(a == b);  // the codes are not compared
    EXPECT_FALSE(a == RzFileSpec("/d/X.txt"));
}

TEST(RzFileSpec, UniqueNamesOnDisk) {
    RzTempDir t;
    for (const char* name : {"photo.jpg", "photo-001.jpg", "README", "data.zip", "w.txt"})
        ASSERT_TRUE(RzPutFile(t / name));
    for (int i = 1001; i <= 1999; ++i) RzPutFile(t / ("w-" + std::to_string(i).substr(1) + ".txt"));
    struct Case {
        const char *name, *unique;
    } cases[] = {
        {"free.jpg", "free.jpg"},  // a free name is kept
        {"photo.jpg", "photo-002.jpg"},   {"README", "README-001."},
        {"data.zip", "data.zip-001.zip"},  // unknown extensions stay in the base
        {"w.txt", "w-1000.txt"},           // no upper bound
    };
    for (const Case& c : cases) {
        RzFileSpec s{RzString((t / c.name).c_str())};
        s.SetUniqueName();
        EXPECT_EQ(s.GetName(), c.unique) << c.name;
    }
}
