#include <Rz/RzData/RzDataBase.h>

#include <random>
#include <string>

#include "support/DataBaseSupport.h"
#include "support/RzTestSupport.h"

using rztest::Diff;
using rztest::Node;

namespace {

// Saves the process-wide writer form and restores it.
class ControlCharsGuard {
public:
    explicit ControlCharsGuard(bool on) : saved(RzDataBase::SaveControlChars(on)) {}
    ~ControlCharsGuard() { RzDataBase::SaveControlChars(saved); }

private:
    bool saved;
};

Node Tree(const RzDataBase& db) {
    Node n;
    rztest::ToNode(db, n);
    return n;
}

Node ReferenceTree(const std::string& text) {
    Node n;
    rztest::ReferenceRead(n, RzString(text.c_str()));
    return n;
}

// The code of the RzError that f throws, or 0.
template <typename F>
uint32_t CatchCode(F f) {
    try {
        f();
    } catch (const RzError& e) {
        return e.GetErr();
    }
    return 0;
}

RzDBData ReadEntry(const char* text, int32_t* posOut = nullptr) {
    RzDBData entry;
    int32_t pos = 0;
    entry.SetString(RzString(text), pos);
    if (posOut) *posOut = pos;
    return entry;
}

const char kExample[] =
    "#written by hand\n"
    "name = Example Paper\n"
    "size = 12\n"
    "\"two words\" = \"a \\\"quoted\\\" value\"\n"
    "colors = \n"
    "{\n"
    "\tred = 0.5\n"
    "\tempty = \n"
    "}\n";

}  // namespace

TEST(RzDBData, WritesOneLine) {
    struct Case {
        const char* key;
        const char* value;
        const char* plain;
        const char* quoted;
    } cases[] = {
        {"a b", "c", "\"a b\" = c", "\"a b\" = \"c\""},
        {"", "", "\"\" = ", "\"\" = \"\""},
        {"k", "say \"hi\"", "k = \"say \\\"hi\\\"\"", "\"k\" = \"say \\\"hi\\\"\""},
        {"k", "a\\b", "k = a\\b", "\"k\" = \"a\\\\b\""},
        {"t\tab", "line\nbreak", "\"t\tab\" = \"line\nbreak\"", "\"t\tab\" = \"line\nbreak\""},
        {"x", "\x01raw", "x = \x01raw", "\"x\" = \"\x01raw\""},
    };
    for (const Case& c : cases) {
        RzDBData entry(RzString(c.key), RzString(c.value));
        EXPECT_EQ(std::string(entry.GetString(false).c_str()), c.plain);
        EXPECT_EQ(std::string(entry.GetString(true).c_str()), c.quoted);
    }
}

TEST(RzDBData, ReadsOneEntry) {
    struct Case {
        const char* text;
        const char* key;
        const char* value;
        int32_t pos;
    } cases[] = {
        {"name = two words  \nnext", "name", "two words  ", 19},
        {"k = \"a \\\"q\\\" v\" tail", "k", "a \"q\" v", 15},
        {"k = \n", "k", "", 4},
        {"k =\r\n", "k", "", 3},
        {"  \"a b\"  =  x", "a b", "x", 13},
        {"k =", "k", "=", 3},  // the step back lands on "=" itself
        {"k = \"multi\nline\"", "k", "multi\nline", 16},
        {"k = \"end\\\"", "k", "end\\", 10},  // an escaped quote at the very end
        {"k = a\\b", "k", "a\\b", 7},
    };
    for (const Case& c : cases) {
        int32_t pos = -1;
        RzDBData entry = ReadEntry(c.text, &pos);
        EXPECT_EQ(std::string(entry.GetKey().c_str()), c.key) << c.text;
        EXPECT_EQ(std::string(entry.GetVal().c_str()), c.value) << c.text;
        EXPECT_EQ(pos, c.pos) << c.text;
    }
}

TEST(RzDBData, ReadErrors) {
    // key=value without blanks is one word; the next word is not "=".
    RzError e = CatchRzError([] { ReadEntry("key=value\nnext = 1\n"); });
    EXPECT_EQ(e.GetErr(), 19u);
    EXPECT_STREQ(e.GetFileName(), "RzDataBase");
    EXPECT_EQ(e.GetLine(), 91);
    // The key is replaced before the check.
    RzDBData entry(RzString("old"), RzString("v"));
    int32_t pos = 0;
    EXPECT_RZ_ERROR(entry.SetString(RzString("new value"), pos), kRzFormatErr, "RzFormatErr");
    EXPECT_STREQ(entry.GetKey().c_str(), "new");
    EXPECT_RZ_ERROR(ReadEntry("\"open = x"), kRzFormatErr, "RzFormatErr");
    EXPECT_RZ_ERROR(ReadEntry("k = \"open"), kRzFormatErr, "RzFormatErr");
    EXPECT_RZ_ERROR(ReadEntry(""), kRzFormatErr, "RzFormatErr");
}

TEST(RzDBData, SubDatabaseReferences) {
    RzDataBase* adopted = new RzDataBase;
    {
        RzDBData entry;
        entry.SetDB(adopted, true);
        EXPECT_EQ(adopted->RefCount(), 1);
        RzDBData copy(entry);  // copies share the sub-database
        EXPECT_EQ(adopted->RefCount(), 2);
        EXPECT_EQ(copy.GetDB(), adopted);
    }
    RzDataBase* kept = new RzDataBase;
    {
        RzDBData entry(RzString("k"), RzString("v"), kept, false);
        EXPECT_EQ(kept->RefCount(), 2);
        entry.SetDB(nullptr, false);
        EXPECT_EQ(kept->RefCount(), 1);
    }
    kept->Delete();
}

TEST(RzDataBase, Paths) {
    RzDataBase db;
    int index = 99;
    RzDataBase* level = db.GetEntry(RzString("a/b/c"), true, index);
    ASSERT_NE(level, nullptr);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(level, db.GetDB(RzString("a/b"), false));
    EXPECT_EQ(db.GetCount(), 1);
    EXPECT_TRUE(db.Exists(RzString("/a/b/c/")));  // leading and trailing slash ignored
    EXPECT_FALSE(db.Exists(RzString("a/b/c/d")));

    db.SetString(RzString("x"), RzString("1"));
    EXPECT_EQ(db.GetEntry(RzString("x/y"), false, index), nullptr);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(db.GetDB(RzString("x"), false), nullptr);

    // "" and "/" name the entry with the empty key; "a//b" has an empty middle.
    db.SetString(RzString(""), RzString("empty"));
    EXPECT_STREQ(db.GetString(RzString("/"), RzString("?"), false).c_str(), "empty");
    db.SetString(RzString("p//q"), RzString("v"));
    EXPECT_STREQ(db.GetDB(RzString("p"), false)->GetIndexedName(0).c_str(), "");

    // Remove takes a key of this level, not a path.
    db.Remove(RzString("a/b"));
    EXPECT_TRUE(db.Exists(RzString("a/b")));
    db.Remove(RzString("a"));
    EXPECT_FALSE(db.Exists(RzString("a")));

    // GetString with create stores the default.
    EXPECT_STREQ(db.GetString(RzString("n/m"), RzString("d"), false).c_str(), "d");
    EXPECT_FALSE(db.Exists(RzString("n/m")));
    EXPECT_STREQ(db.GetString(RzString("n/m"), RzString("d"), true).c_str(), "d");
    EXPECT_STREQ(db.GetString(RzString("n/m"), RzString("other"), false).c_str(), "d");

    EXPECT_RZ_ERROR(db.GetIndexedName(100), kRzIndexError, "RzIndexError");
}

TEST(RzDataBase, SetDBByPathCountsReferences) {
    RzDataBase db;
    RzDataBase* sub = new RzDataBase;
    db.SetDB(RzString("s"), sub, true);
    EXPECT_EQ(sub->RefCount(), 1);
    RzDataBase* shared = new RzDataBase;
    db.SetDB(RzString("t"), shared, false);
    EXPECT_EQ(shared->RefCount(), 2);
    db.SetDB(RzString("t"), nullptr, false);  // detaches; the entry stays
    EXPECT_EQ(shared->RefCount(), 1);
    EXPECT_TRUE(db.Exists(RzString("t")));
    shared->Delete();
}

TEST(RzDataBase, Merge) {
    RzDataBase target, source;
    target.SetString(RzString("x"), RzString("2"));
    source.SetString(RzString("x"), RzString("1"));
    source.SetString(RzString("s/inner"), RzString("i"));

    RzDataBase replaced(target);
    replaced.MergeDB(&source, false);
    EXPECT_EQ(replaced.GetCount(), 2);
    EXPECT_STREQ(replaced.GetIndexedValue(0).c_str(), "1");

    target.MergeDB(&source, true);
    ASSERT_EQ(target.GetCount(), 3);
    EXPECT_STREQ(target.GetIndexedValue(0).c_str(), "2");
    EXPECT_STREQ(target.GetIndexedValue(1).c_str(), "1");
    EXPECT_EQ(target.GetIndex(RzString("x")), 0);
    EXPECT_STREQ(target.GetString(RzString("s/inner"), RzString(), false).c_str(), "i");
    // Sub-databases are copied, not shared.
    EXPECT_NE(target.GetDB(RzString("s"), false), source.GetDB(RzString("s"), false));

    // Merging a database into itself copies what it held at the start.
    RzDataBase self;
    self.SetString(RzString("a"), RzString("1"));
    self.MergeDB(&self, true);
    EXPECT_EQ(self.GetCount(), 2);

    RzDataBase assigned;
    assigned = target;
    EXPECT_EQ(Diff(Tree(assigned), Tree(target)), "");
}

TEST(RzDataBase, ReadsTheExample) {
    RzDataBase db;
    db.ReadFromString(RzString(kExample));
    ASSERT_EQ(db.GetCount(), 4);
    EXPECT_STREQ(db.GetString(RzString("name"), RzString(), false).c_str(), "Example Paper");
    EXPECT_STREQ(db.GetString(RzString("two words"), RzString(), false).c_str(),
                 "a \"quoted\" value");
    EXPECT_STREQ(db.GetString(RzString("colors"), RzString("?"), false).c_str(), "");
    EXPECT_STREQ(db.GetString(RzString("colors/red"), RzString(), false).c_str(), "0.5");
    EXPECT_TRUE(db.Exists(RzString("colors/empty")));

    // Written back in the protected form, line by line.
    ControlCharsGuard guard(true);
    EXPECT_EQ(std::string(db.WriteToString().c_str()),
              "{\n"
              "\t<\"name\" = \"Example Paper\">\n"
              "\t<\"size\" = \"12\">\n"
              "\t<\"two words\" = \"a \\\"quoted\\\" value\">\n"
              "\t<\"colors\" = \"\">\n"
              "\t{\n"
              "\t\t<\"red\" = \"0.5\">\n"
              "\t\t<\"empty\" = \"\">\n"
              "\t}\n"
              "}\n");
    RzDataBase again;
    again.ReadFromString(again.WriteToString());
    EXPECT_EQ(again.GetCount(), 0);
    EXPECT_STREQ(again.WriteToString().c_str(), "{\n}\n");
    RzDataBase::SaveControlChars(false);
    EXPECT_STREQ(again.WriteToString().c_str(), "");
    EXPECT_EQ(std::string(db.WriteToString().c_str()),
              "name = \"Example Paper\"\nsize = 12\n\"two words\" = \"a \\\"quoted\\\" value\"\n"
              "colors = \n{\n\tred = 0.5\n\tempty = \n}\n");
}

TEST(RzDataBase, ReaderAgreesWithTheFormatOnOddTexts) {
    const char* texts[] = {
        kExample,
        "a = 1\r\nb = 2\r\n{\r\n\tc = 3\r\n}\r\n",  // CR LF
        "a = 1\rb = 2\r{\rc = 3\r}\r",              // CR
        "a = 1\n}\nignored = 2\n",                  // a closing brace ends reading
        "{\na = 1\n}\nignored = 2\n",
        "#{ block\na = 1\n  #} not closing\n#} b = 2\nc = 3\n",
        "#{ block\na = 1\n  #} not closing\n#} closed here b = 2\nc = 3\n",  // 91
        "#\na = 1\n#\r\nb = 2\n#c\n",
        "#{\n#}",
        "a = 1 # not a comment\n",
        "<\"k\" = \"v\">\n<k2 = \"v2\" >\n",
        "a = \"x\" trailing\nb = 2\n",  // 91: the next word is not "="
        "a = 1\n{\nb = 2\n{\nc = 3\n",  // unclosed braces at the end
        "a\t=\tb\tc\n",
        "x = \"line one\nline two\"\ny = z\n",
        "\xEF\xBB\xBFkey = value\n",
    };
    for (const char* text : texts) {
        RzDataBase db;
        const uint32_t code = CatchCode([&] { db.ReadFromString(RzString(text)); });
        Node expected;
        const uint32_t expectedCode =
            CatchCode([&] { rztest::ReferenceRead(expected, RzString(text)); });
        EXPECT_EQ(code, expectedCode) << text;
        EXPECT_EQ(Diff(Tree(db), expected), "") << text;
    }
    // The same database whatever the line ends.
    RzDataBase lf, crlf;
    lf.ReadFromString(RzString("a = 1\nb = 2\n{\nc = 3\n}\n"));
    crlf.ReadFromString(RzString("a = 1\r\nb = 2\r\n{\r\nc = 3\r\n}\r\n"));
    EXPECT_EQ(Diff(Tree(lf), Tree(crlf)), "");
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
        {"{\n{\na = 1\n}\n}\n", 7, -1, 0},               // a brace without an entry
        {"a = 1\n{\n{\nb = 2\n}\n}\n", 7, -1, 1},
        {"a = \"open\n", 19, -1, 0},
    };
    for (const Case& c : cases) {
        RzDataBase db;
        db.SetString(RzString("old"), RzString("gone"));
        RzError e = CatchRzError([&] { db.ReadFromString(RzString(c.text)); });
        EXPECT_EQ(e.GetErr(), c.code) << c.text;
        if (c.line >= 0) {
            EXPECT_EQ(e.GetLine(), c.line) << c.text;
        }
        EXPECT_EQ(db.GetCount(), c.entriesKept) << c.text;
        EXPECT_FALSE(db.Exists(RzString("old")));
    }
}

TEST(RzDataBase, DeepNestingDoesNotExhaustTheStack) {
    std::string text;
    const int depth = 1000;
    for (int i = 0; i < depth; ++i) text += "k = v\n{\n";
    RzDataBase db;
    db.ReadFromString(RzString(text.c_str()));
    int levels = 1;
    for (RzDataBase* level = &db; level->GetCount() > 0 && level->GetIndexedDB(0);
         level = level->GetIndexedDB(0))
        ++levels;
    EXPECT_EQ(levels, depth + 1);
    RzString written = db.WriteToString();
    RzDataBase back;
    back.ReadFromString(written);
    EXPECT_EQ(Diff(Tree(back), Tree(db)), "");
}

TEST(RzDataBase, LargeLevelLookupsFindTheFirstEntry) {
    RzDataBase db;
    const int count = 5000;
    for (int i = 0; i < count; ++i) db.SetString(RzString().ltoa(i), RzString().ltoa(i * 2));
    RzDataBase dup;
    dup.SetString(RzString("7"), RzString("dup"));
    db.MergeDB(&dup, true);  // a second entry with the key 7
    EXPECT_EQ(db.GetIndex(RzString("7")), 7);
    EXPECT_STREQ(db.GetString(RzString("4999"), RzString(), false).c_str(), "9998");
    EXPECT_EQ(db.GetIndex(RzString("nope")), -1);
    db.Remove(RzString("7"));
    EXPECT_EQ(db.GetIndex(RzString("7")), count - 1);  // now the appended one
    EXPECT_EQ(db.GetIndex(RzString("8")), 7);
    db.Clear();
    EXPECT_EQ(db.GetIndex(RzString("8")), -1);
    db.SetString(RzString("8"), RzString("x"));
    EXPECT_EQ(db.GetIndex(RzString("8")), 0);
}

namespace {

// Random keys and values, dense in the characters the format treats
// specially. Keys never hold '/', since they are set through paths.
std::string RandomText(std::mt19937& rng, bool key) {
    static const char special[] = " \t\r\n\"\\#{}<>=";
    std::string s;
    const int n = static_cast<int>(rng() % 7);
    for (int i = 0; i < n; ++i) {
        char c;
        const uint32_t pick = rng() % 4;
        if (pick == 0)
            c = special[rng() % (sizeof special - 1)];
        else if (pick == 1)
            c = static_cast<char>(1 + rng() % 255);
        else
            c = static_cast<char>('a' + rng() % 26);
        if (key && c == '/') c = 'z';
        s += c;
    }
    return s;
}

// A database built through the API: path setters, sub-databases and
// appended duplicates.
void Populate(RzDataBase& db, std::mt19937& rng, int depth) {
    const int n = static_cast<int>(rng() % 6);
    for (int i = 0; i < n; ++i) {
        const std::string key = RandomText(rng, true), value = RandomText(rng, false);
        if (rng() % 5 == 0) {
            RzDataBase one;
            one.SetString(RzString(key.c_str()), RzString(value.c_str()));
            db.MergeDB(&one, true);
        } else {
            db.SetString(RzString(key.c_str()), RzString(value.c_str()));
        }
        if (depth > 0 && rng() % 3 == 0)
            Populate(*db.GetDB(RzString(key.c_str()), true), rng, depth - 1);
    }
}

}  // namespace

TEST(RzDataBase, RoundTripProperty) {
    std::mt19937 rng(20261121);
    int plainChecked = 0;
    for (int round = 0; round < 3000; ++round) {
        RzDataBase db;
        Populate(db, rng, 3);
        for (bool protectedForm : {true, false}) {
            ControlCharsGuard guard(protectedForm);
            if (!protectedForm && !rztest::PlainFormCarries(db)) continue;
            plainChecked += !protectedForm;
            const RzString text = db.WriteToString();
            RzDataBase back;
            back.ReadFromString(text);
            ASSERT_EQ(Diff(Tree(back), Tree(db)), "")
                << (protectedForm ? "protected" : "plain") << " form:\n"
                << text.c_str();
            EXPECT_EQ(Diff(Tree(back), ReferenceTree(text.c_str())), "");
        }
    }
    EXPECT_GT(plainChecked, 1000);
}
