// The reader as the text format defines it, and what the database fuzz
// targets check on every tree they build or read.
#ifndef RZ_FUZZ_DATABASEFUZZSUPPORT_H
#define RZ_FUZZ_DATABASEFUZZSUPPORT_H

#include <stddef.h>

#include <new>
#include <string>
#include <utility>
#include <vector>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzDataBase.h>

#include "support/DataBaseSupport.h"

namespace rztest {

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

// How many levels deep the tree goes below db (0 for a flat database).
inline size_t Depth(const RzDataBase& db) {
    size_t deepest = 0;
    ForEachEntry(db, [&](const RzDataBase& level, int i, size_t d) {
        if (level.GetIndexedDB(i) && d + 1 > deepest) deepest = d + 1;
    });
    return deepest;
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

// Whether copying reproduces db exactly: the copy puts a sub-database below
// the first entry that its key names as a path, so every entry with one must
// be the first with its key on its level and its key must hold no '/'.
inline bool CopyIsExact(const RzDataBase& db) {
    bool exact = true;
    ForEachEntry(db, [&](const RzDataBase& level, int i, size_t) {
        if (!level.GetIndexedDB(i)) return;
        const RzString key = level.GetIndexedName(i);
        if (level.GetIndex(key) != i || key.find('/') >= 0) exact = false;
    });
    return exact;
}

// Trees up to this depth are written in full by the fuzz targets (the text of
// a deep tree grows with the square of its depth); from kTooDeepToWrite on,
// the indentation alone exceeds the largest string (2^31 - 1 bytes).
const size_t kWrittenDepth = 2000;
const size_t kTooDeepToWrite = 40000;

// Checks what every database must survive at any depth: copying and
// assigning (exact where CopyIsExact), merging in both modes, a path lookup
// down the first entries, and that a tree too deep to write raises
// std::bad_alloc without writing, in both forms. False when a check fails.
inline bool ExerciseTree(const RzDataBase& db) {
    const std::string dump = Dump(db);
    const bool exact = CopyIsExact(db);
    RzDataBase copy(db), assigned, merged;
    assigned = db;
    if (exact && (Dump(copy) != dump || Dump(assigned) != dump)) return false;
    merged.MergeDB(&db, false);
    merged.MergeDB(&db, true);

    // Down the first entries while their keys can be named by a path.
    std::string path;
    const RzDataBase* level = &db;
    const RzDataBase* holder = nullptr;
    while (level->GetCount() > 0 && level->GetIndex(level->GetIndexedName(0)) == 0) {
        const RzString key = level->GetIndexedName(0);
        if (key.find('/') >= 0 || key.length() == 0) break;
        path += (path.empty() ? "" : "/") + std::string(key.c_str());
        holder = level;
        level = level->GetIndexedDB(0);
        if (!level) break;
    }
    if (holder) {
        int index = -1;
        if (copy.GetEntry(RzString(path.c_str()), false, index) == nullptr && exact) return false;
        if (const_cast<RzDataBase&>(db).GetEntry(RzString(path.c_str()), false, index) != holder ||
            index != 0)
            return false;
    }

    for (bool protectedForm : {false, true}) {
        if (Depth(db) < kTooDeepToWrite) break;
        const bool saved = RzDataBase::SaveControlChars(protectedForm);
        bool refused = false;
        try {
            db.WriteToString();
        } catch (const std::bad_alloc&) {
            refused = true;
        }
        RzDataBase::SaveControlChars(saved);
        if (!refused) return false;
    }
    return true;
}

}  // namespace rztest

#endif
