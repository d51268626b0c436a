// Helpers shared by the database tests and fuzz targets: a database's
// entries as canonical text, and the reader as the text format defines it.
// None of them recurses, so they take trees of any depth.
#ifndef RZ_TESTS_SUPPORT_DATABASESUPPORT_H
#define RZ_TESTS_SUPPORT_DATABASESUPPORT_H

#include <stdint.h>

#include <string>
#include <utility>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzDataBase.h>

namespace rztest {

// Keys and values are compared as their C text, as the database compares
// them; lengths make any bytes unambiguous.
inline std::string Entry(const RzString& key, const RzString& value) {
    const std::string k = key.c_str(), v = value.c_str();
    return std::to_string(k.size()) + ":" + k + "=" + std::to_string(v.size()) + ":" + v + ";";
}

// Calls visit(level, i, depth) for every entry in text order.
template <class Visit>
void ForEachEntry(const RzDataBase& db, Visit visit) {
    std::vector<std::pair<const RzDataBase*, int>> open{{&db, 0}};
    while (!open.empty()) {
        const RzDataBase* level = open.back().first;
        const int i = open.back().second++;
        if (i >= level->GetCount()) {
            open.pop_back();
            continue;
        }
        visit(*level, i, open.size() - 1);
        if (const RzDataBase* sub = level->GetIndexedDB(i)) open.push_back({sub, 0});
    }
}

// Keys, values, order and nesting: a sub-database follows its entry in braces.
inline std::string Dump(const RzDataBase& db) {
    std::string out;
    size_t depth = 0;
    ForEachEntry(db, [&](const RzDataBase& level, int i, size_t d) {
        for (; depth > d; --depth) out += "}";
        out += Entry(level.GetIndexedName(i), level.GetIndexedValue(i));
        if (level.GetIndexedDB(i)) {
            out += "{";
            ++depth;
        }
    });
    return out + std::string(depth, '}');
}

// How many levels deep the tree goes below db (0 for a flat database).
inline size_t Depth(const RzDataBase& db) {
    size_t deepest = 0;
    ForEachEntry(db, [&](const RzDataBase& level, int i, size_t d) {
        if (level.GetIndexedDB(i) && d + 1 > deepest) deepest = d + 1;
    });
    return deepest;
}

// The reader exactly as the text format defines it, built on the public
// GetNextChar and RzDBData::SetString: the Dump of what it reads (also of
// what it read before it throws) goes to `out`, and it throws as the reader
// does. Levels are kept apart until the end, so that a later block can
// replace an earlier one.
inline void ReferenceRead(std::string& out, const RzString& text) {
    struct Node {
        std::string entry;
        int sub;  // level index, or -1
    };
    std::vector<std::vector<Node>> levels(1);
    std::vector<int> open{0};
    auto dump = [&] {
        std::vector<std::pair<int, size_t>> stack{{0, 0}};
        while (!stack.empty()) {
            const std::vector<Node>& level = levels[stack.back().first];
            const size_t i = stack.back().second++;
            if (i >= level.size()) {
                stack.pop_back();
                if (!stack.empty()) out += "}";
                continue;
            }
            out += level[i].entry;
            if (level[i].sub >= 0) {
                out += "{";
                stack.push_back({level[i].sub, 0});
            }
        }
    };
    try {
        int32_t pos = 0;
        if (RzDataBase::GetNextChar(text, pos) != '{') pos = 0;
        for (;;) {
            const char c = RzDataBase::GetNextChar(text, pos);
            if (c == 0 || c == '}') {
                if (open.size() == 1) break;
                const int closed = open.back();
                open.pop_back();
                std::vector<Node>& around = levels[open.back()];
                if (around.empty()) throw RzError(kRzIndexError, "RzIndexError", "RzList", 0);
                around.back().sub = closed;  // a later block replaces an earlier one
                continue;
            }
            if (c == '{') {
                open.push_back(static_cast<int>(levels.size()));
                levels.emplace_back();
                continue;
            }
            if (c != '<') --pos;
            RzDBData entry;
            entry.SetString(text, pos);
            levels[open.back()].push_back(Node{Entry(entry.GetKey(), entry.GetVal()), -1});
            if (c == '<' && RzDataBase::GetNextChar(text, pos) != '>')
                throw RzError(kRzFormatErr, "RzFormatErr", "RzDataBase", 616);
        }
    } catch (const RzError&) {
        dump();
        throw;
    }
    dump();
}

// Whether the plain form carries this database: a key that it writes bare
// must not begin with a character that the reader takes as structure
// ('#' comment, '{' and '}' braces, '<' protected entry).
inline bool PlainFormCarries(const RzDataBase& db) {
    bool carries = true;
    ForEachEntry(db, [&](const RzDataBase& level, int i, size_t) {
        const std::string key = level.GetIndexedName(i).c_str();
        const bool bare = !key.empty() && key.find_first_of(" \t\r\n\"") == std::string::npos;
        if (bare && std::string("#{}<").find(key[0]) != std::string::npos) carries = false;
    });
    return carries;
}

}  // namespace rztest

#endif
