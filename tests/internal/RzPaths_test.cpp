#include <Rz/internal/RzPaths.h>

#include <string>
#include <vector>

#include "support/RzTestSupport.h"

namespace {

std::string Joined(const std::vector<std::string>& parts) {
    std::string s;
    for (const std::string& part : parts) s += "[" + part + "]";
    return s;
}

}  // namespace

TEST(RzPaths, PosixPieces) {
    struct Case {
        const char *path, *folder, *leaf;
    } cases[] = {
        {"/a/b", "/a", "b"}, {"/a", "/", "a"}, {"a", "", "a"}, {"a/", "a", ""}, {"", "", ""}};
    for (const Case& c : cases) {
        EXPECT_EQ(RzPathFolder(c.path), c.folder) << c.path;
        EXPECT_EQ(RzPathLeaf(c.path), c.leaf) << c.path;
    }
    EXPECT_EQ(RzPathJoin("/", "a"), "/a");
    EXPECT_EQ(RzPathJoin("/x", "a"), "/x/a");
    std::string trimmed[] = {"/a//", "a/", "/", "//"};
    for (std::string& path : trimmed) RzPathTrimSlashes(path);
    EXPECT_EQ(Joined(trimmed[0], trimmed[1], trimmed[2], trimmed[3]), "/a|a|/|/");
}

TEST(RzPaths, HFSRelativePaths) {
    struct Case {
        const char *name, *parts;
    } cases[] = {
        {"", ""},
        {"a:b", "[a:b]"},  // a plain name keeps its colons
        {":", ""},
        {":a/b", "[a:b]"},  // in a relative path '/' stands for ':'
        {":sub:file", "[sub][file]"},
        {":sub:", "[sub]"},  // a final ':' only marks a folder
        {"::", "[..]"},
        {":sub::", "[sub][..]"},
        {":::x", "[..][..][x]"},
    };
    for (const Case& c : cases) EXPECT_EQ(Joined(RzHFSPathParts(c.name)), c.parts) << c.name;
    EXPECT_EQ(RzHFSName("a:b:"), "a/b/");
    EXPECT_EQ(RzHFSName(nullptr), "");
}

TEST(RzPaths, ApplicationFolder) {
    struct Case {
        const char *exe, *folder;
        int beside;
    } cases[] = {
        {"/opt/T.app/Contents/MacOS/t", "/opt", 0},
        {"/opt/T.app/Contents/MacOS/t", "/opt/T.app/Contents/MacOS", 1},
        {"/T.app/Contents/MacOS/t", "/", 0},
        {"/opt/.app/Contents/MacOS/t", "/opt/.app/Contents/MacOS", 0},
        {"/opt/bin/t", "/opt/bin", 0},
        {"t", "", 0},
        {nullptr, "", 1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(RzApplicationFolder(c.exe, c.beside), c.folder)
            << (c.exe ? c.exe : "(null)") << c.beside;
}
