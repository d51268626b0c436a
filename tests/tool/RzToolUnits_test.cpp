// The tool's pieces called directly: the command line, error texts, the dump
// format, streamed conversions and hexadecimal text, codes, the progress line.
#include <random>
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

namespace {

std::string Parsed(const std::vector<std::string>& words) {
    try {
        const RzToolArgs a(words, {{"--depth", true}, {"-n", true}, {"--int", false}});
        std::string text = a.Value("--depth", "none") + "|" + a.Value("-n", "none") + "|" +
                           (a.Has("--int") ? "int" : "");
        for (const std::string& o : a.Operands()) text += "|" + o;
        return text;
    } catch (const RzToolUsageError& e) {
        return "usage: " + e.message;
    }
}

// `bytes` converted in pieces of `piece` bytes (0: at once).
std::string Converted(RzToolCharset from, RzToolCharset to, const std::string& bytes,
                      size_t piece = 0) {
    std::ostringstream out;
    RzToolConverter c(from, to, out);
    for (size_t at = 0; at < bytes.size(); at += piece ? piece : bytes.size())
        c.Feed(bytes.data() + at, std::min(bytes.size() - at, piece ? piece : bytes.size()));
    c.Finish();
    return out.str();
}

std::string Decoded(const std::string& text, size_t piece) {
    std::ostringstream out;
    try {
        RzToolHexDecoder d(out, "in");
        for (size_t at = 0; at < text.size(); at += piece)
            d.Feed(text.data() + at, std::min(piece, text.size() - at));
        d.Finish();
    } catch (const RzToolFailure& e) {
        return e.message;
    }
    return out.str();
}

}  // namespace

TEST(RzToolUnits, CommandLineWords) {
    struct Case {
        std::vector<std::string> words;
        const char* parsed;
    } cases[] = {
        {{"a", "--depth", "3", "b"}, "3|none||a|b"},
        {{"--depth=-2", "-n", "-5", "-"}, "-2|-5||-"},  // negative numbers, standard input
        {{"-.5", "--int", "--", "--int", "-x"}, "none|none|int|-.5|--int|-x"},
        {{"--depth", "1", "--depth", "2"}, "2|none|"},
        {{"--depth"}, "usage: option '--depth' needs a value"},
        {{"--int=1"}, "usage: option '--int' takes no value"},
        {{"-x"}, "usage: unknown option '-x'"},
    };
    for (const Case& c : cases) EXPECT_EQ(Parsed(c.words), c.parsed);
    EXPECT_EQ(RzToolRealText(0.1), "0.1");
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
    EXPECT_EQ(RzToolResultText(-1407), "errFSNotAFolder (-1407): not a folder");
    EXPECT_EQ(RzToolResultText(-9999), "error -9999");
}

TEST(RzToolUnits, DumpNamesEveryEntryOnce) {
    struct Word {
        const char* text;
        const char *asKey, *asValue;
    } words[] = {
        {"plain", "plain", "plain"},
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

TEST(RzToolUnits, LinesAndColumns) {
    const std::string text = "ab\ncd\r\nef\rg";
    const int expected[][2] = {{1, 1}, {1, 3}, {2, 1}, {2, 3}, {2, 4}, {3, 1}, {3, 3}, {4, 1}};
    const size_t at[] = {0, 2, 3, 5, 6, 7, 9, 10};
    for (size_t i = 0; i < sizeof at / sizeof *at; ++i) {
        int line = 0, column = 0;
        RzToolLineColumn(text.data(), text.size(), at[i], line, column);
        EXPECT_EQ(Joined(line, column), Joined(expected[i][0], expected[i][1])) << at[i];
    }
}

TEST(RzToolUnits, ConversionsDoNotDependOnBlocks) {
    const RzToolCharset sets[] = {eRzToolMacRoman, eRzToolLatin1, eRzToolUTF8, eRzToolUTF16};
    std::mt19937 random(7);
    std::string junk = "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xC0\x80 \xED\xA0\xBD";
    for (int i = 0; i < 3000; ++i)
        junk += static_cast<char>(random() % 5 ? random() % 255 + 1 : 0x80);
    junk += '\0';
    junk += "\xFC\x80\x80";  // an unfinished sequence at the very end
    for (RzToolCharset from : sets)
        for (RzToolCharset to : sets) {
            const std::string whole = Converted(from, to, junk);
            for (size_t piece : {1, 2, 3, 5, 4096})
                EXPECT_EQ(Converted(from, to, junk, piece), whole) << from << to << piece;
        }
    // One result per step of the framework's decoder, decoded zeros included.
    std::string noZeros = junk.substr(0, junk.size() - 4);
    EXPECT_EQ(Converted(eRzToolUTF8, eRzToolLatin1, noZeros).size() * 2,
              static_cast<size_t>(RzString(noZeros.c_str()).UTF8ToUTF16().length()));

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
    for (const Case& c : cases) EXPECT_EQ(Converted(c.from, c.to, c.in, 1), c.out) << c.in;
}

TEST(RzToolUnits, HexadecimalText) {
    std::string bytes;
    for (int i = 0; i < 100; ++i) bytes += static_cast<char>(i * 37);
    std::ostringstream out;
    RzToolHexEncoder e(out);
    for (char c : bytes) e.Feed(&c, 1);
    e.Finish();
    EXPECT_EQ(Joined(out.str().size(), out.str()[64], out.str().back()),
              Joined(200 + 4, '\n', '\n'));
    for (size_t piece : {1, 3, 1000}) {
        EXPECT_EQ(Decoded(out.str(), piece), bytes);
        EXPECT_EQ(Decoded(" 0a\tB c\r\n", piece), "\x0A\xBC");
        EXPECT_EQ(Decoded("00\r\n\r\n 1x", piece), "in:3:3: 'x' is not a hexadecimal digit");
        EXPECT_EQ(Decoded("0\n\x01", piece), "in:2:1: '\\x01' is not a hexadecimal digit");
        EXPECT_EQ(Decoded("abc", piece),
                  "in: an odd number of hexadecimal digits (the last one "
                  "has no partner)");
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
