// Helpers shared by the database tests and fuzz targets: a plain tree, the
// reader transcribed literally onto it, conversion and comparison.
#ifndef RZ_TESTS_SUPPORT_DATABASESUPPORT_H
#define RZ_TESTS_SUPPORT_DATABASESUPPORT_H

#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzDataBase.h>

namespace rztest {

struct Node {
    struct Entry {
        std::string key, value;
        std::unique_ptr<Node> sub;
    };
    std::vector<Entry> entries;
};

// Keys and values as their C text (what the database compares), which is
// how two trees are compared.
inline std::string Text(const RzString& s) {
    return std::string(s.c_str());
}

// The reader exactly as the text format defines it: recursive, built on the
// public GetNextChar and RzDBData::SetString, filling a plain tree.
inline void ReferenceString2DB(Node& node, const RzString& text, int32_t& pos) {
    for (;;) {
        const char c = RzDataBase::GetNextChar(text, pos);
        if (c == 0 || c == '}') return;
        if (c == '{') {
            std::unique_ptr<Node> sub(new Node);
            ReferenceString2DB(*sub, text, pos);
            if (node.entries.empty()) throw RzError(kRzIndexError, "RzIndexError", "RzList", 0);
            node.entries.back().sub = std::move(sub);
            continue;
        }
        if (c != '<') --pos;
        RzDBData entry;
        entry.SetString(text, pos);
        node.entries.push_back(Node::Entry{Text(entry.GetKey()), Text(entry.GetVal()), nullptr});
        if (c == '<' && RzDataBase::GetNextChar(text, pos) != '>')
            throw RzError(kRzFormatErr, "RzFormatErr", "RzDataBase", 616);
    }
}

inline void ReferenceRead(Node& node, const RzString& text) {
    int32_t pos = 0;
    if (RzDataBase::GetNextChar(text, pos) != '{') pos = 0;
    ReferenceString2DB(node, text, pos);
}

inline void ToNode(const RzDataBase& db, Node& node) {
    for (int i = 0; i < db.GetCount(); ++i) {
        node.entries.push_back(
            Node::Entry{Text(db.GetIndexedName(i)), Text(db.GetIndexedValue(i)), nullptr});
        if (const RzDataBase* sub = db.GetIndexedDB(i)) {
            node.entries.back().sub.reset(new Node);
            ToNode(*sub, *node.entries.back().sub);
        }
    }
}

// Describes the first difference, or returns "" when the trees are equal.
inline std::string Diff(const Node& a, const Node& b, const std::string& where = "/") {
    if (a.entries.size() != b.entries.size())
        return where + ": " + std::to_string(a.entries.size()) + " vs " +
               std::to_string(b.entries.size()) + " entries";
    for (size_t i = 0; i < a.entries.size(); ++i) {
        const Node::Entry &x = a.entries[i], &y = b.entries[i];
        const std::string at = where + std::to_string(i);
        if (x.key != y.key) return at + ": key '" + x.key + "' vs '" + y.key + "'";
        if (x.value != y.value) return at + ": value '" + x.value + "' vs '" + y.value + "'";
        if (!x.sub != !y.sub) return at + ": sub-database on one side only";
        if (x.sub) {
            std::string d = Diff(*x.sub, *y.sub, at + "/");
            if (!d.empty()) return d;
        }
    }
    return "";
}

// Whether the plain form carries this database: a key that it writes bare
// must not begin with a character that the reader takes as structure
// ('#' comment, '{' and '}' braces, '<' protected entry).
inline bool PlainFormCarries(const RzDataBase& db) {
    for (int i = 0; i < db.GetCount(); ++i) {
        const std::string key = db.GetIndexedName(i).c_str();
        const bool bare = !key.empty() && key.find_first_of(" \t\r\n\"") == std::string::npos;
        if (bare && std::string("#{}<").find(key[0]) != std::string::npos) return false;
        if (const RzDataBase* sub = db.GetIndexedDB(i))
            if (!PlainFormCarries(*sub)) return false;
    }
    return true;
}

}  // namespace rztest

#endif
