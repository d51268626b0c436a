#include <Rz/internal/RzUserDirs.h>

#include "support/RzTestSupport.h"

TEST(RzUserDirs, LastValidLineWins) {
    struct Case {
        const char *text, *folder;
    } cases[] = {
        {"# c\n  XDG_DOCUMENTS_DIR = \"/srv/docs/\"\n", "/srv/docs"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/My \\\"Docs\\\"\"", "/h/My \"Docs\""},
        {"XDG_DOCUMENTS_DIR=\"$HOME\"", "/h"},
        {"XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DOCUMENTS_DIR=\"/b\"", "/b"},
        {"XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DOCUMENTS_DIR=\"relative\"", "/a"},
        {"XDG_DOCUMENTS_DIR=\"relative/x\"\nXDG_DOCUMENTS_DIR=\"$HOMEx\"", ""},
        {"XDG_DOCUMENTS_DIRS=\"/x\"\nXDG_DOCUMENTS_DIR=/y\nXDG_DOCUMENTS_DIR=\"/z", ""},
        {"XDG_DOCUMENTS_DIR=\"/\"", "/"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(RzUserDirFromText(c.text, "XDG_DOCUMENTS_DIR", "/h"), c.folder) << c.text;
    EXPECT_EQ(RzUserDirFromText(nullptr, "XDG_DOCUMENTS_DIR", "/h"), "");
}
