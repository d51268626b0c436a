// The tool's pieces that the runs of the program do not pin down: option
// parsing corners, error texts, the dump's quoting, the conversion tables,
// codes and the progress line.
#include <sstream>
#include <string>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzData/RzDataBase.h>

#include "RzTool.h"
#include "RzToolDb.h"
#include "RzToolFiles.h"
#include "RzToolText.h"
#include "support/RzTempDir.h"
#include "support/RzTestSupport.h"

TEST(RzToolUnits, CommandLineWords) {
    struct Case {
        std::vector<std::string> words;
        const char* parsed;
    } cases[] = {
        {{"--depth=-2", "-n", "-5", "-"}, "-2|-5||-"},  // negative numbers, standard input
        {{"-.5", "--int", "--", "--int", "-x"}, "none|none|int|-.5|--int|-x"},
        {{"--depth", "1", "--depth", "2"}, "2|none|"},
        {{"--int=1"}, "usage: option '--int' takes no value"},
    };
    for (const Case& c : cases) {
        std::string text;
        try {
            const RzToolArgs a(c.words, {{"--depth", true}, {"-n", true}, {"--int", false}});
            text = a.Value("--depth", "none") + "|" + a.Value("-n", "none") + "|" +
                   (a.Has("--int") ? "int" : "");
            for (const std::string& o : a.Operands()) text += "|" + o;
        } catch (const RzToolUsageError& e) {
            text = "usage: " + e.message;
        }
        EXPECT_EQ(text, c.parsed);
    }
    EXPECT_EQ(RzToolRealText(-1e-300), "-1e-300");
}

TEST(RzToolUnits, ErrorTexts) {
    struct Case {
        uint32_t code;
        const char* name;
        const char* text;
    } cases[] = {
        {19, "RzFormatErr", "RzFormatErr (19)"},
        {12, "FileNotOpen (for reading): /x", "RzFileNotOpen (12): FileNotOpen (for reading): /x"},
        {0xFFFFFFD5u, "err", "err (-43): fnfErr, file not found"},
        {0xFFFFFFFFu, "err", "err (-1)"},
        {68, "System error: 5", "System error: 5 (68)"},
    };
    for (const Case& c : cases) EXPECT_EQ(RzToolErrorText(RzError(c.code, c.name, "U", 1)), c.text);
    EXPECT_EQ(RzToolResultText(-9999), "error -9999");
}

TEST(RzToolUnits, DumpNamesEveryEntryOnce) {
    struct Word {
        const char* text;
        const char *asKey, *asValue;
    } words[] = {
        {"", "\"\"", "\"\""},
        {"two words", "\"two words\"", "two words"},
        {" lead", "\" lead\"", "\" lead\""},
        {"a/b[1]", "\"a/b[1]\"", "a/b[1]"},
        {"\"q\" \\", "\"\\\"q\\\" \\\\\"", "\"\\\"q\\\" \\\\\""},
        {"t\tn\nr\r\x01\x7F", "\"t\\tn\\nr\\r\\x01\\x7F\"", "\"t\\tn\\nr\\r\\x01\\x7F\""},
        {"caf\xC3\xA9=", "caf\xC3\xA9=", "caf\xC3\xA9="},
    };
    for (const Word& w : words)
        EXPECT_EQ(Joined(RzToolDumpKey(w.text), RzToolDumpValue(w.text)),
                  Joined(w.asKey, w.asValue))
            << w.text;

    RzDataBase* db = new RzDataBase;
    db->ReadFromString("x = 1\ny = 2\nx = 3\n{\n\tz = 4\n\tz = 5\n}\nx = 6\ny = 7\n");
    std::string lines;
    RzToolDumpEntries(*db, "p", [&](const std::string& path, const std::string& value) {
        lines += path + "=" + value + ";";
    });
    EXPECT_EQ(lines, "p/x=1;p/y=2;p/x[2]=3;p/x[2]/z=4;p/x[2]/z[2]=5;p/x[3]=6;p/y[2]=7;");
    // Any depth, without recursion.
    std::string deep = "k";
    for (int i = 1; i < 100000; ++i) deep += "/k";
    db->SetString(RzString(deep.c_str()), "v");
    size_t count = 0, longest = 0;
    RzToolDumpEntries(*db, "", [&](const std::string& path, const std::string&) {
        ++count, longest = std::max(longest, path.size());
    });
    EXPECT_EQ(Joined(count, longest), Joined(7 + 100000, deep.size()));
    db->Delete();
}

TEST(RzToolUnits, ConversionTables) {
    struct Case {
        RzToolCharset from, to;
        std::string in, out;
    } cases[] = {
        {eRzToolMacRoman, eRzToolLatin1, "\x8E\xA5\xCD", "\xE9\x82\x90"},
        {eRzToolLatin1, eRzToolMacRoman, "\x90\xD5", "\xCD\xD5"},
        {eRzToolLatin1, eRzToolUTF8, std::string("\xE9\0x", 3), std::string("\xC3\xA9\0x", 4)},
        {eRzToolUTF8, eRzToolLatin1, "\xE2\x82\xAC", "?"},
        {eRzToolUTF8, eRzToolLatin1,
         "a\xC0\x80"
         "b\xC3",
         std::string("a\0b\x03", 4)},
        {eRzToolUTF8, eRzToolUTF16, "A\xF0\x9F\x98\x80", std::string("\0A\xF6\0", 4)},
        {eRzToolUTF16, eRzToolUTF8, std::string("\xD8\x3D\xDE\0", 4), "\xED\xA0\xBD\xED\xB8\x80"},
        {eRzToolUTF16, eRzToolMacRoman, std::string("\0\xE9\0\0\x20\x22", 6),
         std::string("\x8E\0?", 3)},  // no bullet in ISO-8859-1, the way between
        {eRzToolUTF8, eRzToolUTF8, "\xFF\x80", "\xFF\x80"},
    };
    for (const Case& c : cases) {
        std::ostringstream out;
        RzToolConverter converter(c.from, c.to, out);
        for (char ch : c.in) converter.Feed(&ch, 1);
        converter.Finish();
        EXPECT_EQ(out.str(), c.out) << c.in;
    }
}

TEST(RzToolUnits, Codes) {
    EXPECT_EQ(Joined(RzToolCodeText(0x54455854), RzToolCodeText(0x6A703220), RzToolCodeText(0x3F),
                     RzToolCodeText(0)),
              "'TEXT'|'jp2 '|0x0000003F|0");
    EXPECT_EQ(Joined(RzToolParseCode("TEXT", "T"), RzToolParseCode("jp2", "T"),
                     RzToolParseCode("0x3f", "T"), RzToolParseCode("0xZZ", "T")),
              Joined(0x54455854u, 0x6A703220u, 0x3Fu, 0x30785A5Au));
    for (const char* bad : {"", "ABCDE", "0x123456789"})
        EXPECT_THROW(RzToolParseCode(bad, "T"), RzToolUsageError) << bad;
}

TEST(RzToolUnits, ProgressLineOfLongWalks) {
    RzTempDir t;
    MakeFiles(t, {"a", "b", "c", "d", "e", "f"});
    static uint32_t now;
    for (bool terminal : {false, true}) {
        std::istringstream in;
        std::ostringstream out, err;
        now = 0;
        // Each look at the clock is 200 ms later: nothing in the first half
        // second, then at most one line in 250 ms.
        RzToolIO io{in, out, err, terminal, [] { return now += 200; }};
        EXPECT_EQ(RzToolLs({t.path()}, io), 0);
        EXPECT_EQ(err.str(),
                  terminal ? "\rrz ls: 3 files, 0 folders\rrz ls: 5 files, 0 folders\r\x1B[K" : "");
    }
}
