#include <Rz/RzData/RzDataBase.h>

#include <new>
#include <string>

#include "support/DataBaseSupport.h"
#include "support/RzContainerTestSupport.h"
#include "support/RzTestSupport.h"

using rztest::Dump;

namespace {

RzDBData ReadEntry(const char* text, int32_t* posOut = nullptr) {
    RzDBData entry;
    int32_t pos = 0;
    entry.SetString(RzString(text), pos);
    if (posOut) *posOut = pos;
    return entry;
}

RzString Get(RzDataBase& db, const char* path) {
    return db.GetString(RzString(path), RzString("?"), false);
}

}  // namespace

TEST(RzDBData, WritesOneLine) {
    struct Case {
        const char *key, *value, *plain, *quoted;
    } cases[] = {
        {"", "", "\"\" = ", "\"\" = \"\""},
        {"k", "a\\b", "k = a\\b", "\"k\" = \"a\\\\b\""},
        {"t\tab", "line\nbreak", "\"t\tab\" = \"line\nbreak\"", "\"t\tab\" = \"line\nbreak\""},
        {"x", "\x01raw", "x = \x01raw", "\"x\" = \"\x01raw\""},
    };
    for (const Case& c : cases) {
        const RzDBData entry(RzString(c.key), RzString(c.value));
        EXPECT_EQ(Joined(entry.GetString(false), entry.GetString(true)), Joined(c.plain, c.quoted));
    }
}

TEST(RzDBData, ReadsOneEntry) {
    struct Case {
        const char *text, *key, *value;
        int32_t pos;
    } cases[] = {
        {"name = two words  \nnext", "name", "two words  ", 19},
        {"k = \"a \\\"q\\\" v\" tail", "k", "a \"q\" v", 15},
        {"k =\r\n", "k", "", 3},
        {"  \"a b\"  =  x", "a b", "x", 13},
        {"k =", "k", "=", 3},  // the step back lands on "=" itself
        {"k = \"multi\nline\"", "k", "multi\nline", 16},
        {"k = \"end\\\"", "k", "end\\", 10},  // an escaped quote at the very end
    };
    for (const Case& c : cases) {
        int32_t pos = -1;
        const RzDBData entry = ReadEntry(c.text, &pos);
        EXPECT_EQ(Joined(entry.GetKey(), entry.GetVal(), pos), Joined(c.key, c.value, c.pos));
    }
    // key=value without blanks is one word; the next word is not "=".
    EXPECT_EQ(ErrorFields(CatchRzError([] { ReadEntry("key=value\nnext = 1\n"); })),
              "19|RzFormatErr|RzDataBase|91");
    RzDBData entry(RzString("old"), RzString("v"));  // the key is replaced before the check
    int32_t pos = 0;
    EXPECT_RZ_ERROR(entry.SetString(RzString("new value"), pos), kRzFormatErr, "RzFormatErr");
    EXPECT_STREQ(entry.GetKey().c_str(), "new");
    for (const char* bad : {"\"open = x", "k = \"open", ""})
        EXPECT_RZ_ERROR(ReadEntry(bad), kRzFormatErr, "RzFormatErr");
}

TEST(RzDataBase, SubDatabaseReferences) {
    RzDataBase* kept = new RzDataBase;
    {
        RzDBData entry;
        entry.SetDB(new RzDataBase, true);
        RzDBData copy(entry);  // copies share the sub-database
        EXPECT_EQ(Joined(copy.GetDB() == entry.GetDB(), copy.GetDB()->RefCount()), "true|2");
    }
    RzDataBase db;
    db.SetDB(RzString("t"), kept, false);
    const int held = kept->RefCount();
    db.SetDB(RzString("t"), nullptr, false);  // detaches; the entry stays
    EXPECT_EQ(Joined(held, kept->RefCount(), db.Exists(RzString("t"))), "2|1|true");
    kept->Delete();
}

TEST(RzDataBase, Paths) {
    RzDataBase db;
    int index = 99;
    RzDataBase* level = db.GetEntry(RzString("a/b/c"), true, index);
    EXPECT_EQ(Joined(index, level == db.GetDB(RzString("a/b"), false)), "0|true");
    // A leading and a trailing slash are ignored.
    EXPECT_EQ(Joined(db.Exists(RzString("/a/b/c/")), db.Exists(RzString("a/b/c/d"))), "true|false");
    db.SetString(RzString("x"), RzString("1"));
    EXPECT_EQ(db.GetEntry(RzString("x/y"), false, index), nullptr);
    EXPECT_EQ(index, -1);

    // "" and "/" name the entry with the empty key; "a//b" has an empty middle.
    db.SetString(RzString(""), RzString("empty"));
    EXPECT_STREQ(Get(db, "/").c_str(), "empty");
    db.SetString(RzString("p//q"), RzString("v"));
    EXPECT_EQ(Dump(*db.GetDB(RzString("p"), false)), "0:=0:;{1:q=1:v;}");

    db.Remove(RzString("a/b"));  // a key of this level, not a path
    const bool kept = db.Exists(RzString("a/b"));
    db.Remove(RzString("a"));
    EXPECT_EQ(Joined(kept, db.Exists(RzString("a"))), "true|false");

    EXPECT_STREQ(db.GetString(RzString("n/m"), RzString("d"), false).c_str(), "d");
    EXPECT_FALSE(db.Exists(RzString("n/m")));
    db.GetString(RzString("n/m"), RzString("d"), true);  // stores the default
    EXPECT_STREQ(Get(db, "n/m").c_str(), "d");
    EXPECT_RZ_ERROR(db.GetIndexedName(100), kRzIndexError, "RzIndexError");
}

TEST(RzDataBase, Merge) {
    RzDataBase target, source, assigned;
    target.SetString(RzString("x"), RzString("2"));
    source.SetString(RzString("x"), RzString("1"));
    source.SetString(RzString("s/inner"), RzString("i"));
    RzDataBase replaced(target);
    replaced.MergeDB(&source, false);
    EXPECT_EQ(Dump(replaced), "1:x=1:1;1:s=0:;{5:inner=1:i;}");
    target.MergeDB(&source, true);
    EXPECT_EQ(Dump(target), "1:x=1:2;1:x=1:1;1:s=0:;{5:inner=1:i;}");
    // Sub-databases are copied, not shared, also by assignment.
    EXPECT_NE(target.GetDB(RzString("s"), false), source.GetDB(RzString("s"), false));
    assigned = target;
    EXPECT_EQ(Dump(assigned), Dump(target));
    EXPECT_NE(assigned.GetDB(RzString("s"), false), target.GetDB(RzString("s"), false));
    // Merging a database into itself copies what it held at the start; the
    // copied sub-entries land under the first entry of their key.
    source.MergeDB(&source, true);
    EXPECT_EQ(Dump(source), "1:x=1:1;1:s=0:;{5:inner=1:i;5:inner=1:i;}1:x=1:1;1:s=0:;");
}

TEST(RzDataBase, SkipLineLooksOneCharacterBeyond) {
    // After the line end it checks the character behind the next one: a CR LF
    // pair leaves pos on the LF, and the "x" of "\rx\n" is skipped.
    std::string positions;
    for (const char* text : {"a\nb", "a\r\nb", "a\rx\nb", "a\nx\rb", "a\r", "ab"}) {
        int32_t pos = 0;
        RzDataBase::SkipLine(RzString(text), pos);
        positions += std::to_string(pos);
    }
    EXPECT_EQ(positions, "223322");
    RzDataBase db;
    db.ReadFromString(RzString("#c\rx\nk = v\n"));
    EXPECT_EQ(Dump(db), "1:k=1:v;");
}

TEST(RzDataBase, ReadErrorsKeepWhatWasRead) {
    struct Case {
        const char* text;
        uint32_t code;
        int line;
        int entriesKept;
    } cases[] = {
        {"a = 1\nb=2\nc = 3\n", 19, 91, 1},
        {"a = 1\n<\"b\" = \"2\"\nc = 3\n", 19, 616, 2},  // appended before the check
        {"a = 1\n{\n{\nb = 2\n}\n}\n", 7, -1, 1},
    };
    for (const Case& c : cases) {
        RzDataBase db;
        db.SetString(RzString("old"), RzString("gone"));
        const RzError e = CatchRzError([&] { db.ReadFromString(RzString(c.text)); });
        EXPECT_EQ(Joined(e.GetErr(), c.line < 0 ? -1 : e.GetLine(), db.GetCount(),
                         db.Exists(RzString("old"))),
                  Joined(c.code, c.line, c.entriesKept, false))
            << c.text;
    }
}

namespace {

// n levels of "a =" each holding the next, as text; the innermost is empty.
RzString Chain(int n) {
    std::string text;
    for (int i = 0; i < n; ++i) text += "a =\n{\n";
    text += std::string(static_cast<size_t>(n), '}');
    return RzString(text.c_str());
}

// The size of the text of Chain(n): each level d writes its entry, "{" and
// "}" lines, each indented by d tabs.
int64_t ChainTextSize(int64_t n) {
    return 3 * n * (n - 1) / 2 + 9 * n;
}

const int64_t kLargestString = INT32_MAX - 19;  // 2^31 - 1 bytes for the whole block

}  // namespace

TEST(RzDataBase, TextBeyondTheLargestStringFailsBeforeWriting) {
    int first = 1;  // the first depth whose text exceeds the largest string
    while (ChainTextSize(first) <= kLargestString) ++first;
    for (int n : {first, 53510}) {
        RzDataBase db;
        db.ReadFromString(Chain(n));
        EXPECT_THROW(db.WriteToString(), std::bad_alloc) << n;
    }
    RzDataBase db;
    db.ReadFromString(Chain(1000));
    EXPECT_EQ(db.WriteToString().length(), ChainTextSize(1000));

    // One line "a = " and its line end, indented: the indentation counts,
    // negative indentation writes no tabs.
    RzDataBase one;
    one.SetString(RzString("a"), RzString());
    EXPECT_STREQ(one.DB2String(-3).c_str(), "a = \n");
    EXPECT_STREQ(one.DB2String(2).c_str(), "\t\ta = \n");
    EXPECT_THROW(one.DB2String(static_cast<int>(kLargestString - 4)), std::bad_alloc);
    EXPECT_THROW(one.DB2String(INT32_MAX), std::bad_alloc);
}

TEST(RzDataBase, ReadKeysAndValuesHaveTheCapacitiesOfReadingWords) {
    // Bare words grow from 10 by half; unquoting leaves room for the quoted
    // content less its quotes. Both readers agree (a zero byte in the text
    // selects the general one).
    const char text[] =
        "k = v\n"
        "\"q k\" = \"a \\\"b\\\"\"\n"
        "long = abcdefghijklmnopqrstuvw x\n"
        "e = \"\"\n";
    const char* const states[][2] = {
        {"k|1|txt|10", "v|1|txt|10"},
        {"q k|3|txt|3", "a \"b\"|5|txt|7"},
        {"long|4|txt|10", "abcdefghijklmnopqrstuvw x|25|txt|33"},
        {"e|1|txt|10", "|0|txt|0"},
    };
    for (int32_t extra : {0, 1}) {
        RzDataBase db;
        db.ReadFromString(RzString(text, static_cast<int32_t>(sizeof text - 1) + extra, false));
        ASSERT_EQ(db.GetCount(), 4) << extra;
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(Joined(StringState(db.GetIndexedName(i)), StringState(db.GetIndexedValue(i))),
                      Joined(states[i][0], states[i][1]))
                << extra;
    }
    // Repeated keys may share a buffer; writing through one copy changes no
    // other key.
    RzDataBase db;
    db.ReadFromString(RzString("x = 1\n{\nk = 1\n}\ny = 2\n{\nk = 2\n}\n"));
    RzString k = db.GetDB(RzString("x"), false)->GetIndexedName(0);
    k[0] = 'z';
    EXPECT_EQ(Joined(db.GetDB(RzString("y"), false)->GetIndexedName(0), k), "k|z");
}

TEST(RzDataBase, LargeLevelLookupsFindTheFirstEntry) {
    RzDataBase db, dup;
    for (int i = 0; i < 5000; ++i) db.SetString(RzString().ltoa(i), RzString().ltoa(i * 2));
    dup.SetString(RzString("7"), RzString("dup"));
    db.MergeDB(&dup, true);  // a second entry with the key 7
    EXPECT_EQ(Joined(db.GetIndex(RzString("7")), Get(db, "4999"), db.GetIndex(RzString("nope"))),
              "7|9998|-1");
    db.Remove(RzString("7"));  // the appended 7 is the first now
    EXPECT_EQ(Joined(db.GetIndex(RzString("7")), db.GetIndex(RzString("8"))), "4999|7");
    db.Clear();
    const int cleared = db.GetIndex(RzString("8"));
    db.SetString(RzString("8"), RzString("x"));
    EXPECT_EQ(Joined(cleared, db.GetIndex(RzString("8"))), "-1|0");
}
